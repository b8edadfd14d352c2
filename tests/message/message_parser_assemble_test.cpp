// Assembling a message: its own fields, then the blank line and the plain
// body, or the root part's assembly; always into a new data object.
#include "tests/message/message_test_util.h"

namespace pv::test {
namespace {

TEST(MessageAssemble, AParsedPlainMessageAssemblesToItsFieldsABlankLineAndItsBody) {
  const std::string text = "From: a@b\r\nSubject: s\r\n\r\nline one\r\nline two\r\n";
  auto message = ParsedMessage(text);
  EXPECT_EQ(Assembled(message.get()), text);
}

// The header block ends at the first "\r\n\r\n": with no field before it the
// blank line alone would not end it, so the output begins with both.
TEST(MessageAssemble, AnEmptyHeaderListAndAPlainBodyGiveTheEmptyHeaderBlockAndTheBody) {
  auto message = NewMessage();
  message->put_BodyObject(DataOf("just a body").get());
  EXPECT_EQ(Assembled(message.get()), "\r\n\r\njust a body");
}

TEST(MessageAssemble, AMessageWithoutFieldsReadsBackAsItWas) {
  auto message = ParsedMessage("\r\n\r\n\r\nFrom: not a field\r\n\r\nbody");
  EXPECT_EQ(Assembled(message.get()), "\r\n\r\n\r\nFrom: not a field\r\n\r\nbody");
  auto again = ParsedMessage(Assembled(message.get()));
  EXPECT_EQ(FieldNames(HeadersOf(again.get()).get()), "");
  EXPECT_EQ(Assembled(again.get()), Assembled(message.get()));
}

TEST(MessageAssemble, AMessageWithoutBodyOrRootPartGivesItsFieldsOnly) {
  auto message = ParsedMessage("Subject: s\r\nTo: a@b\r\n");
  EXPECT_EQ(Assembled(message.get()), "Subject: s\r\nTo: a@b\r\n");
}

TEST(MessageAssemble, ANewMessageAssemblesToNothing) {
  auto message = NewMessage();
  EXPECT_EQ(Assembled(message.get()), "");
  EXPECT_EQ(Text(message.get(), &IEMSMessageParser::get_FullMessage), "");
}

TEST(MessageAssemble, BytesAbove127InTheBodySurviveAssembly) {
  std::string body = "caf\xE9 \x80\x81\xFF\r\n";
  auto message = ParsedMessage("Subject: s\r\n\r\n" + body);
  EXPECT_EQ(Assembled(message.get()), "Subject: s\r\n\r\n" + body);
}

TEST(MessageAssemble, FullMessageGetGivesTheBytesAsAnsiCharacters) {
  auto message = ParsedMessage("Subject: s\r\n\r\ncaf\xE9 \x80");
  EXPECT_EQ(Text(message.get(), &IEMSMessageParser::get_FullMessage),
            "Subject: s\r\n\r\ncaf\xC3\xA9 \xE2\x82\xAC");
}

TEST(MessageAssemble, AssemblyNeedsAResultPlace) {
  auto message = NewMessage();
  EXPECT_EQ(message->AssembleObject(nullptr), E_POINTER);
  EXPECT_EQ(message->get_FullMessage(nullptr), E_POINTER);
}

TEST(MessageAssemble, AssemblyIsANewObjectEveryTime) {
  auto data = DataOf("Subject: s\r\n\r\nbody");
  auto message = NewMessage();
  ASSERT_EQ(message->ParseObject(data.get()), S_OK);
  ComPtr<IEMSDataObject> first, second;
  ASSERT_EQ(message->AssembleObject(first.put()), S_OK);
  ASSERT_EQ(message->AssembleObject(second.put()), S_OK);
  EXPECT_NE(first.get(), data.get());
  EXPECT_NE(first.get(), second.get());
  ULONG position = 1;
  first->get_Position(&position);
  EXPECT_EQ(position, 0u);
}

TEST(MessageAssemble, ChangesMadeAfterTheParseShowInTheAssembly) {
  auto message = ParsedMessage("Subject: s\r\n\r\nbody");
  message->put_Subject(B("changed").get());
  message->put_HeaderString(B("X-Extra").get(), B("1").get());
  message->put_Body(B("new body").get());
  EXPECT_EQ(Assembled(message.get()),
            "Subject: =?windows-1252?B?Y2hhbmdlZA==?=\r\nX-Extra: 1\r\n\r\nnew body");
}

TEST(MessageAssemble, AssemblyAddsNoFieldOfItsOwn) {
  auto message = NewMessage();
  message->put_Body(B("text").get());
  EXPECT_EQ(Assembled(message.get()), "\r\n\r\ntext");
}

TEST(MessageAssemble, AnAssembledMessageParsesBackToTheSameMessage) {
  auto first = ParsedMessage("From: a@b\r\nSubject: s\r\n\r\nbody\r\n");
  first->put_RecipientEmail(B("c@d").get());
  ComPtr<IEMSDataObject> out;
  ASSERT_EQ(first->AssembleObject(out.put()), S_OK);
  auto second = NewMessage();
  ASSERT_EQ(second->ParseObject(out.get()), S_OK);
  EXPECT_EQ(FieldNames(HeadersOf(second.get()).get()), "From,Subject,To");
  EXPECT_EQ(BodyBytes(second.get()), "body\r\n");
  EXPECT_EQ(Assembled(second.get()), Assembled(first.get()));
}

}  // namespace
}  // namespace pv::test
