// Bodies and attachments of the message, and the part-tree operations it
// forwards to its root part.
#include "tests/message/message_test_util.h"

namespace pv::test {
namespace {

std::string AttributeRaw(IEMSMimePart* part, std::string_view field, std::string_view attribute) {
  if (part == nullptr) return "<no part>";
  ComPtr<IEMSMessageParameter> header;
  part->FindHeader(B(field).get(), header.put());
  ComPtr<IEMSMimeAttribute> value;
  if (header) header->FindAttribute(B(attribute).get(), value.put());
  return value ? Text(value.get(), &IEMSMimeAttribute::get_RawValue) : "<none>";
}

ComPtr<IEMSMimeParts> AttachmentsOf(IEMSMessageParser* message) {
  ComPtr<IEMSMimeParts> parts;
  EXPECT_EQ(message->get_AttachParts(parts.put()), S_OK);
  return parts;
}

LONG CountOf(IEMSMimeParts* parts) {
  LONG count = -1;
  if (parts) parts->get_PartsCount(&count);
  return count;
}

// A text/plain message with a text/html alternative.
const char kAlternative[] =
    "Subject: s\r\nMIME-Version: 1.0\r\nContent-Type: multipart/alternative; boundary=\"a\"\r\n\r\n"
    "--a\r\nContent-Type: text/plain\r\n\r\nplain text\r\n"
    "--a\r\nContent-Type: text/html\r\n\r\n<p>html</p>\r\n--a--\r\n";

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
  SysFreeString(value);
}

TEST(MessageBodies, TextBodyOfAMessageWithoutAnyBodyIsAbsent) {
  auto message = ParsedMessage("Subject: s\r\n");
  BSTR value = nullptr;
  EXPECT_EQ(message->get_TextBody(&value), S_FALSE);
  EXPECT_EQ(value, nullptr);
  EXPECT_EQ(message->get_HTMLBody(&value), S_FALSE);
  EXPECT_EQ(value, nullptr);
  SysFreeString(value);
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

// ---------------------------------------------------------------- text and HTML bodies of a MIME message
TEST(MessageBodies, TextBodyOfAMimeMessageDecodesWithTheDefaultCodePage) {
  auto message = ParsedMessage("Content-Type: text/plain\r\n\r\ncaf\xC3\xA9");
  message->put_TextCodePage(65001);  // not used on this path
  EXPECT_EQ(Text(message.get(), &IEMSMessageParser::get_TextBody), "caf\xC3\x83\xC2\xA9");
  message->put_DefaultCodePage(65001);
  EXPECT_EQ(Text(message.get(), &IEMSMessageParser::get_TextBody), "caf\xC3\xA9");
}

TEST(MessageBodies, TextBodyDecodesTheTransferEncodingAndCharset) {
  auto message = ParsedMessage(
      "Content-Type: text/plain; charset=utf-8\r\nContent-Transfer-Encoding: quoted-printable\r\n\r\n"
      "caf=C3=A9 =\r\nau lait");
  EXPECT_EQ(Text(message.get(), &IEMSMessageParser::get_TextBody), "caf\xC3\xA9 au lait");
}

TEST(MessageBodies, HtmlBodyOfAMimeMessageDecodesWithTheHtmlCodePage) {
  auto message = ParsedMessage(kAlternative);
  EXPECT_EQ(Text(message.get(), &IEMSMessageParser::get_HTMLBody), "<p>html</p>");
  EXPECT_EQ(Text(message.get(), &IEMSMessageParser::get_TextBody), "plain text\r\n");
  auto html = ParsedMessage("Content-Type: text/html\r\n\r\ncaf\xC3\xA9");
  html->put_HtmlCodePage(65001);
  EXPECT_EQ(Text(html.get(), &IEMSMessageParser::get_HTMLBody), "caf\xC3\xA9");
}

TEST(MessageBodies, AMimeMessageWithoutTheWantedPartHasNoSuchBody) {
  auto message = ParsedMessage("Content-Type: image/gif\r\n\r\nGIF89a");
  BSTR value = nullptr;
  EXPECT_EQ(message->get_TextBody(&value), S_FALSE);
  EXPECT_EQ(message->get_HTMLBody(&value), S_FALSE);
  EXPECT_EQ(value, nullptr);
  SysFreeString(value);
}

TEST(MessageBodies, TextBodyPutOnAPlainMessageReplacesTheOldBody) {
  auto message = ParsedMessage("Subject: s\r\n\r\nold body\r\n");
  EXPECT_EQ(message->put_TextBody(B("new text").get()), S_OK);
  EXPECT_EQ(message->IsMimeMessage(), S_OK);
  EXPECT_EQ(TreeShape(RootOf(message.get()).get()), "text/plain");
  EXPECT_EQ(Text(message.get(), &IEMSMessageParser::get_Body), "new text");
  EXPECT_EQ(FieldNames(HeadersOf(message.get()).get()), "Subject,MIME-Version");
  EXPECT_EQ(RawField(HeadersOf(message.get()).get(), "MIME-Version"), "1.0");
  EXPECT_EQ(Assembled(message.get()).find("old body"), std::string::npos);
}

TEST(MessageBodies, TextBodyPutUsesTheTextCodePageAndEncodingForANewPart) {
  auto message = NewMessage();
  message->put_TextCodePage(65001);
  message->put_TextEncoding(1);
  EXPECT_EQ(message->put_TextBody(B("caf\xC3\xA9").get()), S_OK);
  auto root = RootOf(message.get());
  ASSERT_TRUE(root);
  EXPECT_EQ(AttributeRaw(root.get(), "Content-Type", "charset"), "utf-8");
  EXPECT_EQ(PartField(root.get(), "Content-Transfer-Encoding"), "quoted-printable");
  EXPECT_EQ(PartBody(root.get()), "caf=C3=A9");
  EXPECT_EQ(DecodedBytes(root.get()), "caf\xC3\xA9");
}

TEST(MessageBodies, TextBodyPutKeepsAnExistingMimeVersionField) {
  auto message = ParsedMessage("MIME-Version: 1.1\r\nSubject: s\r\n\r\nx");
  EXPECT_EQ(message->put_TextBody(B("y").get()), S_OK);
  EXPECT_EQ(RawField(HeadersOf(message.get()).get(), "MIME-Version"), "1.1");
}

TEST(MessageBodies, TextBodyPutOnAMessageWithATextPartChangesOnlyItsBody) {
  auto message = ParsedMessage(kAlternative);
  message->put_TextCodePage(65001);
  EXPECT_EQ(message->put_TextBody(B("new \xE2\x82\xAC").get()), S_OK);
  auto root = RootOf(message.get());
  EXPECT_EQ(TreeShape(root.get()), "multipart/alternative(text/plain,text/html)");
  EXPECT_EQ(DecodedBytes(ChildOf(root.get(), 0).get()), "new \xE2\x82\xAC");
  EXPECT_EQ(AttributeRaw(ChildOf(root.get(), 0).get(), "Content-Type", "charset"), "utf-8");
  EXPECT_EQ(FieldNames(HeadersOf(message.get()).get()), "Subject,MIME-Version");
}

TEST(MessageBodies, HtmlBodyPutOnATextRootMakesItMultipartAlternative) {
  auto message = ParsedMessage("Subject: s\r\nContent-Type: text/plain\r\n\r\nhello\r\n");
  EXPECT_EQ(message->put_HTMLBody(B("<p>hi</p>").get()), S_OK);
  auto root = RootOf(message.get());
  EXPECT_EQ(TreeShape(root.get()), "multipart/alternative(text/plain,text/html)");
  EXPECT_EQ(PartBody(ChildOf(root.get(), 0).get()), "hello\r\n");
  EXPECT_EQ(Text(message.get(), &IEMSMessageParser::get_HTMLBody), "<p>hi</p>");
  EXPECT_EQ(Text(message.get(), &IEMSMessageParser::get_TextBody), "hello\r\n");
  EXPECT_EQ(RawField(HeadersOf(message.get()).get(), "MIME-Version"), "1.0");
}

TEST(MessageBodies, HtmlBodyPutTwiceChangesOnlyTheBodyTheSecondTime) {
  auto message = ParsedMessage("Subject: s\r\nContent-Type: text/plain\r\n\r\nhello\r\n");
  ASSERT_EQ(message->put_HTMLBody(B("<p>one</p>").get()), S_OK);
  ComPtr<IEMSMimePart> first;
  ASSERT_EQ(message->FindPartBySubType(8, first.put()), S_OK);
  EXPECT_EQ(message->put_HTMLBody(B("<p>two</p>").get()), S_OK);
  ComPtr<IEMSMimePart> second;
  ASSERT_EQ(message->FindPartBySubType(8, second.put()), S_OK);
  EXPECT_EQ(first.get(), second.get());
  EXPECT_EQ(TreeShape(RootOf(message.get()).get()), "multipart/alternative(text/plain,text/html)");
  EXPECT_EQ(Text(message.get(), &IEMSMessageParser::get_HTMLBody), "<p>two</p>");
}

TEST(MessageBodies, HtmlBodyPutOnAnExistingPartUsesTheTextCodePage) {
  auto message = ParsedMessage(kAlternative);
  message->put_TextCodePage(65001);
  message->put_HtmlCodePage(28591);
  EXPECT_EQ(message->put_HTMLBody(B("<p>\xC3\xA9</p>").get()), S_OK);
  auto html = ChildOf(RootOf(message.get()).get(), 1);
  EXPECT_EQ(Number(html.get(), &IEMSMimePart::get_DefaultCodePage), 65001);
  EXPECT_EQ(AttributeRaw(html.get(), "Content-Type", "charset"), "utf-8");
  EXPECT_EQ(DecodedBytes(html.get()), "<p>\xC3\xA9</p>");
}

TEST(MessageBodies, HtmlBodyPutForANewPartUsesTheHtmlCodePageAndEncoding) {
  auto message = NewMessage();
  message->put_HtmlCodePage(65001);
  message->put_HtmlEncoding(2);
  EXPECT_EQ(message->put_HTMLBody(B("<b>\xC3\xA9</b>").get()), S_OK);
  auto root = RootOf(message.get());
  EXPECT_EQ(TreeShape(root.get()), "text/html");
  EXPECT_EQ(AttributeRaw(root.get(), "Content-Type", "charset"), "utf-8");
  EXPECT_EQ(PartField(root.get(), "Content-Transfer-Encoding"), "base64");
  EXPECT_EQ(DecodedBytes(root.get()), "<b>\xC3\xA9</b>");
}

TEST(MessageBodies, TextBodyPutOnAMultipartMixedRootAddsThePartWithoutConverting) {
  auto message = ParsedMessage(
      "Content-Type: multipart/mixed; boundary=\"m\"\r\n\r\n--m\r\nContent-Type: "
      "image/gif\r\n\r\nGIF\r\n--m--\r\n");
  EXPECT_EQ(message->put_TextBody(B("text").get()), S_OK);
  EXPECT_EQ(TreeShape(RootOf(message.get()).get()), "multipart/mixed(image/gif,text/plain)");
}

// ---------------------------------------------------------------- finding and converting parts
TEST(MessageBodies, FindPartBySubTypeMatchesASinglePartRootBySubtypeOnly) {
  auto message = ParsedMessage("Content-Type: application/plain\r\n\r\nx");
  ComPtr<IEMSMimePart> found;
  EXPECT_EQ(message->FindPartBySubType(18, found.put()), S_OK);
  EXPECT_EQ(found.get(), RootOf(message.get()).get());
  EXPECT_EQ(message->FindPartBySubType(8, found.put()), E_FAIL);
}

TEST(MessageBodies, FindPartBySubTypeSkipsARootMarkedAsAnAttachment) {
  auto message =
      ParsedMessage("Content-Type: text/plain\r\nContent-Disposition: Attachment; filename=a.txt\r\n\r\nx");
  ComPtr<IEMSMimePart> found;
  EXPECT_EQ(message->FindPartBySubType(18, found.put()), E_FAIL);
  EXPECT_FALSE(found);
  BSTR value = nullptr;
  EXPECT_EQ(message->get_TextBody(&value), S_FALSE);
  SysFreeString(value);
}

TEST(MessageBodies, FindPartBySubTypeWithoutAResultPlaceOnASinglePartRootSucceeds) {
  auto message = ParsedMessage("Content-Type: text/plain\r\n\r\nx");
  EXPECT_EQ(message->FindPartBySubType(18, nullptr), S_OK);
}

TEST(MessageBodies, FindPartBySubTypeSearchesAMultipartTree) {
  auto message = ParsedMessage(kAlternative);
  ComPtr<IEMSMimePart> found;
  EXPECT_EQ(message->FindPartBySubType(8, found.put()), S_OK);
  EXPECT_EQ(found.get(), ChildOf(RootOf(message.get()).get(), 1).get());
  EXPECT_EQ(message->FindPartBySubType(7, found.put()), E_FAIL);
}

TEST(MessageBodies, ConvertToMultipartOnAPlainMessageGivesATextRoot) {
  auto message = ParsedMessage("Subject: s\r\n\r\nbody text");
  EXPECT_EQ(message->ConvertToMultipart(10), S_OK);
  EXPECT_EQ(message->IsMimeMessage(), S_OK);
  auto root = RootOf(message.get());
  EXPECT_EQ(TreeShape(root.get()), "text/plain");
  EXPECT_EQ(PartBody(root.get()), "body text");
  EXPECT_EQ(Assembled(message.get()), "Subject: s\r\nContent-Type: text/plain\r\n\r\nbody text");
}

TEST(MessageBodies, ConvertToMultipartOnAMimeMessageConvertsTheRootPart) {
  auto message = ParsedMessage("Subject: s\r\nContent-Type: text/plain\r\n\r\nbody");
  EXPECT_EQ(message->ConvertToMultipart(10), S_OK);
  EXPECT_EQ(TreeShape(RootOf(message.get()).get()), "multipart/mixed(text/plain)");
}

TEST(MessageBodies, AddPartToAMessageWithoutContentMakesItTheRoot) {
  auto message = ParsedMessage("Subject: s\r\n");
  auto part = Create<IEMSMimePart>(CLSID_EMSMimePart);
  EXPECT_EQ(message->AddPart(10, part.get()), S_OK);
  EXPECT_EQ(RootOf(message.get()).get(), part.get());
}

TEST(MessageBodies, AddPartToARootOfThePreferredSubtypeAppendsIt) {
  auto message = ParsedMessage(
      "Content-Type: multipart/mixed; boundary=\"m\"\r\n\r\n--m\r\nContent-Type: "
      "image/gif\r\n\r\nGIF\r\n--m--\r\n");
  auto part = Create<IEMSMimePart>(CLSID_EMSMimePart);
  ASSERT_TRUE(part);
  part->ParsePartObject(DataOf("Content-Type: text/csv\r\n\r\na,b").get());
  EXPECT_EQ(message->AddPart(10, part.get()), S_OK);
  EXPECT_EQ(TreeShape(RootOf(message.get()).get()), "multipart/mixed(image/gif,text/csv)");
}

TEST(MessageBodies, AddPartToAMultipartRootOfAnotherSubtypeWrapsItAgain) {
  auto message = ParsedMessage(kAlternative);
  auto part = Create<IEMSMimePart>(CLSID_EMSMimePart);
  ASSERT_TRUE(part);
  part->ParsePartObject(DataOf("Content-Type: text/csv\r\n\r\na,b").get());
  EXPECT_EQ(message->AddPart(10, part.get()), S_OK);
  EXPECT_EQ(TreeShape(RootOf(message.get()).get()),
            "multipart/mixed(multipart/alternative(text/plain,text/html),text/csv)");
}

TEST(MessageBodies, RemovePartOfTheRootLeavesNeitherRootNorBody) {
  auto message = ParsedMessage("Subject: s\r\nContent-Type: text/plain\r\n\r\nx");
  EXPECT_EQ(message->RemovePart(RootOf(message.get()).get()), S_OK);
  EXPECT_FALSE(HasRoot(message.get()));
  EXPECT_EQ(BodyBytes(message.get()), "<none>");
  EXPECT_EQ(Assembled(message.get()), "Subject: s\r\n");
}

TEST(MessageBodies, RemovePartOfAChildForwardsToTheRootPart) {
  auto message = ParsedMessage(kAlternative);
  auto root = RootOf(message.get());
  EXPECT_EQ(message->RemovePart(ChildOf(root.get(), 0).get()), S_OK);
  EXPECT_EQ(TreeShape(root.get()), "multipart/alternative(text/html)");
  auto stranger = Create<IEMSMimePart>(CLSID_EMSMimePart);
  EXPECT_EQ(message->RemovePart(stranger.get()), E_FAIL);
}

TEST(MessageBodies, FindParentPartOfTheRootIsSFalse) {
  auto message = ParsedMessage(kAlternative);
  auto root = RootOf(message.get());
  ComPtr<IEMSMimePart> parent;
  EXPECT_EQ(message->FindParentPart(root.get(), parent.put()), S_FALSE);
  EXPECT_FALSE(parent);
  EXPECT_EQ(message->FindParentPart(ChildOf(root.get(), 1).get(), parent.put()), S_OK);
  EXPECT_EQ(parent.get(), root.get());
}

TEST(MessageBodies, FindPartForwardsToTheRootPart) {
  auto message = ParsedMessage("Content-Type: text/plain\r\n\r\nx");
  ComPtr<IEMSMimePart> found;
  EXPECT_EQ(message->FindPart(B("text/html").get(), 0, found.put()), S_OK);
  EXPECT_EQ(found.get(), RootOf(message.get()).get());
  EXPECT_EQ(ContentTypeOf(found.get()), "text/html");  // the search rewrites the field
}

// ---------------------------------------------------------------- attachments
// AddAttach writes its "Content-Type" as raw text, which sets no content
// state: until the message is parsed again the new part reads as "/".
TEST(MessageBodies, AddAttachUsesTheFileNameAndItsRegisteredType) {
  auto message = NewMessage();
  ASSERT_EQ(message->put_TextBody(B("see attached").get()), S_OK);
  EXPECT_EQ(message->AddAttach(B("C:\\docs\\report.pdf").get(), DataOf("%PDF-1.4").get()), S_OK);
  auto root = RootOf(message.get());
  EXPECT_EQ(TreeShape(root.get()), "multipart/mixed(text/plain,/)");
  auto attachment = ChildOf(root.get(), 1);
  EXPECT_EQ(PartField(attachment.get(), "Content-Type"), "application/pdf");
  EXPECT_EQ(PartField(attachment.get(), "Content-Disposition"), "attachment;\r\n\tfilename=\"report.pdf\"");
  EXPECT_EQ(AttributeRaw(attachment.get(), "Content-Disposition", "filename"), "report.pdf");
  EXPECT_EQ(PartField(attachment.get(), "Content-Transfer-Encoding"), "base64");
  EXPECT_EQ(Number(attachment.get(), &IEMSMimePart::get_IsAttachPart), 1);
  EXPECT_EQ(DecodedBytes(attachment.get()), "%PDF-1.4");
}

TEST(MessageBodies, AddAttachOfAnUnregisteredExtensionIsAnOctetStream) {
  auto message = NewMessage();
  message->put_TextBody(B("x").get());
  EXPECT_EQ(message->AddAttach(B("/tmp/data.zzz").get(), DataOf("abc").get()), S_OK);
  auto attachment = ChildOf(RootOf(message.get()).get(), 1);
  EXPECT_EQ(PartField(attachment.get(), "Content-Type"), "application/octet-stream");
}

TEST(MessageBodies, AddAttachOfAnExtensionWithABlankLooksNothingUp) {
  auto message = NewMessage();
  message->put_TextBody(B("x").get());
  EXPECT_EQ(message->AddAttach(B("my file.p df").get(), DataOf("abc").get()), S_OK);
  auto attachment = ChildOf(RootOf(message.get()).get(), 1);
  EXPECT_EQ(PartField(attachment.get(), "Content-Type"), "application/octet-stream");
  EXPECT_EQ(AttributeRaw(attachment.get(), "Content-Disposition", "filename"), "my file.p df");
}

TEST(MessageBodies, AddAttachEncodesANonAsciiName) {
  auto message = NewMessage();
  message->put_TextBody(B("x").get());
  EXPECT_EQ(message->AddAttach(B("caf\xC3\xA9.txt").get(), DataOf("abc").get()), S_OK);
  auto attachment = ChildOf(RootOf(message.get()).get(), 1);
  EXPECT_EQ(AttributeRaw(attachment.get(), "Content-Disposition", "filename"),
            "=?windows-1252?Q?caf=E9.txt?=");
  EXPECT_EQ(PartField(attachment.get(), "Content-Type"), "text/plain");
}

TEST(MessageBodies, AddAttachKeepsANonAsciiNameRawWithoutHeaderEncoding) {
  auto message = NewMessage();
  message->put_AttachHeaderEncoding(0);
  message->put_TextBody(B("x").get());
  EXPECT_EQ(message->AddAttach(B("caf\xC3\xA9.txt").get(), DataOf("abc").get()), S_OK);
  auto attachment = ChildOf(RootOf(message.get()).get(), 1);
  EXPECT_EQ(AttributeRaw(attachment.get(), "Content-Disposition", "filename"), "caf\xC3\xA9.txt");
}

TEST(MessageBodies, AddAttachOfAUuencodedAttachmentUsesBWhereQWasAsked) {
  auto message = NewMessage();
  message->put_AttachHeaderEncoding(1);
  message->put_AttachEncoding(4);
  message->put_TextBody(B("x").get());
  EXPECT_EQ(message->AddAttach(B("caf\xC3\xA9.txt").get(), DataOf("abc").get()), S_OK);
  auto attachment = ChildOf(RootOf(message.get()).get(), 1);
  EXPECT_EQ(AttributeRaw(attachment.get(), "Content-Disposition", "filename"),
            "=?windows-1252?B?Y2Fm6S50eHQ=?=");
  EXPECT_EQ(PartField(attachment.get(), "Content-Transfer-Encoding"), "x-uuencode");
}

TEST(MessageBodies, AddAttachWithoutANameWritesOnlyTheDisposition) {
  auto message = NewMessage();
  message->put_TextBody(B("x").get());
  EXPECT_EQ(message->AddAttach(B("").get(), DataOf("abc").get()), S_OK);
  auto attachment = ChildOf(RootOf(message.get()).get(), 1);
  EXPECT_EQ(PartField(attachment.get(), "Content-Type"), "<none>");
  EXPECT_EQ(PartField(attachment.get(), "Content-Disposition"), "attachment");
}

TEST(MessageBodies, AddAttachOnAnAlternativeRootMakesItMixedFirst) {
  auto message = ParsedMessage(kAlternative);
  EXPECT_EQ(message->AddAttach(B("a.txt").get(), DataOf("abc").get()), S_OK);
  EXPECT_EQ(TreeShape(RootOf(message.get()).get()),
            "multipart/mixed(multipart/alternative(text/plain,text/html),/)");
  auto again = ParsedMessage(Assembled(message.get()));
  EXPECT_EQ(TreeShape(RootOf(again.get()).get()),
            "multipart/mixed(multipart/alternative(text/plain,text/html),text/plain)");
}

TEST(MessageBodies, AddAttachToAnEmptyMessageMakesTheAttachmentTheRoot) {
  auto message = NewMessage();
  EXPECT_EQ(message->AddAttach(B("a.pdf").get(), DataOf("abc").get()), S_OK);
  EXPECT_EQ(TreeShape(RootOf(message.get()).get()), "/");
  EXPECT_EQ(CountOf(AttachmentsOf(message.get()).get()), 1);
  auto again = ParsedMessage(Assembled(message.get()));
  EXPECT_EQ(TreeShape(RootOf(again.get()).get()), "application/pdf");
}

// A plain message first becomes a single "text/plain" part; that part is
// then made the first child of a multipart root, so the attachment is
// written and survives a save.
TEST(MessageBodies, AddAttachOnAPlainMessageKeepsTheTextAndTheAttachment) {
  auto message = ParsedMessage("Subject: s\r\n\r\nbody");
  EXPECT_EQ(message->AddAttach(B("a.pdf").get(), DataOf("abc").get()), S_OK);
  EXPECT_EQ(TreeShape(RootOf(message.get()).get()), "multipart/mixed(text/plain,/)");
  EXPECT_EQ(CountOf(AttachmentsOf(message.get()).get()), 1);
  auto again = ParsedMessage(Assembled(message.get()));
  EXPECT_EQ(TreeShape(RootOf(again.get()).get()), "multipart/mixed(text/plain,application/pdf)");
  EXPECT_EQ(CountOf(AttachmentsOf(again.get()).get()), 1);
  Bstr text;
  EXPECT_EQ(again->get_TextBody(text.put()), S_OK);
  // A child that is not the last keeps the line break written before the
  // next delimiter.
  EXPECT_EQ(U8(text), "body\r\n");
}

TEST(MessageBodies, AddPartOnAPlainMessageWritesThePart) {
  auto message = ParsedMessage("Subject: s\r\n\r\nbody");
  auto part = Create<IEMSMimePart>(CLSID_EMSMimePart);
  ASSERT_EQ(part->ParsePartObject(DataOf("Content-Type: text/html\r\n\r\n<p>x</p>").get()), S_OK);
  EXPECT_EQ(message->AddPart(1, part.get()), S_OK);
  EXPECT_EQ(TreeShape(RootOf(message.get()).get()), "multipart/alternative(text/plain,text/html)");
  auto again = ParsedMessage(Assembled(message.get()));
  EXPECT_EQ(TreeShape(RootOf(again.get()).get()), "multipart/alternative(text/plain,text/html)");
}

TEST(MessageBodies, AttachPartsListsTheFlaggedLeavesInTreeOrder) {
  auto message = ParsedMessage(
      "Content-Type: multipart/mixed; boundary=\"m\"\r\n\r\n"
      "--m\r\nContent-Type: multipart/alternative; boundary=\"a\"\r\n\r\n"
      "--a\r\nContent-Type: text/plain\r\n\r\nt\r\n--a\r\nContent-Type: image/png\r\n\r\nP1\r\n--a--\r\n"
      "\r\n--m\r\nContent-Type: text/plain\r\nContent-Disposition: attachment\r\n\r\nnotes\r\n"
      "--m\r\nContent-Type: application/zip\r\n\r\nPK\r\n--m--\r\n");
  auto parts = AttachmentsOf(message.get());
  ASSERT_EQ(CountOf(parts.get()), 3);
  auto root = RootOf(message.get());
  ComPtr<IEMSMimePart> part;
  parts->get_Part(0, part.put());
  EXPECT_EQ(part.get(), ChildOf(ChildOf(root.get(), 0).get(), 1).get());
  parts->get_Part(1, part.put());
  EXPECT_EQ(part.get(), ChildOf(root.get(), 1).get());
  parts->get_Part(2, part.put());
  EXPECT_EQ(part.get(), ChildOf(root.get(), 2).get());
}

TEST(MessageBodies, AttachPartsNeverListsAPartWithChildren) {
  auto message = ParsedMessage(kAlternative);
  auto root = RootOf(message.get());
  ASSERT_TRUE(root);
  root->put_IsAttachPart(1);
  ComPtr<IEMSMimeParts> parts;
  EXPECT_EQ(message->get_AttachParts(parts.put()), S_OK);
  EXPECT_FALSE(parts);  // an empty list is not handed out
}

TEST(MessageBodies, AttachPartsOfASinglePartAttachmentIsTheRoot) {
  auto message = ParsedMessage("Content-Type: application/pdf\r\n\r\n%PDF");
  auto parts = AttachmentsOf(message.get());
  ASSERT_EQ(CountOf(parts.get()), 1);
  ComPtr<IEMSMimePart> part;
  parts->get_Part(0, part.put());
  EXPECT_EQ(part.get(), RootOf(message.get()).get());
  EXPECT_EQ(message->get_AttachParts(nullptr), S_OK);
}

TEST(MessageBodies, AttachPartsWithoutARootPartWritesNothing) {
  auto message = ParsedMessage("Subject: s\r\n");
  ComPtr<IEMSMimeParts> parts;
  EXPECT_EQ(message->get_AttachParts(parts.put()), S_OK);
  EXPECT_FALSE(parts);
}

TEST(MessageBodies, AttachPartsEndsOnATreeThatHoldsItsOwnRoot) {
  auto message = ParsedMessage(
      "Content-Type: multipart/mixed; boundary=\"m\"\r\n\r\n--m\r\nContent-Type: "
      "image/gif\r\n\r\nG\r\n--m--\r\n");
  auto root = RootOf(message.get());
  ASSERT_TRUE(root);
  ComPtr<IEMSMimeParts> children;
  root->get_MimeParts(children.put());
  children->AddPart(root.get());  // a cycle a caller can build
  EXPECT_EQ(CountOf(AttachmentsOf(message.get()).get()), 1);
  children->RemovePart(1);  // break it so that the objects can be released
}

// A chain of parts each holding the next, far deeper than any call stack
// would allow a recursive walk.
ComPtr<IEMSMimePart> DeepChain(int depth, ComPtr<IEMSMimePart>* deepest) {
  auto root = Create<IEMSMimePart>(CLSID_EMSMimePart);
  ComPtr<IEMSMimePart> current = root;
  for (int i = 0; i < depth && current; ++i) {
    auto child = Create<IEMSMimePart>(CLSID_EMSMimePart);
    ComPtr<IEMSMimeParts> children;
    current->get_MimeParts(children.put());
    if (!children || !child) return nullptr;
    children->AddPart(child.get());
    current = child;
  }
  *deepest = current;
  return root;
}

TEST(MessageBodies, AttachPartsWalksAVeryDeepTreeWithoutRecursion) {
  ComPtr<IEMSMimePart> deepest;
  auto root = DeepChain(100000, &deepest);
  ASSERT_TRUE(root);
  deepest->put_IsAttachPart(1);
  auto message = NewMessage();
  message->put_MimePart(root.get());
  auto parts = AttachmentsOf(message.get());
  ASSERT_EQ(CountOf(parts.get()), 1);
  ComPtr<IEMSMimePart> listed;
  parts->get_Part(0, listed.put());
  EXPECT_EQ(listed.get(), deepest.get());
}

}  // namespace
}  // namespace pv::test
