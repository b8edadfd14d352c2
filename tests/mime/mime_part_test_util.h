// Helpers for the part tests: parts made as a host makes them, their
// bodies, fields and children read back as text.
#ifndef PARCELVANE_TESTS_MIME_MIME_PART_TEST_UTIL_H
#define PARCELVANE_TESTS_MIME_MIME_PART_TEST_UTIL_H

#include <string>
#include <string_view>
#include <vector>

#include "tests/test_util.h"

namespace pv::test {

inline ComPtr<IEMSMimePart> NewPart() { return Create<IEMSMimePart>(CLSID_EMSMimePart); }
inline ComPtr<IEMSMimeParts> NewParts() { return Create<IEMSMimeParts>(CLSID_EMSMimeParts); }

// A part parsed from `bytes` (the parse must succeed).
inline ComPtr<IEMSMimePart> Parsed(std::string_view bytes) {
  ComPtr<IEMSMimePart> part = NewPart();
  EXPECT_EQ(part->ParsePartObject(DataOf(bytes).get()), S_OK);
  return part;
}

// Text for "nothing there", distinct from every byte string a test expects.
constexpr const char* kNone = "(none)";

// The bytes of the part's BodyObject, or kNone when the getter gives none.
inline std::string BodyOf(IEMSMimePart* part) {
  ComPtr<IEMSDataObject> body;
  EXPECT_EQ(part->get_BodyObject(body.put()), S_OK);
  return body ? SpanBytes(body.get()) : kNone;
}

// The bytes of AssemblePartObject.
inline std::string Assembled(IEMSMimePart* part) {
  ComPtr<IEMSDataObject> out;
  EXPECT_EQ(part->AssemblePartObject(out.put()), S_OK);
  return out ? SpanBytes(out.get()) : kNone;
}

inline ComPtr<IEMSMessageParameters> HeadersOf(IEMSMimePart* part) {
  ComPtr<IEMSMessageParameters> headers;
  EXPECT_EQ(part->get_Headers(headers.put()), S_OK);
  return headers;
}

inline LONG FieldCount(IEMSMimePart* part) {
  LONG count = -1;
  HeadersOf(part)->get_ParamCount(&count);
  return count;
}

inline ComPtr<IEMSMessageParameter> FieldOf(IEMSMimePart* part, std::string_view name) {
  ComPtr<IEMSMessageParameter> field;
  EXPECT_EQ(part->FindHeader(B(name).get(), field.put()), S_OK);
  return field;
}

// The raw value of a field, or kNone without the field.
inline std::string RawField(IEMSMimePart* part, std::string_view name) {
  ComPtr<IEMSMessageParameter> field = FieldOf(part, name);
  if (!field) return kNone;
  Bstr raw;
  field->get_RawData(raw.put());
  return U8(raw);
}

inline ComPtr<IEMSMimeParts> PartsOf(IEMSMimePart* part) {
  ComPtr<IEMSMimeParts> parts;
  EXPECT_EQ(part->get_MimeParts(parts.put()), S_OK);
  return parts;
}

inline LONG ChildCount(IEMSMimePart* part) {
  LONG count = -1;
  EXPECT_EQ(PartsOf(part)->get_PartsCount(&count), S_OK);
  return count;
}

inline ComPtr<IEMSMimePart> ChildOf(IEMSMimePart* part, LONG index) {
  ComPtr<IEMSMimePart> child;
  EXPECT_EQ(PartsOf(part)->get_Part(index, child.put()), S_OK);
  return child;
}

// The bodies of the direct children, in order.
inline std::vector<std::string> ChildBodies(IEMSMimePart* part) {
  std::vector<std::string> bodies;
  for (LONG i = 0; i < ChildCount(part); ++i) bodies.push_back(BodyOf(ChildOf(part, i).get()));
  return bodies;
}

inline LONG AttachFlag(IEMSMimePart* part) {
  LONG flag = -1;
  EXPECT_EQ(part->get_IsAttachPart(&flag), S_OK);
  return flag;
}

inline LONG TypeCode(IEMSMimePart* part) {
  LONG code = -99;
  EXPECT_EQ(part->get_MimeType(&code), S_OK);
  return code;
}

inline LONG SubtypeCode(IEMSMimePart* part) {
  LONG code = -99;
  EXPECT_EQ(part->get_MimeSubType(&code), S_OK);
  return code;
}

// A multipart message of the given children, each written as
// "\r\n" + child + "\r\n" between delimiter lines.
inline std::string Multipart(std::string_view boundary, const std::vector<std::string>& children,
                             std::string_view subtype = "mixed") {
  std::string text = "Content-Type: multipart/" + std::string(subtype) + "; boundary=\"" +
                     std::string(boundary) + "\"\r\n\r\n";
  for (const std::string& child : children) text += "--" + std::string(boundary) + "\r\n" + child + "\r\n";
  text += "--" + std::string(boundary) + "--\r\n";
  return text;
}

using Strings = std::vector<std::string>;

}  // namespace pv::test

#endif  // PARCELVANE_TESTS_MIME_MIME_PART_TEST_UTIL_H
