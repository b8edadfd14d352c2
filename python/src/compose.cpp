// Composing for parcelvane.Message: the command's way of writing a message
// (every value from the caller stays data: display names and the subject as
// encoded words whenever their plain form would not read back the same,
// file names as RFC 2231 values), with a content type per attachment.
// The Python side has refused line breaks and malformed addresses.
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "src/com_error.h"
#include "tools/com.h"
#include "tools/header_words.h"
#include "tools/line_ends.h"
#include "tools/mail_text.h"

namespace py = pybind11;
using pvtool::Bstr;
using pvtool::Ref;

namespace pvpy {
namespace {

constexpr LONG kUtf8 = 65001;
constexpr LONG kHeaderEncodingB = 2;
constexpr LONG kHeaderEncodingAuto = 3;
constexpr LONG kTransferNone = 0;
constexpr LONG kBase64 = 2;
constexpr LONG kSubtypeMixed = 10;
constexpr size_t kMaxPlainName = 60;
constexpr size_t kMaxPlainSubject = 900;
constexpr size_t kMaxExtendedValue = 900;

void Check(HRESULT hr, const char* operation) {
  if (FAILED(hr)) ThrowComError(hr, operation);
}

using Addresses = std::vector<std::pair<std::string, std::string>>;

void AddMailboxes(IEMSMessageParser* message, const char* field_name, const Addresses& addresses) {
  if (addresses.empty()) return;
  Ref<IEMSMessageParameter> field;
  Check(message->CreateHeader(Bstr(field_name).get(), field.put()), "EMSMessageParser.CreateHeader");
  Ref<IEMSHeaderMailboxes> list;
  Check(field->get_HeaderMailboxes(list.put()), "EMSMessageParameter.HeaderMailboxes");
  bool plain = true;
  for (const auto& [name, address] : addresses) {
    Check(list->put_MailboxData(-1, Bstr(name).get(), Bstr(address).get()), "EMSHeaderMailboxes.MailboxData");
    plain = plain && pvtool::IsPlainHeaderText(name, "\"\\", kMaxPlainName);
  }
  // A display name is put in quotes as it stands; B words carry any text.
  field->put_DefaultCodePage(kUtf8);
  field->put_DefaultEncoding(plain ? kHeaderEncodingAuto : kHeaderEncodingB);
  Check(field->put_HeaderMailboxes(list.get()), "EMSMessageParameter.HeaderMailboxes");
}

void SetSubject(IEMSMessageParser* message, const std::string& subject) {
  if (pvtool::IsPlainHeaderText(subject, "", kMaxPlainSubject)) {
    Check(message->put_Subject(Bstr(subject).get()), "EMSMessageParser.Subject");
    return;
  }
  Ref<IEMSMessageParameter> field;
  Check(message->CreateHeader(Bstr("Subject").get(), field.put()), "EMSMessageParser.CreateHeader");
  Check(field->put_RawData(Bstr(pvtool::EncodedWords(subject, std::strlen("Subject: "))).get()),
        "EMSMessageParameter.RawData");
}

// The name the library types a part by: a plain extension of the file name.
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

std::string QuotedValue(const std::string& value, size_t first_line_used) {
  if (pvtool::IsPlainHeaderText(value, "\"\\;", kMaxPlainName)) return "\"" + value + "\"";
  return "\"" + pvtool::EncodedWords(value, first_line_used + 1) + "\"";
}

std::string FileNameParameter(const std::string& name) {
  if (!pvtool::IsPlainHeaderText(name, "\"\\;", kMaxPlainName)) {
    const std::string extended = pvtool::ExtendedParameterValue(name);
    if (extended.size() <= kMaxExtendedValue) return "filename*=" + extended;
  }
  return "filename=" + QuotedValue(name, std::strlen("\tfilename="));
}

// The name parameters written whole through the fields' unfolded text,
// which the library keeps as given.
void WriteNameParameters(IEMSMimePart* part, const std::string& name) {
  Ref<IEMSMessageParameter> type;
  Ref<IEMSMessageParameter> disposition;
  Check(part->FindHeader(Bstr("Content-Type").get(), type.put()), "EMSMimePart.FindHeader");
  Check(part->FindHeader(Bstr("Content-Disposition").get(), disposition.put()), "EMSMimePart.FindHeader");
  if (!type || !disposition)
    ThrowComError(E_FAIL, "EMSMimePart.CreateAttach", "the library wrote no content type");
  Bstr raw;
  Check(type->get_RawData(raw.put()), "EMSMessageParameter.RawData");
  const std::string raw_type = raw.utf8();
  const std::string content_type = pvtool::UnfoldValue(raw_type.substr(0, raw_type.find(';')));
  type->RemoveAttribute(Bstr("name").get());
  const std::string type_text = content_type + ";\r\n\tname=" + QuotedValue(name, std::strlen("\tname="));
  Check(type->put_UnfoldedData(Bstr(type_text).get()), "EMSMessageParameter.UnfoldedData");
  Ref<IEMSContentDisposition> state;
  if (SUCCEEDED(
          disposition->QueryInterface(IID_IEMSContentDisposition, reinterpret_cast<void**>(state.put())))) {
    state->put_DispositionType(Bstr("attachment").get());
  }
  disposition->RemoveAttribute(Bstr("filename").get());
  Check(disposition->put_UnfoldedData(Bstr("attachment;\r\n\t" + FileNameParameter(name)).get()),
        "EMSMessageParameter.UnfoldedData");
}

// An empty attachment: two line breaks labelled base64, which decode to
// nothing but keep the part a leaf with a body.
void MakeEmptyBody(IEMSMimePart* part) {
  Check(part->put_BodyObject(pvtool::MakeData("\r\n\r\n").get()), "EMSMimePart.BodyObject");
  Ref<IEMSMessageParameter> encoding;
  Check(part->CreateHeader(Bstr("Content-Transfer-Encoding").get(), encoding.put()),
        "EMSMimePart.CreateHeader");
  if (encoding) Check(encoding->put_RawData(Bstr("base64").get()), "EMSMessageParameter.RawData");
}

void AddAttachment(IEMSMessageParser* message, const std::string& name, const std::string& bytes,
                   const std::string& content_type) {
  Ref<IEMSMimePart> part;
  Check(PvCreateInstance(CLSID_EMSMimePart, nullptr, IID_IEMSMimePart, reinterpret_cast<void**>(part.put())),
        "EMSMimePart (creating)");
  const bool empty = bytes.empty();
  part->put_DefaultCodePage(kUtf8);
  part->put_DefaultEncoding(empty ? kTransferNone : kBase64);
  Ref<IEMSDataObject> data = pvtool::MakeData(bytes);
  // An empty content type lets the library choose one by the extension.
  Bstr none("");
  Check(part->CreateAttach(Bstr(TypingName(name)).get(), data.get(), 0, none.get(), none.get(),
                           Bstr(content_type).get()),
        "EMSMimePart.CreateAttach");
  if (empty) MakeEmptyBody(part.get());
  WriteNameParameters(part.get(), name);
  Check(message->AddPart(kSubtypeMixed, part.get()), "EMSMessageParser.AddPart");
}

}  // namespace

py::bytes Compose(const py::dict& r) {
  Ref<IEMSMessageParser> message;
  Check(PvCreateInstance(CLSID_EMSMessageParser, nullptr, IID_IEMSMessageParser,
                         reinterpret_cast<void**>(message.put())),
        "EMSMessageParser (creating)");
  IEMSMessageParser* m = message.get();
  m->put_DefaultCodePage(kUtf8);
  m->InitNew();
  m->put_TextCodePage(kUtf8);
  m->put_HtmlCodePage(kUtf8);

  const std::string date = r["date"].cast<std::string>();
  if (!date.empty())
    Check(m->put_HeaderString(Bstr("Date").get(), Bstr(date).get()), "EMSMessageParser.HeaderString");
  AddMailboxes(m, "From", r["sender"].cast<Addresses>());
  AddMailboxes(m, "To", r["to"].cast<Addresses>());
  AddMailboxes(m, "Cc", r["cc"].cast<Addresses>());
  const std::string subject = r["subject"].cast<std::string>();
  if (!subject.empty()) SetSubject(m, subject);
  for (const auto& [name, value] : r["headers"].cast<Addresses>()) {
    Check(m->put_HeaderString(Bstr(name).get(), Bstr(value).get()), "EMSMessageParser.HeaderString");
  }
  // Base64 keeps every text exact: the line break before a delimiter line
  // stays out of the decoded text (the library's quoted-printable and 7bit
  // bodies cannot tell a text's last line break from the delimiter's).
  m->put_TextEncoding(kBase64);
  m->put_HtmlEncoding(kBase64);
  if (!r["text"].is_none()) {
    Check(m->put_TextBody(Bstr(pvtool::BareLfToCrLf(r["text"].cast<std::string>())).get()),
          "EMSMessageParser.TextBody");
  }
  if (!r["html"].is_none()) {
    Check(m->put_HTMLBody(Bstr(pvtool::BareLfToCrLf(r["html"].cast<std::string>())).get()),
          "EMSMessageParser.HTMLBody");
  }
  for (py::handle item : r["attachments"]) {
    py::tuple attachment = py::reinterpret_borrow<py::tuple>(item);
    AddAttachment(m, attachment[0].cast<std::string>(), attachment[1].cast<std::string>(),
                  attachment[2].cast<std::string>());
  }
  if (m->IsMimeMessage() == S_OK) {
    Ref<IEMSMessageParameter> version;
    if (FAILED(m->FindHeader(Bstr("MIME-Version").get(), version.put())) || !version) {
      m->put_HeaderString(Bstr("MIME-Version").get(), Bstr("1.0").get());
    }
  }
  Ref<IEMSDataObject> data;
  Check(m->AssembleObject(data.put()), "EMSMessageParser.AssembleObject");
  const std::string bytes = pvtool::SpanBytes(data.get());
  return py::bytes(bytes);
}

}  // namespace pvpy
