// The header shortcuts of the message: fields by name, subject, first
// sender and recipient, any field's text, and the whole header block.
#include "tests/message/message_test_util.h"

namespace pv::test {
namespace {

ComPtr<IEMSMessageParameter> Field(IEMSMessageParser* message, std::string_view name) {
  ComPtr<IEMSMessageParameter> field;
  HeadersOf(message)->FindParameter(B(name).get(), field.put());
  return field;
}

std::string Raw(IEMSMessageParser* message, std::string_view name) {
  return RawField(HeadersOf(message).get(), name);
}

// ---------------------------------------------------------------- fields by name
TEST(MessageHeaders, CreateHeaderAddsAFieldToTheMessagesList) {
  auto message = NewMessage();
  ComPtr<IEMSMessageParameter> field;
  EXPECT_EQ(message->CreateHeader(B("X-Tag").get(), field.put()), S_OK);
  ASSERT_TRUE(field);
  EXPECT_EQ(Field(message.get(), "X-Tag").get(), field.get());
}

TEST(MessageHeaders, CreateHeaderOfAnExistingNameGivesThatFieldWithSFalse) {
  auto message = ParsedMessage("Subject: s\r\n\r\nx");
  ComPtr<IEMSMessageParameter> field;
  EXPECT_EQ(message->CreateHeader(B("subject").get(), field.put()), S_FALSE);
  EXPECT_EQ(field.get(), Field(message.get(), "Subject").get());
  EXPECT_EQ(FieldNames(HeadersOf(message.get()).get()), "Subject");
}

TEST(MessageHeaders, CreateAndFindHeaderNeedANameAndAResultPlace) {
  auto message = NewMessage();
  ComPtr<IEMSMessageParameter> field;
  EXPECT_EQ(message->CreateHeader(nullptr, field.put()), E_POINTER);
  EXPECT_EQ(message->CreateHeader(B("A").get(), nullptr), E_POINTER);
  EXPECT_EQ(message->FindHeader(nullptr, field.put()), E_POINTER);
  EXPECT_EQ(message->FindHeader(B("A").get(), nullptr), E_POINTER);
  EXPECT_EQ(FieldNames(HeadersOf(message.get()).get()), "");
}

TEST(MessageHeaders, FindHeaderFindsAFieldWithoutRegardToCase) {
  auto message = ParsedMessage("Subject: s\r\n\r\nx");
  ComPtr<IEMSMessageParameter> field;
  EXPECT_EQ(message->FindHeader(B("SUBJECT").get(), field.put()), S_OK);
  EXPECT_EQ(field.get(), Field(message.get(), "Subject").get());
}

TEST(MessageHeaders, FindHeaderOfAnAbsentNameSucceedsWithNothing) {
  auto message = ParsedMessage("Subject: s\r\n\r\nx");
  ComPtr<IEMSMessageParameter> field;
  EXPECT_EQ(message->FindHeader(B("To").get(), field.put()), S_OK);
  EXPECT_FALSE(field);
}

TEST(MessageHeaders, MimeHeaderShortcutsNeedANameAndAResultPlace) {
  auto message = NewMessage();
  ComPtr<IEMSMessageParameter> field;
  EXPECT_EQ(message->CreateMimeHeader(nullptr, field.put()), E_POINTER);
  EXPECT_EQ(message->CreateMimeHeader(B("Content-Type").get(), nullptr), E_POINTER);
  EXPECT_EQ(message->FindMimeHeader(nullptr, field.put()), E_POINTER);
  EXPECT_EQ(message->FindMimeHeader(B("Content-Type").get(), nullptr), E_POINTER);
}

TEST(MessageHeaders, MimeHeaderShortcutsFailOnAPlainMessage) {
  auto message = ParsedMessage("Subject: s\r\n\r\nx");
  ComPtr<IEMSMessageParameter> field;
  EXPECT_EQ(message->CreateMimeHeader(B("Content-Type").get(), field.put()), E_FAIL);
  EXPECT_EQ(message->FindMimeHeader(B("Content-Type").get(), field.put()), E_FAIL);
  EXPECT_FALSE(field);
}

TEST(MessageHeaders, MimeHeaderShortcutsFailWithoutARootPart) {
  auto message = ParsedMessage("Subject: s");
  ComPtr<IEMSMessageParameter> field;
  EXPECT_EQ(message->CreateMimeHeader(B("Content-Type").get(), field.put()), E_FAIL);
  EXPECT_EQ(message->FindMimeHeader(B("Content-Type").get(), field.put()), E_FAIL);
}

// ---------------------------------------------------------------- subject
TEST(MessageHeaders, SubjectGetDecodesEncodedWords) {
  auto message = ParsedMessage("Subject: =?utf-8?B?Y2Fmw6k=?= ok\r\n\r\nx");
  EXPECT_EQ(Text(message.get(), &IEMSMessageParser::get_Subject), "caf\xC3\xA9 ok");
}

TEST(MessageHeaders, SubjectGetWithoutASubjectWritesNothing) {
  auto message = ParsedMessage("To: a@b\r\n\r\nx");
  BSTR value = nullptr;
  EXPECT_EQ(message->get_Subject(&value), S_OK);
  EXPECT_EQ(value, nullptr);
  SysFreeString(value);
}

TEST(MessageHeaders, SubjectGetWithoutAResultPlaceIsAnArgumentError) {
  auto message = ParsedMessage("Subject: s\r\n\r\nx");
  EXPECT_EQ(message->get_Subject(nullptr), E_INVALIDARG);
}

TEST(MessageHeaders, SubjectGetHandsTheDefaultCodePageToTheField) {
  auto message = ParsedMessage("Subject: s\r\n\r\nx");
  message->put_DefaultCodePage(28591);
  Text(message.get(), &IEMSMessageParser::get_Subject);
  EXPECT_EQ(Number(Field(message.get(), "Subject").get(), &IEMSMessageParameter::get_DefaultCodePage), 28591);
}

TEST(MessageHeaders, SubjectPutAddsTheFieldWithTheAutomaticEncoding) {
  auto message = NewMessage();
  EXPECT_EQ(message->put_Subject(B("Hello there").get()), S_OK);
  EXPECT_EQ(Raw(message.get(), "Subject"), "Hello there");
  EXPECT_EQ(Text(message.get(), &IEMSMessageParser::get_Subject), "Hello there");
}

TEST(MessageHeaders, SubjectPutChangesTheExistingFieldInItsPlace) {
  auto message = ParsedMessage("A: 1\r\nSubject: old\r\nB: 2\r\n\r\nx");
  EXPECT_EQ(message->put_Subject(B("new").get()), S_OK);
  EXPECT_EQ(FieldNames(HeadersOf(message.get()).get()), "A,Subject,B");
  // A parsed field keeps the encoding its decoding left (B): it re-encodes
  // even ASCII text.
  EXPECT_EQ(Assembled(message.get()), "A: 1\r\nSubject: =?windows-1252?B?bmV3?=\r\nB: 2\r\n\r\nx");
}

TEST(MessageHeaders, SubjectPutEncodesNonAsciiText) {
  auto message = NewMessage();
  EXPECT_EQ(message->put_Subject(B("caf\xC3\xA9").get()), S_OK);
  // The automatic choice of a new field: 75 percent ASCII gives Q.
  EXPECT_EQ(Raw(message.get(), "Subject"), "=?windows-1252?Q?caf=E9?=");
  EXPECT_EQ(Text(message.get(), &IEMSMessageParser::get_Subject), "caf\xC3\xA9");
}

// ---------------------------------------------------------------- sender and recipient
TEST(MessageHeaders, SenderGettersReadTheFirstMailboxOfFrom) {
  auto message = ParsedMessage("From: Alice Smith <alice@example.com>, Bob <bob@example.com>\r\n\r\nx");
  EXPECT_EQ(Text(message.get(), &IEMSMessageParser::get_SenderName), "Alice Smith");
  EXPECT_EQ(Text(message.get(), &IEMSMessageParser::get_SenderEmail), "alice@example.com");
}

TEST(MessageHeaders, RecipientGettersReadTheFirstMailboxOfTo) {
  auto message = ParsedMessage("To: \"Carol\" <carol@example.org>, dave@example.org\r\n\r\nx");
  EXPECT_EQ(Text(message.get(), &IEMSMessageParser::get_RecipientName), "Carol");
  EXPECT_EQ(Text(message.get(), &IEMSMessageParser::get_RecipientEmail), "carol@example.org");
}

TEST(MessageHeaders, SenderEmailWithoutFromSucceedsAndLeavesTheResultAlone) {
  auto message = ParsedMessage("To: a@b\r\n\r\nx");
  BSTR value = reinterpret_cast<BSTR>(0x1);
  EXPECT_EQ(message->get_SenderEmail(&value), S_OK);
  EXPECT_EQ(value, reinterpret_cast<BSTR>(0x1));
}

TEST(MessageHeaders, MailboxGettersGiveTheirOwnStatusForAMissingResultPlace) {
  auto message = ParsedMessage("From: a@b\r\nTo: c@d\r\n\r\nx");
  EXPECT_EQ(message->get_SenderName(nullptr), E_POINTER);
  EXPECT_EQ(message->get_SenderEmail(nullptr), E_POINTER);
  EXPECT_EQ(message->get_RecipientName(nullptr), E_INVALIDARG);
  EXPECT_EQ(message->get_RecipientEmail(nullptr), E_INVALIDARG);
}

// The list splits at a comma only after an "@" outside angle brackets, so
// the first mailbox here is a bare address.
TEST(MessageHeaders, RecipientNamePutChangesOnlyTheFirstMailboxsName) {
  auto message = ParsedMessage("To: ann@x.org, Ben <ben@x.org>\r\n\r\nx");
  EXPECT_EQ(message->put_RecipientName(B("Anna").get()), S_OK);
  EXPECT_EQ(Text(message.get(), &IEMSMessageParser::get_RecipientName), "Anna");
  EXPECT_EQ(Text(message.get(), &IEMSMessageParser::get_RecipientEmail), "ann@x.org");
  EXPECT_EQ(RawField(HeadersOf(message.get()).get(), "To"), "\"Anna\" <ann@x.org>,\r\n\t\"Ben\" <ben@x.org>");
}

TEST(MessageHeaders, SenderEmailPutKeepsTheName) {
  auto message = ParsedMessage("From: Alice <alice@old.example>\r\n\r\nx");
  EXPECT_EQ(message->put_SenderEmail(B("alice@new.example").get()), S_OK);
  EXPECT_EQ(Text(message.get(), &IEMSMessageParser::get_SenderName), "Alice");
  EXPECT_EQ(Text(message.get(), &IEMSMessageParser::get_SenderEmail), "alice@new.example");
}

TEST(MessageHeaders, RecipientEmailPutWithoutToAddsOneMailboxWithAnEmptyName) {
  auto message = NewMessage();
  EXPECT_EQ(message->put_RecipientEmail(B("zed@example.net").get()), S_OK);
  EXPECT_EQ(FieldNames(HeadersOf(message.get()).get()), "To");
  EXPECT_EQ(Text(message.get(), &IEMSMessageParser::get_RecipientEmail), "zed@example.net");
  EXPECT_EQ(Text(message.get(), &IEMSMessageParser::get_RecipientName), "");
  ComPtr<IEMSHeaderMailboxes> mailboxes;
  Field(message.get(), "To")->get_HeaderMailboxes(mailboxes.put());
  ASSERT_TRUE(mailboxes);
  EXPECT_EQ(Number(mailboxes.get(), &IEMSHeaderMailboxes::get_Count), 1);
}

TEST(MessageHeaders, SenderNamePutWithoutFromAddsAMailboxWithAnEmptyAddress) {
  auto message = NewMessage();
  EXPECT_EQ(message->put_SenderName(B("Eve").get()), S_OK);
  EXPECT_EQ(Text(message.get(), &IEMSMessageParser::get_SenderName), "Eve");
  EXPECT_EQ(Text(message.get(), &IEMSMessageParser::get_SenderEmail), "");
}

TEST(MessageHeaders, MailboxSettersOfNoStringDoNothing) {
  auto message = NewMessage();
  EXPECT_EQ(message->put_SenderName(nullptr), S_OK);
  EXPECT_EQ(message->put_SenderEmail(nullptr), S_OK);
  EXPECT_EQ(message->put_RecipientName(nullptr), S_OK);
  EXPECT_EQ(message->put_RecipientEmail(nullptr), S_OK);
  EXPECT_EQ(FieldNames(HeadersOf(message.get()).get()), "");
}

TEST(MessageHeaders, MailboxSettersChangeTheFieldInPlace) {
  auto message = ParsedMessage("From: a@b\r\nSubject: s\r\n\r\nx");
  ComPtr<IEMSMessageParameter> before = Field(message.get(), "From");
  message->put_SenderName(B("Al").get());
  EXPECT_EQ(Field(message.get(), "From").get(), before.get());
  EXPECT_EQ(FieldNames(HeadersOf(message.get()).get()), "From,Subject");
}

TEST(MessageHeaders, MailboxSettersHandTheMessageDefaultsToTheField) {
  auto message = ParsedMessage("From: a@b\r\n\r\nx");
  message->put_DefaultCodePage(65001);
  message->put_DefaultEncoding(2);
  message->put_SenderName(B("Al").get());
  auto field = Field(message.get(), "From");
  EXPECT_EQ(Number(field.get(), &IEMSMessageParameter::get_DefaultCodePage), 65001);
}

// ---------------------------------------------------------------- any field's text
TEST(MessageHeaders, HeaderStringGetReadsTheRawValue) {
  auto message = ParsedMessage("Subject: =?utf-8?B?Y2Fmw6k=?=\r\n\r\nx");
  EXPECT_EQ(HeaderText(message.get(), "subject"), "=?utf-8?B?Y2Fmw6k=?=");
}

TEST(MessageHeaders, HeaderStringGetOfAnAbsentFieldSucceedsWithNothing) {
  auto message = ParsedMessage("Subject: s\r\n\r\nx");
  BSTR value = nullptr;
  EXPECT_EQ(message->get_HeaderString(B("To").get(), &value), S_OK);
  EXPECT_EQ(value, nullptr);
  SysFreeString(value);
}

TEST(MessageHeaders, HeaderStringGetMakesNoCheckOfTheResultPlace) {
  auto message = ParsedMessage("Subject: s\r\n\r\nx");
  EXPECT_EQ(message->get_HeaderString(B("Subject").get(), nullptr), S_OK);
}

TEST(MessageHeaders, HeaderStringPutThenGetGivesTheEncodedForm) {
  auto message = NewMessage();
  EXPECT_EQ(message->put_HeaderString(B("X-Note").get(), B("na\xC3\xAFve").get()), S_OK);
  EXPECT_EQ(HeaderText(message.get(), "X-Note"), "=?windows-1252?Q?na=EFve?=");
  ComPtr<IEMSMessageParameter> field = Field(message.get(), "X-Note");
  EXPECT_EQ(Text(field.get(), &IEMSMessageParameter::get_DecodedData), "na\xC3\xAFve");
}

TEST(MessageHeaders, HeaderStringPutChangesAnExistingField) {
  auto message = ParsedMessage("X-Note: old\r\n\r\nx");
  EXPECT_EQ(message->put_HeaderString(B("x-note").get(), B("new").get()), S_OK);
  EXPECT_EQ(Assembled(message.get()), "X-Note: =?windows-1252?B?bmV3?=\r\n\r\nx");
}

// ---------------------------------------------------------------- the whole header block
TEST(MessageHeaders, AllHeadersStringOfAPlainMessageIsItsHeaderBlock) {
  auto message = ParsedMessage("Subject: s\r\nTo: a@b\r\n\r\nx");
  EXPECT_EQ(Text(message.get(), &IEMSMessageParser::get_AllHeadersString), "Subject: s\r\nTo: a@b\r\n");
}

TEST(MessageHeaders, AllHeadersStringOfNoFieldsWritesNothing) {
  auto message = NewMessage();
  BSTR value = nullptr;
  EXPECT_EQ(message->get_AllHeadersString(&value), S_OK);
  EXPECT_EQ(value, nullptr);
  SysFreeString(value);
}

TEST(MessageHeaders, AllHeadersStringNeedsAResultPlaceAndAValue) {
  auto message = NewMessage();
  EXPECT_EQ(message->get_AllHeadersString(nullptr), E_POINTER);
  EXPECT_EQ(message->put_AllHeadersString(nullptr), E_POINTER);
}

TEST(MessageHeaders, AllHeadersStringPutParsesTheTextIntoTheHeaderList) {
  auto message = ParsedMessage("Old: 1\r\n\r\nbody");
  ComPtr<IEMSMessageParameters> list = HeadersOf(message.get());
  EXPECT_EQ(message->put_AllHeadersString(B("Subject: s\r\nTo: a@b\r\n").get()), S_OK);
  EXPECT_EQ(HeadersOf(message.get()).get(), list.get());
  // The list's parse replaces what it held.
  EXPECT_EQ(FieldNames(list.get()), "Subject,To");
  EXPECT_FALSE(HasRoot(message.get()));
  EXPECT_EQ(Assembled(message.get()), "Subject: s\r\nTo: a@b\r\n\r\nbody");
}

}  // namespace
}  // namespace pv::test
