#include "tools/compose_parts.h"

#include <cstring>

#include "tools/com.h"
#include "tools/exit_codes.h"
#include "tools/header_words.h"
#include "tools/mail_text.h"

namespace pvtool {
namespace {

constexpr LONG kUtf8 = 65001;
constexpr LONG kHeaderEncodingB = 2;
constexpr LONG kHeaderEncodingAuto = 3;
constexpr LONG kTransferNone = 0;
constexpr LONG kBase64 = 2;
constexpr LONG kSubtypeMixed = 10;

// Plain display names and file names stay short enough for one line; a
// plain subject is written unfolded, so it stays within the 998-byte limit.
constexpr size_t kMaxPlainName = 60;
constexpr size_t kMaxPlainSubject = 900;
// The longest RFC 2231 file name parameter: one unfoldable line.
constexpr size_t kMaxExtendedValue = 900;

// A name for the library to type the part by: the file's extension when it
// is a plain one, and nothing else of the user's name.
std::string TypingName(const std::string& name) {
  const size_t dot = name.rfind('.');
  std::string extension = dot == std::string::npos ? std::string() : name.substr(dot);
  bool plain = extension.size() >= 2 && extension.size() <= 16;
  for (size_t i = 1; plain && i < extension.size(); ++i) {
    const char c = extension[i];
    plain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
  }
  return "attachment" + (plain ? extension : std::string());
}

// The quoted form of a parameter value: plain text, or encoded words.
std::string QuotedValue(const std::string& value, size_t first_line_used) {
  if (IsPlainHeaderText(value, "\"\\;", kMaxPlainName)) return "\"" + value + "\"";
  return "\"" + EncodedWords(value, first_line_used + 1) + "\"";
}

std::string FileNameParameter(const std::string& name) {
  if (!IsPlainHeaderText(name, "\"\\;", kMaxPlainName)) {
    const std::string extended = ExtendedParameterValue(name);
    if (extended.size() <= kMaxExtendedValue) return "filename*=" + extended;
  }
  return "filename=" + QuotedValue(name, std::strlen("\tfilename="));
}

// Replaces the name parameters that the library wrote for the stand-in
// name by the real name. The values are written whole through the field's
// unfolded text, which the library keeps as given: its own parameter
// objects would write a quote or a backslash in a value unencoded.
void WriteNameParameters(IEMSMimePart* part, const std::string& name) {
  Ref<IEMSMessageParameter> type;
  Ref<IEMSMessageParameter> disposition;
  Check(part->FindHeader(Bstr("Content-Type").get(), type.put()), "reading the attachment's type");
  Check(part->FindHeader(Bstr("Content-Disposition").get(), disposition.put()), "reading the disposition");
  if (!type || !disposition) {
    throw ToolError(kExitLibraryFailed, "attaching a file: the library wrote no type");
  }
  // The type as the library chose it: the field's value before its
  // parameters.
  Bstr raw;
  Check(type->get_RawData(raw.put()), "reading the attachment's type");
  const std::string raw_type = raw.utf8();
  const std::string content_type = UnfoldValue(raw_type.substr(0, raw_type.find(';')));
  type->RemoveAttribute(Bstr("name").get());
  const std::string type_text = content_type + ";\r\n\tname=" + QuotedValue(name, std::strlen("\tname="));
  Check(type->put_UnfoldedData(Bstr(type_text).get()), "naming the attachment");
  Ref<IEMSContentDisposition> state;
  if (SUCCEEDED(
          disposition->QueryInterface(IID_IEMSContentDisposition, reinterpret_cast<void**>(state.put())))) {
    state->put_DispositionType(Bstr("attachment").get());
  }
  disposition->RemoveAttribute(Bstr("filename").get());
  Check(disposition->put_UnfoldedData(Bstr("attachment;\r\n\t" + FileNameParameter(name)).get()),
        "naming the attachment");
}

// An empty file: the library encodes nothing, so the part is stored as
// 7bit with an empty body first. Its body then becomes two line breaks
// labelled base64, which decode to nothing: a reader keeps at least one of
// them (the last part of a list gives the last up to its closing
// delimiter), and a part whose body is empty after parsing would not count
// as an attachment.
void MakeEmptyBody(IEMSMimePart* part) {
  Check(part->put_BodyObject(MakeData("\r\n\r\n").get()), "attaching an empty file");
  Ref<IEMSMessageParameter> encoding;
  Check(part->CreateHeader(Bstr("Content-Transfer-Encoding").get(), encoding.put()),
        "attaching an empty file");
  if (encoding) Check(encoding->put_RawData(Bstr("base64").get()), "attaching an empty file");
}

}  // namespace

void AddAttachment(IEMSMessageParser* message, const std::string& name, const std::string& bytes,
                   const std::string& content_type) {
  Ref<IEMSMimePart> part = CreateObject<IEMSMimePart>(CLSID_EMSMimePart, "creating a part");
  const bool empty = bytes.empty();
  part->put_DefaultCodePage(kUtf8);
  part->put_DefaultEncoding(empty ? kTransferNone : kBase64);
  Ref<IEMSDataObject> data = MakeData(bytes);
  // An empty content type lets the library choose one by the extension.
  Bstr none("");
  Check(part->CreateAttach(Bstr(TypingName(name)).get(), data.get(), 0, none.get(), none.get(),
                           Bstr(content_type).get()),
        "attaching a file");
  if (empty) MakeEmptyBody(part.get());
  WriteNameParameters(part.get(), name);
  Check(message->AddPart(kSubtypeMixed, part.get()), "adding an attachment");
}

void AddMailboxes(IEMSMessageParser* message, const char* field_name, const AddressList& addresses) {
  if (addresses.empty()) return;
  Ref<IEMSMessageParameter> field;
  Check(message->CreateHeader(Bstr(field_name).get(), field.put()), "creating an address field");
  Ref<IEMSHeaderMailboxes> list;
  Check(field->get_HeaderMailboxes(list.put()), "reading an address list");
  bool plain = true;
  for (const auto& [name, address] : addresses) {
    Check(list->put_MailboxData(-1, Bstr(name).get(), Bstr(address).get()), "adding an address");
    plain = plain && IsPlainHeaderText(name, "\"\\", kMaxPlainName);
  }
  // The library puts a display name in quotes as it stands; B words hold
  // any text, quotes and line breaks included.
  field->put_DefaultCodePage(kUtf8);
  field->put_DefaultEncoding(plain ? kHeaderEncodingAuto : kHeaderEncodingB);
  Check(field->put_HeaderMailboxes(list.get()), "storing an address list");
}

void SetSubject(IEMSMessageParser* message, const std::string& subject) {
  if (IsPlainHeaderText(subject, "", kMaxPlainSubject)) {
    Check(message->put_Subject(Bstr(subject).get()), "setting the subject");
    return;
  }
  Ref<IEMSMessageParameter> field;
  Check(message->CreateHeader(Bstr("Subject").get(), field.put()), "setting the subject");
  const std::string encoded = EncodedWords(subject, std::strlen("Subject: "));
  Check(field->put_RawData(Bstr(encoded).get()), "setting the subject");
}

void EnsureMimeVersion(IEMSMessageParser* message) {
  if (message->IsMimeMessage() != S_OK) return;
  Ref<IEMSMessageParameter> field;
  if (SUCCEEDED(message->FindHeader(Bstr("MIME-Version").get(), field.put())) && field) return;
  message->put_HeaderString(Bstr("MIME-Version").get(), Bstr("1.0").get());
}

}  // namespace pvtool
