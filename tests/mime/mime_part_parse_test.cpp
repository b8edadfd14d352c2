// EMSMimePart parsing: ParsePartObject and the body store of BodyObject put.
#include "src/data/data_object.h"
#include "src/mime/mime_part.h"
#include "tests/mime/mime_part_test_util.h"

namespace pv::test {
namespace {

// The store behind a data object of the library (to check that bodies
// share the parsed buffer).
const void* StoreOf(IEMSDataObject* object) {
  ComPtr<DataObject> own = ImplOf<DataObject>(object);
  return own ? own->store().get() : nullptr;
}

ULONG PositionOf(IEMSDataObject* object) {
  ULONG position = 0;
  object->get_Position(&position);
  return position;
}

// The body the part holds itself (the getter builds one for a multipart
// part that holds none).
ComPtr<IEMSDataObject> StoredBody(IEMSMimePart* part) {
  ComPtr<MimePart> own = ImplOf<MimePart>(part);
  return own ? ComPtr<IEMSDataObject>(own->body()) : nullptr;
}

// ---------------------------------------------------------------- a new part
TEST(MimePartState, NewPartHasItsDocumentedDefaults) {
  auto part = NewPart();
  LONG value = -1;
  EXPECT_EQ(part->get_DefaultCodePage(&value), S_OK);
  EXPECT_EQ(value, 1252);
  EXPECT_EQ(part->get_DefaultEncoding(&value), S_OK);
  EXPECT_EQ(value, 0);
  EXPECT_EQ(part->get_DefaultHeaderEncoding(&value), S_OK);
  EXPECT_EQ(value, 3);
  EXPECT_EQ(AttachFlag(part.get()), 0);
  EXPECT_EQ(BodyOf(part.get()), kNone);
  EXPECT_EQ(FieldCount(part.get()), 0);
  EXPECT_EQ(ChildCount(part.get()), 0);
}

TEST(MimePartState, PlainPropertiesStoreWhatTheyAreGiven) {
  auto part = NewPart();
  LONG value = 0;
  part->put_DefaultCodePage(65001);
  part->put_DefaultEncoding(4);
  part->put_DefaultHeaderEncoding(1);
  part->put_IsAttachPart(7);
  part->get_DefaultCodePage(&value);
  EXPECT_EQ(value, 65001);
  part->get_DefaultEncoding(&value);
  EXPECT_EQ(value, 4);
  part->get_DefaultHeaderEncoding(&value);
  EXPECT_EQ(value, 1);
  EXPECT_EQ(AttachFlag(part.get()), 7);
}

TEST(MimePartState, GettersRefuseAMissingResultPlace) {
  auto part = NewPart();
  EXPECT_EQ(part->get_DefaultCodePage(nullptr), E_POINTER);
  EXPECT_EQ(part->get_DefaultEncoding(nullptr), E_POINTER);
  EXPECT_EQ(part->get_DefaultHeaderEncoding(nullptr), E_POINTER);
  EXPECT_EQ(part->get_IsAttachPart(nullptr), E_POINTER);
  EXPECT_EQ(part->get_Headers(nullptr), E_POINTER);
  EXPECT_EQ(part->get_MimeParts(nullptr), E_POINTER);
  EXPECT_EQ(part->get_BodyObject(nullptr), E_POINTER);
}

TEST(MimePartState, HeadersAndPartsPutReplaceTheHeldLists) {
  auto part = NewPart();
  auto headers = Create<IEMSMessageParameters>(CLSID_EMSMessageParameters);
  auto parts = NewParts();
  EXPECT_EQ(part->put_Headers(headers.get()), S_OK);
  EXPECT_EQ(part->put_MimeParts(parts.get()), S_OK);
  EXPECT_EQ(HeadersOf(part.get()).get(), headers.get());
  EXPECT_EQ(PartsOf(part.get()).get(), parts.get());
}

TEST(MimePartState, MissingListsAreRefusedAndTheHeldOnesStay) {
  auto part = NewPart();
  auto headers = HeadersOf(part.get());
  auto parts = PartsOf(part.get());
  EXPECT_EQ(part->put_Headers(nullptr), E_POINTER);
  EXPECT_EQ(part->put_MimeParts(nullptr), E_POINTER);
  EXPECT_EQ(HeadersOf(part.get()).get(), headers.get());
  EXPECT_EQ(PartsOf(part.get()).get(), parts.get());
}

// ---------------------------------------------------------------- ParsePartObject
TEST(ParsePartObject, MissingObjectIsAPointerError) {
  auto part = Parsed("A: 1\r\n\r\nbody");
  EXPECT_EQ(part->ParsePartObject(nullptr), E_POINTER);
  EXPECT_EQ(BodyOf(part.get()), "body");
}

TEST(ParsePartObject, SpanOfOnlyTheEmptyLineGivesNoHeadersAndNoBody) {
  auto part = NewPart();
  EXPECT_EQ(part->ParsePartObject(DataOf("\r\n\r\n").get()), S_OK);
  EXPECT_EQ(FieldCount(part.get()), 0);
  EXPECT_EQ(BodyOf(part.get()), kNone);
}

TEST(ParsePartObject, HeaderFollowedByTheEmptyLineGivesOneHeaderAndNoBody) {
  auto part = NewPart();
  EXPECT_EQ(part->ParsePartObject(DataOf("Subject: x\r\n\r\n").get()), S_OK);
  EXPECT_EQ(FieldCount(part.get()), 1);
  EXPECT_EQ(RawField(part.get(), "Subject"), "x");
  EXPECT_EQ(BodyOf(part.get()), kNone);
}

TEST(ParsePartObject, HeaderWithoutTheEmptyLineCannotBeParsed) {
  auto part = NewPart();
  EXPECT_EQ(part->ParsePartObject(DataOf("Subject: x\r\n").get()), E_FAIL);
}

TEST(ParsePartObject, SpanShorterThanFourBytesCannotBeParsed) {
  auto part = NewPart();
  EXPECT_EQ(part->ParsePartObject(DataOf("\r\n\r").get()), E_FAIL);
  EXPECT_EQ(part->ParsePartObject(DataOf("").get()), E_FAIL);
}

TEST(ParsePartObject, FailureLeavesThePartEmptied) {
  auto part = Parsed(Multipart("b", {"A: 1\r\n\r\nx"}));
  ASSERT_EQ(ChildCount(part.get()), 1);
  EXPECT_EQ(part->ParsePartObject(DataOf("no empty line").get()), E_FAIL);
  EXPECT_EQ(FieldCount(part.get()), 0);
  EXPECT_EQ(ChildCount(part.get()), 0);
  EXPECT_EQ(BodyOf(part.get()), kNone);
}

TEST(ParsePartObject, ObjectWithoutAByteArrayCannotBeParsed) {
  auto part = Parsed("A: 1\r\n\r\nbody");
  auto empty = Create<IEMSDataObject>(CLSID_EMSDataObject);
  EXPECT_EQ(part->ParsePartObject(empty.get()), E_FAIL);
  EXPECT_EQ(FieldCount(part.get()), 0);
  EXPECT_EQ(BodyOf(part.get()), kNone);

  auto words = Create<IEMSDataObject>(CLSID_EMSDataObject);
  VARIANT v = Utf16Variant(W("A: 1\r\n\r\nbody"));
  ASSERT_EQ(words->put_Data(v), S_OK);
  VariantClear(&v);
  EXPECT_EQ(part->ParsePartObject(words.get()), E_FAIL);
}

TEST(ParsePartObject, HeadersEndAtTheFirstEmptyLine) {
  auto part = Parsed("A: 1\r\nB: 2\r\n\r\nC: 3\r\n\r\nrest");
  EXPECT_EQ(FieldCount(part.get()), 2);
  EXPECT_EQ(RawField(part.get(), "C"), kNone);
  EXPECT_EQ(BodyOf(part.get()), "C: 3\r\n\r\nrest");
}

TEST(ParsePartObject, OnlyCrLfLineBreaksAreRecognised) {
  auto part = NewPart();
  // Bare line feeds never end a header block: the whole message is header.
  EXPECT_EQ(part->ParsePartObject(DataOf("A: 1\n\nbody\n").get()), E_FAIL);
  // ... up to the first "\r\n\r\n".
  part = Parsed("A: 1\nB: 2\n\nbody\r\n\r\nrest");
  EXPECT_EQ(RawField(part.get(), "A"), "1");
  EXPECT_EQ(RawField(part.get(), "B"), "2");
  EXPECT_EQ(BodyOf(part.get()), "rest");
}

TEST(ParsePartObject, BodyIsASpanOfTheCallersBuffer) {
  auto data = DataOf("X: y\r\n\r\nthe body");
  auto part = NewPart();
  ASSERT_EQ(part->ParsePartObject(data.get()), S_OK);
  auto body = StoredBody(part.get());
  ASSERT_TRUE(body);
  EXPECT_NE(body.get(), data.get());
  EXPECT_EQ(StoreOf(body.get()), StoreOf(data.get()));
  EXPECT_EQ(PositionOf(body.get()), 8u);
  EXPECT_EQ(SpanBytes(body.get()), "the body");
}

TEST(ParsePartObject, SpanOfTheCallersObjectIsWhatIsParsed) {
  auto data = DataOf("junkX: y\r\n\r\nbodyjunk");
  data->put_Position(4);
  data->put_Length(12);
  auto part = NewPart();
  ASSERT_EQ(part->ParsePartObject(data.get()), S_OK);
  EXPECT_EQ(RawField(part.get(), "X"), "y");
  auto body = StoredBody(part.get());
  EXPECT_EQ(PositionOf(body.get()), 12u);
  EXPECT_EQ(SpanBytes(body.get()), "body");
  // The caller's object keeps its span.
  EXPECT_EQ(PositionOf(data.get()), 4u);
}

TEST(ParsePartObject, BodyEndingExactlyAtTheEndOfTheSpan) {
  auto data = DataOf("A: 1\r\n\r\nxy--");
  data->put_Length(11);
  auto part = NewPart();
  ASSERT_EQ(part->ParsePartObject(data.get()), S_OK);
  EXPECT_EQ(BodyOf(part.get()), "xy-");
}

TEST(ParsePartObject, ParsingAgainReplacesEverything) {
  auto part = Parsed(Multipart("b", {"A: 1\r\n\r\nx", "A: 2\r\n\r\ny"}));
  ASSERT_EQ(ChildCount(part.get()), 2);
  ASSERT_EQ(part->ParsePartObject(DataOf("B: 1\r\n\r\nplain").get()), S_OK);
  EXPECT_EQ(FieldCount(part.get()), 1);
  EXPECT_EQ(RawField(part.get(), "Content-Type"), kNone);
  EXPECT_EQ(ChildCount(part.get()), 0);
  EXPECT_EQ(BodyOf(part.get()), "plain");
}

// ---------------------------------------------------------------- classification
TEST(PartClassification, MessageAndImagePartsAreAttachmentsWithoutChildren) {
  auto message = Parsed(
      "Content-Type: message/rfc822\r\n\r\nContent-Type: multipart/mixed; boundary=b\r\n\r\n"
      "--b\r\nA: 1\r\n\r\nx\r\n--b--\r\n");
  EXPECT_EQ(AttachFlag(message.get()), 1);
  EXPECT_EQ(ChildCount(message.get()), 0);
  auto image = Parsed("Content-Type: image/gif\r\n\r\nGIF89a");
  EXPECT_EQ(AttachFlag(image.get()), 1);
  EXPECT_EQ(ChildCount(image.get()), 0);
}

TEST(PartClassification, ApplicationAudioAndVideoAreAttachments) {
  for (const char* type : {"application/pdf", "audio/basic", "video/mpeg"}) {
    auto part = Parsed(std::string("Content-Type: ") + type + "\r\n\r\ndata");
    EXPECT_EQ(AttachFlag(part.get()), 1) << type;
  }
}

TEST(PartClassification, TextAndUnknownTypesAreNotAttachments) {
  for (const char* type : {"text/plain", "model/vrml", "text"}) {
    auto part = Parsed(std::string("Content-Type: ") + type + "\r\n\r\ndata");
    EXPECT_EQ(AttachFlag(part.get()), 0) << type;
  }
}

TEST(PartClassification, AttachmentDispositionIsRecognisedIgnoringCase) {
  auto part = Parsed("Content-Type: text/plain\r\nContent-Disposition: ATTACHMENT\r\n\r\nx");
  EXPECT_EQ(AttachFlag(part.get()), 1);
  part = Parsed("Content-Type: text/plain\r\nContent-Disposition: inline; filename=a.txt\r\n\r\nx");
  EXPECT_EQ(AttachFlag(part.get()), 0);
}

TEST(PartClassification, WithoutAContentTypeFieldNothingIsClassified) {
  auto part = Parsed("Content-Disposition: attachment\r\n\r\nx");
  EXPECT_EQ(AttachFlag(part.get()), 0);
}

TEST(PartClassification, PartWithoutBodyBytesIsNeverAnAttachment) {
  auto part = Parsed("Content-Type: image/gif\r\nContent-Disposition: attachment\r\n\r\n");
  EXPECT_EQ(AttachFlag(part.get()), 0);
}

TEST(PartClassification, ParsingNeverClearsTheFlag) {
  auto part = Parsed("Content-Type: image/gif\r\n\r\nGIF");
  ASSERT_EQ(AttachFlag(part.get()), 1);
  ASSERT_EQ(part->ParsePartObject(DataOf("Content-Type: text/plain\r\n\r\ntext").get()), S_OK);
  EXPECT_EQ(AttachFlag(part.get()), 1);
}

// ---------------------------------------------------------------- the multipart split
TEST(MultipartParse, ChildWithoutHeadersHasOnlyItsBody) {
  auto part = Parsed("Content-Type: multipart/mixed; boundary=b\r\n\r\n--b\r\n\r\nhello\r\n--b--");
  ASSERT_EQ(ChildCount(part.get()), 1);
  auto child = ChildOf(part.get(), 0);
  EXPECT_EQ(FieldCount(child.get()), 0);
  EXPECT_EQ(BodyOf(child.get()), "hello");
}

TEST(MultipartParse, ChildrenKeepTheLineBreakBeforeTheNextDelimiter) {
  auto part = Parsed(
      "Content-Type: multipart/mixed; boundary=b\r\n\r\n"
      "--b\r\nA: 1\r\n\r\nx\r\n--b\r\nA: 2\r\n\r\ny\r\n--b--\r\n");
  EXPECT_EQ(ChildBodies(part.get()), Strings({"x\r\n", "y"}));
  EXPECT_EQ(RawField(ChildOf(part.get(), 0).get(), "A"), "1");
  EXPECT_EQ(RawField(ChildOf(part.get(), 1).get(), "A"), "2");
}

TEST(MultipartParse, BlanksAfterTheBoundaryMakeNoDelimiter) {
  auto part = Parsed(
      "Content-Type: multipart/mixed; boundary=b\r\n\r\n"
      "--b\r\nA: 1\r\n\r\nx\r\n--b  \r\nA: 2\r\n\r\ny\r\n--b--\r\n");
  EXPECT_EQ(ChildBodies(part.get()), Strings({"x\r\n--b  \r\nA: 2\r\n\r\ny"}));
}

TEST(MultipartParse, ClosingDelimiterWithoutALineBreakBeforeItLosesThePart) {
  auto part = Parsed(
      "Content-Type: multipart/mixed; boundary=b\r\n\r\n"
      "--b\r\nA: 1\r\n\r\nx\r\n--b\r\nA: 2\r\n\r\ny--b--");
  EXPECT_EQ(ChildBodies(part.get()), Strings({"x\r\n"}));
  EXPECT_EQ(StoredBody(part.get()), nullptr);
}

TEST(MultipartParse, SplitMultipartKeepsNoBody) {
  auto part = Parsed(
      "Content-Type: multipart/mixed; boundary=b\r\n\r\npreamble\r\n--b\r\nA: 1\r\n\r\nx\r\n"
      "--b--\r\nepilogue");
  ASSERT_EQ(ChildCount(part.get()), 1);
  ComPtr<IEMSDataObject> body;
  ASSERT_EQ(part->get_BodyObject(body.put()), S_OK);
  // The getter builds a body from the children: preamble and epilogue are gone.
  EXPECT_EQ(SpanBytes(body.get()), "--b\r\nA: 1\r\n\r\nx\r\n--b--\r\n");
}

TEST(MultipartParse, BoundaryThatNeverOccursKeepsTheBody) {
  auto part = Parsed("Content-Type: multipart/mixed; boundary=zz\r\n\r\n--b\r\nA: 1\r\n\r\nx\r\n--b--\r\n");
  EXPECT_EQ(ChildCount(part.get()), 0);
  EXPECT_EQ(BodyOf(part.get()), "--b\r\nA: 1\r\n\r\nx\r\n--b--\r\n");
}

TEST(MultipartParse, MultipartWithoutABoundaryKeepsItsBody) {
  auto part = Parsed("Content-Type: multipart/mixed\r\n\r\n--b\r\nA: 1\r\n\r\nx\r\n--b--\r\n");
  EXPECT_EQ(ChildCount(part.get()), 0);
  EXPECT_EQ(BodyOf(part.get()), "--b\r\nA: 1\r\n\r\nx\r\n--b--\r\n");
}

TEST(MultipartParse, DelimiterFoundButNoChildMadeKeepsTheBody) {
  // The only child has no empty line after its headers and is dropped.
  auto part = Parsed("Content-Type: multipart/mixed; boundary=b\r\n\r\n--b\r\nA: 1\r\n--b--\r\n");
  EXPECT_EQ(ChildCount(part.get()), 0);
  EXPECT_EQ(BodyOf(part.get()), "--b\r\nA: 1\r\n--b--\r\n");
}

TEST(MultipartParse, ChildThatCannotBeParsedIsDropped) {
  auto part = Parsed(
      "Content-Type: multipart/mixed; boundary=b\r\n\r\n"
      "--b\r\nA: 1\r\n\r\nx\r\n--b\r\nno empty line\r\n--b\r\nA: 3\r\n\r\nz\r\n--b--");
  EXPECT_EQ(ChildBodies(part.get()), Strings({"x\r\n", "z"}));
}

TEST(MultipartParse, BoundaryInsideABodyLineIsADelimiter) {
  auto part = Parsed(
      "Content-Type: multipart/mixed; boundary=b\r\n\r\n"
      "--b\r\nA: 1\r\n\r\nsome text--b\r\nA: 2\r\n\r\ny\r\n--b--");
  EXPECT_EQ(ChildBodies(part.get()), Strings({"some text", "y"}));
}

TEST(MultipartParse, DelimiterMatchingIsCaseSensitive) {
  auto part = Parsed(
      "Content-Type: multipart/mixed; boundary=b\r\n\r\n"
      "--b\r\nA: 1\r\n\r\nx\r\n--B\r\nA: 2\r\n\r\ny\r\n--b--");
  EXPECT_EQ(ChildBodies(part.get()), Strings({"x\r\n--B\r\nA: 2\r\n\r\ny"}));
}

TEST(MultipartParse, LastChildEndingExactlyAtTheEndOfTheBody) {
  auto part = Parsed("Content-Type: multipart/mixed; boundary=b\r\n\r\n--b\r\nA: 1\r\n\r\nxyz\r\n--b");
  EXPECT_EQ(ChildBodies(part.get()), Strings({"xyz\r\n"}));
}

TEST(MultipartParse, ChildrenGetTheCodePageAndEncodingButNotTheHeaderEncoding) {
  auto part = NewPart();
  part->put_DefaultCodePage(65001);
  part->put_DefaultEncoding(2);
  part->put_DefaultHeaderEncoding(1);
  ASSERT_EQ(part->ParsePartObject(DataOf(Multipart("b", {"A: 1\r\n\r\nx"})).get()), S_OK);
  auto child = ChildOf(part.get(), 0);
  ASSERT_TRUE(child);
  LONG value = 0;
  child->get_DefaultCodePage(&value);
  EXPECT_EQ(value, 65001);
  child->get_DefaultEncoding(&value);
  EXPECT_EQ(value, 2);
  child->get_DefaultHeaderEncoding(&value);
  EXPECT_EQ(value, 3);
}

TEST(MultipartParse, NestedMultipartsAreSplitToTheLeaves) {
  std::string inner =
      Multipart("in", {"Content-Type: text/plain\r\n\r\nleaf one", "A: 1\r\n\r\nleaf two"}, "alternative");
  auto part = Parsed(Multipart("out", {inner, "Content-Type: image/gif\r\n\r\nGIF"}));
  ASSERT_EQ(ChildCount(part.get()), 2);
  auto alternative = ChildOf(part.get(), 0);
  EXPECT_EQ(SubtypeCode(alternative.get()), 1);
  EXPECT_EQ(ChildBodies(alternative.get()), Strings({"leaf one\r\n", "leaf two"}));
  // The outer closing delimiter takes the line break before it.
  EXPECT_EQ(BodyOf(ChildOf(part.get(), 1).get()), "GIF");
  EXPECT_EQ(AttachFlag(ChildOf(part.get(), 1).get()), 1);
}

TEST(MultipartParse, EveryBodyOfTheTreeSharesTheParsedBuffer) {
  std::string inner = Multipart("in", {"A: 1\r\n\r\none", "A: 2\r\n\r\ntwo"});
  auto data = DataOf(Multipart("out", {inner, "A: 3\r\n\r\nthree"}));
  auto part = NewPart();
  ASSERT_EQ(part->ParsePartObject(data.get()), S_OK);
  auto inner0 = ChildOf(ChildOf(part.get(), 0).get(), 0);
  auto leaf = StoredBody(inner0.get());
  ASSERT_TRUE(leaf);
  EXPECT_EQ(StoreOf(leaf.get()), StoreOf(data.get()));
  EXPECT_EQ(SpanBytes(leaf.get()), "one\r\n");
  EXPECT_EQ(StoreOf(StoredBody(ChildOf(part.get(), 1).get()).get()), StoreOf(data.get()));
}

TEST(MultipartParse, SameBoundaryInsideAChildEndsThatChild) {
  std::string text =
      "Content-Type: multipart/mixed; boundary=b\r\n\r\n"
      "--b\r\nContent-Type: multipart/mixed; boundary=b\r\n\r\n--b\r\nA: 1\r\n\r\nx\r\n--b--\r\n--b--";
  auto part = Parsed(text);
  // The outer split sees the inner delimiter first: its first child is just
  // the inner header block, which has no body to split.
  ASSERT_EQ(ChildCount(part.get()), 2);
  EXPECT_EQ(ChildCount(ChildOf(part.get(), 0).get()), 0);
  EXPECT_EQ(BodyOf(ChildOf(part.get(), 0).get()), kNone);
}

// ---------------------------------------------------------------- BodyObject put
TEST(BodyObjectPut, MissingBodyClearsTheBody) {
  auto part = Parsed("A: 1\r\n\r\nbody");
  EXPECT_EQ(part->put_BodyObject(nullptr), S_OK);
  EXPECT_EQ(BodyOf(part.get()), kNone);
}

TEST(BodyObjectPut, StoresTheObjectItselfAndClassifiesThePart) {
  auto part = Parsed("Content-Type: image/png\r\n\r\n");
  ASSERT_EQ(AttachFlag(part.get()), 0);
  auto data = DataOf("PNG");
  EXPECT_EQ(part->put_BodyObject(data.get()), S_OK);
  EXPECT_EQ(StoredBody(part.get()).get(), data.get());
  EXPECT_EQ(AttachFlag(part.get()), 1);
}

TEST(BodyObjectPut, SplitsAMultipartBody) {
  auto part = Parsed("Content-Type: multipart/mixed; boundary=b\r\n\r\n");
  EXPECT_EQ(part->put_BodyObject(DataOf("--b\r\nA: 1\r\n\r\nx\r\n--b--").get()), S_OK);
  EXPECT_EQ(ChildBodies(part.get()), Strings({"x"}));
  EXPECT_EQ(StoredBody(part.get()), nullptr);
}

TEST(BodyObjectPut, AppendsNewChildrenToThoseAlreadyThere) {
  auto part = Parsed(Multipart("b", {"A: 1\r\n\r\nfirst"}));
  ASSERT_EQ(ChildCount(part.get()), 1);
  EXPECT_EQ(part->put_BodyObject(DataOf("--b\r\nA: 2\r\n\r\nsecond\r\n--b--").get()), S_OK);
  EXPECT_EQ(ChildBodies(part.get()), Strings({"first", "second"}));
}

TEST(BodyObjectPut, BodyWithoutTheBoundaryIsKeptEvenBesideChildren) {
  auto part = Parsed(Multipart("b", {"A: 1\r\n\r\nfirst"}));
  auto data = DataOf("no delimiter here");
  EXPECT_EQ(part->put_BodyObject(data.get()), S_OK);
  EXPECT_EQ(ChildCount(part.get()), 1);
  EXPECT_EQ(StoredBody(part.get()).get(), data.get());
}

TEST(BodyObjectPut, BodyWhoseOnlyChildIsDroppedIsReleasedBesideChildren) {
  // A delimiter is found: with children in the list the body goes.
  auto part = Parsed(Multipart("b", {"A: 1\r\n\r\nfirst"}));
  EXPECT_EQ(part->put_BodyObject(DataOf("--b\r\nno empty line\r\n--b--").get()), S_OK);
  EXPECT_EQ(ChildCount(part.get()), 1);
  EXPECT_EQ(StoredBody(part.get()), nullptr);
}

TEST(BodyObjectPut, BodyWithoutAByteArrayIsStoredButNotSplit) {
  auto part = Parsed("Content-Type: multipart/mixed; boundary=b\r\n\r\n");
  auto empty = Create<IEMSDataObject>(CLSID_EMSDataObject);
  EXPECT_EQ(part->put_BodyObject(empty.get()), S_OK);
  EXPECT_EQ(StoredBody(part.get()).get(), empty.get());
  EXPECT_EQ(ChildCount(part.get()), 0);
}

TEST(BodyObjectPut, StoringTheSameBodyAgainAppendsItsChildrenAgain) {
  auto part = Parsed("Content-Type: multipart/mixed; boundary=b\r\n\r\n");
  auto data = DataOf("--b\r\nA: 1\r\n\r\nx\r\n--b");
  // A body ending in a bare delimiter is split, and the list is not empty.
  ASSERT_EQ(part->put_BodyObject(data.get()), S_OK);
  ASSERT_EQ(ChildCount(part.get()), 1);
  ASSERT_EQ(part->put_BodyObject(data.get()), S_OK);
  EXPECT_EQ(ChildCount(part.get()), 2);
}

}  // namespace
}  // namespace pv::test
