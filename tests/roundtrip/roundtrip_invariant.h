// The round-trip invariant, shared by the roundtrip fuzz target and the
// tests: with A1 = assemble(parse(x)) and A2 = assemble(parse(A1)), A2 is
// A1 byte for byte, and parse(A1) reads as parse(x) did: the same part
// tree, the same header fields (names, decoded values, parameters), the
// same attachment flags and the same decoded bytes in every leaf.
//
// A parse is recorded as a flat list of lines in pre-order (each part says
// how many children follow), so two parses compare as two lists and the
// first differing line names the place.
#ifndef PARCELVANE_TESTS_ROUNDTRIP_ROUNDTRIP_INVARIANT_H
#define PARCELVANE_TESTS_ROUNDTRIP_ROUNDTRIP_INVARIANT_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "parcelvane/parcelvane.h"
#include "src/data/data_access.h"
#include "src/platform/codepage.h"
#include "src/com/com_ptr.h"
#include "src/platform/strings.h"

namespace pv::roundtrip {

inline std::string SpanText(IEMSDataObject* object) {
  DataBytes bytes;
  if (object == nullptr || FAILED(ReadDataBytes(object, &bytes))) return std::string();
  return std::string(bytes.Span());
}

inline std::string Utf8(const Bstr& text) {
  std::string out;
  ToNarrow(kCodePageUtf8, text.view(), &out);
  return out;
}

// Printable form of bytes for a report: controls and high bytes escaped.
inline std::string Shown(std::string_view bytes, size_t limit = 160) {
  static const char kHex[] = "0123456789abcdef";
  std::string out;
  for (size_t i = 0; i < bytes.size() && out.size() < limit; ++i) {
    unsigned char c = static_cast<unsigned char>(bytes[i]);
    if (c == '\r') {
      out += "\\r";
    } else if (c == '\n') {
      out += "\\n";
    } else if (c < 0x20 || c >= 0x7f || c == '\\') {
      out += "\\x";
      out += kHex[c >> 4];
      out += kHex[c & 15];
    } else {
      out += static_cast<char>(c);
    }
  }
  if (out.size() >= limit) out += "...";
  return out;
}

using Record = std::vector<std::string>;

inline void RecordFields(IEMSMessageParameters* list, const std::string& where, Record* out) {
  LONG count = 0;
  if (list == nullptr || FAILED(list->get_ParamCount(&count))) return;
  for (LONG i = 0; i < count; ++i) {
    ComPtr<IEMSMessageParameter> field;
    list->get_Parameter(i, field.put());
    if (!field) {
      out->push_back(where + " field (empty entry)");
      continue;
    }
    Bstr name, decoded;
    field->get_Name(name.put());
    field->get_DecodedData(decoded.put());
    out->push_back(where + " field " + Shown(Utf8(name)) + ": " + Shown(Utf8(decoded), 100000));
    ComPtr<IEMSMimeAttributes> attributes;
    LONG attributeCount = 0;
    if (SUCCEEDED(field->get_Attributes(attributes.put())) && attributes) {
      attributes->get_AttributesCount(&attributeCount);
    }
    for (LONG a = 0; a < attributeCount; ++a) {
      ComPtr<IEMSMimeAttribute> attribute;
      attributes->get_Attribute(a, attribute.put());
      if (!attribute) continue;
      Bstr attributeName, value;
      attribute->get_Name(attributeName.put());
      // An entry whose name would not read back as that name is not
      // written: the entry a parameter without "=" leaves (no name), a name
      // the parse left ending in a blank ("x *" without its star), a name
      // holding control characters.
      WStringView name = attributeName.view();
      bool controls = false;
      for (OLECHAR c : name) controls = controls || (c < 0x20 && c != '\t') || c == 0x7F;
      if (name.empty() || name.back() == ' ' || name.back() == '\t' || controls) continue;
      attribute->get_DecodedValue(value.put());
      // A value of characters up to U+0080 is written as the ANSI page gives
      // it, on purpose: U+0080 itself does not survive.
      WString text(value.view());
      bool plain = true;
      for (OLECHAR c : text) plain = plain && static_cast<uint16_t>(c) <= 0x80;
      if (plain && text.find(OLECHAR(0x80)) != WString::npos) value = Bstr(AnsiToWide(WideToAnsi(text)));
      out->push_back(where + "   ; " + Shown(Utf8(attributeName)) + "=" + Shown(Utf8(value), 100000));
    }
  }
}

// A part and its descendants, in pre-order, with an explicit stack.
inline void RecordTree(IEMSMimePart* root, Record* out) {
  std::vector<std::pair<ComPtr<IEMSMimePart>, std::string>> stack;
  stack.emplace_back(ComPtr<IEMSMimePart>(root), "part 0");
  while (!stack.empty()) {
    auto [part, where] = std::move(stack.back());
    stack.pop_back();
    if (!part) {
      out->push_back(where + " (empty entry)");
      continue;
    }
    ComPtr<IEMSMessageParameters> headers;
    part->get_Headers(headers.put());
    RecordFields(headers.get(), where, out);
    LONG attach = 0;
    part->get_IsAttachPart(&attach);
    ComPtr<IEMSMimeParts> children;
    LONG count = 0;
    if (SUCCEEDED(part->get_MimeParts(children.put())) && children) children->get_PartsCount(&count);
    out->push_back(where + " attach " + std::to_string(attach) + ", children " + std::to_string(count));
    if (count == 0) {
      ComPtr<IEMSDataObject> decoded;
      HRESULT hr = part->get_DecodedBinary(decoded.put());
      out->push_back(where + " decoded " + std::to_string(static_cast<long>(hr)) + ": " +
                     Shown(SpanText(decoded.get()), static_cast<size_t>(-1)));
    }
    for (LONG i = count; i-- > 0;) {
      ComPtr<IEMSMimePart> child;
      children->get_Part(i, child.put());
      stack.emplace_back(std::move(child), where + "." + std::to_string(i));
    }
  }
}

// The raw boundary of a part's "Content-Type" field, or "".
inline std::string BoundaryText(IEMSMimePart* part) {
  ComPtr<IEMSMessageParameter> field;
  Bstr name(WidenAscii("Content-Type"));
  ComPtr<IEMSContentType> content;
  if (FAILED(part->FindHeader(name.get(), field.put())) || !field ||
      FAILED(field->QueryInterface(IID_IEMSContentType, content.put_void())) || !content) {
    return std::string();
  }
  Bstr boundary;
  if (FAILED(content->get_Boundary(boundary.put()))) return std::string();
  return WideToAnsi(boundary.view());
}

// A delimiter need not start a line when it is read, but every delimiter
// written starts one: a child that is not the last and whose bytes do not
// end in a line break reads back with one, unless its bytes end with the
// text of its delimiter or of an enclosing multipart's (then its delimiter
// follows them directly). Applied
// to parse(x) after A1 is taken from it, so that the records compare what
// the writer can keep.
inline void AddWrittenLineBreaks(IEMSMimePart* root) {
  // Each part with the delimiters of the multiparts around it.
  std::vector<std::pair<ComPtr<IEMSMimePart>, std::vector<std::string>>> stack;
  stack.push_back({ComPtr<IEMSMimePart>(root), {}});
  while (!stack.empty()) {
    ComPtr<IEMSMimePart> part = std::move(stack.back().first);
    std::vector<std::string> delimiters = std::move(stack.back().second);
    stack.pop_back();
    ComPtr<IEMSMimeParts> children;
    LONG count = 0;
    if (!part || FAILED(part->get_MimeParts(children.put())) || !children) continue;
    children->get_PartsCount(&count);
    if (count > 0) delimiters.push_back("--" + BoundaryText(part.get()));
    auto endsWithDelimiter = [&](const std::string& bytes) {
      for (const std::string& d : delimiters) {
        if (d.size() > 2 && bytes.size() >= d.size() &&
            bytes.compare(bytes.size() - d.size(), d.size(), d) == 0)
          return true;
      }
      return false;
    };
    for (LONG i = 0; i < count; ++i) {
      ComPtr<IEMSMimePart> child;
      children->get_Part(i, child.put());
      if (!child) continue;
      stack.push_back({child, delimiters});
      ComPtr<IEMSMimeParts> grandchildren;
      LONG below = 0;
      if (SUCCEEDED(child->get_MimeParts(grandchildren.put())) && grandchildren)
        grandchildren->get_PartsCount(&below);
      ComPtr<IEMSDataObject> body;
      if (i + 1 == count || below != 0 || FAILED(child->get_BodyObject(body.put())) || !body) continue;
      std::string bytes = SpanText(body.get());
      if (bytes.size() >= 2 && bytes.compare(bytes.size() - 2, 2, "\r\n") == 0) continue;
      if (endsWithDelimiter(bytes)) continue;
      ComPtr<IEMSDataObject> longer;
      if (FAILED(MakeDataObject(bytes + "\r\n", &longer))) continue;
      child->put_BodyObject(longer.get());
    }
  }
}

inline Record RecordMessage(IEMSMessageParser* message) {
  Record out;
  ComPtr<IEMSMessageParameters> headers;
  message->get_Headers(headers.put());
  RecordFields(headers.get(), "message", &out);
  ComPtr<IEMSMimePart> root;
  if (message->IsMimeMessage() == S_OK && SUCCEEDED(message->get_MimePart(root.put())) && root) {
    RecordTree(root.get(), &out);
  } else {
    ComPtr<IEMSDataObject> body;
    message->get_BodyObject(body.put());
    out.push_back(std::string("message plain body ") + (body ? "" : "(none) ") +
                  Shown(SpanText(body.get()), -1));
  }
  return out;
}

// The first line where two records differ, or "" when they are equal.
inline std::string FirstDifference(const Record& before, const Record& after) {
  size_t n = before.size() < after.size() ? before.size() : after.size();
  for (size_t i = 0; i < n; ++i) {
    if (before[i] != after[i])
      return "was  " + before[i].substr(0, 400) + "\nnow  " + after[i].substr(0, 400);
  }
  if (before.size() == after.size()) return std::string();
  return before.size() > after.size() ? "lost " + before[n].substr(0, 400)
                                      : "new  " + after[n].substr(0, 400);
}

inline std::string FirstByteDifference(std::string_view a1, std::string_view a2) {
  size_t i = 0;
  while (i < a1.size() && i < a2.size() && a1[i] == a2[i]) ++i;
  size_t from = i < 40 ? 0 : i - 40;
  return "A1 and A2 differ at byte " + std::to_string(i) + " (sizes " + std::to_string(a1.size()) + ", " +
         std::to_string(a2.size()) + ")\nA1 ..." + Shown(a1.substr(from, 120)) + "\nA2 ..." +
         Shown(a2.substr(from, 120));
}

inline ComPtr<IEMSDataObject> DataFrom(std::string bytes) {
  ComPtr<IEMSDataObject> data;
  MakeDataObject(std::move(bytes), &data);
  return data;
}

// Parsing, assembling and recording one kind of object: a message or a part.
struct MessageLevel {
  using Object = IEMSMessageParser;
  static HRESULT Parse(IEMSDataObject* data, ComPtr<Object>* message) {
    PvCreateInstance(CLSID_EMSMessageParser, nullptr, IID_IEMSMessageParser, message->put_void());
    return (*message) ? (*message)->ParseObject(data) : E_FAIL;
  }
  static std::string Assemble(Object* message) {
    ComPtr<IEMSDataObject> out;
    message->AssembleObject(out.put());
    return SpanText(out.get());
  }
  static Record Recorded(Object* message) { return RecordMessage(message); }
  static void AddLineBreaks(Object* message) {
    ComPtr<IEMSMimePart> root;
    if (message->IsMimeMessage() == S_OK && SUCCEEDED(message->get_MimePart(root.put())) && root) {
      AddWrittenLineBreaks(root.get());
    }
  }
};

struct PartLevel {
  using Object = IEMSMimePart;
  static HRESULT Parse(IEMSDataObject* data, ComPtr<Object>* part) {
    PvCreateInstance(CLSID_EMSMimePart, nullptr, IID_IEMSMimePart, part->put_void());
    return (*part) ? (*part)->ParsePartObject(data) : E_FAIL;
  }
  static std::string Assemble(Object* part) {
    ComPtr<IEMSDataObject> out;
    part->AssemblePartObject(out.put());
    return SpanText(out.get());
  }
  static Record Recorded(Object* part) {
    Record record;
    RecordTree(part, &record);
    return record;
  }
  static void AddLineBreaks(Object* part) { AddWrittenLineBreaks(part); }
};

// Returns "" when the invariant holds for x, otherwise what broke it. A1 goes
// to `a1Out` when given. Input that does not parse has nothing to check,
// except that a message parses from any bytes.
template <class Level>
std::string CheckLevel(std::string_view x, std::string* a1Out, bool mustParse) {
  ComPtr<typename Level::Object> first, second;
  if (Level::Parse(DataFrom(std::string(x)).get(), &first) != S_OK) {
    // Without bytes there is no buffer to parse.
    return mustParse && !x.empty() ? "x does not parse" : "";
  }
  std::string a1 = Level::Assemble(first.get());
  if (a1Out != nullptr) *a1Out = a1;
  if (a1.empty()) {
    // Nothing written: parse(x) must hold nothing either.
    Record record = Level::Recorded(first.get());
    return record.size() == 1 && record[0] == "message plain body (none) " ? "" : "A1 is empty";
  }
  if (Level::Parse(DataFrom(a1).get(), &second) != S_OK) return "A1 does not parse";
  std::string a2 = Level::Assemble(second.get());
  if (a2 != a1) return FirstByteDifference(a1, a2);
  Level::AddLineBreaks(first.get());
  std::string difference = FirstDifference(Level::Recorded(first.get()), Level::Recorded(second.get()));
  if (!difference.empty()) return "parse(A1) reads differently from parse(x):\n" + difference;
  return std::string();
}

// The invariant at message level (ParseObject, AssembleObject).
inline std::string CheckMessage(std::string_view x, std::string* a1Out = nullptr) {
  return CheckLevel<MessageLevel>(x, a1Out, true);
}

// The invariant at part level (ParsePartObject, AssemblePartObject).
inline std::string CheckPart(std::string_view x, std::string* a1Out = nullptr) {
  return CheckLevel<PartLevel>(x, a1Out, false);
}

}  // namespace pv::roundtrip

#endif  // PARCELVANE_TESTS_ROUNDTRIP_ROUNDTRIP_INVARIANT_H
