// parcelvane compose, the message itself: every header value from the
// user is written so that it reads back as the same text and never as
// header syntax.
#include "tools/com.h"
#include "tools/compose.h"
#include "tools/compose_parts.h"
#include "tools/exit_codes.h"
#include "tools/header_words.h"
#include "tools/line_ends.h"
#include "tools/mail_text.h"
#include "tools/message_view.h"

namespace pvtool {
namespace {

constexpr LONG kUtf8 = 65001;

// A file name as text: bytes that are not UTF-8, and NUL, become U+FFFD.
std::string NameText(const std::string& name) {
  U16String wide = Utf8ToUtf16(name);
  for (char16_t& c : wide) {
    if (c == 0) c = 0xFFFD;
  }
  return Utf16ToUtf8(wide);
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

}  // namespace

std::string BuildMessage(const ComposeRequest& r) {
  Ref<IEMSMessageParser> message =
      CreateObject<IEMSMessageParser>(CLSID_EMSMessageParser, "creating a message");
  IEMSMessageParser* m = message.get();
  // Every text the tool hands over is UTF-8; InitNew passes the page on to
  // the header list and the body pages.
  m->put_DefaultCodePage(kUtf8);
  m->InitNew();
  m->put_TextCodePage(kUtf8);
  m->put_HtmlCodePage(kUtf8);

  Check(m->put_HeaderString(Bstr("Date").get(), Bstr(r.date).get()), "setting the date");
  AddMailboxes(m, "From", r.from);
  AddMailboxes(m, "To", r.to);
  AddMailboxes(m, "Cc", r.cc);
  if (!r.subject.empty()) SetSubject(m, r.subject);
  for (const std::string& header : r.headers) AddHeaderField(m, header);

  if (r.has_text) Check(m->put_TextBody(Bstr(BareLfToCrLf(r.text)).get()), "setting the text body");
  if (r.has_html) Check(m->put_HTMLBody(Bstr(BareLfToCrLf(r.html)).get()), "setting the HTML body");
  for (const ComposeAttachment& attachment : r.attachments) {
    AddAttachment(m, NameText(attachment.name), attachment.bytes, std::string());
  }
  EnsureMimeVersion(m);
  return MessageView(message).Assemble();
}

}  // namespace pvtool
