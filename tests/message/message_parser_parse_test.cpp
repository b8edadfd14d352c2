// Parsing a message: the header block, the body, the parsed flag and the
// statuses of ParseObject, Parse and FullMessage put.
#include "tests/message/message_test_util.h"

namespace pv::test {
namespace {

ComPtr<IEMSMessageParameter> Field(IEMSMessageParser* message, std::string_view name) {
  ComPtr<IEMSMessageParameter> field;
  HeadersOf(message)->FindParameter(B(name).get(), field.put());
  return field;
}

// ---------------------------------------------------------------- plain messages
TEST(MessageParse, OneFieldAndAFiveByteBodyMakeAPlainMessage) {
  auto message = ParsedMessage("Subject: hello\r\n\r\nabcde");
  EXPECT_EQ(FieldNames(HeadersOf(message.get()).get()), "Subject");
  EXPECT_EQ(RawField(HeadersOf(message.get()).get(), "Subject"), "hello");
  EXPECT_FALSE(HasRoot(message.get()));
  EXPECT_EQ(BodyBytes(message.get()), "abcde");
  EXPECT_EQ(message->IsMimeMessage(), E_FAIL);
}

TEST(MessageParse, ThePlainBodyIsASpanOfTheParsedBuffer) {
  auto data = DataOf("Subject: hello\r\n\r\nabcde");
  auto message = NewMessage();
  ASSERT_EQ(message->ParseObject(data.get()), S_OK);
  ComPtr<IEMSDataObject> body;
  message->get_BodyObject(body.put());
  ASSERT_TRUE(body);
  EXPECT_NE(body.get(), data.get());
  ULONG position = 0, length = 0, size = 0;
  body->get_Position(&position);
  body->get_Length(&length);
  body->get_DataSize(&size);
  EXPECT_EQ(position, 18u);
  EXPECT_EQ(length, 5u);
  EXPECT_EQ(size, 23u);  // the whole buffer, shared
}

TEST(MessageParse, OnlyTheDataObjectsSpanIsParsed) {
  auto data = DataOf("xxxxSubject: s\r\n\r\nbodyyyyy");
  data->put_Position(4);
  data->put_Length(18);
  auto message = NewMessage();
  ASSERT_EQ(message->ParseObject(data.get()), S_OK);
  EXPECT_EQ(FieldNames(HeadersOf(message.get()).get()), "Subject");
  ComPtr<IEMSDataObject> body;
  message->get_BodyObject(body.put());
  ASSERT_TRUE(body);
  EXPECT_EQ(SpanBytes(body.get()), "body");
  ULONG position = 0;
  body->get_Position(&position);
  EXPECT_EQ(position, 18u);  // an absolute index into the buffer
  // The caller's object keeps its span.
  ULONG length = 0;
  data->get_Length(&length);
  EXPECT_EQ(length, 18u);
}

TEST(MessageParse, AMessageWithoutABlankLineHasNoBody) {
  auto message = ParsedMessage("Subject: s\r\nTo: a@b\r\n");
  EXPECT_EQ(FieldNames(HeadersOf(message.get()).get()), "Subject,To");
  EXPECT_EQ(BodyBytes(message.get()), "<none>");
  EXPECT_FALSE(HasRoot(message.get()));
}

TEST(MessageParse, ABlankLineAtTheVeryEndGivesNoBody) {
  auto message = ParsedMessage("Subject: s\r\n\r\n");
  EXPECT_EQ(BodyBytes(message.get()), "<none>");
}

TEST(MessageParse, BareLineFeedsMakeTheWholeMessageTheHeaderBlock) {
  auto message = ParsedMessage("Subject: s\nTo: a@b\n\nBody: line\n");
  EXPECT_EQ(BodyBytes(message.get()), "<none>");
  // The header list reads the whole span, body line included.
  EXPECT_EQ(FieldNames(HeadersOf(message.get()).get()), "Subject,To,Body");
}

TEST(MessageParse, AMessageStartingWithABlankLineHasOnlyAPlainBody) {
  auto message = ParsedMessage("\r\n\r\nBody: not a field\r\n");
  EXPECT_EQ(FieldNames(HeadersOf(message.get()).get()), "");
  EXPECT_EQ(BodyBytes(message.get()), "Body: not a field\r\n");
  EXPECT_EQ(message->IsMimeMessage(), E_FAIL);
}

TEST(MessageParse, AnEmptyBufferParsesToAnEmptyMessage) {
  auto message = ParsedMessage("");
  EXPECT_EQ(FieldNames(HeadersOf(message.get()).get()), "");
  EXPECT_EQ(BodyBytes(message.get()), "<none>");
  EXPECT_EQ(Assembled(message.get()), "");
}

TEST(MessageParse, MimeVersionAloneDoesNotMakeAMimeMessage) {
  auto message = ParsedMessage("MIME-Version: 1.0\r\nSubject: s\r\n\r\nbody");
  EXPECT_FALSE(HasRoot(message.get()));
  EXPECT_EQ(BodyBytes(message.get()), "body");
  EXPECT_EQ(FieldNames(HeadersOf(message.get()).get()), "MIME-Version,Subject");
}

TEST(MessageParse, ANameWithContentFurtherInStaysInTheHeaders) {
  auto message = ParsedMessage("X-Content-Type: a/b\r\nX-Mailer-Content-Id: 1\r\n\r\nbody");
  EXPECT_EQ(FieldNames(HeadersOf(message.get()).get()), "X-Content-Type,X-Mailer-Content-Id");
  EXPECT_FALSE(HasRoot(message.get()));
}

TEST(MessageParse, RepeatedFieldsAreChainedByTheHeaderList) {
  auto message = ParsedMessage("Received: a\r\nReceived: b\r\nSubject: s\r\n\r\nx");
  EXPECT_EQ(FieldNames(HeadersOf(message.get()).get()), "Received,Subject");
  EXPECT_EQ(Assembled(message.get()), "Received: a\r\nReceived: b\r\nSubject: s\r\n\r\nx");
}

// ---------------------------------------------------------------- statuses
TEST(MessageParse, ParseObjectOfNothingIsAPointerError) {
  auto message = NewMessage();
  EXPECT_EQ(message->ParseObject(nullptr), E_POINTER);
}

TEST(MessageParse, ABufferThatIsNotABytesArrayFailsAfterEmptyingTheMessage) {
  auto message = ParsedMessage("Subject: s\r\n\r\nbody");
  auto words = Create<IEMSDataObject>(CLSID_EMSDataObject);
  VARIANT v = Utf16Variant(W("Subject: t\r\n\r\nx"));
  ASSERT_EQ(words->put_Data(v), S_OK);  // an array of 16-bit elements
  VariantClear(&v);
  EXPECT_EQ(message->ParseObject(words.get()), E_FAIL);
  EXPECT_EQ(FieldNames(HeadersOf(message.get()).get()), "");
  EXPECT_EQ(BodyBytes(message.get()), "<none>");
  // The parsed flag stays clear: Parse tries again and fails again.
  EXPECT_EQ(message->Parse(), E_FAIL);
}

TEST(MessageParse, ADataObjectWithoutAnArrayFails) {
  auto message = NewMessage();
  EXPECT_EQ(message->ParseObject(Create<IEMSDataObject>(CLSID_EMSDataObject).get()), E_FAIL);
}

TEST(MessageParse, AFailedCloneOfTheHeaderBlockGivesItsStatus) {
  auto message = NewMessage();
  auto data = ForeignData::Make("Subject: s\r\n\r\nbody", E_OUTOFMEMORY);
  EXPECT_EQ(message->ParseObject(data.get()), E_OUTOFMEMORY);
  EXPECT_EQ(message->Parse(), E_OUTOFMEMORY);  // not parsed
}

TEST(MessageParse, AFailedCloneOfTheBodyAloneIsNotReported) {
  // Without a header block only the body is cloned.
  auto message = NewMessage();
  auto data = ForeignData::Make("\r\n\r\nbody", E_OUTOFMEMORY);
  EXPECT_EQ(message->ParseObject(data.get()), S_OK);
  EXPECT_EQ(BodyBytes(message.get()), "<none>");
}

TEST(MessageParse, ADataObjectOfAnotherImplementationIsReadThroughItsInterface) {
  auto message = NewMessage();
  auto data = ForeignData::Make("Subject: s\r\n\r\nbody");
  ASSERT_EQ(message->ParseObject(data.get()), S_OK);
  EXPECT_EQ(FieldNames(HeadersOf(message.get()).get()), "Subject");
  EXPECT_EQ(BodyBytes(message.get()), "body");
}

// ---------------------------------------------------------------- the parsed flag
TEST(MessageParse, ParsingTheSameObjectTwiceParsesOnce) {
  auto message = NewMessage();
  auto data = DataOf("Subject: s\r\n\r\nbody");
  ASSERT_EQ(message->ParseObject(data.get()), S_OK);
  HeadersOf(message.get())->RemoveAll();
  EXPECT_EQ(message->ParseObject(data.get()), S_OK);
  EXPECT_EQ(FieldNames(HeadersOf(message.get()).get()), "");  // not parsed again
}

TEST(MessageParse, InitNewBetweenTwoParsesOfOneObjectParsesTwice) {
  auto message = NewMessage();
  auto data = DataOf("Subject: s\r\n\r\nbody");
  ASSERT_EQ(message->ParseObject(data.get()), S_OK);
  HeadersOf(message.get())->RemoveAll();
  message->InitNew();
  EXPECT_EQ(message->ParseObject(data.get()), S_OK);
  EXPECT_EQ(FieldNames(HeadersOf(message.get()).get()), "Subject");
}

TEST(MessageParse, AnotherObjectIsAlwaysParsed) {
  auto message = ParsedMessage("Subject: one\r\n\r\nx");
  ASSERT_EQ(message->ParseObject(DataOf("To: two@x\r\n\r\ny").get()), S_OK);
  EXPECT_EQ(FieldNames(HeadersOf(message.get()).get()), "To");
  EXPECT_EQ(BodyBytes(message.get()), "y");
}

TEST(MessageParse, ParsingANewObjectResetsTheEncodingsButKeepsTheDefaultCodePage) {
  auto message = NewMessage();
  message->put_DefaultEncoding(1);
  message->put_DefaultCodePage(65001);
  message->put_TextCodePage(28591);
  ASSERT_EQ(message->ParseObject(DataOf("Subject: s\r\n\r\nx").get()), S_OK);
  EXPECT_EQ(Number(message.get(), &IEMSMessageParser::get_DefaultEncoding), 3);
  EXPECT_EQ(Number(message.get(), &IEMSMessageParser::get_DefaultCodePage), 65001);
  EXPECT_EQ(Number(message.get(), &IEMSMessageParser::get_TextCodePage), 65001);
}

TEST(MessageParse, ParsedFieldsTakeTheMessagesDefaultCodePage) {
  auto message = NewMessage();
  message->put_DefaultCodePage(65001);
  ASSERT_EQ(message->ParseObject(DataOf("Subject: s\r\n\r\nx").get()), S_OK);
  EXPECT_EQ(Number(Field(message.get(), "Subject").get(), &IEMSMessageParameter::get_DefaultCodePage), 65001);
}

TEST(MessageParse, TheParsedObjectBecomesTheStoredMessage) {
  auto message = NewMessage();
  auto data = DataOf("Subject: s\r\n\r\nx");
  ASSERT_EQ(message->ParseObject(data.get()), S_OK);
  ComPtr<IEMSDataObject> stored;
  message->get_StoredMessageObject(stored.put());
  EXPECT_EQ(stored.get(), data.get());
}

// ---------------------------------------------------------------- FullMessage put
TEST(MessageParse, FullMessagePutParsesTheText) {
  auto message = NewMessage();
  EXPECT_EQ(message->put_FullMessage(B("Subject: s\r\n\r\nbody").get()), S_OK);
  EXPECT_EQ(FieldNames(HeadersOf(message.get()).get()), "Subject");
  EXPECT_EQ(BodyBytes(message.get()), "body");
  ULONG size = 0;
  EXPECT_EQ(message->get_Size(&size), S_OK);
  EXPECT_EQ(size, 18u);
}

TEST(MessageParse, FullMessagePutStoresTheTextInTheAnsiCodePage) {
  auto message = NewMessage();
  EXPECT_EQ(message->put_FullMessage(B("Subject: s\r\n\r\ncaf\xC3\xA9 \xE2\x82\xAC").get()), S_OK);
  EXPECT_EQ(BodyBytes(message.get()), "caf\xE9 \x80");
}

TEST(MessageParse, FullMessagePutOfNoStringFails) {
  auto message = ParsedMessage("Subject: s\r\n\r\nx");
  EXPECT_EQ(message->put_FullMessage(nullptr), E_FAIL);
  EXPECT_EQ(FieldNames(HeadersOf(message.get()).get()), "Subject");  // untouched
}

TEST(MessageParse, FullMessagePutOfAnEmptyStringEmptiesTheMessageAndFails) {
  auto message = ParsedMessage("Subject: s\r\n\r\nx");
  EXPECT_EQ(message->put_FullMessage(B("").get()), E_FAIL);
  EXPECT_EQ(FieldNames(HeadersOf(message.get()).get()), "");
  EXPECT_EQ(BodyBytes(message.get()), "<none>");
}

}  // namespace
}  // namespace pv::test
