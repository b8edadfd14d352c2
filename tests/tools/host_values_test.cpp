// What the library's own setters do with text from a user, as a host sees
// it: the README's "Values from users" section rests on these checks.
// They pin the library's documented behaviour; the compose command does
// not rely on it (see compose_hostile_test.cpp).
#ifdef PARCELVANE_TOOL_PATH

#include <gtest/gtest.h>

#include <string>

#include "tools/com.h"
#include "tools/message_view.h"

namespace pvtool {
namespace {

constexpr LONG kUtf8 = 65001;

Ref<IEMSMessageParser> NewMessage() {
  Ref<IEMSMessageParser> message = CreateObject<IEMSMessageParser>(CLSID_EMSMessageParser, "message");
  message->put_DefaultCodePage(kUtf8);
  message->InitNew();
  return message;
}

std::string Assembled(IEMSMessageParser* message) {
  Ref<IEMSDataObject> data;
  Check(message->AssembleObject(data.put()), "assembling");
  return SpanBytes(data.get());
}

Ref<IEMSMessageParser> Reparsed(IEMSMessageParser* message) { return ParseMessage(Assembled(message)); }

std::string Get(IEMSMessageParser* message, HRESULT (IEMSMessageParser::*getter)(BSTR*)) {
  Bstr value;
  (message->*getter)(value.put());
  return value.utf8();
}

TEST(HostValues, SubjectPutWritesALineBreakAsItStands) {
  Ref<IEMSMessageParser> message = NewMessage();
  ASSERT_EQ(message->put_Subject(Bstr("Hi\r\nBcc: evil@example.net").get()), S_OK);
  EXPECT_NE(Assembled(message.get()).find("Subject: Hi\r\nBcc: evil@example.net\r\n"), std::string::npos);
  Ref<IEMSMessageParameter> bcc;
  EXPECT_EQ(Reparsed(message.get())->FindHeader(Bstr("Bcc").get(), bcc.put()), S_OK);
  EXPECT_TRUE(bcc);
}

TEST(HostValues, SubjectPutMakesTwoFieldsOfAnEmptyLine) {
  Ref<IEMSMessageParser> message = NewMessage();
  ASSERT_EQ(message->put_Subject(Bstr("one\r\n\r\ntwo").get()), S_OK);
  EXPECT_NE(Assembled(message.get()).find("Subject: one\r\nSubject: two\r\n"), std::string::npos)
      << Assembled(message.get());
}

TEST(HostValues, HeaderStringPutWritesALineBreakAsItStands) {
  Ref<IEMSMessageParser> message = NewMessage();
  ASSERT_EQ(message->put_HeaderString(Bstr("X-Note").get(), Bstr("a\r\nBcc: evil@example.net").get()), S_OK);
  EXPECT_NE(Assembled(message.get()).find("X-Note: a\r\nBcc: evil@example.net\r\n"), std::string::npos);
}

TEST(HostValues, SenderNamePutQuotesTheNameWithoutEscapingIt) {
  Ref<IEMSMessageParser> message = NewMessage();
  message->put_SenderEmail(Bstr("a@example.org").get());
  ASSERT_EQ(message->put_SenderName(Bstr("x\" <evil@example.net>, \"y").get()), S_OK);
  EXPECT_NE(Assembled(message.get()).find("From: \"x\" <evil@example.net>, \"y\" <a@example.org>\r\n"),
            std::string::npos);
  EXPECT_EQ(Get(Reparsed(message.get()).get(), &IEMSMessageParser::get_SenderEmail), "evil@example.net");
}

TEST(HostValues, ANameListWithEncodingTwoWritesEveryNameAsEncodedWords) {
  // The safe way for a host: B words hold quotes and line breaks as data.
  Ref<IEMSMessageParser> message = NewMessage();
  Ref<IEMSMessageParameter> field;
  ASSERT_EQ(message->CreateHeader(Bstr("From").get(), field.put()), S_OK);
  Ref<IEMSHeaderMailboxes> list;
  ASSERT_TRUE(SUCCEEDED(field->get_HeaderMailboxes(list.put())) && list);
  const std::string name = "x\" <evil@example.net>\r\nBcc: \"y";
  list->put_MailboxData(-1, Bstr(name).get(), Bstr("a@example.org").get());
  field->put_DefaultCodePage(kUtf8);
  field->put_DefaultEncoding(2);
  ASSERT_EQ(field->put_HeaderMailboxes(list.get()), S_OK);
  const Ref<IEMSMessageParser> parsed = Reparsed(message.get());
  EXPECT_EQ(Get(parsed.get(), &IEMSMessageParser::get_SenderName), name);
  EXPECT_EQ(Get(parsed.get(), &IEMSMessageParser::get_SenderEmail), "a@example.org");
  Ref<IEMSMessageParameter> bcc;
  parsed->FindHeader(Bstr("Bcc").get(), bcc.put());
  EXPECT_FALSE(bcc);
}

TEST(HostValues, AnAttributesDecodedValueThatWouldNotReadBackIsEncoded) {
  Ref<IEMSMimeAttribute> attribute = CreateObject<IEMSMimeAttribute>(CLSID_EMSMimeAttribute, "attribute");
  attribute->put_Name(Bstr("filename").get());
  ASSERT_EQ(attribute->put_DecodedValue(Bstr("x.txt\"; name=\"evil.exe").get()), S_OK);
  Bstr text;
  ASSERT_EQ(attribute->AssembleAttribute(text.put()), S_OK);
  // A quote and the text after it, as one B encoded word.
  EXPECT_EQ(text.utf8(), "filename=\"=?utf-8?B?eC50eHQiOyBuYW1lPSJldmlsLmV4ZQ==?=\"");
  // A line break likewise; plain ASCII stays plain.
  attribute->put_DecodedValue(Bstr("a\r\nb").get());
  attribute->AssembleAttribute(text.put());
  EXPECT_EQ(text.utf8(), "filename=\"=?utf-8?B?YQ0KYg==?=\"");
  attribute->put_DecodedValue(Bstr("report.pdf").get());
  attribute->AssembleAttribute(text.put());
  EXPECT_EQ(text.utf8(), "filename=\"report.pdf\"");
  attribute->put_DecodedValue(Bstr("\xC3\xA9.txt").get());
  attribute->AssembleAttribute(text.put());
  EXPECT_EQ(text.utf8().find("filename=\"=?utf-8?"), 0u) << text.utf8();
}

TEST(HostValues, AttachNameDropsDirectoriesButKeepsControlCharactersOfAFileName) {
  const std::string message =
      "Content-Type: multipart/mixed; boundary=\"b\"\r\n\r\n--b\r\n"
      "Content-Type: application/octet-stream\r\n"
      "Content-Disposition: attachment; filename=\"../../etc/passwd.txt\"\r\n\r\nx\r\n--b\r\n"
      "Content-Type: application/octet-stream\r\n"
      "Content-Disposition: attachment; filename=\"=?utf-8?B?YQ0KYhtbMm0uZXhl?=\"\r\n\r\nx\r\n--b--\r\n";
  const std::vector<AttachmentInfo> attachments = MessageView(ParseMessage(message)).Attachments();
  ASSERT_EQ(attachments.size(), 2u);
  EXPECT_EQ(attachments[0].name, "passwd.txt");
  EXPECT_EQ(attachments[1].name, "a\r\nb\x1B[2m.exe");
}

}  // namespace
}  // namespace pvtool

#endif
