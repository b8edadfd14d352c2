// Bodies and attachments of the message, and the part-tree operations it
// forwards to its root part.
#include "tests/message/message_test_util.h"

namespace pv::test {
namespace {

// ---------------------------------------------------------------- Body
TEST(MessageBodies, BodyGetOfAPlainMessageIsItsBodyInTheAnsiCodePage) {
  auto message = ParsedMessage("Subject: s\r\n\r\ncaf\xE9\r\n");
  EXPECT_EQ(Text(message.get(), &IEMSMessageParser::get_Body), "caf\xC3\xA9\r\n");
}

TEST(MessageBodies, BodyGetWithoutABodyIsAnEmptyString) {
  auto message = ParsedMessage("Subject: s\r\n");
  EXPECT_EQ(Text(message.get(), &IEMSMessageParser::get_Body), "");
}

TEST(MessageBodies, BodyGetNeedsAResultPlace) {
  auto message = NewMessage();
  EXPECT_EQ(message->get_Body(nullptr), E_POINTER);
}

TEST(MessageBodies, BodyPutReplacesThePlainBody) {
  auto message = ParsedMessage("Subject: s\r\n\r\nold");
  EXPECT_EQ(message->put_Body(B("new \xE2\x82\xAC").get()), S_OK);
  EXPECT_EQ(BodyBytes(message.get()), "new \x80");
}

TEST(MessageBodies, BodyPutOfNoStringFails) {
  auto message = ParsedMessage("Subject: s\r\n\r\nold");
  EXPECT_EQ(message->put_Body(nullptr), E_FAIL);
  EXPECT_EQ(BodyBytes(message.get()), "old");
}

TEST(MessageBodies, BodyPutOfAnEmptyStringHoldsABodyWithoutBytes) {
  auto message = ParsedMessage("Subject: s\r\n\r\nold");
  EXPECT_EQ(message->put_Body(B("").get()), S_OK);
  EXPECT_EQ(Text(message.get(), &IEMSMessageParser::get_Body), "");
  EXPECT_EQ(Assembled(message.get()), "Subject: s\r\n\r\n");
}

// ---------------------------------------------------------------- text and HTML bodies of a plain message
TEST(MessageBodies, TextBodyOfAPlainMessageIsReadInTheTextCodePage) {
  auto message = ParsedMessage("Subject: s\r\n\r\ncaf\xC3\xA9");
  EXPECT_EQ(Text(message.get(), &IEMSMessageParser::get_TextBody), "caf\xC3\x83\xC2\xA9");  // as windows-1252
  message->put_TextCodePage(65001);
  EXPECT_EQ(Text(message.get(), &IEMSMessageParser::get_TextBody), "caf\xC3\xA9");
}

TEST(MessageBodies, TextAndHtmlBodyGettersNeedAResultPlace) {
  auto message = ParsedMessage("Subject: s\r\n\r\nx");
  EXPECT_EQ(message->get_TextBody(nullptr), E_POINTER);
  EXPECT_EQ(message->get_HTMLBody(nullptr), E_POINTER);
}

TEST(MessageBodies, HtmlBodyOfAPlainMessageIsAbsent) {
  auto message = ParsedMessage("Subject: s\r\n\r\n<p>x</p>");
  BSTR value = nullptr;
  EXPECT_EQ(message->get_HTMLBody(&value), S_FALSE);
  EXPECT_EQ(value, nullptr);
}

TEST(MessageBodies, TextBodyOfAMessageWithoutAnyBodyIsAbsent) {
  auto message = ParsedMessage("Subject: s\r\n");
  BSTR value = nullptr;
  EXPECT_EQ(message->get_TextBody(&value), S_FALSE);
  EXPECT_EQ(value, nullptr);
  EXPECT_EQ(message->get_HTMLBody(&value), S_FALSE);
  EXPECT_EQ(value, nullptr);
}

// ---------------------------------------------------------------- forwards on a message that is not MIME
TEST(MessageBodies, TreeOperationsFailOnAPlainMessage) {
  auto message = ParsedMessage("Subject: s\r\n\r\nx");
  auto part = Create<IEMSDataObject>(CLSID_EMSDataObject);  // any object will do for the status checks
  ComPtr<IEMSMimePart> found;
  EXPECT_EQ(message->FindPartBySubType(18, found.put()), E_FAIL);
  EXPECT_EQ(message->FindPart(B("text/plain").get(), 1, found.put()), E_FAIL);
  EXPECT_FALSE(found);
}

TEST(MessageBodies, TreeOperationsCheckTheirArgumentsFirst) {
  auto message = NewMessage();
  ComPtr<IEMSMimePart> found;
  EXPECT_EQ(message->RemovePart(nullptr), E_POINTER);
  EXPECT_EQ(message->FindPart(nullptr, 0, found.put()), E_POINTER);
  EXPECT_EQ(message->FindPart(B("text/plain").get(), 0, nullptr), E_POINTER);
  EXPECT_EQ(message->FindParentPart(nullptr, found.put()), E_POINTER);
  EXPECT_EQ(message->AddPart(10, nullptr), E_POINTER);
}

TEST(MessageBodies, ConvertToMultipartWithoutContentDoesNothing) {
  auto message = ParsedMessage("Subject: s\r\n");
  EXPECT_EQ(message->ConvertToMultipart(10), S_FALSE);
  EXPECT_FALSE(HasRoot(message.get()));
}

TEST(MessageBodies, AddAttachOfNoObjectFails) {
  auto message = ParsedMessage("Subject: s\r\n\r\nx");
  EXPECT_EQ(message->AddAttach(B("a.txt").get(), nullptr), E_FAIL);
  EXPECT_EQ(Assembled(message.get()), "Subject: s\r\n\r\nx");
}

TEST(MessageBodies, AttachPartsOfAPlainMessageIsAbsent) {
  auto message = ParsedMessage("Subject: s\r\n\r\nx");
  ComPtr<IEMSMimeParts> parts;
  EXPECT_EQ(message->get_AttachParts(parts.put()), S_FALSE);
  EXPECT_FALSE(parts);
}

}  // namespace
}  // namespace pv::test
