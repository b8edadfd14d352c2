// EMSMimePart header access, searches and restructuring.
#include "src/mime/mime_part.h"
#include "tests/mime/foreign_parts.h"
#include "tests/mime/mime_part_test_util.h"

namespace pv::test {
namespace {

std::string ContentTypeText(IEMSMimePart* part) {
  Bstr text;
  EXPECT_EQ(part->get_MimeContentTypeString(text.put()), S_OK);
  return text.is_null() ? kNone : U8(text);
}

// mixed( text/plain "one", alternative( text/plain "two", text/html "three" ), image/gif )
ComPtr<IEMSMimePart> SampleTree() {
  std::string alternative = Multipart(
      "in", {"Content-Type: text/plain\r\n\r\ntwo", "Content-Type: text/html\r\n\r\nthree"}, "alternative");
  return Parsed(Multipart("out", {"Content-Type: text/plain\r\nContent-Disposition: attachment\r\n\r\none",
                                  alternative, "Content-Type: image/gif\r\n\r\nGIF"}));
}

// ---------------------------------------------------------------- CreateHeader / FindHeader
TEST(CreateHeader, CreatesAFieldInTheHeaderList) {
  auto part = NewPart();
  ComPtr<IEMSMessageParameter> field;
  EXPECT_EQ(part->CreateHeader(B("X-New").get(), field.put()), S_OK);
  ASSERT_TRUE(field);
  EXPECT_EQ(FieldCount(part.get()), 1);
  Bstr name;
  field->get_Name(name.put());
  EXPECT_EQ(U8(name), "X-New");
}

TEST(CreateHeader, ExistingFieldIsReturnedWithFalse) {
  auto part = Parsed("X-Old: 1\r\n\r\n");
  ComPtr<IEMSMessageParameter> field;
  EXPECT_EQ(part->CreateHeader(B("x-old").get(), field.put()), S_FALSE);
  EXPECT_EQ(field.get(), FieldOf(part.get(), "X-Old").get());
  EXPECT_EQ(FieldCount(part.get()), 1);
}

TEST(CreateHeader, MissingNameOrResultPlaceIsAPointerError) {
  auto part = NewPart();
  ComPtr<IEMSMessageParameter> field;
  EXPECT_EQ(part->CreateHeader(nullptr, field.put()), E_POINTER);
  EXPECT_EQ(part->CreateHeader(B("X").get(), nullptr), E_POINTER);
  EXPECT_EQ(FieldCount(part.get()), 0);
}

TEST(FindHeader, FindsByNameIgnoringCase) {
  auto part = Parsed("Content-Type: text/plain\r\n\r\n");
  ComPtr<IEMSMessageParameter> field;
  EXPECT_EQ(part->FindHeader(B("CONTENT-TYPE").get(), field.put()), S_OK);
  EXPECT_TRUE(field);
}

TEST(FindHeader, AbsentNameLeavesTheResultPlaceEmpty) {
  auto part = NewPart();
  IEMSMessageParameter* field = nullptr;
  EXPECT_EQ(part->FindHeader(B("X").get(), &field), S_OK);
  EXPECT_EQ(field, nullptr);
  EXPECT_EQ(part->FindHeader(nullptr, &field), E_POINTER);
  EXPECT_EQ(part->FindHeader(B("X").get(), nullptr), E_POINTER);
}

// ---------------------------------------------------------------- RemovePart
TEST(RemovePart, RemovesADirectChild) {
  auto part = SampleTree();
  auto image = ChildOf(part.get(), 2);
  EXPECT_EQ(part->RemovePart(image.get()), S_OK);
  EXPECT_EQ(ChildCount(part.get()), 2);
  EXPECT_EQ(ChildOf(part.get(), 1)->RemovePart(image.get()), E_FAIL);
}

TEST(RemovePart, GrandchildIsNotRemoved) {
  auto part = SampleTree();
  auto grandchild = ChildOf(ChildOf(part.get(), 1).get(), 0);
  EXPECT_EQ(part->RemovePart(grandchild.get()), E_FAIL);
  EXPECT_EQ(ChildCount(ChildOf(part.get(), 1).get()), 2);
}

TEST(RemovePart, PartWithoutChildrenFails) {
  auto part = NewPart();
  EXPECT_EQ(part->RemovePart(NewPart().get()), E_FAIL);
  EXPECT_EQ(part->RemovePart(nullptr), E_POINTER);
}

TEST(RemovePart, IdentityNotContentDecides) {
  auto part = Parsed(Multipart("b", {"A: 1\r\n\r\nx"}));
  auto twin = Parsed("A: 1\r\n\r\nx");
  EXPECT_EQ(part->RemovePart(twin.get()), E_FAIL);
  EXPECT_EQ(ChildCount(part.get()), 1);
}

// ---------------------------------------------------------------- FindPart
TEST(FindPart, ReturnsThePartItselfAndRewritesItsContentType) {
  auto part = Parsed("Content-Type: text/plain\r\n\r\nbody");
  ComPtr<IEMSMimePart> found;
  EXPECT_EQ(part->FindPart(B("text/html").get(), 5, found.put()), S_OK);
  EXPECT_EQ(found.get(), part.get());
  EXPECT_EQ(ContentTypeText(part.get()), "text/html");
  EXPECT_EQ(SubtypeCode(part.get()), 8);
}

TEST(FindPart, LevelZeroStillAnswersWithThePartItself) {
  auto part = SampleTree();
  ComPtr<IEMSMimePart> found;
  EXPECT_EQ(part->FindPart(B("image/gif").get(), 0, found.put()), S_OK);
  EXPECT_EQ(found.get(), part.get());
  EXPECT_EQ(TypeCode(part.get()), 3);
}

TEST(FindPart, PartWithoutContentTypeFailsEvenWhenAChildWouldMatch) {
  auto part = Parsed("Subject: no type\r\n\r\n");
  auto child = Parsed("Content-Type: text/html\r\n\r\nx");
  PartsOf(part.get())->AddPart(child.get());
  IEMSMimePart* found = nullptr;
  EXPECT_EQ(part->FindPart(B("text/html").get(), -1, &found), E_FAIL);
  EXPECT_EQ(found, nullptr);
}

TEST(FindPart, MissingArgumentsArePointerErrors) {
  auto part = Parsed("Content-Type: text/plain\r\n\r\n");
  ComPtr<IEMSMimePart> found;
  EXPECT_EQ(part->FindPart(nullptr, 1, found.put()), E_POINTER);
  EXPECT_EQ(part->FindPart(B("text/html").get(), 1, nullptr), E_POINTER);
  EXPECT_EQ(ContentTypeText(part.get()), "text/plain");
}

TEST(FindPart, ChildOfAnotherImplementationIsAskedThroughItsInterface) {
  // A field that reads its codes differently twice makes the search go on
  // to the children; that takes a field of another implementation, so here
  // only the first step is seen: the part itself answers.
  auto part = Parsed("Content-Type: multipart/mixed; boundary=b\r\n\r\n");
  auto foreign = MakeForeign<ForeignPart>();
  PartsOf(part.get())->AddPart(foreign.get());
  ComPtr<IEMSMimePart> found;
  EXPECT_EQ(part->FindPart(B("text/plain").get(), -1, found.put()), S_OK);
  EXPECT_EQ(found.get(), part.get());
  EXPECT_EQ(foreign->calls, 0);
}

// ---------------------------------------------------------------- FindParentPart
TEST(FindParentPart, DirectChildGivesThePartItself) {
  auto part = SampleTree();
  auto child = ChildOf(part.get(), 0);
  ComPtr<IEMSMimePart> parent;
  EXPECT_EQ(part->FindParentPart(child.get(), parent.put()), S_OK);
  EXPECT_EQ(parent.get(), part.get());
}

TEST(FindParentPart, GrandchildGivesItsParent) {
  auto part = SampleTree();
  auto alternative = ChildOf(part.get(), 1);
  auto html = ChildOf(alternative.get(), 1);
  ComPtr<IEMSMimePart> parent;
  EXPECT_EQ(part->FindParentPart(html.get(), parent.put()), S_OK);
  EXPECT_EQ(parent.get(), alternative.get());
}

TEST(FindParentPart, RootIsNeverItsOwnParent) {
  auto part = SampleTree();
  IEMSMimePart* parent = nullptr;
  EXPECT_EQ(part->FindParentPart(part.get(), &parent), E_FAIL);
  EXPECT_EQ(parent, nullptr);
}

TEST(FindParentPart, PartWithoutChildrenFails) {
  auto part = NewPart();
  ComPtr<IEMSMimePart> parent;
  EXPECT_EQ(part->FindParentPart(NewPart().get(), parent.put()), E_FAIL);
}

TEST(FindParentPart, MissingArgumentsArePointerErrors) {
  auto part = SampleTree();
  ComPtr<IEMSMimePart> parent;
  EXPECT_EQ(part->FindParentPart(nullptr, parent.put()), E_POINTER);
  EXPECT_EQ(part->FindParentPart(ChildOf(part.get(), 0).get(), nullptr), E_POINTER);
}

TEST(FindParentPart, SearchesBelowAChildOfAnotherImplementation) {
  auto part = SampleTree();
  auto foreign = MakeForeign<ForeignPart>();
  auto grandchild = NewPart();
  PartsOf(foreign->inner.get())->AddPart(grandchild.get());
  PartsOf(part.get())->AddPart(foreign.get());
  ComPtr<IEMSMimePart> parent;
  EXPECT_EQ(part->FindParentPart(grandchild.get(), parent.put()), S_OK);
  // The foreign part answers with the part it passes its calls to.
  EXPECT_EQ(parent.get(), foreign->inner.get());
  EXPECT_GT(foreign->calls, 0);
}

TEST(FindParentPart, PartThatContainsItselfIsNotSearchedAgain) {
  auto part = SampleTree();
  PartsOf(part.get())->AddPart(part.get());
  ComPtr<IEMSMimePart> parent;
  EXPECT_EQ(part->FindParentPart(NewPart().get(), parent.put()), E_FAIL);
  // The part is its own child now: as a child it has a parent.
  EXPECT_EQ(part->FindParentPart(part.get(), parent.put()), S_OK);
  EXPECT_EQ(parent.get(), part.get());
  PartsOf(part.get())->RemovePart(3);
}

// ---------------------------------------------------------------- FindPartBySubType
TEST(FindPartBySubType, SkipsAnAttachmentAndFindsALaterSibling) {
  auto part = SampleTree();
  ComPtr<IEMSMimePart> found;
  EXPECT_EQ(part->FindPartBySubType(18, found.put()), S_OK);
  EXPECT_EQ(found.get(), ChildOf(ChildOf(part.get(), 1).get(), 0).get());
}

TEST(FindPartBySubType, FindsADeepHtmlLeaf) {
  auto part = SampleTree();
  ComPtr<IEMSMimePart> found;
  EXPECT_EQ(part->FindPartBySubType(8, found.put()), S_OK);
  EXPECT_EQ(BodyOf(found.get()), "three");
}

TEST(FindPartBySubType, PlainFindsAPartWithoutContentType) {
  auto part = Parsed("Subject: x\r\n\r\nbody");
  ComPtr<IEMSMimePart> found;
  EXPECT_EQ(part->FindPartBySubType(18, found.put()), S_OK);
  EXPECT_EQ(found.get(), part.get());
}

TEST(FindPartBySubType, MultipartNeverMatchesItself) {
  auto part = Parsed("Content-Type: multipart/mixed; boundary=b\r\n\r\n");
  ComPtr<IEMSMimePart> found;
  EXPECT_EQ(part->FindPartBySubType(10, found.put()), E_FAIL);
}

TEST(FindPartBySubType, UnknownTypesMatchTheirSubtypeCode) {
  auto part = Parsed("Content-Type: model/vrml\r\n\r\n");
  ComPtr<IEMSMimePart> found;
  EXPECT_EQ(part->FindPartBySubType(-1, found.put()), S_OK);
  EXPECT_EQ(found.get(), part.get());
}

TEST(FindPartBySubType, TypeCodeZeroNeverMatches) {
  auto part = NewPart();
  ComPtr<IEMSMessageParameter> field;
  part->CreateHeader(B("Content-Type").get(), field.put());  // no content state: codes 0
  ComPtr<IEMSMimePart> found;
  EXPECT_EQ(part->FindPartBySubType(0, found.put()), E_FAIL);
}

TEST(FindPartBySubType, AbsentSubtypeFailsAndMissingPlaceIsAPointerError) {
  auto part = SampleTree();
  ComPtr<IEMSMimePart> found;
  EXPECT_EQ(part->FindPartBySubType(22, found.put()), E_FAIL);
  EXPECT_EQ(part->FindPartBySubType(18, nullptr), E_POINTER);
}

TEST(FindPartBySubType, ChildOfAnotherImplementationIsAskedThroughItsInterface) {
  auto part = Parsed("Content-Type: multipart/mixed; boundary=b\r\n\r\n");
  auto foreign = MakeForeign<ForeignPart>();
  foreign->inner->ParsePartObject(DataOf("Content-Type: text/html\r\n\r\nhtml").get());
  PartsOf(part.get())->AddPart(foreign.get());
  ComPtr<IEMSMimePart> found;
  EXPECT_EQ(part->FindPartBySubType(8, found.put()), S_OK);
  EXPECT_EQ(found.get(), foreign->inner.get());
}

// ---------------------------------------------------------------- ConvertToMultipart
TEST(ConvertToMultipart, TextPartBecomesAContainerOfItsOldSelf) {
  auto part = Parsed("Subject: s\r\nContent-Type: text/plain\r\n\r\nthe text");
  auto oldHeaders = HeadersOf(part.get());
  EXPECT_EQ(part->ConvertToMultipart(10), S_OK);
  EXPECT_EQ(FieldCount(part.get()), 1);
  EXPECT_EQ(TypeCode(part.get()), 5);
  EXPECT_EQ(SubtypeCode(part.get()), 10);
  ComPtr<IEMSMimeParts> parts = PartsOf(part.get());
  ASSERT_EQ(ChildCount(part.get()), 1);
  auto child = ChildOf(part.get(), 0);
  EXPECT_EQ(HeadersOf(child.get()).get(), oldHeaders.get());
  EXPECT_EQ(BodyOf(child.get()), "the text");
  EXPECT_EQ(RawField(child.get(), "Subject"), "s");

  std::string out = Assembled(part.get());
  Bstr boundary;
  ComPtr<IEMSContentType> content;
  FieldOf(part.get(), "Content-Type").As(&content);
  content->get_Boundary(boundary.put());
  ASSERT_EQ(boundary.view().size(), 43u);
  const std::string b = U8(boundary);
  EXPECT_EQ(out, "Content-Type: multipart/mixed;\r\n\tboundary=\"" + b + "\"\r\n\r\n--" + b +
                     "\r\nSubject: s\r\nContent-Type: text/plain\r\n\r\nthe text\r\n--" + b + "--\r\n");
}

TEST(ConvertToMultipart, PartKeepsNoBody) {
  auto part = Parsed("Content-Type: text/plain\r\n\r\nthe text");
  ASSERT_EQ(part->ConvertToMultipart(1), S_OK);
  EXPECT_EQ(ImplOf<MimePart>(part.get())->body(), nullptr);
}

TEST(ConvertToMultipart, SameSubtypeTwiceChangesNothingTheSecondTime) {
  auto part = Parsed("Content-Type: text/plain\r\n\r\nx");
  ASSERT_EQ(part->ConvertToMultipart(1), S_OK);
  auto child = ChildOf(part.get(), 0);
  std::string before = Assembled(part.get());
  EXPECT_EQ(part->ConvertToMultipart(1), S_OK);
  EXPECT_EQ(ChildOf(part.get(), 0).get(), child.get());
  EXPECT_EQ(Assembled(part.get()), before);
}

TEST(ConvertToMultipart, AnotherSubtypeWrapsAgain) {
  auto part = Parsed("Content-Type: text/plain\r\n\r\nx");
  ASSERT_EQ(part->ConvertToMultipart(1), S_OK);
  auto text = ChildOf(part.get(), 0);
  ASSERT_EQ(part->ConvertToMultipart(10), S_OK);
  auto alternative = ChildOf(part.get(), 0);
  EXPECT_EQ(SubtypeCode(part.get()), 10);
  EXPECT_EQ(SubtypeCode(alternative.get()), 1);
  // The children moved to the new child, shared, not copied.
  EXPECT_EQ(ChildOf(alternative.get(), 0).get(), text.get());
}

TEST(ConvertToMultipart, PartWithoutFieldsFails) {
  auto part = NewPart();
  part->put_BodyObject(DataOf("x").get());
  EXPECT_EQ(part->ConvertToMultipart(10), E_FAIL);
  EXPECT_EQ(ChildCount(part.get()), 0);
  EXPECT_EQ(BodyOf(part.get()), "x");
}

TEST(ConvertToMultipart, ChildGetsTheCodePageAndEncoding) {
  auto part = Parsed("Content-Type: text/plain\r\n\r\nx");
  part->put_DefaultCodePage(65001);
  part->put_DefaultEncoding(1);
  ASSERT_EQ(part->ConvertToMultipart(10), S_OK);
  LONG value = 0;
  ChildOf(part.get(), 0)->get_DefaultCodePage(&value);
  EXPECT_EQ(value, 65001);
  ChildOf(part.get(), 0)->get_DefaultEncoding(&value);
  EXPECT_EQ(value, 1);
}

TEST(ConvertToMultipart, ChildStoringAnImageBodyIsClassified) {
  auto part = Parsed("Content-Type: image/gif\r\n\r\n");
  part->put_BodyObject(DataOf("GIF").get());
  ASSERT_EQ(part->ConvertToMultipart(10), S_OK);
  EXPECT_EQ(AttachFlag(ChildOf(part.get(), 0).get()), 1);
}

}  // namespace
}  // namespace pv::test
