#include "src/headers/message_parameter.h"

#include <algorithm>
#include <cstdint>

#include "src/headers/name_index.h"

#include "src/headers/header_mailbox.h"
#include "src/headers/header_mailboxes.h"
#include "src/headers/header_text.h"
#include "src/headers/mime_attribute.h"
#include "src/headers/mime_attributes.h"
#include "src/platform/clock.h"
#include "src/platform/codepage.h"
#include "src/platform/random.h"
#include "src/com/class_instance.h"
#include "src/com/creators.h"

namespace pv {

HRESULT CreateEMSMessageParameter(IUnknown* outer, REFIID riid, void** ppv) {
  return CreateInstance<MessageParameter>(outer, riid, ppv);
}

namespace {

// Several values are shown as one text joined by an empty line, which can
// never occur inside a single header value.
constexpr std::string_view kSeparator = "\r\n\r\n";
constexpr WStringView kWideSeparator = OLESTR("\r\n\r\n");

// Calls `each` with every piece of `text` cut at the separator (an empty
// text is one empty piece).
template <class View, class F>
void ForEachPiece(View text, View separator, F each) {
  size_t from = 0;
  for (;;) {
    size_t at = text.find(separator, from);
    if (at == View::npos) break;
    each(text.substr(from, at - from));
    from = at + separator.size();
  }
  each(text.substr(from));
}

std::string JoinValues(const std::vector<std::string>& values) {
  size_t size = 0;
  for (const std::string& value : values) size += value.size() + kSeparator.size();
  std::string joined;
  joined.reserve(size);
  for (size_t i = 0; i < values.size(); ++i) {
    if (i > 0) joined.append(kSeparator);
    joined.append(values[i]);
  }
  return joined;
}

HRESULT ReturnNarrow(std::string_view text, BSTR* out) { return ReturnBstr(AnsiToWide(text), out); }

Bstr WideBstr(std::string_view ascii) { return Bstr(WidenAscii(ascii)); }

}  // namespace

MessageParameter::MessageParameter(IUnknown* outer)
    : ComObject(outer), defaultCodePage_(static_cast<LONG>(AnsiCodePage())) {}

HeaderCharset* MessageParameter::Charset() {
  if (!charset_ && FAILED(MakeObject(&charset_))) throw std::bad_alloc();
  return charset_.get();
}

// The list is the library's own while parameters wait (a list put in
// place takes them at once).
IEMSMimeAttributes* MessageParameter::Attributes() {
  if (!attributes_) {
    ComPtr<IEMSMimeAttributes> list;
    if (FAILED(CreateClassInstance(CLSID_EMSMimeAttributes, &list))) throw std::bad_alloc();
    attributes_.Reset(std::move(list));
  }
  if (parametersPending_) {
    parametersPending_ = false;
    std::string pending;
    pending.swap(pendingParameters_);
    attributes_->ParseText(pending);  // status ignored
  }
  return attributes_.get();
}

// ---------------------------------------------------------------- values and views
bool MessageParameter::IsContentField() const { return IsContentFieldName(name_); }

std::string MessageParameter::SplitOffParameters(std::string_view value) {
  ParameterSplit split = SplitParameters(value);
  pendingParameters_.assign(split.parameters);
  parametersPending_ = true;
  // A list that exists may be held by a caller: it takes them now.
  if (attributes_) Attributes();
  return std::string(split.value);
}

// Only appends: a waiting decode reads the values it counted, which stay.
void MessageParameter::AppendRawPieces(std::string_view joined) {
  ForEachPiece(joined, kSeparator, [&](std::string_view piece) { values_.emplace_back(piece); });
}

// Every change of the values runs the waiting decodes first, so those that
// wait always apply to the values as they are.
void MessageParameter::RefreshDecodedText(size_t count) {
  if (pendingDecodes_ == 3) DecodeNow();
  pendingDecodeCounts_[pendingDecodes_++] = static_cast<uint32_t>(std::min<size_t>(count, UINT32_MAX));
  // A charset that a caller may hold changes now.
  if (charsetShared_) DecodeNow();
}

void MessageParameter::DecodeNow() {
  const int pending = pendingDecodes_;
  pendingDecodes_ = 0;
  for (int i = 0; i < pending; ++i) DecodeValues(pendingDecodeCounts_[i]);
}

void MessageParameter::DecodeValues(size_t count) {
  WString& decoded = Extras().decoded;
  decoded.clear();
  WString piece;
  for (size_t i = 0; i < count && i < values_.size(); ++i) {
    std::string unfolded = UnfoldHeaderText(values_[i]);
    if (unfolded.empty()) continue;
    HeaderCharset* charset = Charset();
    charset->SetDefaultCodePage(defaultCodePage_);
    charset->Decode(unfolded, &piece);  // status ignored
    defaultCodePage_ = charset->headerCodePage();
    defaultEncoding_ = charset->defaultEncoding();
    if (!decoded.empty()) decoded.append(kWideSeparator);
    decoded.append(piece);
  }
}

HRESULT MessageParameter::ParseHeaderText(std::string_view text) {
  size_t colon = text.find(':');
  if (colon == std::string_view::npos || colon == 0) return E_FAIL;
  FlushDecode();
  values_.clear();
  name_ = std::string(TrimBlanks(text.substr(0, colon)));
  std::string_view value = TrimTrailingLineBreaks(TrimLeadingBlanks(text.substr(colon + 1)));
  values_.push_back(IsContentField() ? SplitOffParameters(value) : std::string(value));
  if (EqualsIgnoreCaseAscii(name_, "Content-Type")) {
    ParseContentTypeText(values_.back());
  } else if (EqualsIgnoreCaseAscii(name_, "Content-Disposition")) {
    content_.ParseDispositionText(values_.back());
  }
  RefreshDecodedText();
  return S_OK;
}

void MessageParameter::SetRawDataText(std::string_view text) {
  FlushDecode();
  values_.clear();
  bool content = IsContentField();
  ForEachPiece(text, kSeparator, [&](std::string_view piece) {
    values_.push_back(content ? SplitOffParameters(piece) : std::string(piece));
  });
  RefreshDecodedText();
}

void MessageParameter::SetUnfoldedDataText(std::string_view text) {
  FlushDecode();
  values_.clear();
  ForEachPiece(text, kSeparator,
               [&](std::string_view piece) { values_.push_back(FoldHeaderText(piece, name_.size())); });
  RefreshDecodedText();
}

WString MessageParameter::AssembledAttributes() {
  if (!attributes_ && !parametersPending_) return WString();
  Bstr text;
  Attributes()->AssembleAttributes(text.put());  // left untouched when there are none
  return WString(text.view());
}

std::string MessageParameter::AssembledAttributesNarrow() {
  if (!attributes_ && !parametersPending_) return std::string();
  Attributes();
  return attributes_->AssembledText();
}

// A "Content-" value that ends in a line-break byte kept it only because a
// ";" followed it (a parsed line loses its trailing ones): the ";" is
// written again, so that the value reads back whole.
std::string MessageParameter::ValueLine(const std::string& value) const {
  std::string line = name_ + ": " + value;
  if (!value.empty() && IsLineBreakChar(value.back()) && IsContentField()) line.push_back(';');
  return line;
}

std::string MessageParameter::HeaderLines() const {
  std::string lines;
  for (const std::string& value : values_) {
    if (!lines.empty()) lines.append("\r\n");
    lines.append(ValueLine(value));
  }
  return lines;
}

HRESULT MessageParameter::DoParseHeader(BSTR bszVal) { return ParseHeaderText(BstrToAnsi(bszVal)); }

HRESULT MessageParameter::DoAddChainHeader(IEMSMessageParameter* pVal) {
  if (pVal == nullptr) return E_POINTER;
  HRESULT hr = AppendChainPieces(pVal);
  if (hr == S_OK) RefreshDecodedText();
  return hr;
}

HRESULT MessageParameter::AppendChainPieces(IEMSMessageParameter* other) {
  FieldRef chained(other);
  if (MessageParameter* own = chained->OwnField()) {
    if (!EqualsIgnoreCaseAscii(own->name_, name_)) return E_INVALIDARG;
    std::string raw;
    HRESULT hr = own->RawDataNarrow(&raw);
    if (FAILED(hr)) return hr;
    AppendRawPieces(raw);
    return S_OK;
  }
  Bstr otherName;
  HRESULT hr = other->get_Name(otherName.put());
  if (FAILED(hr)) return hr;
  if (!EqualsIgnoreCaseAscii(WideToAnsi(otherName.view()), name_)) return E_INVALIDARG;
  Bstr raw;
  other->get_RawData(raw.put());
  AppendRawPieces(WideToAnsi(raw.view()));
  return S_OK;
}

HRESULT MessageParameter::AppendChainDeferred(IEMSMessageParameter* other) {
  return Guard([&] {
    size_t before = values_.size();
    HRESULT hr = AppendChainPieces(other);
    if (hr != S_OK) return hr;
    valuesBeforeLastChain_ = before;
    chainPending_ = true;
    return S_OK;
  });
}

// Within one run of deferred chainings nothing else touches the field, so
// each refresh would start from the default code page and encoding that
// the one before it left. Those depend on the earlier state only where no
// value names a charset, and there they are that state unchanged. So one
// refresh over the values that the last chaining found, then one over all
// of them, gives what a refresh after every chaining gives, in linear time.
void MessageParameter::FinishChaining() {
  if (!chainPending_) return;
  chainPending_ = false;
  RefreshDecodedText(valuesBeforeLastChain_);
  RefreshDecodedText();
}

// The parameters follow the first line: they came with the first
// occurrence, and a later occurrence written after them would take them
// over when the block is read back (each occurrence is read with the
// parameters on its own line).
void MessageParameter::AssembleParts(bool hasParameters, std::string* lines, std::string* laterLines) {
  *lines = HeaderLines();
  laterLines->clear();
  if (!values_.empty()) {
    const size_t firstEnd = ValueLine(values_.front()).size();
    *laterLines = lines->substr(firstEnd);
    lines->resize(firstEnd);
    return;
  }
  // A field without values still writes a proper line when it has a
  // content state or parameters to write.
  std::string state;
  if (EqualsIgnoreCaseAscii(name_, "Content-Type") && !content_.typeName.empty()) {
    state = content_.ContentType();
  } else if (EqualsIgnoreCaseAscii(name_, "Content-Disposition")) {
    state = content_.dispositionType;
  }
  if (!state.empty() || hasParameters) *lines = name_ + ": " + state;
}

HRESULT MessageParameter::DoAssembleHeader(BSTR* pVal) {
  const WString parameters = AssembledAttributes();
  std::string lines;
  std::string laterLines;
  AssembleParts(!parameters.empty(), &lines, &laterLines);
  return ReturnBstr(AnsiToWide(lines) + parameters + AnsiToWide(laterLines), pVal);
}

HRESULT MessageParameter::DoFindAttribute(BSTR bszName, IEMSMimeAttribute** ppVal) {
  if (bszName == nullptr) return E_POINTER;
  return Attributes()->FindAttribute(bszName, ppVal);
}

HRESULT MessageParameter::DoCreateAttribute(BSTR bszName, IEMSMimeAttribute** ppVal) {
  return Attributes()->CreateAttribute(bszName, ppVal);
}

HRESULT MessageParameter::DoRemoveAttribute(BSTR bszName) {
  if (bszName == nullptr) return E_POINTER;
  Attributes()->RemoveAttribute(bszName);
  return S_OK;
}

// The clone takes the name and RawData as they read through the interface.
HRESULT MessageParameter::DoClone(IEMSMessageParameter** ppVal) {
  FlushDecode();
  ComPtr<MessageParameter> clone;
  HRESULT hr = MakeObject(&clone);
  if (FAILED(hr)) return hr;
  std::string raw;
  hr = RawDataNarrow(&raw);
  if (FAILED(hr)) return hr;
  clone->name_ = AnsiRoundTrip(name_);
  clone->SetRawDataText(raw);
  clone->PutDefaultCodePage(defaultCodePage_);
  // The clone's default encoding receives the code page: kept as it is.
  clone->PutDefaultEncoding(defaultCodePage_);
  *ppVal = clone.detach();
  return S_OK;
}

HRESULT MessageParameter::GetName(BSTR* pVal) { return ReturnNarrow(name_, pVal); }

HRESULT MessageParameter::PutName(BSTR newVal) {
  name_ = BstrToAnsi(newVal);
  return S_OK;
}

WString MessageParameter::RawDataWide() {
  WString raw = AnsiToWide(JoinValues(values_));
  if (IsContentField()) raw.append(AssembledAttributes());
  return raw;
}

HRESULT MessageParameter::GetRawData(BSTR* pVal) { return ReturnBstr(RawDataWide(), pVal); }

HRESULT MessageParameter::PutRawData(BSTR newVal) {
  SetRawDataText(BstrToAnsi(newVal));
  return S_OK;
}

HRESULT MessageParameter::GetUnfoldedData(BSTR* pVal) {
  std::string text;
  for (const std::string& value : values_) {
    if (!text.empty()) text.append(kSeparator);
    text.append(UnfoldHeaderText(value));
  }
  return ReturnNarrow(text, pVal);
}

HRESULT MessageParameter::PutUnfoldedData(BSTR newVal) {
  SetUnfoldedDataText(BstrToAnsi(newVal));
  return S_OK;
}

HRESULT MessageParameter::GetDecodedData(BSTR* pVal) {
  FlushDecode();
  return ReturnBstr(Extras().decoded, pVal);
}

// The caller's text becomes the decoded text as it is; the values are its
// pieces encoded in the field's code page and encoding.
HRESULT MessageParameter::PutDecodedData(BSTR newVal) {
  FlushDecode();
  WString& decoded = Extras().decoded;
  decoded = WString(View(newVal));
  values_.clear();
  WString encoded;
  HeaderCharset* charset = Charset();
  ForEachPiece(WStringView(decoded), kWideSeparator, [&](WStringView piece) {
    charset->SetDefaultCodePage(defaultCodePage_);
    charset->SetDefaultEncoding(defaultEncoding_);
    charset->Encode(piece, &encoded);  // status ignored
    std::string value = WideToAnsi(encoded);
    if (!value.empty()) values_.push_back(std::move(value));
  });
  return S_OK;
}

HRESULT MessageParameter::GetAttributes(IEMSMimeAttributes** ppVal) {
  *ppVal = Attributes();
  (*ppVal)->AddRef();
  return S_OK;
}

// The replaced list was never handed out while parameters wait for it, so
// they go with it.
HRESULT MessageParameter::PutAttributes(IEMSMimeAttributes* pVal) {
  if (pVal == nullptr) return E_POINTER;
  if (pVal == attributes_.get()) return S_OK;
  attributes_.Reset(pVal);
  pendingParameters_.clear();
  parametersPending_ = false;
  return S_OK;
}

// ---------------------------------------------------------------- mailboxes
// The mailbox objects are made here and fed the field's narrow text
// directly; what they return is what the interface parse of the widened
// text would give.
HRESULT MessageParameter::GetHeaderMailbox(IEMSHeaderMailbox** ppVal) {
  ComPtr<HeaderMailbox> mailbox;
  HRESULT hr = MakeObject(&mailbox);
  if (FAILED(hr)) return hr;
  if (values_.empty()) {
    *ppVal = mailbox.detach();
    return S_FALSE;
  }
  mailbox->Parse(AnsiRoundTrip(UnfoldHeaderText(values_.front())));
  *ppVal = mailbox.detach();
  return S_OK;
}

HRESULT MessageParameter::PutHeaderMailbox(IEMSHeaderMailbox* pVal) {
  if (pVal == nullptr) return E_POINTER;
  FlushDecode();
  pVal->put_DefaultCodePage(defaultCodePage_);
  pVal->put_DefaultEncoding(defaultEncoding_);
  Bstr text;
  if (FAILED(pVal->AssembleMailbox(text.put())) || text.view().empty()) return E_FAIL;
  SetUnfoldedDataText(WideToAnsi(text.view()));  // folded like UnfoldedData put
  return S_OK;
}

HRESULT MessageParameter::GetHeaderMailboxes(IEMSHeaderMailboxes** ppVal) {
  ComPtr<HeaderMailboxes> mailboxes;
  HRESULT hr = MakeObject(&mailboxes);
  if (FAILED(hr)) return hr;
  if (values_.empty()) {
    *ppVal = mailboxes.detach();
    return S_FALSE;
  }
  mailboxes->ParseAnsi(UnfoldHeaderText(values_.front()), true);
  *ppVal = mailboxes.detach();
  return S_OK;
}

HRESULT MessageParameter::PutHeaderMailboxes(IEMSHeaderMailboxes* pVal) {
  if (pVal == nullptr) return E_POINTER;
  FlushDecode();
  pVal->put_DefaultCodePage(defaultCodePage_);
  pVal->put_DefaultEncoding(defaultEncoding_);
  Bstr text;
  if (FAILED(pVal->AssembleMailboxes(text.put())) || text.view().empty()) return E_FAIL;
  SetRawDataText(WideToAnsi(text.view()));  // stored as it is: not folded
  return S_OK;
}

// ---------------------------------------------------------------- plain properties
HRESULT MessageParameter::GetHeaderCharset(IEMSHeaderCharset** ppVal) {
  FlushDecode();
  *ppVal = Charset();
  (*ppVal)->AddRef();
  charsetShared_ = true;
  return S_OK;
}

HRESULT MessageParameter::PutDefaultCodePage(LONG newVal) {
  FlushDecode();
  defaultCodePage_ = newVal;
  return S_OK;
}

HRESULT MessageParameter::GetDefaultCodePage(LONG* pVal) {
  FlushDecode();
  *pVal = defaultCodePage_;
  return S_OK;
}

HRESULT MessageParameter::PutDefaultEncoding(LONG newVal) {
  FlushDecode();
  defaultEncoding_ = newVal;
  return S_OK;
}

HRESULT MessageParameter::GetDefaultEncoding(LONG* pVal) {
  FlushDecode();
  *pVal = defaultEncoding_;
  return S_OK;
}

// ---------------------------------------------------------------- content type
void MessageParameter::ParseContentTypeText(std::string_view text) {
  content_.ResetContentType();
  ContentTypePut(text);
}

// A field without values takes the text as its first value, so that a new
// "Content-Type" field gets its value this way.
void MessageParameter::ContentTypePut(std::string_view text) {
  FlushDecode();
  if (values_.empty()) {
    values_.emplace_back(text);
    RefreshDecodedText();
  }
  content_.ParseContentTypeText(text);
}

HRESULT MessageParameter::DoParseContentType(BSTR bszVal) {
  content_.ResetContentType();
  if (bszVal == nullptr) return E_POINTER;
  ContentTypePut(BstrToAnsi(bszVal));
  return S_OK;
}

HRESULT MessageParameter::DoAssembleContentType(BSTR* pVal) {
  return ReturnBstr(AnsiToWide(content_.ContentType()) + AssembledAttributes(), pVal);
}

HRESULT MessageParameter::CreateBoundary(LONG n, BSTR* pVal) {
  return Guard([&] {
    int first = NextRandom();
    int second = NextRandom();
    Bstr boundary(WidenAscii(MakeBoundary(n, CurrentTimeSeconds(), first, second)));
    if (boundary.is_null()) return E_OUTOFMEMORY;
    put_Boundary(boundary.get());
    // Remembered as it reads back, so that a later Boundary put of another
    // value makes the boundary the caller's.
    std::string stored;
    Extras().generatedBoundary = SUCCEEDED(BoundaryNarrow(&stored)) ? stored : std::string();
    Extras().generatedN = n;
    if (pVal != nullptr) *pVal = boundary.detach();
    return S_OK;
  });
}

HRESULT MessageParameter::GetContentType(BSTR* pVal) { return ReturnNarrow(content_.ContentType(), pVal); }

HRESULT MessageParameter::PutContentType(BSTR newVal) {
  ContentTypePut(BstrToAnsi(newVal));
  return S_OK;
}

HRESULT MessageParameter::GetMimeType(LONG* pVal) {
  *pVal = content_.typeCode;
  return S_OK;
}

HRESULT MessageParameter::PutMimeType(LONG newVal) {
  content_.SetTypeCode(newVal);
  return S_OK;
}

HRESULT MessageParameter::GetMimeTypeName(BSTR* pVal) { return ReturnNarrow(content_.typeName, pVal); }

HRESULT MessageParameter::PutMimeTypeName(BSTR newVal) {
  content_.SetTypeName(BstrToAnsi(newVal));
  return S_OK;
}

HRESULT MessageParameter::GetMimeSubType(LONG* pVal) {
  *pVal = content_.subtypeCode;
  return S_OK;
}

HRESULT MessageParameter::PutMimeSubType(LONG newVal) {
  content_.SetSubtypeCode(newVal);
  return S_OK;
}

HRESULT MessageParameter::GetMimeSubTypeName(BSTR* pVal) { return ReturnNarrow(content_.subtypeName, pVal); }

HRESULT MessageParameter::PutMimeSubTypeName(BSTR newVal) {
  content_.SetSubtypeName(BstrToAnsi(newVal));
  return S_OK;
}

HRESULT MessageParameter::FindNamedAttribute(const char* name, ComPtr<IEMSMimeAttribute>* out) {
  Bstr key = WideBstr(name);
  if (key.is_null()) return E_OUTOFMEMORY;
  HRESULT hr = Attributes()->FindAttribute(key.get(), out->put());
  if (FAILED(hr)) return hr;
  return *out ? S_OK : S_FALSE;
}

HRESULT MessageParameter::SetNamedAttribute(const char* name, BSTR value, bool decoded) {
  Bstr key = WideBstr(name);
  if (key.is_null()) return E_OUTOFMEMORY;
  ComPtr<IEMSMimeAttribute> attribute;
  HRESULT hr = Attributes()->CreateAttribute(key.get(), attribute.put());
  if (attribute) {
    if (decoded) {
      attribute->put_DecodedValue(value);
    } else {
      attribute->put_RawValue(value);
    }
  }
  return hr;
}

HRESULT MessageParameter::GetBoundary(BSTR* pVal) {
  ComPtr<IEMSMimeAttribute> attribute;
  if (FindNamedAttribute("boundary", &attribute) != S_OK) return E_FAIL;
  return attribute->get_RawValue(pVal);
}

HRESULT MessageParameter::PutBoundary(BSTR newVal) { return SetNamedAttribute("boundary", newVal, false); }

// ---------------------------------------------------------------- disposition
HRESULT MessageParameter::DoParseDisposition(BSTR bszVal) {
  content_.dispositionType.clear();
  if (bszVal == nullptr) return E_POINTER;
  content_.ParseDispositionText(BstrToAnsi(bszVal));
  return S_OK;
}

HRESULT MessageParameter::DoAssembleDisposition(BSTR* pVal) {
  return ReturnBstr(AnsiToWide(content_.dispositionType) + AssembledAttributes(), pVal);
}

HRESULT MessageParameter::GetDispositionType(BSTR* pVal) {
  return ReturnNarrow(content_.dispositionType, pVal);
}

HRESULT MessageParameter::PutDispositionType(BSTR newVal) {
  content_.dispositionType = BstrToAnsi(newVal);
  return S_OK;
}

HRESULT MessageParameter::GetFileName(BSTR* pVal) {
  ComPtr<IEMSMimeAttribute> attribute;
  if (FindNamedAttribute("filename", &attribute) != S_OK) return S_OK;  // nothing written
  return attribute->get_DecodedValue(pVal);
}

HRESULT MessageParameter::PutFileName(BSTR newVal) { return SetNamedAttribute("filename", newVal, true); }

// ---------------------------------------------------------------- the library's own entry points
HRESULT MessageParameter::ParseHeaderNarrow(std::string_view ansiText) {
  return Guard([&] {
    std::string scratch;
    return ParseHeaderText(AnsiRoundTrip(ansiText, &scratch));
  });
}

HRESULT MessageParameter::AssembleHeaderNarrow(std::string* out) {
  return Guard([&] {
    const std::string parameters = AssembledAttributesNarrow();
    std::string laterLines;
    AssembleParts(!parameters.empty(), out, &laterLines);
    out->append(parameters).append(laterLines);
    return S_OK;
  });
}

HRESULT MessageParameter::RawDataNarrow(std::string* out) {
  return Guard([&] {
    if (!AnsiKeepsEveryByte()) {
      *out = WideToAnsi(RawDataWide());
      return S_OK;
    }
    *out = JoinValues(values_);
    if (IsContentField()) out->append(AssembledAttributesNarrow());
    return S_OK;
  });
}

HRESULT MessageParameter::SetContentTypeNarrow(std::string_view ansiText) {
  return Guard([&] {
    std::string scratch;
    ContentTypePut(AnsiRoundTrip(ansiText, &scratch));
    return S_OK;
  });
}

HRESULT MessageParameter::BoundaryNarrow(std::string* out) {
  return Guard([&] {
    Attributes();
    if (MimeAttributes* own = attributes_->OwnList()) {
      const MimeAttribute* boundary = own->FindOwn("boundary");
      if (boundary != nullptr) {
        *out = AnsiRoundTrip(boundary->rawValue());
        return S_OK;
      }
      if (!own->Find("boundary")) return E_FAIL;
    }
    Bstr value;
    HRESULT hr = get_Boundary(value.put());
    if (FAILED(hr)) return hr;
    *out = WideToAnsi(value.view());
    return S_OK;
  });
}

HRESULT MessageParameter::BoundaryAsWritten(std::string* out) {
  return Guard([&] {
    Attributes();
    if (MimeAttributes* own = attributes_->OwnList()) {
      if (MimeAttribute* boundary = own->FindOwn("boundary")) {
        std::string written;
        HRESULT hr = boundary->AppendAssembled(&written);  // settles the raw value it writes
        if (FAILED(hr)) return hr;
        *out = AnsiRoundTrip(boundary->rawValue());
        return S_OK;
      }
    }
    return BoundaryNarrow(out);
  });
}

// ---------------------------------------------------------------- as FieldAccess
bool MessageParameter::NameKey(std::string* key) {
  *key = HeaderNameKey(name_);
  return true;
}

std::string MessageParameter::AssembledText() {
  std::string text;
  if (FAILED(AssembleHeaderNarrow(&text))) text.clear();
  return text;
}

std::string MessageParameter::BoundaryText() {
  std::string boundary;
  if (FAILED(BoundaryNarrow(&boundary))) boundary.clear();
  return boundary;
}

std::string MessageParameter::WrittenBoundary() {
  std::string boundary;
  if (FAILED(BoundaryAsWritten(&boundary))) boundary.clear();
  return boundary;
}

bool MessageParameter::HasGeneratedBoundary() {
  if (!extras_ || extras_->generatedBoundary.empty()) return false;
  std::string boundary;
  return SUCCEEDED(BoundaryNarrow(&boundary)) && boundary == extras_->generatedBoundary;
}

HRESULT MessageParameter::RegenerateBoundary(std::string* out) {
  HRESULT hr = CreateBoundary(extras_ ? extras_->generatedN : 0, nullptr);
  if (FAILED(hr)) return hr;
  return BoundaryNarrow(out);
}

}  // namespace pv
