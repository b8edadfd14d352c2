// Parses each message named on the command line and prints every view the
// library gives of it (header fields, parameters, mailboxes, charsets, the
// part tree, decoded and re-encoded bodies, assembly), then composes one
// message. Built natively and for Windows from this one source: the two
// outputs must be byte-identical.
//
// Usage: views_dump FILE... Uses only the public header and PvCreateInstance.
#include <parcelvane/parcelvane.h>

#if defined(_WIN32)
#include <fcntl.h>
#include <io.h>
#endif

#include <cctype>
#include <cstdint>
#include <cstdio>
#include <string>
#include <utility>
#include <vector>

namespace {

template <class T>
class Ref {
 public:
  Ref() = default;
  Ref(const Ref&) = delete;
  Ref& operator=(const Ref&) = delete;
  ~Ref() { Reset(); }
  void Reset() {
    if (p_ != nullptr) p_->Release();
    p_ = nullptr;
  }
  T* get() const { return p_; }
  T* operator->() const { return p_; }
  explicit operator bool() const { return p_ != nullptr; }
  T** put() {
    Reset();
    return &p_;
  }

 private:
  T* p_ = nullptr;
};

template <class T>
HRESULT Create(const CLSID& clsid, Ref<T>* out) {
  return PvCreateInstance(clsid, nullptr, PvInterfaceId<T>::Get(), reinterpret_cast<void**>(out->put()));
}

class Bstr {
 public:
  Bstr() = default;
  explicit Bstr(const std::string& utf8) {
    std::u16string u;
    for (size_t i = 0; i < utf8.size();) {
      unsigned char c = static_cast<unsigned char>(utf8[i]);
      uint32_t cp = c;
      int n = c < 0x80 ? 1 : c < 0xE0 ? 2 : c < 0xF0 ? 3 : 4;
      if (n > 1) cp = c & (0xFF >> (n + 1));
      for (int k = 1; k < n && i + k < utf8.size(); ++k) cp = (cp << 6) | (utf8[i + k] & 0x3F);
      i += n;
      if (cp >= 0x10000) {
        u.push_back(static_cast<char16_t>(0xD800 + ((cp - 0x10000) >> 10)));
        u.push_back(static_cast<char16_t>(0xDC00 + ((cp - 0x10000) & 0x3FF)));
      } else {
        u.push_back(static_cast<char16_t>(cp));
      }
    }
    s_ = SysAllocStringLen(reinterpret_cast<const OLECHAR*>(u.data()), static_cast<UINT>(u.size()));
  }
  Bstr(const Bstr&) = delete;
  Bstr& operator=(const Bstr&) = delete;
  ~Bstr() { SysFreeString(s_); }
  BSTR get() const { return s_; }
  BSTR* put() {
    SysFreeString(s_);
    s_ = nullptr;
    return &s_;
  }

 private:
  BSTR s_ = nullptr;
};

uint64_t Fnv(const std::string& bytes) {
  uint64_t h = 1469598103934665603ull;
  for (unsigned char c : bytes) h = (h ^ c) * 1099511628211ull;
  return h;
}

// UTF-16 to UTF-8; an unpaired surrogate is written as \u{...}.
std::string Utf8(BSTR s) {
  std::string out;
  if (s == nullptr) return out;
  UINT n = SysStringLen(s);
  for (UINT i = 0; i < n; ++i) {
    uint32_t c = static_cast<uint16_t>(s[i]);
    if (c >= 0xD800 && c < 0xDC00 && i + 1 < n && static_cast<uint16_t>(s[i + 1]) >= 0xDC00 &&
        static_cast<uint16_t>(s[i + 1]) < 0xE000) {
      c = 0x10000 + ((c - 0xD800) << 10) + (static_cast<uint16_t>(s[++i]) - 0xDC00);
    } else if (c >= 0xD800 && c < 0xE000) {
      char buf[16];
      std::snprintf(buf, sizeof buf, "\\u{%04X}", static_cast<unsigned>(c));
      out += buf;
      continue;
    }
    if (c < 0x80) {
      out += static_cast<char>(c);
    } else if (c < 0x800) {
      out += static_cast<char>(0xC0 | (c >> 6));
      out += static_cast<char>(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
      out += static_cast<char>(0xE0 | (c >> 12));
      out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
      out += static_cast<char>(0x80 | (c & 0x3F));
    } else {
      out += static_cast<char>(0xF0 | (c >> 18));
      out += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
      out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
      out += static_cast<char>(0x80 | (c & 0x3F));
    }
  }
  return out;
}

// A boundary generated from the clock (when a message is turned into MIME)
// differs between runs: its variable tail is replaced by a fixed name.
std::string WithoutGeneratedBoundaries(std::string text) {
  static const std::string kMark = "=_NextPart_";
  for (size_t at = text.find(kMark); at != std::string::npos; at = text.find(kMark, at + 1)) {
    size_t end = at + kMark.size();
    while (end < text.size() &&
           (std::isalnum(static_cast<unsigned char>(text[end])) || text[end] == '_' || text[end] == '.')) {
      ++end;
    }
    text.replace(at + kMark.size(), end - at - kMark.size(), "GENERATED");
  }
  return text;
}

// Control bytes escaped so that every value stays on one line; long values
// are shown by length and hash.
std::string Show(const std::string& raw) {
  const std::string bytes = WithoutGeneratedBoundaries(raw);
  char buf[64];
  if (bytes.size() > 600) {
    std::snprintf(buf, sizeof buf, "<%zu bytes, fnv %016llx>", bytes.size(),
                  static_cast<unsigned long long>(Fnv(bytes)));
    return buf;
  }
  std::string out = "\"";
  for (unsigned char c : bytes) {
    if (c == '\\' || c == '"') {
      out += '\\';
      out += static_cast<char>(c);
    } else if (c < 0x20 || c == 0x7F) {
      std::snprintf(buf, sizeof buf, "\\x%02X", c);
      out += buf;
    } else {
      out += static_cast<char>(c);
    }
  }
  return out + "\"";
}

void Line(int depth, const char* key, HRESULT hr, const std::string& value) {
  // HRESULT is 32 bits on both platforms but not the same C type.
  std::printf("%*s%s [%08X] %s\n", depth * 2, "", key, static_cast<unsigned>(static_cast<uint32_t>(hr)),
              value.c_str());
}

template <class T>
void Text(int depth, const char* key, T* obj, HRESULT (STDMETHODCALLTYPE T::*get)(BSTR*)) {
  Bstr s;
  HRESULT hr = (obj->*get)(s.put());
  Line(depth, key, hr, Show(Utf8(s.get())));
}

template <class T, class V>
void Number(int depth, const char* key, T* obj, HRESULT (STDMETHODCALLTYPE T::*get)(V*)) {
  V v = 0;
  HRESULT hr = (obj->*get)(&v);
  Line(depth, key, hr, std::to_string(static_cast<long long>(v)));
}

std::string Bytes(IEMSDataObject* data) {
  std::string out;
  if (data == nullptr) return out;
  VARIANT v;
  VariantInit(&v);
  if (SUCCEEDED(data->get_Data(&v)) && v.vt == (VT_ARRAY | VT_UI1) && v.parray != nullptr) {
    LONG lo = 0, hi = -1;
    SafeArrayGetLBound(v.parray, 1, &lo);
    SafeArrayGetUBound(v.parray, 1, &hi);
    void* p = nullptr;
    if (hi >= lo && SUCCEEDED(SafeArrayAccessData(v.parray, &p))) {
      out.assign(static_cast<const char*>(p), static_cast<size_t>(hi - lo + 1));
      SafeArrayUnaccessData(v.parray);
    }
  }
  VariantClear(&v);
  return out;
}

void Data(int depth, const char* key, HRESULT hr, IEMSDataObject* data) {
  Line(depth, key, hr, data != nullptr ? Show(Bytes(data)) : "none");
}

HRESULT DataFromBytes(const std::string& bytes, Ref<IEMSDataObject>* out) {
  HRESULT hr = Create(CLSID_EMSDataObject, out);
  if (FAILED(hr)) return hr;
  VARIANT v;
  VariantInit(&v);
  v.vt = VT_ARRAY | VT_UI1;
  v.parray = SafeArrayCreateVector(VT_UI1, 0, static_cast<ULONG>(bytes.size()));
  void* p = nullptr;
  if (v.parray != nullptr && SUCCEEDED(SafeArrayAccessData(v.parray, &p))) {
    if (!bytes.empty()) std::copy(bytes.begin(), bytes.end(), static_cast<char*>(p));
    SafeArrayUnaccessData(v.parray);
  }
  hr = (*out)->CreateDataArray(v, 0);
  VariantClear(&v);
  return hr;
}

// The data object on its own: clone, narrow, extract, copy.
void DumpDataObject(IEMSDataObject* data) {
  Number(1, "DataSize", data, &IEMSDataObject::get_DataSize);
  Ref<IEMSDataObject> clone;
  HRESULT hr = data->Clone(clone.put());
  Line(1, "Clone", hr, clone ? "ok" : "none");
  if (!clone) return;
  ULONG size = 0;
  clone->get_DataSize(&size);
  Line(1, "put_Position", clone->put_Position(size / 3), "");
  Line(1, "put_Length", clone->put_Length(size / 3 < 40 ? size / 3 : 40), "");
  Number(1, "Position", clone.get(), &IEMSDataObject::get_Position);
  Number(1, "Length", clone.get(), &IEMSDataObject::get_Length);
  Ref<IEMSDataObject> block;
  hr = clone->ExtractBlockAsData(block.put());
  Data(1, "ExtractBlockAsData", hr, block.get());
  Ref<IEMSDataObject> copy;
  Create(CLSID_EMSDataObject, &copy);
  hr = copy->CopyFrom(block.get());
  Data(1, "CopyFrom", hr, copy.get());
}

bool IsAddressField(const std::string& name) {
  for (const char* n : {"from", "to", "cc", "bcc", "reply-to", "sender", "return-path"}) {
    std::string lower;
    for (char c : name) lower += static_cast<char>(c >= 'A' && c <= 'Z' ? c + 32 : c);
    if (lower == n) return true;
  }
  return false;
}

void DumpAttributes(int depth, IEMSMimeAttributes* attrs, IEMSHeaderCharset* charset) {
  LONG count = 0;
  HRESULT chr = attrs->get_AttributesCount(&count);
  Line(depth, "AttributesCount", chr, std::to_string(count));
  for (LONG i = 0; i < count; ++i) {
    Ref<IEMSMimeAttribute> a;
    HRESULT hr = attrs->get_Attribute(i, a.put());
    Line(depth, "Attribute", hr, std::to_string(i));
    if (!a) continue;
    Text(depth + 1, "Name", a.get(), &IEMSMimeAttribute::get_Name);
    Text(depth + 1, "RawValue", a.get(), &IEMSMimeAttribute::get_RawValue);
    Text(depth + 1, "DecodedValue", a.get(), &IEMSMimeAttribute::get_DecodedValue);
    Number(depth + 1, "CodePage", a.get(), &IEMSMimeAttribute::get_CodePage);
    Number(depth + 1, "Encoding", a.get(), &IEMSMimeAttribute::get_Encoding);
    Text(depth + 1, "AssembleAttribute", a.get(), &IEMSMimeAttribute::AssembleAttribute);
    Bstr name, value;
    a->get_Name(name.put());
    a->get_DecodedValue(value.put());
    if (Utf8(name.get()) == "charset") {
      LONG cp = 0;
      HRESULT cphr = charset->CharsetToCodePage(value.get(), &cp);
      Line(depth + 1, "CharsetToCodePage", cphr, std::to_string(cp));
      Bstr back;
      HRESULT chr = charset->CodePageToCharset(cp, back.put());
      Line(depth + 1, "CodePageToCharset", chr, Show(Utf8(back.get())));
    }
  }
  Text(depth, "AssembleAttributes", attrs, &IEMSMimeAttributes::AssembleAttributes);
}

void DumpField(int depth, IEMSMessageParameter* field, IEMSHeaderCharset* charset) {
  Text(depth, "Name", field, &IEMSMessageParameter::get_Name);
  Text(depth + 1, "RawData", field, &IEMSMessageParameter::get_RawData);
  Text(depth + 1, "UnfoldedData", field, &IEMSMessageParameter::get_UnfoldedData);
  Text(depth + 1, "DecodedData", field, &IEMSMessageParameter::get_DecodedData);
  Text(depth + 1, "AssembleHeader", field, &IEMSMessageParameter::AssembleHeader);
  Bstr name;
  field->get_Name(name.put());
  if (IsAddressField(Utf8(name.get()))) {
    Ref<IEMSHeaderMailboxes> boxes;
    HRESULT hr = field->get_HeaderMailboxes(boxes.put());
    Line(depth + 1, "HeaderMailboxes", hr, boxes ? "ok" : "none");
    if (boxes) {
      LONG count = 0;
      HRESULT chr = boxes->get_Count(&count);
      Line(depth + 2, "Count", chr, std::to_string(count));
      for (LONG i = 0; i < count && i < 50; ++i) {
        Bstr a, b, c, d;
        HRESULT h1 = boxes->get_MailboxName(i, a.put());
        HRESULT h2 = boxes->get_MailboxAddress(i, b.put());
        HRESULT h3 = boxes->get_DecodedMailbox(i, c.put());
        HRESULT h4 = boxes->get_EncodedMailbox(i, d.put());
        Line(depth + 2, "MailboxName", h1, Show(Utf8(a.get())));
        Line(depth + 2, "MailboxAddress", h2, Show(Utf8(b.get())));
        Line(depth + 2, "DecodedMailbox", h3, Show(Utf8(c.get())));
        Line(depth + 2, "EncodedMailbox", h4, Show(Utf8(d.get())));
      }
      Text(depth + 2, "DecodedMailboxes", boxes.get(), &IEMSHeaderMailboxes::get_DecodedMailboxes);
      Text(depth + 2, "AssembleMailboxes", boxes.get(), &IEMSHeaderMailboxes::AssembleMailboxes);
    }
    Ref<IEMSHeaderMailbox> box;
    hr = field->get_HeaderMailbox(box.put());
    Line(depth + 1, "HeaderMailbox", hr, box ? "ok" : "none");
    if (box) {
      Text(depth + 2, "Name", box.get(), &IEMSHeaderMailbox::get_Name);
      Text(depth + 2, "Address", box.get(), &IEMSHeaderMailbox::get_Address);
      Text(depth + 2, "AssembleMailbox", box.get(), &IEMSHeaderMailbox::AssembleMailbox);
    }
  }
  Ref<IEMSMimeAttributes> attrs;
  HRESULT hr = field->get_Attributes(attrs.put());
  if (attrs) {
    DumpAttributes(depth + 1, attrs.get(), charset);
  } else {
    Line(depth + 1, "Attributes", hr, "none");
  }
}

void DumpHeaders(int depth, IEMSMessageParameters* headers, IEMSHeaderCharset* charset) {
  LONG count = 0;
  HRESULT chr = headers->get_ParamCount(&count);
  Line(depth, "ParamCount", chr, std::to_string(count));
  for (LONG i = 0; i < count && i < 200; ++i) {
    Ref<IEMSMessageParameter> field;
    HRESULT hr = headers->get_Parameter(i, field.put());
    if (!field) {
      Line(depth, "Parameter", hr, "none");
      continue;
    }
    DumpField(depth, field.get(), charset);
  }
  Text(depth, "AssembleParameters", headers, &IEMSMessageParameters::AssembleParameters);
}

// The part tree, depth first with an explicit list, with each leaf decoded
// through the part, through the decoder, and encoded again into a new part.
void DumpParts(IEMSMimePart* root, IEMSHeaderCharset* charset) {
  Ref<IEMSMimePartDecoder> decoder;
  Ref<IEMSMimePartEncoder> encoder;
  Create(CLSID_EMSMimePartDecoder, &decoder);
  Create(CLSID_EMSMimePartEncoder, &encoder);
  std::vector<std::pair<IEMSMimePart*, int>> work;
  root->AddRef();
  work.emplace_back(root, 1);
  while (!work.empty()) {
    IEMSMimePart* part = work.back().first;
    int depth = work.back().second;
    work.pop_back();
    Text(depth, "Part", part, &IEMSMimePart::get_MimeContentTypeString);
    Number(depth + 1, "MimeType", part, &IEMSMimePart::get_MimeType);
    Number(depth + 1, "MimeSubType", part, &IEMSMimePart::get_MimeSubType);
    Number(depth + 1, "IsAttachPart", part, &IEMSMimePart::get_IsAttachPart);
    Text(depth + 1, "AttachName", part, &IEMSMimePart::get_AttachName);
    Ref<IEMSMessageParameters> headers;
    if (SUCCEEDED(part->get_Headers(headers.put())) && headers)
      DumpHeaders(depth + 1, headers.get(), charset);
    Ref<IEMSDataObject> body;
    HRESULT hr = part->get_BodyObject(body.put());
    Data(depth + 1, "BodyObject", hr, body.get());
    Ref<IEMSMimeParts> children;
    LONG count = 0;
    if (SUCCEEDED(part->get_MimeParts(children.put())) && children) children->get_PartsCount(&count);
    Line(depth + 1, "PartsCount", S_OK, std::to_string(count));
    if (count == 0) {
      Ref<IEMSDataObject> decoded;
      hr = part->get_DecodedBinary(decoded.put());
      Data(depth + 1, "DecodedBinary", hr, decoded.get());
      Text(depth + 1, "DecodedBody", part, &IEMSMimePart::get_DecodedBody);
      Ref<IEMSDataObject> viaDecoder;
      hr = decoder->DecodePart(part, viaDecoder.put());
      Data(depth + 1, "DecodePart", hr, viaDecoder.get());
      if (decoded) {
        Ref<IEMSMimePart> fresh;
        Create(CLSID_EMSMimePart, &fresh);
        Bstr type;
        part->get_MimeContentTypeString(type.put());
        Ref<IEMSMessageParameter> field;
        fresh->CreateHeader(Bstr("Content-Type").get(), field.put());
        if (field) field->put_DecodedData(type.get());
        fresh->put_BodyObject(decoded.get());
        Bstr name;
        part->get_AttachName(name.put());
        hr = encoder->EncodePart(fresh.get(), name.get());
        Ref<IEMSDataObject> encoded;
        HRESULT ahr = fresh->AssemblePartObject(encoded.put());
        Line(depth + 1, "EncodePart", hr, "");
        Data(depth + 1, "AssemblePartObject", ahr, encoded.get());
      }
    }
    for (LONG i = count - 1; i >= 0; --i) {
      IEMSMimePart* child = nullptr;
      if (SUCCEEDED(children->get_Part(i, &child)) && child != nullptr) work.emplace_back(child, depth + 1);
    }
    part->Release();
  }
}

void DumpMessage(IEMSMessageParser* msg, IEMSHeaderCharset* charset) {
  Line(0, "IsMimeMessage", msg->IsMimeMessage(), "");
  Number(0, "Size", msg, &IEMSMessageParser::get_Size);
  Text(0, "Subject", msg, &IEMSMessageParser::get_Subject);
  Text(0, "SenderName", msg, &IEMSMessageParser::get_SenderName);
  Text(0, "SenderEmail", msg, &IEMSMessageParser::get_SenderEmail);
  Text(0, "RecipientName", msg, &IEMSMessageParser::get_RecipientName);
  Text(0, "RecipientEmail", msg, &IEMSMessageParser::get_RecipientEmail);
  for (const char* name : {"Date", "Message-ID", "Content-Type"}) {
    Bstr value;
    HRESULT hr = msg->get_HeaderString(Bstr(name).get(), value.put());
    Line(0, name, hr, Show(Utf8(value.get())));
  }
  Bstr rawSubject;
  Ref<IEMSMessageParameter> subject;
  if (SUCCEEDED(msg->FindHeader(Bstr("Subject").get(), subject.put())) && subject) {
    subject->get_UnfoldedData(rawSubject.put());
    Bstr parsed;
    HRESULT hr = charset->ParseHeader(rawSubject.get(), parsed.put());
    Line(0, "HeaderCharset.ParseHeader", hr, Show(Utf8(parsed.get())));
    Number(0, "HeaderCodePage", charset, &IEMSHeaderCharset::get_HeaderCodePage);
  }
  Text(0, "Body", msg, &IEMSMessageParser::get_Body);
  Text(0, "TextBody", msg, &IEMSMessageParser::get_TextBody);
  Text(0, "HTMLBody", msg, &IEMSMessageParser::get_HTMLBody);
  Text(0, "AllHeadersString", msg, &IEMSMessageParser::get_AllHeadersString);
  Ref<IEMSMessageParameters> headers;
  Line(0, "Headers", msg->get_Headers(headers.put()), "");
  if (headers) DumpHeaders(1, headers.get(), charset);
  Ref<IEMSMessageParameters> mimeHeaders;
  Line(0, "MimeHeaders", msg->get_MimeHeaders(mimeHeaders.put()), "");
  if (mimeHeaders) DumpHeaders(1, mimeHeaders.get(), charset);
  Ref<IEMSMimePart> root;
  HRESULT rhr = msg->get_MimePart(root.put());
  Line(0, "MimePart", rhr, root ? "ok" : "none");
  if (root) DumpParts(root.get(), charset);
  Ref<IEMSMimeParts> attachments;
  HRESULT hr = msg->get_AttachParts(attachments.put());
  LONG count = 0;
  if (attachments) attachments->get_PartsCount(&count);
  Line(0, "AttachParts", hr, std::to_string(count));
  for (LONG i = 0; i < count; ++i) {
    Ref<IEMSMimePart> part;
    if (SUCCEEDED(attachments->get_Part(i, part.put())) && part)
      Text(1, "AttachName", part.get(), &IEMSMimePart::get_AttachName);
  }
  Ref<IEMSDataObject> assembled;
  hr = msg->AssembleObject(assembled.put());
  Data(0, "AssembleObject", hr, assembled.get());
  Text(0, "FullMessage", msg, &IEMSMessageParser::get_FullMessage);
}

// The boundaries of a part tree, so that generated ones can be replaced.
void CollectBoundaries(IEMSMimePart* root, std::vector<std::string>* out) {
  std::vector<IEMSMimePart*> work{root};
  root->AddRef();
  while (!work.empty()) {
    IEMSMimePart* part = work.back();
    work.pop_back();
    Ref<IEMSMessageParameter> field;
    Ref<IEMSMimeAttribute> boundary;
    if (SUCCEEDED(part->FindHeader(Bstr("Content-Type").get(), field.put())) && field &&
        SUCCEEDED(field->FindAttribute(Bstr("boundary").get(), boundary.put())) && boundary) {
      Bstr value;
      boundary->get_DecodedValue(value.put());
      if (SysStringLen(value.get()) > 0) out->push_back(Utf8(value.get()));
    }
    Ref<IEMSMimeParts> children;
    LONG count = 0;
    if (SUCCEEDED(part->get_MimeParts(children.put())) && children) children->get_PartsCount(&count);
    for (LONG i = 0; i < count; ++i) {
      IEMSMimePart* child = nullptr;
      if (SUCCEEDED(children->get_Part(i, &child)) && child != nullptr) work.push_back(child);
    }
    part->Release();
  }
}

// Builds a message from scratch through every setter and assembles it; the
// generated boundaries depend on the clock, so they are printed as names.
void Compose(IEMSHeaderCharset* charset) {
  std::printf("== composed\n");
  Ref<IEMSMessageParser> msg;
  Create(CLSID_EMSMessageParser, &msg);
  Line(0, "Subject put",
       msg->put_Subject(Bstr("Gr\xC3\xBC\xC3\x9F"
                             "e aus K\xC3\xB6ln")
                            .get()),
       "");
  Line(0, "SenderName put", msg->put_SenderName(Bstr("J\xC3\xBCrgen M\xC3\xBCller").get()), "");
  Line(0, "SenderEmail put", msg->put_SenderEmail(Bstr("jm@example.org").get()), "");
  Line(0, "RecipientName put", msg->put_RecipientName(Bstr("Anna Berg").get()), "");
  Line(0, "RecipientEmail put", msg->put_RecipientEmail(Bstr("anna@example.com").get()), "");
  Line(0, "HeaderString put",
       msg->put_HeaderString(Bstr("X-Note").get(), Bstr("caf\xC3\xA9 \"quoted\"").get()), "");
  Line(0, "TextBody put", msg->put_TextBody(Bstr("Hallo Anna,\r\ndie Zahlen: \xE2\x82\xAC 12.\r\n").get()),
       "");
  Line(0, "HTMLBody put", msg->put_HTMLBody(Bstr("<p>Hallo Anna, \xE2\x82\xAC 12.</p>").get()), "");
  Ref<IEMSDataObject> attachment;
  DataFromBytes(std::string("\x00\x01\x02\xFF figures\r\n", 14), &attachment);
  Line(0, "AddAttach", msg->AddAttach(Bstr("Zahlen f\xC3\xBCr Q3.bin").get(), attachment.get()), "");
  Ref<IEMSDataObject> assembled;
  HRESULT hr = msg->AssembleObject(assembled.put());
  std::string text = Bytes(assembled.get());
  std::vector<std::string> boundaries;
  Ref<IEMSMimePart> root;
  if (SUCCEEDED(msg->get_MimePart(root.put())) && root) CollectBoundaries(root.get(), &boundaries);
  for (size_t b = 0; b < boundaries.size(); ++b) {
    const std::string name = "BOUNDARY" + std::to_string(b);
    for (size_t at = text.find(boundaries[b]); at != std::string::npos;
         at = text.find(boundaries[b], at + name.size())) {
      text.replace(at, boundaries[b].size(), name);
    }
  }
  Line(0, "boundaries", S_OK, std::to_string(boundaries.size()));
  Line(0, "AssembleObject", hr, "");
  std::printf("%s\n", text.c_str());
  // Parsed again, the composed message gives the same views.
  Ref<IEMSMessageParser> again;
  Create(CLSID_EMSMessageParser, &again);
  Line(0, "ParseObject", again->ParseObject(assembled.get()), "");
  Text(0, "Subject", again.get(), &IEMSMessageParser::get_Subject);
  Text(0, "SenderName", again.get(), &IEMSMessageParser::get_SenderName);
  Text(0, "TextBody", again.get(), &IEMSMessageParser::get_TextBody);
  Text(0, "HTMLBody", again.get(), &IEMSMessageParser::get_HTMLBody);
  Bstr assembledHeader;
  hr = charset->AssembleHeader(Bstr("Gr\xC3\xBC\xC3\x9F"
                                    "e")
                                   .get(),
                               assembledHeader.put());
  Line(0, "HeaderCharset.AssembleHeader", hr, Show(Utf8(assembledHeader.get())));
}

std::string ReadFile(const char* path, bool* ok) {
  std::string bytes;
  FILE* f = std::fopen(path, "rb");
  *ok = f != nullptr;
  if (f == nullptr) return bytes;
  char buf[65536];
  size_t n;
  while ((n = std::fread(buf, 1, sizeof buf, f)) > 0) bytes.append(buf, n);
  std::fclose(f);
  return bytes;
}

}  // namespace

int main(int argc, char** argv) {
#if defined(_WIN32)
  // The same bytes as on Linux: no LF to CR LF on the way out.
  _setmode(_fileno(stdout), _O_BINARY);
#endif
  Ref<IEMSHeaderCharset> charset;
  if (FAILED(Create(CLSID_EMSHeaderCharset, &charset))) {
    std::fprintf(stderr, "views_dump: cannot create the charset object\n");
    return 1;
  }
  int status = 0;
  for (int i = 1; i < argc; ++i) {
    std::string path = argv[i];
    std::printf("== %s\n", path.substr(path.find_last_of("/\\") + 1).c_str());
    bool ok = false;
    std::string bytes = ReadFile(argv[i], &ok);
    if (!ok) {
      std::fprintf(stderr, "views_dump: cannot read %s\n", argv[i]);
      status = 1;
      continue;
    }
    Ref<IEMSDataObject> data;
    HRESULT hr = DataFromBytes(bytes, &data);
    Line(0, "CreateDataArray", hr, "");
    DumpDataObject(data.get());
    Ref<IEMSMessageParser> msg;
    Create(CLSID_EMSMessageParser, &msg);
    Line(0, "ParseObject", msg->ParseObject(data.get()), "");
    DumpMessage(msg.get(), charset.get());
  }
  Compose(charset.get());
  std::printf("DONE\n");
  return status;
}
