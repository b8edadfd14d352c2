// parcelvane compose: a new message from command-line options.
#include <chrono>

#include "tools/commands.h"
#include "tools/exit_codes.h"
#include "tools/file_io.h"
#include "tools/line_ends.h"
#include "tools/mail_text.h"

namespace pvtool {
namespace {

constexpr LONG kUtf8 = 65001;
constexpr LONG kHeaderEncodingAuto = 3;
constexpr LONG kBase64 = 2;
constexpr LONG kSubtypeMixed = 10;

struct Attachment {
  std::string name;
  std::string bytes;
};

struct Request {
  std::string from, subject, date;
  std::vector<std::string> to, cc, headers;
  bool has_text = false, has_html = false;
  std::string text, html;
  std::vector<Attachment> attachments;
};

std::string FileName(const std::string& path) { return PathToUtf8(PathFromUtf8(path).filename()); }

std::string NowAsHeaderDate() {
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  return HeaderDate(std::chrono::duration_cast<std::chrono::seconds>(now).count());
}

// Everything the options ask for, files read, before any object is made.
Request ReadRequest(const ParsedArgs& parsed) {
  if (!parsed.positional().empty()) {
    throw ToolError(kExitUsage, "compose: unexpected argument " + parsed.positional()[0]);
  }
  if (parsed.Has("text") && parsed.Has("text-file")) {
    throw ToolError(kExitUsage, "compose: give either --text or --text-file, not both");
  }
  Request r;
  r.from = parsed.Get("from");
  r.subject = parsed.Get("subject");
  r.date = parsed.Has("date") ? parsed.Get("date") : NowAsHeaderDate();
  r.to = parsed.All("to");
  r.cc = parsed.All("cc");
  r.headers = parsed.All("header");
  if (parsed.Has("text")) r.has_text = true, r.text = parsed.Get("text");
  if (parsed.Has("text-file")) r.has_text = true, r.text = ReadInput(parsed.Get("text-file"));
  if (parsed.Has("html-file")) r.has_html = true, r.html = ReadInput(parsed.Get("html-file"));
  for (const std::string& path : parsed.All("attach")) {
    if (path == "-") throw ToolError(kExitUsage, "compose: --attach needs a file name, not -");
    r.attachments.push_back({FileName(path), ReadWholeFile(PathFromUtf8(path))});
  }
  return r;
}

void AddMailboxes(IEMSMessageParser* message, const char* field_name, const std::vector<std::string>& addresses) {
  if (addresses.empty()) return;
  Ref<IEMSMessageParameter> field;
  Check(message->CreateHeader(Bstr(field_name).get(), field.put()), "creating an address field");
  Ref<IEMSHeaderMailboxes> list;
  Check(field->get_HeaderMailboxes(list.put()), "reading an address list");
  for (const std::string& text : addresses) {
    const Address address = SplitAddress(text);
    Check(list->put_MailboxData(-1, Bstr(address.name).get(), Bstr(address.address).get()), "adding an address");
  }
  field->put_DefaultCodePage(kUtf8);
  field->put_DefaultEncoding(kHeaderEncodingAuto);
  Check(field->put_HeaderMailboxes(list.get()), "storing an address list");
}

void AddHeaderField(IEMSMessageParser* message, const std::string& text) {
  const size_t colon = text.find(':');
  std::string name = colon == std::string::npos ? std::string() : UnfoldValue(text.substr(0, colon));
  bool valid = !name.empty();
  for (char c : name) valid = valid && c > ' ' && c < 0x7F;
  if (!valid) throw ToolError(kExitUsage, "compose: --header needs \"Name: value\", got \"" + text + "\"");
  Check(message->put_HeaderString(Bstr(name).get(), Bstr(UnfoldValue(text.substr(colon + 1))).get()),
        "setting a header field");
}

void AddAttachment(IEMSMessageParser* message, const Attachment& attachment) {
  Ref<IEMSMimePart> part = CreateObject<IEMSMimePart>(CLSID_EMSMimePart, "creating a part");
  part->put_DefaultCodePage(kUtf8);
  part->put_DefaultEncoding(kBase64);
  Ref<IEMSDataObject> data = MakeData(attachment.bytes);
  // An empty content type lets the library choose one by the extension.
  Bstr none("");
  Check(part->CreateAttach(Bstr(attachment.name).get(), data.get(), 0, none.get(), none.get(), none.get()),
        "attaching a file");
  // CreateAttach gives the disposition only its file name; a reader needs
  // the type too to see an attachment.
  Ref<IEMSMessageParameter> field;
  Ref<IEMSContentDisposition> disposition;
  if (SUCCEEDED(part->FindHeader(Bstr("Content-Disposition").get(), field.put())) && field &&
      SUCCEEDED(field->QueryInterface(IID_IEMSContentDisposition, reinterpret_cast<void**>(disposition.put())))) {
    disposition->put_DispositionType(Bstr("attachment").get());
  }
  Check(message->AddPart(kSubtypeMixed, part.get()), "adding an attachment");
}

void EnsureMimeVersion(IEMSMessageParser* message) {
  if (message->IsMimeMessage() != S_OK) return;
  Ref<IEMSMessageParameter> field;
  if (SUCCEEDED(message->FindHeader(Bstr("MIME-Version").get(), field.put())) && field) return;
  message->put_HeaderString(Bstr("MIME-Version").get(), Bstr("1.0").get());
}

std::string Build(const Request& r) {
  Ref<IEMSMessageParser> message = CreateObject<IEMSMessageParser>(CLSID_EMSMessageParser, "creating a message");
  IEMSMessageParser* m = message.get();
  // Every text the tool hands over is UTF-8; InitNew passes the page on to
  // the header list and the body pages.
  m->put_DefaultCodePage(kUtf8);
  m->InitNew();
  m->put_TextCodePage(kUtf8);
  m->put_HtmlCodePage(kUtf8);

  Check(m->put_HeaderString(Bstr("Date").get(), Bstr(r.date).get()), "setting the date");
  if (!r.from.empty()) {
    const Address from = SplitAddress(r.from);
    Check(m->put_SenderEmail(Bstr(from.address).get()), "setting the sender");
    if (!from.name.empty()) Check(m->put_SenderName(Bstr(from.name).get()), "setting the sender's name");
  }
  AddMailboxes(m, "To", r.to);
  AddMailboxes(m, "Cc", r.cc);
  if (!r.subject.empty()) Check(m->put_Subject(Bstr(r.subject).get()), "setting the subject");
  for (const std::string& header : r.headers) AddHeaderField(m, header);

  if (r.has_text) Check(m->put_TextBody(Bstr(BareLfToCrLf(r.text)).get()), "setting the text body");
  if (r.has_html) Check(m->put_HTMLBody(Bstr(BareLfToCrLf(r.html)).get()), "setting the HTML body");
  for (const Attachment& attachment : r.attachments) AddAttachment(m, attachment);
  EnsureMimeVersion(m);
  return MessageView(message).Assemble();
}

}  // namespace

int RunCompose(const Args& args) {
  ParsedArgs parsed;
  const std::vector<OptionDef> options = {
      {"from", '\0', true, false},      {"to", '\0', true, true},          {"cc", '\0', true, true},
      {"subject", '\0', true, false},   {"date", '\0', true, false},       {"header", '\0', true, true},
      {"text", '\0', true, false},      {"text-file", '\0', true, false},  {"html-file", '\0', true, false},
      {"attach", '\0', true, true},     {"output", 'o', true, false}};
  if (!ParseCommand("compose", args, options, false, &parsed)) return 0;
  const Request request = ReadRequest(parsed);
  WriteOutput(parsed.Get("output"), Build(request));
  return 0;
}

}  // namespace pvtool
