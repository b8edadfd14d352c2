// Composing a message from nothing through the body setters and AddAttach:
// assembled and parsed again, it comes back with the same tree, bodies and
// attachments.
#include "tests/message/message_test_util.h"

namespace pv::test {
namespace {

struct Attachment {
  std::string name;
  std::string bytes;
};

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

ComPtr<IEMSMessageParser> Reparsed(IEMSMessageParser* message) {
  ComPtr<IEMSDataObject> out;
  EXPECT_EQ(message->AssembleObject(out.put()), S_OK);
  auto again = NewMessage();
  EXPECT_EQ(again->ParseObject(out.get()), S_OK);
  return again;
}

std::string Binary() {
  std::string bytes;
  for (int i = 0; i < 3000; ++i) bytes += static_cast<char>((i * 7 + 3) & 0xFF);
  return bytes;
}

void ExpectSameMessage(IEMSMessageParser* composed, IEMSMessageParser* parsed) {
  EXPECT_EQ(Text(parsed, &IEMSMessageParser::get_Subject), Text(composed, &IEMSMessageParser::get_Subject));
  EXPECT_EQ(Text(parsed, &IEMSMessageParser::get_SenderName), Text(composed, &IEMSMessageParser::get_SenderName));
  EXPECT_EQ(Text(parsed, &IEMSMessageParser::get_RecipientEmail),
            Text(composed, &IEMSMessageParser::get_RecipientEmail));
  EXPECT_EQ(Text(parsed, &IEMSMessageParser::get_TextBody), Text(composed, &IEMSMessageParser::get_TextBody));
  EXPECT_EQ(Text(parsed, &IEMSMessageParser::get_HTMLBody), Text(composed, &IEMSMessageParser::get_HTMLBody));
  std::vector<Attachment> before = AttachmentsOf(composed);
  std::vector<Attachment> after = AttachmentsOf(parsed);
  ASSERT_EQ(after.size(), before.size());
  for (size_t i = 0; i < before.size(); ++i) {
    EXPECT_EQ(after[i].name, before[i].name) << i;
    EXPECT_EQ(after[i].bytes, before[i].bytes) << i;
  }
}

TEST(MessageCompose, TextHtmlAndTwoAttachmentsComeBackAfterAParse) {
  auto message = NewMessage();
  message->put_SenderName(B("Alice Example").get());
  message->put_SenderEmail(B("alice@example.com").get());
  message->put_RecipientEmail(B("bob@example.org").get());
  message->put_Subject(B("Quarterly report").get());
  ASSERT_EQ(message->put_TextBody(B("Hello Bob,\r\nthe report is attached.\r\n").get()), S_OK);
  ASSERT_EQ(message->put_HTMLBody(B("<p>Hello Bob,</p><p>the report is attached.</p>\r\n").get()), S_OK);
  ASSERT_EQ(message->AddAttach(B("C:\\reports\\q3.pdf").get(), DataOf(Binary()).get()), S_OK);
  ASSERT_EQ(message->AddAttach(B("notes.txt").get(), DataOf("line one\r\nline two\r\n").get()), S_OK);
  EXPECT_EQ(TreeShape(RootOf(message.get()).get()).substr(0, 48), "multipart/mixed(multipart/alternative(text/plain");

  auto parsed = Reparsed(message.get());
  EXPECT_EQ(TreeShape(RootOf(parsed.get()).get()),
            "multipart/mixed(multipart/alternative(text/plain,text/html),application/pdf,text/plain)");
  ExpectSameMessage(message.get(), parsed.get());
  std::vector<Attachment> attachments = AttachmentsOf(parsed.get());
  ASSERT_EQ(attachments.size(), 2u);
  EXPECT_EQ(attachments[0].name, "q3.pdf");
  EXPECT_EQ(attachments[0].bytes, Binary());
  EXPECT_EQ(attachments[1].name, "notes.txt");
  EXPECT_EQ(attachments[1].bytes, "line one\r\nline two\r\n");
  EXPECT_EQ(RawField(HeadersOf(parsed.get()).get(), "MIME-Version"), "1.0");

  // A second round changes nothing more.
  auto again = Reparsed(parsed.get());
  EXPECT_EQ(Assembled(again.get()), Assembled(parsed.get()));
}

TEST(MessageCompose, ATextBodyAloneComesBackAsASinglePart) {
  auto message = NewMessage();
  message->put_Subject(B("hi").get());
  ASSERT_EQ(message->put_TextBody(B("just text\r\n").get()), S_OK);
  auto parsed = Reparsed(message.get());
  EXPECT_EQ(TreeShape(RootOf(parsed.get()).get()), "text/plain");
  ExpectSameMessage(message.get(), parsed.get());
}

TEST(MessageCompose, AnHtmlBodyAloneComesBackAsASinglePart) {
  auto message = NewMessage();
  ASSERT_EQ(message->put_HTMLBody(B("<p>just html</p>\r\n").get()), S_OK);
  auto parsed = Reparsed(message.get());
  EXPECT_EQ(TreeShape(RootOf(parsed.get()).get()), "text/html");
  ExpectSameMessage(message.get(), parsed.get());
}

TEST(MessageCompose, AttachmentsAloneComeBackWithTheirNamesAndBytes) {
  auto message = NewMessage();
  ASSERT_EQ(message->AddAttach(B("one.pdf").get(), DataOf(Binary()).get()), S_OK);
  ASSERT_EQ(message->AddAttach(B("two.bin").get(), DataOf("\x01\x02\x03").get()), S_OK);
  auto parsed = Reparsed(message.get());
  EXPECT_EQ(TreeShape(RootOf(parsed.get()).get()), "multipart/mixed(application/pdf,application/octet-stream)");
  ExpectSameMessage(message.get(), parsed.get());
}

TEST(MessageCompose, EveryAttachmentEncodingComesBack) {
  for (LONG encoding : {0, 1, 2, 3, 4}) {
    auto message = NewMessage();
    message->put_AttachEncoding(encoding);
    ASSERT_EQ(message->put_TextBody(B("body\r\n").get()), S_OK);
    ASSERT_EQ(message->AddAttach(B("data.bin").get(), DataOf("text line\r\nsecond\r\n").get()), S_OK);
    auto parsed = Reparsed(message.get());
    SCOPED_TRACE(encoding);
    ExpectSameMessage(message.get(), parsed.get());
  }
}

TEST(MessageCompose, ANonAsciiAttachmentNameComesBackDecoded) {
  auto message = NewMessage();
  ASSERT_EQ(message->put_TextBody(B("body\r\n").get()), S_OK);
  ASSERT_EQ(message->AddAttach(B("r\xC3\xA9sum\xC3\xA9.pdf").get(), DataOf("x").get()), S_OK);
  auto parsed = Reparsed(message.get());
  std::vector<Attachment> attachments = AttachmentsOf(parsed.get());
  ASSERT_EQ(attachments.size(), 1u);
  EXPECT_EQ(attachments[0].name, "r\xC3\xA9sum\xC3\xA9.pdf");
}

}  // namespace
}  // namespace pv::test
