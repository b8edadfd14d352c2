// The message object's data model: initial values, the reset, and the
// plain accessors of its members.
#include "tests/message/message_test_util.h"

namespace pv::test {
namespace {

constexpr LONG kAnsi = 1252;

class MessageParserTest : public ::testing::Test {
 protected:
  ComPtr<IEMSMessageParser> message_ = NewMessage();
};

// ---------------------------------------------------------------- creation
TEST_F(MessageParserTest, NewMessageHasTheDocumentedDefaults) {
  EXPECT_EQ(Number(message_.get(), &IEMSMessageParser::get_DefaultCodePage), kAnsi);
  EXPECT_EQ(Number(message_.get(), &IEMSMessageParser::get_TextCodePage), kAnsi);
  EXPECT_EQ(Number(message_.get(), &IEMSMessageParser::get_HtmlCodePage), kAnsi);
  EXPECT_EQ(Number(message_.get(), &IEMSMessageParser::get_DefaultEncoding), 3);
  EXPECT_EQ(Number(message_.get(), &IEMSMessageParser::get_TextEncoding), 3);
  EXPECT_EQ(Number(message_.get(), &IEMSMessageParser::get_HtmlEncoding), 3);
  EXPECT_EQ(Number(message_.get(), &IEMSMessageParser::get_AttachEncoding), 2);
  EXPECT_EQ(Number(message_.get(), &IEMSMessageParser::get_AttachHeaderEncoding), 3);
}

TEST_F(MessageParserTest, NewMessageHasAnEmptyHeaderListAndNoContent) {
  ComPtr<IEMSMessageParameters> headers = HeadersOf(message_.get());
  ASSERT_TRUE(headers);
  EXPECT_EQ(Number(headers.get(), &IEMSMessageParameters::get_ParamCount), 0);
  EXPECT_FALSE(HasRoot(message_.get()));
  EXPECT_EQ(BodyBytes(message_.get()), "<none>");
  ComPtr<IEMSDataObject> stored;
  EXPECT_EQ(message_->get_StoredMessageObject(stored.put()), S_OK);
  EXPECT_FALSE(stored);
  EXPECT_EQ(message_->IsMimeMessage(), E_FAIL);
}

TEST_F(MessageParserTest, NewHeaderListCarriesTheMessageDefaults) {
  ComPtr<IEMSMessageParameters> headers = HeadersOf(message_.get());
  EXPECT_EQ(Number(headers.get(), &IEMSMessageParameters::get_DefaultCodePage), kAnsi);
  EXPECT_EQ(Number(headers.get(), &IEMSMessageParameters::get_DefaultEncoding), 3);
}

// ---------------------------------------------------------------- InitNew
TEST_F(MessageParserTest, InitNewResetsCodePagesToTheDefaultCodePage) {
  message_->put_DefaultCodePage(65001);
  message_->put_TextCodePage(28591);
  message_->put_HtmlCodePage(28591);
  EXPECT_EQ(message_->InitNew(), S_OK);
  EXPECT_EQ(Number(message_.get(), &IEMSMessageParser::get_DefaultCodePage), 65001);
  EXPECT_EQ(Number(message_.get(), &IEMSMessageParser::get_TextCodePage), 65001);
  EXPECT_EQ(Number(message_.get(), &IEMSMessageParser::get_HtmlCodePage), 65001);
}

TEST_F(MessageParserTest, InitNewResetsEncodingsButKeepsTheAttachmentHeaderEncoding) {
  message_->put_DefaultEncoding(1);
  message_->put_TextEncoding(1);
  message_->put_HtmlEncoding(2);
  message_->put_AttachEncoding(4);
  message_->put_AttachHeaderEncoding(1);
  EXPECT_EQ(message_->InitNew(), S_OK);
  EXPECT_EQ(Number(message_.get(), &IEMSMessageParser::get_DefaultEncoding), 3);
  EXPECT_EQ(Number(message_.get(), &IEMSMessageParser::get_TextEncoding), 3);
  EXPECT_EQ(Number(message_.get(), &IEMSMessageParser::get_HtmlEncoding), 3);
  EXPECT_EQ(Number(message_.get(), &IEMSMessageParser::get_AttachEncoding), 2);
  EXPECT_EQ(Number(message_.get(), &IEMSMessageParser::get_AttachHeaderEncoding), 1);
}

TEST_F(MessageParserTest, InitNewHandsTheDefaultsToTheHeaderList) {
  ComPtr<IEMSMessageParameters> headers = HeadersOf(message_.get());
  headers->put_DefaultCodePage(28591);
  headers->put_DefaultEncoding(1);
  message_->put_DefaultCodePage(65001);
  message_->put_DefaultEncoding(2);
  // A put alone does not reach the list...
  EXPECT_EQ(Number(headers.get(), &IEMSMessageParameters::get_DefaultCodePage), 28591);
  message_->InitNew();
  // ...the reset does, with the encoding back at 3.
  EXPECT_EQ(Number(headers.get(), &IEMSMessageParameters::get_DefaultCodePage), 65001);
  EXPECT_EQ(Number(headers.get(), &IEMSMessageParameters::get_DefaultEncoding), 3);
}

TEST_F(MessageParserTest, InitNewReleasesTheStoredMessageButKeepsTheContent) {
  message_ = ParsedMessage("Subject: s\r\n\r\nbody");
  EXPECT_EQ(message_->InitNew(), S_OK);
  ComPtr<IEMSDataObject> stored;
  message_->get_StoredMessageObject(stored.put());
  EXPECT_FALSE(stored);
  EXPECT_EQ(FieldNames(HeadersOf(message_.get()).get()), "Subject");
  EXPECT_EQ(BodyBytes(message_.get()), "body");
  EXPECT_EQ(Assembled(message_.get()), "Subject: s\r\n\r\nbody");
}

TEST_F(MessageParserTest, InitNewClearsTheParsedFlag) {
  message_->put_StoredMessageObject(DataOf("Subject: s\r\n\r\nbody").get());
  ASSERT_EQ(message_->Parse(), S_OK);
  EXPECT_EQ(message_->Parse(), S_OK);  // parsed: answers at once
  message_->InitNew();
  // No longer parsed, and the stored message is gone.
  EXPECT_EQ(message_->Parse(), E_POINTER);
}

// ---------------------------------------------------------------- number properties
TEST_F(MessageParserTest, NumberPropertiesStoreWhatIsPut) {
  struct Property {
    HRESULT (STDMETHODCALLTYPE IEMSMessageParser::*put)(LONG);
    HRESULT (STDMETHODCALLTYPE IEMSMessageParser::*get)(LONG*);
  } properties[] = {
      {&IEMSMessageParser::put_DefaultCodePage, &IEMSMessageParser::get_DefaultCodePage},
      {&IEMSMessageParser::put_DefaultEncoding, &IEMSMessageParser::get_DefaultEncoding},
      {&IEMSMessageParser::put_TextCodePage, &IEMSMessageParser::get_TextCodePage},
      {&IEMSMessageParser::put_HtmlCodePage, &IEMSMessageParser::get_HtmlCodePage},
      {&IEMSMessageParser::put_TextEncoding, &IEMSMessageParser::get_TextEncoding},
      {&IEMSMessageParser::put_HtmlEncoding, &IEMSMessageParser::get_HtmlEncoding},
      {&IEMSMessageParser::put_AttachEncoding, &IEMSMessageParser::get_AttachEncoding},
      {&IEMSMessageParser::put_AttachHeaderEncoding, &IEMSMessageParser::get_AttachHeaderEncoding},
  };
  LONG value = 100;
  for (const Property& p : properties) {
    EXPECT_EQ((message_.get()->*p.put)(value), S_OK);
    EXPECT_EQ(Number(message_.get(), p.get), value);
    EXPECT_EQ((message_.get()->*p.get)(nullptr), E_POINTER);
    ++value;
  }
}

// ---------------------------------------------------------------- stored message and size
TEST_F(MessageParserTest, StoredMessagePutResetsAndDoesNotParse) {
  message_->put_TextEncoding(1);
  auto data = DataOf("Subject: s\r\n\r\nbody");
  EXPECT_EQ(message_->put_StoredMessageObject(data.get()), S_OK);
  EXPECT_EQ(Number(message_.get(), &IEMSMessageParser::get_TextEncoding), 3);
  EXPECT_EQ(FieldNames(HeadersOf(message_.get()).get()), "");
  ComPtr<IEMSDataObject> stored;
  EXPECT_EQ(message_->get_StoredMessageObject(stored.put()), S_OK);
  EXPECT_EQ(stored.get(), data.get());
  EXPECT_EQ(message_->get_StoredMessageObject(nullptr), E_POINTER);
}

TEST_F(MessageParserTest, ParseParsesTheStoredMessage) {
  message_->put_StoredMessageObject(DataOf("Subject: s\r\n\r\nbody").get());
  EXPECT_EQ(message_->Parse(), S_OK);
  EXPECT_EQ(FieldNames(HeadersOf(message_.get()).get()), "Subject");
  EXPECT_EQ(BodyBytes(message_.get()), "body");
}

TEST_F(MessageParserTest, ParseWithoutAStoredMessageIsAPointerError) {
  EXPECT_EQ(message_->Parse(), E_POINTER);
  message_->put_StoredMessageObject(nullptr);
  EXPECT_EQ(message_->Parse(), E_POINTER);
}

TEST_F(MessageParserTest, SizeIsTheWholeStoredBufferNotItsSpan) {
  auto data = DataOf("0123456789Subject: s\r\n\r\nbody");
  data->put_Position(10);
  data->put_Length(10);
  message_->put_StoredMessageObject(data.get());
  ULONG size = 0;
  EXPECT_EQ(message_->get_Size(&size), S_OK);
  EXPECT_EQ(size, 28u);
}

TEST_F(MessageParserTest, SizeStatuses) {
  ULONG size = 7;
  EXPECT_EQ(message_->get_Size(&size), E_FAIL);
  EXPECT_EQ(size, 7u);
  EXPECT_EQ(message_->get_Size(nullptr), E_POINTER);
}

// ---------------------------------------------------------------- body object
TEST_F(MessageParserTest, BodyObjectPutWithoutARootPartHoldsThePlainBody) {
  auto body = DataOf("text");
  EXPECT_EQ(message_->put_BodyObject(body.get()), S_OK);
  ComPtr<IEMSDataObject> held;
  EXPECT_EQ(message_->get_BodyObject(held.put()), S_OK);
  EXPECT_EQ(held.get(), body.get());  // the object itself, not a copy
  EXPECT_FALSE(HasRoot(message_.get()));
}

TEST_F(MessageParserTest, BodyObjectPutOfNothingReleasesThePlainBody) {
  message_ = ParsedMessage("A: 1\r\n\r\nbody");
  EXPECT_EQ(message_->put_BodyObject(nullptr), S_OK);
  EXPECT_EQ(BodyBytes(message_.get()), "<none>");
  EXPECT_EQ(Assembled(message_.get()), "A: 1\r\n");
}

TEST_F(MessageParserTest, BodyObjectGetWithoutContentWritesNothing) {
  IEMSDataObject* out = reinterpret_cast<IEMSDataObject*>(0x1);
  EXPECT_EQ(message_->get_BodyObject(&out), S_OK);
  EXPECT_EQ(out, reinterpret_cast<IEMSDataObject*>(0x1));
  EXPECT_EQ(message_->get_BodyObject(nullptr), E_POINTER);
}

// ---------------------------------------------------------------- header lists
TEST_F(MessageParserTest, HeadersPutOfNothingEmptiesTheSameList) {
  message_ = ParsedMessage("A: 1\r\nB: 2\r\n\r\nx");
  ComPtr<IEMSMessageParameters> before = HeadersOf(message_.get());
  EXPECT_EQ(message_->put_Headers(nullptr), S_OK);
  ComPtr<IEMSMessageParameters> after = HeadersOf(message_.get());
  EXPECT_EQ(before.get(), after.get());
  EXPECT_EQ(FieldNames(after.get()), "");
}

TEST_F(MessageParserTest, HeadersPutHoldsTheGivenList) {
  auto list = Create<IEMSMessageParameters>(CLSID_EMSMessageParameters);
  list->ParseParameters(B("X-One: 1\r\n").get());
  EXPECT_EQ(message_->put_Headers(list.get()), S_OK);
  EXPECT_EQ(HeadersOf(message_.get()).get(), list.get());
  EXPECT_EQ(Assembled(message_.get()), "X-One: 1\r\n");
  EXPECT_EQ(message_->get_Headers(nullptr), E_POINTER);
}

TEST_F(MessageParserTest, MimeHeadersNeedARootPart) {
  ComPtr<IEMSMessageParameters> list;
  EXPECT_EQ(message_->get_MimeHeaders(list.put()), E_FAIL);
  EXPECT_EQ(message_->put_MimeHeaders(HeadersOf(message_.get()).get()), E_FAIL);
}

TEST_F(MessageParserTest, AllHeadersOfAPlainMessageIsTheHeaderListItself) {
  message_ = ParsedMessage("A: 1\r\n\r\nbody");
  ComPtr<IEMSMessageParameters> all;
  EXPECT_EQ(message_->get_AllHeaders(all.put()), S_OK);
  EXPECT_EQ(all.get(), HeadersOf(message_.get()).get());
  EXPECT_EQ(message_->get_AllHeaders(nullptr), E_POINTER);
}

TEST_F(MessageParserTest, AllHeadersWithoutABodyIsANewCopy) {
  message_ = ParsedMessage("A: 1\r\nB: 2");
  ComPtr<IEMSMessageParameters> all;
  EXPECT_EQ(message_->get_AllHeaders(all.put()), S_OK);
  ASSERT_TRUE(all);
  EXPECT_NE(all.get(), HeadersOf(message_.get()).get());
  EXPECT_EQ(FieldNames(all.get()), "A,B");
  all->RemoveAll();
  EXPECT_EQ(FieldNames(HeadersOf(message_.get()).get()), "A,B");
}

TEST_F(MessageParserTest, AllHeadersPutWithoutContentFieldsOnlyReplacesTheList) {
  auto list = Create<IEMSMessageParameters>(CLSID_EMSMessageParameters);
  list->ParseParameters(B("X-Content-Type: a\r\nB: 2\r\n").get());
  EXPECT_EQ(message_->put_AllHeaders(list.get()), S_OK);
  EXPECT_EQ(HeadersOf(message_.get()).get(), list.get());
  EXPECT_EQ(FieldNames(list.get()), "X-Content-Type,B");
  EXPECT_FALSE(HasRoot(message_.get()));
}

// ---------------------------------------------------------------- root part
TEST_F(MessageParserTest, MimePartGetWithoutARootPartFails) {
  ComPtr<IEMSMimePart> root;
  EXPECT_EQ(message_->get_MimePart(root.put()), E_FAIL);
  EXPECT_FALSE(root);
}

TEST_F(MessageParserTest, MimePartPutOfNothingKeepsThePlainBody) {
  message_ = ParsedMessage("A: 1\r\n\r\nbody");
  EXPECT_EQ(message_->put_MimePart(nullptr), S_OK);
  EXPECT_EQ(BodyBytes(message_.get()), "body");
}

TEST_F(MessageParserTest, IsMimeMessageIsFalseForAPlainMessage) {
  message_ = ParsedMessage("A: 1\r\n\r\nbody");
  EXPECT_EQ(message_->IsMimeMessage(), E_FAIL);
}

}  // namespace
}  // namespace pv::test
