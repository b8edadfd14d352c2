// EMSMimePart assembly: the BodyObject getter and AssemblePartObject.
#include "src/data/data_object.h"
#include "tests/mime/foreign_parts.h"
#include "tests/mime/mime_part_test_util.h"

namespace pv::test {
namespace {

// The boundary a part's "Content-Type" field holds, or kNone.
std::string BoundaryOf(IEMSMimePart* part) {
  ComPtr<IEMSMessageParameter> field = FieldOf(part, "Content-Type");
  if (!field) return kNone;
  ComPtr<IEMSContentType> content;
  EXPECT_EQ(field.As(&content), S_OK);
  Bstr boundary;
  if (content->get_Boundary(boundary.put()) != S_OK) return kNone;
  return U8(boundary);
}

// A part with the given "Content-Type" field and children holding the
// given bodies (and no fields).
ComPtr<IEMSMimePart> BuiltMultipart(std::string_view contentType, const Strings& bodies) {
  auto part = Parsed("Content-Type: " + std::string(contentType) + "\r\n\r\n");
  for (const std::string& body : bodies) {
    auto child = NewPart();
    child->put_BodyObject(DataOf(body).get());
    PartsOf(part.get())->AddPart(child.get());
  }
  return part;
}

// ---------------------------------------------------------------- BodyObject get
TEST(BodyObjectGet, StoredBodyIsReturnedItselfNotACopy) {
  auto part = NewPart();
  auto data = DataOf("body");
  part->put_BodyObject(data.get());
  ComPtr<IEMSDataObject> body;
  EXPECT_EQ(part->get_BodyObject(body.put()), S_OK);
  EXPECT_EQ(body.get(), data.get());
}

TEST(BodyObjectGet, PartWithABodyAndChildrenReturnsTheBody) {
  auto part = BuiltMultipart("multipart/mixed", {"a"});
  part->put_BodyObject(DataOf("own body").get());
  EXPECT_EQ(ChildCount(part.get()), 1);
  EXPECT_EQ(BodyOf(part.get()), "own body");
}

TEST(BodyObjectGet, PartWithNeitherLeavesTheResultPlaceAsItWas) {
  auto part = NewPart();
  auto sentinel = DataOf("x");
  IEMSDataObject* place = sentinel.get();
  EXPECT_EQ(part->get_BodyObject(&place), S_OK);
  EXPECT_EQ(place, sentinel.get());
}

TEST(BodyObjectGet, ChildrenAreWrittenBetweenDelimiterLines) {
  auto part = BuiltMultipart("multipart/mixed; boundary=b", {"A\r\n", "B\r\n"});
  // The last child gets a line break of its own before the closing
  // delimiter: the parse takes that one as the delimiter's, so B keeps its.
  EXPECT_EQ(BodyOf(part.get()), "--b\r\n\r\nA\r\n--b\r\n\r\nB\r\n\r\n--b--\r\n");
}

TEST(BodyObjectGet, LastChildReadsBackWithItsOwnBytes) {
  auto part = BuiltMultipart("multipart/mixed; boundary=b", {"A\r\n", "B\r\n"});
  auto again = NewPart();
  ASSERT_EQ(again->ParsePartObject(
                DataOf("Content-Type: multipart/mixed; boundary=b\r\n\r\n" + BodyOf(part.get())).get()),
            S_OK);
  ASSERT_EQ(ChildCount(again.get()), 2);
  EXPECT_EQ(BodyOf(ChildOf(again.get(), 0).get()), "A\r\n");
  EXPECT_EQ(BodyOf(ChildOf(again.get(), 1).get()), "B\r\n");
}

TEST(BodyObjectGet, LastMultipartChildEndsWithItsOwnClosingDelimiter) {
  auto inner = BuiltMultipart("multipart/alternative; boundary=c", {"a"});
  auto part = BuiltMultipart("multipart/mixed; boundary=b", {});
  PartsOf(part.get())->AddPart(inner.get());
  EXPECT_EQ(BodyOf(part.get()),
            "--b\r\nContent-Type: "
            "multipart/alternative;\r\n\tboundary=\"c\"\r\n\r\n--c\r\n\r\na\r\n--c--\r\n--b--\r\n");
}

TEST(BodyObjectGet, ChildNotEndingInALineBreakGetsOne) {
  auto part = BuiltMultipart("multipart/mixed; boundary=b", {"A", "B\r"});
  EXPECT_EQ(BodyOf(part.get()), "--b\r\n\r\nA\r\n--b\r\n\r\nB\r\r\n--b--\r\n");
}

TEST(BodyObjectGet, ChildWithoutBodyWritesItsHeaderBlockOnly) {
  auto part = BuiltMultipart("multipart/mixed; boundary=b", {});
  PartsOf(part.get())->AddPart(NewPart().get());
  // Its empty line, then the last child's own line break: it reads back as
  // a child without fields or body.
  EXPECT_EQ(BodyOf(part.get()), "--b\r\n\r\n\r\n--b--\r\n");
}

TEST(BodyObjectGet, MultipartWithoutChildrenAndWithoutBodyHasNone) {
  auto part = BuiltMultipart("multipart/mixed; boundary=b", {});
  EXPECT_EQ(BodyOf(part.get()), kNone);
  EXPECT_EQ(Assembled(part.get()), "Content-Type: multipart/mixed;\r\n\tboundary=\"b\"\r\n\r\n");
}

TEST(BodyObjectGet, TextPartWhoseBodyWasClearedHasNoneDespiteChildren) {
  auto part = BuiltMultipart("text/plain", {"child"});
  part->put_BodyObject(DataOf("text").get());
  part->put_BodyObject(nullptr);
  EXPECT_EQ(ChildCount(part.get()), 1);
  EXPECT_EQ(BodyOf(part.get()), kNone);
}

TEST(BodyObjectGet, ChildrenOfAPartWithoutContentTypeAreNotWritten) {
  auto part = NewPart();
  auto child = NewPart();
  child->put_BodyObject(DataOf("x").get());
  PartsOf(part.get())->AddPart(child.get());
  EXPECT_EQ(BodyOf(part.get()), kNone);
}

TEST(BodyObjectGet, BoundaryIsGeneratedOnceWhenMissing) {
  auto part = BuiltMultipart("multipart/mixed", {"x"});
  ASSERT_EQ(BoundaryOf(part.get()), kNone);
  std::string first = BodyOf(part.get());
  std::string boundary = BoundaryOf(part.get());
  ASSERT_EQ(boundary.size(), 43u);
  EXPECT_EQ(boundary.substr(0, 19), "----=_NextPart_000_");
  EXPECT_EQ(first, "--" + boundary + "\r\n\r\nx\r\n--" + boundary + "--\r\n");
  EXPECT_EQ(BodyOf(part.get()), first);
  EXPECT_EQ(BoundaryOf(part.get()), boundary);
}

TEST(BodyObjectGet, BodyIsBuiltAnewOnEveryCall) {
  auto part = BuiltMultipart("multipart/mixed; boundary=b", {"x"});
  ComPtr<IEMSDataObject> first;
  part->get_BodyObject(first.put());
  auto child = NewPart();
  child->put_BodyObject(DataOf("y").get());
  PartsOf(part.get())->AddPart(child.get());
  ComPtr<IEMSDataObject> second;
  part->get_BodyObject(second.put());
  EXPECT_NE(first.get(), second.get());
  EXPECT_EQ(SpanBytes(first.get()), "--b\r\n\r\nx\r\n--b--\r\n");
  EXPECT_EQ(SpanBytes(second.get()), "--b\r\n\r\nx\r\n--b\r\n\r\ny\r\n--b--\r\n");
}

TEST(BodyObjectGet, MissingChildOfAListWritesOnlyItsDelimiters) {
  auto part = BuiltMultipart("multipart/mixed; boundary=b", {});
  auto list = MakeForeign<ForeignParts>();
  for (const char* body : {"x", "y", "z"}) {
    auto child = NewPart();
    child->put_BodyObject(DataOf(body).get());
    list->AddPart(child.get());
  }
  list->holes = {1};
  ASSERT_EQ(part->put_MimeParts(list.get()), S_OK);
  EXPECT_EQ(BodyOf(part.get()), "--b\r\n\r\nx\r\n--b\r\n--b\r\n\r\nz\r\n--b--\r\n");
}

TEST(BodyObjectGet, ChildOfAnotherImplementationIsAssembledThroughItsInterface) {
  auto part = BuiltMultipart("multipart/mixed; boundary=b", {"x"});
  auto foreign = MakeForeign<ForeignPart>();
  ComPtr<IEMSMessageParameter> field;
  foreign->inner->CreateHeader(B("X-A").get(), field.put());
  field->put_RawData(B("1").get());
  foreign->inner->put_BodyObject(DataOf("from elsewhere").get());
  PartsOf(part.get())->AddPart(foreign.get());
  EXPECT_EQ(BodyOf(part.get()), "--b\r\n\r\nx\r\n--b\r\nX-A: 1\r\n\r\nfrom elsewhere\r\n--b--\r\n");
  EXPECT_EQ(foreign->calls, 1);
}

TEST(BodyObjectGet, PartThatContainsItselfIsWrittenOnceWhereItRecurs) {
  auto part = BuiltMultipart("multipart/mixed; boundary=b", {"x"});
  PartsOf(part.get())->AddPart(part.get());
  EXPECT_EQ(BodyOf(part.get()), "--b\r\n\r\nx\r\n--b\r\n--b--\r\n");
  // The cycle is broken before the part is released.
  PartsOf(part.get())->RemovePart(1);
}

TEST(BodyObjectGet, ChildrenOfANonMultipartChildAreNotWritten) {
  auto inner = BuiltMultipart("text/plain", {"hidden"});
  auto part = BuiltMultipart("multipart/mixed; boundary=b", {});
  PartsOf(part.get())->AddPart(inner.get());
  EXPECT_EQ(BodyOf(part.get()), "--b\r\nContent-Type: text/plain\r\n\r\n\r\n--b--\r\n");
}

// ---------------------------------------------------------------- AssemblePartObject
TEST(AssemblePartObject, MissingResultPlaceIsAPointerError) {
  EXPECT_EQ(NewPart()->AssemblePartObject(nullptr), E_POINTER);
}

// The header block ends at the first "\r\n\r\n": without a field before it,
// the empty line alone would not end it, so the output begins with both.
TEST(AssemblePartObject, PartWithoutFieldsBeginsWithTheEmptyHeaderBlock) {
  auto part = NewPart();
  part->put_BodyObject(DataOf("body").get());
  EXPECT_EQ(Assembled(part.get()), "\r\n\r\nbody");
  EXPECT_EQ(Assembled(NewPart().get()), "\r\n\r\n");
}

TEST(AssemblePartObject, PartWithoutFieldsReadsBackAsItWas) {
  auto part = NewPart();
  part->put_BodyObject(DataOf("\r\nA: 1\r\n\r\nbody").get());
  auto again = NewPart();
  ASSERT_EQ(again->ParsePartObject(DataOf(Assembled(part.get())).get()), S_OK);
  EXPECT_EQ(FieldCount(again.get()), 0);
  EXPECT_EQ(BodyOf(again.get()), "\r\nA: 1\r\n\r\nbody");
  EXPECT_EQ(NewPart()->ParsePartObject(DataOf(Assembled(NewPart().get())).get()), S_OK);
}

TEST(AssemblePartObject, HeaderBlockThenEmptyLineThenBody) {
  auto part = Parsed("Subject: hello\r\nX-A: 1\r\n\r\nthe body\r\n");
  EXPECT_EQ(Assembled(part.get()), "Subject: hello\r\nX-A: 1\r\n\r\nthe body\r\n");
}

TEST(AssemblePartObject, OutputIsANewObjectOwningItsBytes) {
  auto data = DataOf("A: 1\r\n\r\nbody");
  auto part = NewPart();
  part->ParsePartObject(data.get());
  ComPtr<IEMSDataObject> first;
  ComPtr<IEMSDataObject> second;
  ASSERT_EQ(part->AssemblePartObject(first.put()), S_OK);
  ASSERT_EQ(part->AssemblePartObject(second.put()), S_OK);
  EXPECT_NE(first.get(), second.get());
  EXPECT_NE(first.get(), data.get());
  EXPECT_EQ(AllBytes(first.get()), "A: 1\r\n\r\nbody");
}

TEST(AssemblePartObject, GeneratedBoundaryAppearsInTheFirstOutput) {
  auto part = BuiltMultipart("multipart/related", {"x"});
  std::string out = Assembled(part.get());
  std::string boundary = BoundaryOf(part.get());
  ASSERT_NE(boundary, kNone);
  EXPECT_EQ(out, "Content-Type: multipart/related;\r\n\tboundary=\"" + boundary + "\"\r\n\r\n--" + boundary +
                     "\r\n\r\nx\r\n--" + boundary + "--\r\n");
}

TEST(AssemblePartObject, NestedChildrenGetTheirOwnBoundaries) {
  auto inner = BuiltMultipart("multipart/alternative", {"a"});
  auto outer = BuiltMultipart("multipart/mixed", {});
  PartsOf(outer.get())->AddPart(inner.get());
  std::string out = Assembled(outer.get());
  std::string outerBoundary = BoundaryOf(outer.get());
  std::string innerBoundary = BoundaryOf(inner.get());
  ASSERT_NE(outerBoundary, innerBoundary);
  EXPECT_EQ(out, "Content-Type: multipart/mixed;\r\n\tboundary=\"" + outerBoundary + "\"\r\n\r\n--" +
                     outerBoundary + "\r\nContent-Type: multipart/alternative;\r\n\tboundary=\"" +
                     innerBoundary + "\"\r\n\r\n--" + innerBoundary + "\r\n\r\na\r\n--" + innerBoundary +
                     "--\r\n--" + outerBoundary + "--\r\n");
}

TEST(AssemblePartObject, ParseThenAssembleKeepsInnerChildrenAndRestoresTheLast) {
  std::string text =
      "Content-Type: multipart/mixed; boundary=b\r\n\r\n"
      "--b\r\nA: 1\r\n\r\nx\r\n--b\r\nA: 2\r\n\r\ny\r\n--b--\r\n";
  auto part = Parsed(text);
  std::string out = Assembled(part.get());
  EXPECT_EQ(out,
            "Content-Type: multipart/mixed;\r\n\tboundary=\"b\"\r\n\r\n"
            "--b\r\nA: 1\r\n\r\nx\r\n--b\r\nA: 2\r\n\r\ny\r\n--b--\r\n");
  EXPECT_EQ(Assembled(Parsed(out).get()), out);
}

TEST(AssemblePartObject, NestedTreeRoundTripsThroughParse) {
  std::string inner = Multipart(
      "in", {"Content-Type: text/plain\r\n\r\none", "Content-Type: text/html\r\n\r\ntwo"}, "alternative");
  std::string text = Multipart("out", {inner, "Content-Type: image/gif\r\n\r\nGIF"});
  std::string once = Assembled(Parsed(text).get());
  EXPECT_EQ(Assembled(Parsed(once).get()), once);
  EXPECT_EQ(once,
            "Content-Type: multipart/mixed;\r\n\tboundary=\"out\"\r\n\r\n--out\r\n"
            "Content-Type: multipart/alternative;\r\n\tboundary=\"in\"\r\n\r\n--in\r\nContent-Type: "
            "text/plain\r\n\r\n"
            "one\r\n--in\r\nContent-Type: text/html\r\n\r\ntwo\r\n--in--\r\n--out\r\n"
            "Content-Type: image/gif\r\n\r\nGIF\r\n--out--\r\n");
}

TEST(AssemblePartObject, BodyIsWrittenAsItStands) {
  auto part = Parsed("Content-Transfer-Encoding: base64\r\n\r\nQUJD\r\n");
  EXPECT_EQ(Assembled(part.get()), "Content-Transfer-Encoding: base64\r\n\r\nQUJD\r\n");
}

}  // namespace
}  // namespace pv::test
