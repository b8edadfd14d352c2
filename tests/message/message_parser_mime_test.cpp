// Parsing MIME messages: the split of the "Content-" fields to the root
// part, the root part's body, the accessors of a MIME message, and the
// conversion of uuencoded blocks into attachments.
#include "src/message/message_parser.h"
#include "tests/message/message_test_util.h"
#include "tests/mime/foreign_parts.h"

namespace pv::test {
namespace {

std::string DispositionOf(IEMSMimePart* part) {
  if (part == nullptr) return "<no part>";
  ComPtr<IEMSMessageParameter> field;
  part->FindHeader(B("Content-Disposition").get(), field.put());
  ComPtr<IEMSContentDisposition> state;
  if (!field || FAILED(field->QueryInterface(IID_IEMSContentDisposition, state.put_void()))) return "<none>";
  return Text(state.get(), &IEMSContentDisposition::get_DispositionType);
}

std::string AttachNameOf(IEMSMimePart* part) { return Text(part, &IEMSMimePart::get_AttachName); }

ComPtr<IEMSMessageParameters> MimeHeadersOf(IEMSMessageParser* message) {
  ComPtr<IEMSMessageParameters> list;
  EXPECT_EQ(message->get_MimeHeaders(list.put()), S_OK);
  return list;
}

// ---------------------------------------------------------------- the header split
TEST(MessageMime, ContentFieldsMoveToTheRootPartInTheirOrder) {
  auto message = ParsedMessage(
      "From: a@b\r\nContent-Type: text/plain; charset=us-ascii\r\nSubject: s\r\nMIME-Version: 1.0\r\n"
      "Content-Transfer-Encoding: 7bit\r\n\r\nhello\r\n");
  EXPECT_EQ(FieldNames(HeadersOf(message.get()).get()), "From,Subject,MIME-Version");
  EXPECT_EQ(FieldNames(MimeHeadersOf(message.get()).get()), "Content-Type,Content-Transfer-Encoding");
  EXPECT_EQ(message->IsMimeMessage(), S_OK);
  EXPECT_EQ(PartBody(RootOf(message.get()).get()), "hello\r\n");
}

TEST(MessageMime, TheRootPartHoldsTheSameFieldObjects) {
  auto data = DataOf("Content-Type: text/plain\r\n\r\nx");
  auto message = NewMessage();
  ASSERT_EQ(message->ParseObject(data.get()), S_OK);
  ComPtr<IEMSMessageParameter> viaMessage, viaRoot;
  message->FindMimeHeader(B("Content-Type").get(), viaMessage.put());
  auto root = RootOf(message.get());
  ASSERT_TRUE(root);
  root->FindHeader(B("Content-Type").get(), viaRoot.put());
  ASSERT_TRUE(viaMessage);
  EXPECT_EQ(viaMessage.get(), viaRoot.get());
}

TEST(MessageMime, AContentTransferEncodingFieldAloneMakesAMimeMessage) {
  auto message = ParsedMessage("Subject: s\r\nContent-Transfer-Encoding: base64\r\n\r\naGVsbG8=\r\n");
  ASSERT_TRUE(HasRoot(message.get()));
  EXPECT_EQ(FieldNames(MimeHeadersOf(message.get()).get()), "Content-Transfer-Encoding");
  EXPECT_EQ(FieldNames(HeadersOf(message.get()).get()), "Subject");
  EXPECT_EQ(message->IsMimeMessage(), S_OK);
}

TEST(MessageMime, ALowerCaseContentFieldMovesAndAnXContentFieldStays) {
  auto message = ParsedMessage("content-type: text/plain\r\nX-Content-Type: a/b\r\n\r\nx");
  EXPECT_EQ(FieldNames(MimeHeadersOf(message.get()).get()), "content-type");
  EXPECT_EQ(FieldNames(HeadersOf(message.get()).get()), "X-Content-Type");
}

TEST(MessageMime, AContentFieldWithoutABodyStillMakesTheRootPart) {
  auto message = ParsedMessage("Subject: s\r\nContent-Type: text/plain\r\n");
  ASSERT_TRUE(HasRoot(message.get()));
  EXPECT_EQ(PartBody(RootOf(message.get()).get()), "<none>");
  EXPECT_EQ(Assembled(message.get()), "Subject: s\r\nContent-Type: text/plain\r\n\r\n");
}

TEST(MessageMime, TheRootPartTakesTheMessagesDefaults) {
  auto message = NewMessage();
  message->put_DefaultCodePage(65001);
  ASSERT_EQ(message->ParseObject(DataOf("Content-Type: text/plain\r\n\r\nx").get()), S_OK);
  auto root = RootOf(message.get());
  EXPECT_EQ(Number(root.get(), &IEMSMimePart::get_DefaultCodePage), 65001);
  EXPECT_EQ(Number(root.get(), &IEMSMimePart::get_DefaultEncoding), 3);
}

TEST(MessageMime, AMultipartBodyIsSplitIntoChildren) {
  auto message = ParsedMessage(
      "Subject: s\r\nContent-Type: multipart/mixed; boundary=\"b\"\r\n\r\npreamble\r\n"
      "--b\r\nContent-Type: text/plain\r\n\r\none\r\n--b\r\nContent-Type: "
      "image/gif\r\n\r\nGIF89a\r\n--b--\r\n");
  EXPECT_EQ(TreeShape(RootOf(message.get()).get()), "multipart/mixed(text/plain,image/gif)");
  EXPECT_EQ(PartBody(ChildOf(RootOf(message.get()).get(), 0).get()), "one\r\n");
}

// ---------------------------------------------------------------- accessors of a MIME message
TEST(MessageMime, BodyObjectOfAMimeMessageIsTheRootPartsBody) {
  auto message = ParsedMessage("Content-Type: text/plain\r\n\r\nhello");
  EXPECT_EQ(BodyBytes(message.get()), "hello");
  EXPECT_EQ(Text(message.get(), &IEMSMessageParser::get_Body), "hello");
}

TEST(MessageMime, BodyObjectOfAMultipartMessageIsBuiltFromTheChildren) {
  auto message = ParsedMessage(
      "Content-Type: multipart/mixed; boundary=\"b\"\r\n\r\n--b\r\nContent-Type: "
      "text/plain\r\n\r\none\r\n--b--\r\n");
  EXPECT_EQ(BodyBytes(message.get()), "--b\r\nContent-Type: text/plain\r\n\r\none\r\n--b--\r\n");
}

TEST(MessageMime, BodyObjectPutOnAMimeMessageGoesToTheRootPart) {
  auto message = ParsedMessage("Content-Type: text/plain\r\n\r\nold");
  message->put_DefaultCodePage(28591);
  EXPECT_EQ(message->put_BodyObject(DataOf("new").get()), S_OK);
  EXPECT_EQ(message->IsMimeMessage(), S_OK);
  auto root = RootOf(message.get());
  EXPECT_EQ(PartBody(root.get()), "new");
  EXPECT_EQ(Number(root.get(), &IEMSMimePart::get_DefaultCodePage), 28591);
  EXPECT_EQ(Assembled(message.get()), "Content-Type: text/plain\r\n\r\nnew");
}

TEST(MessageMime, MimeHeadersGetAndPutUseTheRootPartsList) {
  auto message = ParsedMessage("Content-Type: text/plain\r\n\r\nx");
  auto list = Create<IEMSMessageParameters>(CLSID_EMSMessageParameters);
  list->ParseParameters(B("Content-Type: text/html\r\n").get());
  EXPECT_EQ(message->put_MimeHeaders(list.get()), S_OK);
  EXPECT_EQ(MimeHeadersOf(message.get()).get(), list.get());
  EXPECT_EQ(Assembled(message.get()), "Content-Type: text/html\r\n\r\nx");
}

TEST(MessageMime, AllHeadersOfAMimeMessageIsANewListOfBothBlocks) {
  auto message = ParsedMessage("From: a@b\r\nContent-Type: text/plain\r\nSubject: s\r\n\r\nx");
  ComPtr<IEMSMessageParameters> all;
  ASSERT_EQ(message->get_AllHeaders(all.put()), S_OK);
  EXPECT_EQ(FieldNames(all.get()), "From,Subject,Content-Type");
  all->RemoveAll();
  EXPECT_EQ(FieldNames(HeadersOf(message.get()).get()), "From,Subject");
  EXPECT_EQ(FieldNames(MimeHeadersOf(message.get()).get()), "Content-Type");
  EXPECT_EQ(Text(message.get(), &IEMSMessageParser::get_AllHeadersString),
            "From: a@b\r\nSubject: s\r\nContent-Type: text/plain\r\n");
}

TEST(MessageMime, AllHeadersPutSplitsTheNewList) {
  auto message = ParsedMessage("Subject: old\r\n\r\nbody");
  auto list = Create<IEMSMessageParameters>(CLSID_EMSMessageParameters);
  list->ParseParameters(B("To: a@b\r\nContent-Type: text/html\r\nX-A: 1\r\n").get());
  EXPECT_EQ(message->put_AllHeaders(list.get()), S_OK);
  EXPECT_EQ(HeadersOf(message.get()).get(), list.get());
  EXPECT_EQ(FieldNames(list.get()), "To,X-A");
  ASSERT_TRUE(HasRoot(message.get()));
  EXPECT_EQ(FieldNames(MimeHeadersOf(message.get()).get()), "Content-Type");
  // The plain body is still held, so the message does not count as MIME.
  EXPECT_EQ(message->IsMimeMessage(), E_FAIL);
}

TEST(MessageMime, AllHeadersStringPutMovesContentFieldsToTheRootPart) {
  auto message = NewMessage();
  EXPECT_EQ(message->put_AllHeadersString(B("Subject: s\r\nContent-Type: text/plain\r\n").get()), S_OK);
  EXPECT_EQ(FieldNames(HeadersOf(message.get()).get()), "Subject");
  EXPECT_EQ(FieldNames(MimeHeadersOf(message.get()).get()), "Content-Type");
  EXPECT_EQ(message->IsMimeMessage(), S_OK);
}

// RemoveByName finds names through the list's index, which Parameter put
// does not update: a field put in by index under a name the index does not
// know is not removed, whatever the header split moved.
TEST(MessageMime, TheHeaderSplitRemovesByNameThroughTheListsIndex) {
  auto list = Create<IEMSMessageParameters>(CLSID_EMSMessageParameters);
  list->ParseParameters(B("A: 1\r\nB: 2\r\n").get());
  auto field = Create<IEMSMessageParameter>(CLSID_EMSMessageParameter);
  field->ParseHeader(B("Content-Type: text/plain").get());
  list->put_Parameter(0, field.get());
  auto message = NewMessage();
  EXPECT_EQ(message->put_AllHeaders(list.get()), S_OK);
  EXPECT_EQ(FieldNames(list.get()), "Content-Type,B");
  EXPECT_EQ(FieldNames(MimeHeadersOf(message.get()).get()), "Content-Type");
}

TEST(MessageMime, TheHeaderSplitOfManyContentFieldsKeepsTheOthersInOrder) {
  std::string block;
  std::string expected;
  for (int i = 0; i < 3000; ++i) {
    block += "Content-X" + std::to_string(i) + ": v\r\n";
    block += "X-" + std::to_string(i) + ": w\r\n";
    expected += (i ? "," : "") + std::string("X-") + std::to_string(i);
  }
  auto message = ParsedMessage(block + "\r\nbody");
  EXPECT_EQ(FieldNames(HeadersOf(message.get()).get()), expected);
  EXPECT_EQ(Number(MimeHeadersOf(message.get()).get(), &IEMSMessageParameters::get_ParamCount), 3000);
}

TEST(MessageMime, HeaderStringOfAContentFieldOfAMimeMessageFindsNothing) {
  auto message = ParsedMessage("Subject: s\r\nContent-Type: text/plain\r\n\r\nx");
  EXPECT_EQ(HeaderText(message.get(), "Content-Type"), "<unset>");
}

TEST(MessageMime, MimeHeaderShortcutsUseTheRootPartsList) {
  auto message = ParsedMessage("Subject: s\r\nContent-Type: text/plain\r\n\r\nx");
  ComPtr<IEMSMessageParameter> found;
  EXPECT_EQ(message->FindMimeHeader(B("content-type").get(), found.put()), S_OK);
  ASSERT_TRUE(found);
  ComPtr<IEMSMessageParameter> created;
  EXPECT_EQ(message->CreateMimeHeader(B("Content-ID").get(), created.put()), S_OK);
  EXPECT_EQ(FieldNames(MimeHeadersOf(message.get()).get()), "Content-Type,Content-ID");
  EXPECT_EQ(message->CreateMimeHeader(B("Content-Type").get(), created.put()), S_FALSE);
  EXPECT_EQ(created.get(), found.get());
}

TEST(MessageMime, MimePartPutReleasesThePlainBody) {
  auto message = ParsedMessage("Subject: s\r\n\r\nplain");
  auto part = Create<IEMSMimePart>(CLSID_EMSMimePart);
  ASSERT_TRUE(part);
  ASSERT_EQ(part->ParsePartObject(DataOf("Content-Type: text/html\r\n\r\n<p>x</p>").get()), S_OK);
  EXPECT_EQ(message->put_MimePart(part.get()), S_OK);
  EXPECT_EQ(message->IsMimeMessage(), S_OK);
  EXPECT_EQ(RootOf(message.get()).get(), part.get());
  EXPECT_EQ(Assembled(message.get()), "Subject: s\r\nContent-Type: text/html\r\n\r\n<p>x</p>");
}

TEST(MessageMime, MimePartGetWithoutAResultPlaceSucceeds) {
  auto message = ParsedMessage("Content-Type: text/plain\r\n\r\nx");
  EXPECT_EQ(message->get_MimePart(nullptr), S_OK);
}

TEST(MessageMime, AMimeMessageAssemblesToItsFieldsFollowedByTheRootPart) {
  auto message = ParsedMessage("Subject: s\r\nContent-Type: text/plain\r\nTo: a@b\r\n\r\nhello\r\n");
  EXPECT_EQ(Assembled(message.get()), "Subject: s\r\nTo: a@b\r\nContent-Type: text/plain\r\n\r\nhello\r\n");
}

TEST(MessageMime, ARootPartOfAnotherImplementationAssemblesThroughItsInterface) {
  const std::string part =
      "Content-Type: multipart/mixed; boundary=\"b\"\r\n\r\n--b\r\nContent-Type: "
      "text/plain\r\n\r\nx\r\n--b--\r\n";
  auto foreign = MakeForeign<ForeignPart>();
  ASSERT_EQ(foreign->ParsePartObject(DataOf(part).get()), S_OK);
  auto message = ParsedMessage("Subject: s\r\n\r\nplain");
  ASSERT_EQ(message->put_MimePart(foreign.get()), S_OK);
  int before = foreign->calls;
  std::string assembled = Assembled(message.get());
  EXPECT_GT(foreign->calls, before);
  EXPECT_EQ(assembled,
            "Subject: s\r\nContent-Type: multipart/mixed;\r\n\tboundary=\"b\"\r\n\r\n--b\r\n"
            "Content-Type: text/plain\r\n\r\nx\r\n--b--\r\n");
  // The library's own part gives the same bytes.
  auto own = ParsedMessage("Subject: s\r\n" + part);
  EXPECT_EQ(Assembled(own.get()), assembled);
}

// ---------------------------------------------------------------- uuencoded blocks in a plain body
const char kBlockLine[] = "begin 644 notes.txt\r\n#86)C\r\n`\r\nend\r\n";

TEST(MessageUuencode, ABlockInAPlainBodyBecomesAnAttachment) {
  auto message = ParsedMessage(std::string("Subject: files\r\n\r\nHello\r\n") + kBlockLine + "Bye\r\n");
  EXPECT_EQ(FieldNames(HeadersOf(message.get()).get()), "Subject,MIME-Version");
  EXPECT_EQ(RawField(HeadersOf(message.get()).get(), "MIME-Version"), "1.0");
  auto root = RootOf(message.get());
  ASSERT_TRUE(root);
  EXPECT_EQ(message->IsMimeMessage(), S_OK);
  EXPECT_EQ(TreeShape(root.get()), "multipart/mixed(text/plain,<none>)");
  auto text = ChildOf(root.get(), 0);
  EXPECT_EQ(PartBody(text.get()), "Hello\r\nBye\r\n");
  auto attachment = ChildOf(root.get(), 1);
  EXPECT_EQ(PartField(attachment.get(), "Content-Transfer-Encoding"), "x-uuencode");
  EXPECT_EQ(DispositionOf(attachment.get()), "attachment");
  EXPECT_EQ(AttachNameOf(attachment.get()), "notes.txt");
  // The encoded line with its line break, as the block holds it.
  EXPECT_EQ(PartBody(attachment.get()), "#86)C\r\n");
  EXPECT_EQ(DecodedBytes(attachment.get()), "abc");
  EXPECT_EQ(Text(message.get(), &IEMSMessageParser::get_TextBody), "Hello\r\nBye\r\n");
}

TEST(MessageUuencode, TheConvertedMessageIsParsedAgainFromItsAssembly) {
  auto data = DataOf(std::string("Subject: files\r\n\r\nHello\r\n") + kBlockLine + "Bye\r\n");
  auto message = NewMessage();
  message->put_TextEncoding(1);
  ASSERT_EQ(message->ParseObject(data.get()), S_OK);
  ComPtr<IEMSDataObject> stored;
  message->get_StoredMessageObject(stored.put());
  ASSERT_TRUE(stored);
  EXPECT_NE(stored.get(), data.get());
  EXPECT_EQ(SpanBytes(stored.get()), Assembled(message.get()));
  EXPECT_EQ(Number(message.get(), &IEMSMessageParser::get_TextEncoding), 3);  // reset by the second parse
  EXPECT_EQ(message->Parse(), S_OK);                                          // parsed
}

TEST(MessageUuencode, TheAttachmentIsNotFlaggedAfterTheSecondParse) {
  // Its "Content-Type" field is created without a value and writes nothing,
  // so the second parse finds no type to classify the part by.
  auto message = ParsedMessage(std::string("Subject: files\r\n\r\nHello\r\n") + kBlockLine + "Bye\r\n");
  auto attachment = ChildOf(RootOf(message.get()).get(), 1);
  EXPECT_EQ(PartField(attachment.get(), "Content-Type"), "<none>");
  EXPECT_EQ(Number(attachment.get(), &IEMSMimePart::get_IsAttachPart), 0);
  ComPtr<IEMSMimeParts> parts;
  EXPECT_EQ(message->get_AttachParts(parts.put()), S_OK);
  EXPECT_FALSE(parts);
}

TEST(MessageUuencode, ABodyThatBeginsWithABlockLosesItsLastLine) {
  auto message = ParsedMessage(std::string("Subject: files\r\n\r\n") + kBlockLine + "Bye\r\n");
  auto root = RootOf(message.get());
  ASSERT_TRUE(root);
  EXPECT_EQ(TreeShape(root.get()), "multipart/mixed(text/plain,<none>)");
  EXPECT_EQ(PartBody(ChildOf(root.get(), 0).get()), "<none>");
  EXPECT_EQ(Assembled(message.get()).find("Bye"), std::string::npos);
}

TEST(MessageUuencode, SeveralBlocksBecomeAttachmentsInOrder) {
  auto message = ParsedMessage(
      "Subject: files\r\n\r\nOne\r\nbegin 644 a.txt\r\n#86)C\r\n`\r\nend\r\nTwo\r\n"
      "begin 600 b.txt\r\n#9&5F\r\n`\r\nend\r\nThree\r\n");
  auto root = RootOf(message.get());
  EXPECT_EQ(TreeShape(root.get()), "multipart/mixed(text/plain,<none>,<none>)");
  EXPECT_EQ(PartBody(ChildOf(root.get(), 0).get()), "One\r\nTwo\r\nThree\r\n");
  EXPECT_EQ(AttachNameOf(ChildOf(root.get(), 1).get()), "a.txt");
  EXPECT_EQ(AttachNameOf(ChildOf(root.get(), 2).get()), "b.txt");
  EXPECT_EQ(DecodedBytes(ChildOf(root.get(), 2).get()), "def");
}

TEST(MessageUuencode, AModeWithASevenIsNotABlock) {
  const std::string text = "Subject: s\r\n\r\nHi\r\nbegin 755 run.sh\r\n#86)C\r\n`\r\nend\r\n";
  auto message = ParsedMessage(text);
  EXPECT_FALSE(HasRoot(message.get()));
  EXPECT_EQ(Assembled(message.get()), text);
}

TEST(MessageUuencode, ALongerWordStartingWithBeginCanStartABlock) {
  // The byte after "begin" is never looked at: "beginx644" has the mode 644.
  auto message = ParsedMessage("Subject: s\r\n\r\nHi\r\nbeginx644 odd.bin\r\n#86)C\r\n`\r\nend\r\n");
  auto root = RootOf(message.get());
  ASSERT_TRUE(root);
  EXPECT_EQ(AttachNameOf(ChildOf(root.get(), 1).get()), "odd.bin");
}

TEST(MessageUuencode, AFirstBlockWithoutItsEndMarkerLeavesTheBodyPlain) {
  const std::string text = "Subject: s\r\n\r\nHi\r\nbegin 644 cut.txt\r\n#86)C\r\n";
  auto message = ParsedMessage(text);
  EXPECT_FALSE(HasRoot(message.get()));
  EXPECT_EQ(FieldNames(HeadersOf(message.get()).get()), "Subject");
  EXPECT_EQ(Assembled(message.get()), text);
}

TEST(MessageUuencode, ABlockWithoutEndMarkerAfterAGoodOneEndsTheScan) {
  auto message = ParsedMessage(std::string("Subject: s\r\n\r\nHi\r\n") + kBlockLine +
                               "Mid\r\nbegin 644 cut.txt\r\n#86)C\r\n");
  auto root = RootOf(message.get());
  EXPECT_EQ(TreeShape(root.get()), "multipart/mixed(text/plain,<none>)");
  // The text from the good block's end to the body's end follows the text.
  EXPECT_EQ(PartBody(ChildOf(root.get(), 0).get()), "Hi\r\nMid\r\nbegin 644 cut.txt\r\n#86)C\r\n");
}

// Text built so that each conversion joins "be" and "gin" into a new block:
// every round exposes one more, and the parse stops converting after its
// limit of rounds.
std::string NestedBlocks(int levels) {
  std::string text = "begin 644 f1\r\n#86)C\r\n`\r\nend\r\n";
  for (int i = 2; i <= levels; ++i) {
    text = "be" + text + "gin 644 f" + std::to_string(i) + "\r\n#86)C\r\n`\r\nend\r\n";
  }
  return "Subject: s\r\n\r\nx" + text;
}

TEST(MessageUuencode, BlocksExposedByAConversionAreConvertedByTheNextParse) {
  auto message = ParsedMessage(NestedBlocks(4));
  auto root = RootOf(message.get());
  ASSERT_TRUE(root);
  EXPECT_EQ(ChildCount(root.get()), 5);
  // A first child gets a line break before the next delimiter, and keeps it.
  EXPECT_EQ(PartBody(ChildOf(root.get(), 0).get()), "x\r\n");
  // A name without extension and a part without type get ".att".
  EXPECT_EQ(AttachNameOf(ChildOf(root.get(), 4).get()), "f4.att");
}

TEST(MessageUuencode, AParseConvertsAtMostItsLimitOfRounds) {
  auto message = ParsedMessage(NestedBlocks(12));
  auto root = RootOf(message.get());
  ASSERT_TRUE(root);
  ASSERT_EQ(MessageParser::kMaxConversionRounds, 8);
  EXPECT_EQ(ChildCount(root.get()), 1 + MessageParser::kMaxConversionRounds);
  // The ninth block is left in the text.
  EXPECT_NE(PartBody(ChildOf(root.get(), 0).get()).find("begin 644 f9"), std::string::npos);
}

// ---------------------------------------------------------------- uuencoded blocks in a MIME tree
TEST(MessageUuencode, ATextPartHoldingABlockIsReplacedInPlace) {
  auto message =
      ParsedMessage(std::string("Subject: s\r\nContent-Type: multipart/mixed; boundary=\"XX\"\r\n\r\n"
                                "--XX\r\nContent-Type: text/plain\r\n\r\nHi\r\n") +
                    kBlockLine + "Bye\r\n--XX\r\nContent-Type: image/gif\r\n\r\nGIF89a\r\n--XX--\r\n");
  auto root = RootOf(message.get());
  ASSERT_TRUE(root);
  EXPECT_EQ(TreeShape(root.get()), "multipart/mixed(text/plain,image/gif,<none>)");
  EXPECT_EQ(PartBody(ChildOf(root.get(), 0).get()), "Hi\r\nBye\r\n");
  EXPECT_EQ(AttachNameOf(ChildOf(root.get(), 2).get()), "notes.txt");
  EXPECT_EQ(FieldNames(HeadersOf(message.get()).get()), "Subject");  // no MIME-Version added
}

TEST(MessageUuencode, AttachmentsOfANestedTextPartGoToItsOwnParent) {
  auto message =
      ParsedMessage(std::string("Content-Type: multipart/mixed; boundary=\"o\"\r\n\r\n"
                                "--o\r\nContent-Type: multipart/alternative; boundary=\"i\"\r\n\r\n"
                                "--i\r\nContent-Type: text/plain\r\n\r\nHi\r\n") +
                    kBlockLine +
                    "--i\r\nContent-Type: text/html\r\n\r\n<p>Hi</p>\r\n--i--\r\n"
                    "\r\n--o\r\nContent-Type: image/gif\r\n\r\nGIF\r\n--o--\r\n");
  EXPECT_EQ(TreeShape(RootOf(message.get()).get()),
            "multipart/mixed(multipart/alternative(text/plain,text/html,<none>),image/gif)");
}

TEST(MessageUuencode, ASinglePartTextMessageIsNeverScanned) {
  const std::string text = std::string("Content-Type: text/plain\r\n\r\nHi\r\n") + kBlockLine;
  auto message = ParsedMessage(text);
  auto root = RootOf(message.get());
  EXPECT_EQ(TreeShape(root.get()), "text/plain");
  EXPECT_EQ(Assembled(message.get()), text);
}

TEST(MessageUuencode, PartsOfOtherTypesAreNotScanned) {
  const std::string text = std::string(
                               "Content-Type: multipart/mixed; boundary=\"XX\"\r\n\r\n"
                               "--XX\r\nContent-Type: application/octet-stream\r\n\r\nHi\r\n") +
                           kBlockLine + "--XX--\r\n";
  auto message = ParsedMessage(text);
  EXPECT_EQ(TreeShape(RootOf(message.get()).get()), "multipart/mixed(application/octet-stream)");
}

// Not reachable by a parse, which asks only when there is no plain body: a
// plain body and a root part without children at once, made by moving a
// "Content-" field through AllHeadersString put.
TEST(MessageUuencode, ARootWithoutChildrenHasThePlainBodyScanned) {
  auto message = ParsedMessage("Subject: s\r\n\r\nx");
  message->put_BodyObject(DataOf(std::string("Hi\r\n") + kBlockLine).get());
  message->put_AllHeadersString(B("Subject: s\r\nContent-Type: text/plain\r\n").get());
  auto root = RootOf(message.get());
  ASSERT_TRUE(root);
  ComPtr<MessageParser> impl = ImplOf<MessageParser>(message.get());
  ASSERT_TRUE(impl);
  EXPECT_TRUE(impl->ConvertUuencodedInTree(root.get(), true));
  EXPECT_EQ(FieldNames(HeadersOf(message.get()).get()), "Subject,MIME-Version,Content-Type");
  ComPtr<IEMSMessageParameter> type;
  HeadersOf(message.get())->FindParameter(B("Content-Type").get(), type.put());
  ComPtr<IEMSContentType> state;
  ASSERT_EQ(type->QueryInterface(IID_IEMSContentType, state.put_void()), S_OK);
  EXPECT_EQ(Text(state.get(), &IEMSContentType::get_ContentType), "multipart/mixed");
  EXPECT_EQ(Text(state.get(), &IEMSContentType::get_Boundary).rfind("----=_NextPart_", 0), 0u);
  EXPECT_EQ(ChildCount(root.get()), 2);
  EXPECT_EQ(PartBody(ChildOf(root.get(), 0).get()), "Hi\r\n");
}

TEST(MessageUuencode, ARootWithoutChildrenIsNotScannedWithoutTheRootFlag) {
  auto message = ParsedMessage("Subject: s\r\n\r\nx");
  message->put_BodyObject(DataOf(std::string("Hi\r\n") + kBlockLine).get());
  message->put_AllHeadersString(B("Subject: s\r\nContent-Type: text/plain\r\n").get());
  ComPtr<MessageParser> impl = ImplOf<MessageParser>(message.get());
  EXPECT_FALSE(impl->ConvertUuencodedInTree(RootOf(message.get()).get(), false));
  EXPECT_EQ(FieldNames(HeadersOf(message.get()).get()), "Subject");
}

TEST(MessageUuencode, TheTreeConversionWalksAVeryDeepTreeWithoutRecursion) {
  auto root = Create<IEMSMimePart>(CLSID_EMSMimePart);
  ASSERT_TRUE(root);
  ComPtr<IEMSMimePart> current = root;
  for (int i = 0; i < 100000; ++i) {
    auto child = Create<IEMSMimePart>(CLSID_EMSMimePart);
    ComPtr<IEMSMimeParts> children;
    current->get_MimeParts(children.put());
    ASSERT_TRUE(children && child);
    children->AddPart(child.get());
    current = child;
  }
  // The deepest part is a text leaf holding a block.
  current->put_BodyObject(DataOf(std::string("Hi\r\n") + kBlockLine).get());
  auto message = NewMessage();
  message->put_MimePart(root.get());
  ComPtr<MessageParser> impl = ImplOf<MessageParser>(message.get());
  EXPECT_TRUE(impl->ConvertUuencodedInTree(root.get(), true));
}

}  // namespace
}  // namespace pv::test
