// Composing a message from nothing through the body setters and AddAttach:
// assembled and parsed again, it comes back with the same tree, bodies and
// attachments.
#include "tests/message/message_test_util.h"

namespace pv::test {
namespace {

struct Attachment {
  std::string name;
  std::string bytes;
  bool operator==(const Attachment& o) const { return name == o.name && bytes == o.bytes; }
};

void PrintTo(const Attachment& a, std::ostream* out) {
  *out << a.name << " (" << a.bytes.size() << " bytes)";
}

std::vector<Attachment> AttachmentsOf(IEMSMessageParser* message) {
  std::vector<Attachment> out;
  ComPtr<IEMSMimeParts> parts;
  EXPECT_EQ(message->get_AttachParts(parts.put()), S_OK);
  LONG count = 0;
  if (parts) parts->get_PartsCount(&count);
  for (LONG i = 0; i < count; ++i) {
    ComPtr<IEMSMimePart> part;
    parts->get_Part(i, part.put());
    out.push_back({Text(part.get(), &IEMSMimePart::get_AttachName), DecodedBytes(part.get())});
  }
  return out;
}

ComPtr<IEMSMessageParser> Reparsed(IEMSMessageParser* message) { return ParsedMessage(Assembled(message)); }

std::string Binary() {
  std::string bytes;
  for (int i = 0; i < 3000; ++i) bytes += static_cast<char>((i * 7 + 3) & 0xFF);
  return bytes;
}

// What the composer put in; the parsed message must read the same.
struct Composed {
  std::string subject;
  std::string senderName;
  std::string recipientEmail;
  std::string text;  // "<absent>" for no text body
  std::string html;
  std::vector<Attachment> attachments;
};

std::string BodyOrAbsent(IEMSMessageParser* message,
                         HRESULT (STDMETHODCALLTYPE IEMSMessageParser::*getter)(BSTR*)) {
  BSTR value = nullptr;
  HRESULT hr = (message->*getter)(&value);
  return hr == S_FALSE ? std::string("<absent>") : TextOf(value);
}

void ExpectReadsAs(IEMSMessageParser* message, const Composed& c) {
  EXPECT_EQ(Text(message, &IEMSMessageParser::get_Subject), c.subject);
  EXPECT_EQ(Text(message, &IEMSMessageParser::get_SenderName), c.senderName);
  EXPECT_EQ(Text(message, &IEMSMessageParser::get_RecipientEmail), c.recipientEmail);
  EXPECT_EQ(BodyOrAbsent(message, &IEMSMessageParser::get_TextBody), c.text);
  EXPECT_EQ(BodyOrAbsent(message, &IEMSMessageParser::get_HTMLBody), c.html);
  EXPECT_EQ(AttachmentsOf(message), c.attachments);
}

TEST(MessageCompose, TextHtmlAndTwoAttachmentsComeBackAfterAParse) {
  Composed c{"Quarterly report",
             "Alice Example",
             "bob@example.org",
             "Hello Bob,\r\nthe report is attached.\r\n",
             "<p>Hello Bob,</p><p>the report is attached.</p>",
             {{"q3.pdf", Binary()}, {"notes.txt", "line one\r\nline two\r\n"}}};
  auto message = NewMessage();
  message->put_SenderName(B(c.senderName).get());
  message->put_SenderEmail(B("alice@example.com").get());
  message->put_RecipientEmail(B(c.recipientEmail).get());
  message->put_Subject(B(c.subject).get());
  ASSERT_EQ(message->put_TextBody(B(c.text).get()), S_OK);
  ASSERT_EQ(message->put_HTMLBody(B(c.html).get()), S_OK);
  ASSERT_EQ(message->AddAttach(B("C:\\reports\\q3.pdf").get(), DataOf(Binary()).get()), S_OK);
  ASSERT_EQ(message->AddAttach(B("notes.txt").get(), DataOf("line one\r\nline two\r\n").get()), S_OK);
  ExpectReadsAs(message.get(), c);

  auto parsed = Reparsed(message.get());
  EXPECT_EQ(TreeShape(RootOf(parsed.get()).get()),
            "multipart/mixed(multipart/alternative(text/plain,text/html),application/pdf,text/plain)");
  ExpectReadsAs(parsed.get(), c);
  EXPECT_EQ(RawField(HeadersOf(parsed.get()).get(), "MIME-Version"), "1.0");

  // A second round changes nothing more.
  auto again = Reparsed(parsed.get());
  EXPECT_EQ(Assembled(again.get()), Assembled(parsed.get()));
}

TEST(MessageCompose, ATextBodyAloneComesBackAsASinglePart) {
  Composed c{"hi", "<unset>", "<unset>", "just text\r\n", "<absent>", {}};
  auto message = NewMessage();
  message->put_Subject(B(c.subject).get());
  ASSERT_EQ(message->put_TextBody(B(c.text).get()), S_OK);
  auto parsed = Reparsed(message.get());
  EXPECT_EQ(TreeShape(RootOf(parsed.get()).get()), "text/plain");
  ExpectReadsAs(parsed.get(), c);
}

TEST(MessageCompose, AnHtmlBodyAloneComesBackAsASinglePart) {
  Composed c{"<unset>", "<unset>", "<unset>", "<absent>", "<p>just html</p>\r\n", {}};
  auto message = NewMessage();
  ASSERT_EQ(message->put_HTMLBody(B(c.html).get()), S_OK);
  auto parsed = Reparsed(message.get());
  EXPECT_EQ(TreeShape(RootOf(parsed.get()).get()), "text/html");
  ExpectReadsAs(parsed.get(), c);
}

TEST(MessageCompose, AttachmentsAloneComeBackWithTheirNamesAndBytes) {
  Composed c{"<unset>",  "<unset>",  "<unset>",
             "<absent>", "<absent>", {{"one.pdf", Binary()}, {"two.bin", "\x01\x02\x03"}}};
  auto message = NewMessage();
  ASSERT_EQ(message->AddAttach(B("one.pdf").get(), DataOf(Binary()).get()), S_OK);
  ASSERT_EQ(message->AddAttach(B("two.bin").get(), DataOf("\x01\x02\x03").get()), S_OK);
  auto parsed = Reparsed(message.get());
  EXPECT_EQ(TreeShape(RootOf(parsed.get()).get()),
            "multipart/mixed(application/pdf,application/octet-stream)");
  ExpectReadsAs(parsed.get(), c);
}

TEST(MessageCompose, EveryAttachmentEncodingComesBack) {
  for (LONG encoding : {0, 1, 2, 3, 4}) {
    SCOPED_TRACE(encoding);
    Composed c{"<unset>",  "<unset>",  "<unset>",
               "body\r\n", "<absent>", {{"data.bin", "text line\r\nsecond"}}};
    auto message = NewMessage();
    message->put_AttachEncoding(encoding);
    ASSERT_EQ(message->put_TextBody(B(c.text).get()), S_OK);
    ASSERT_EQ(message->AddAttach(B("data.bin").get(), DataOf(c.attachments[0].bytes).get()), S_OK);
    ExpectReadsAs(Reparsed(message.get()).get(), c);
  }
}

TEST(MessageCompose, ANonAsciiAttachmentNameComesBackDecoded) {
  auto message = NewMessage();
  ASSERT_EQ(message->put_TextBody(B("body\r\n").get()), S_OK);
  ASSERT_EQ(message->AddAttach(B("r\xC3\xA9sum\xC3\xA9.pdf").get(), DataOf("x").get()), S_OK);
  std::vector<Attachment> attachments = AttachmentsOf(Reparsed(message.get()).get());
  ASSERT_EQ(attachments.size(), 1u);
  EXPECT_EQ(attachments[0].name, "r\xC3\xA9sum\xC3\xA9.pdf");
}

// ---------------------------------------------------------------- what the multipart framing changes
// A child keeps the line break before the next delimiter, the closing
// delimiter takes the one before it, and the writer gives the last child a
// line break of its own for that. So a last part written as it stands
// (7bit) keeps its final line break, and a quoted-printable part (whose
// line breaks are written "=0D=0A") followed by another gains one.
TEST(MessageCompose, ASevenBitLastPartKeepsItsFinalLineBreak) {
  auto message = NewMessage();
  ASSERT_EQ(message->put_TextBody(B("text\r\n").get()), S_OK);
  ASSERT_EQ(message->put_HTMLBody(B("<p>last</p>\r\n").get()), S_OK);
  EXPECT_EQ(Text(Reparsed(message.get()).get(), &IEMSMessageParser::get_HTMLBody), "<p>last</p>\r\n");
}

TEST(MessageCompose, AQuotedPrintablePartBeforeAnotherGainsALineBreak) {
  auto message = NewMessage();
  message->put_TextCodePage(65001);
  ASSERT_EQ(message->put_TextBody(B("caf\xC3\xA9\r\n").get()), S_OK);
  ASSERT_EQ(message->put_HTMLBody(B("<p>x</p>").get()), S_OK);
  auto parsed = Reparsed(message.get());
  EXPECT_EQ(PartField(ChildOf(RootOf(parsed.get()).get(), 0).get(), "Content-Transfer-Encoding"),
            "quoted-printable");
  EXPECT_EQ(Text(parsed.get(), &IEMSMessageParser::get_TextBody), "caf\xC3\xA9\r\n\r\n");
}

}  // namespace
}  // namespace pv::test
