// The content-type and disposition state of a header field, reached
// through IEMSContentType and IEMSContentDisposition: classification into
// codes, names from codes, the boundary generator, the "boundary" and
// "filename" parameters, and how a field without values is written.
#include <cstdint>
#include <cstdlib>

#include "src/headers/message_parameter.h"
#include "src/platform/clock.h"
#include "tests/test_util.h"

namespace pv::test {
namespace {

class ContentStateTest : public ::testing::Test {
 protected:
  ComPtr<IEMSMessageParameter> field_ = Create<IEMSMessageParameter>(CLSID_EMSMessageParameter);
  ComPtr<IEMSContentType> type_;
  ComPtr<IEMSContentDisposition> disposition_;

  void SetUp() override {
    ASSERT_EQ(field_.As(&type_), S_OK);
    ASSERT_EQ(field_.As(&disposition_), S_OK);
  }

  void Parse(const char* line) { ASSERT_EQ(field_->ParseHeader(B(line).get()), S_OK) << line; }
  LONG Type() {
    LONG v = 12345;
    EXPECT_EQ(type_->get_MimeType(&v), S_OK);
    return v;
  }
  LONG Subtype() {
    LONG v = 12345;
    EXPECT_EQ(type_->get_MimeSubType(&v), S_OK);
    return v;
  }
  template <class I>
  static std::string Get(I* object, HRESULT (STDMETHODCALLTYPE I::*getter)(BSTR*)) {
    Bstr text;
    EXPECT_EQ((object->*getter)(text.put()), S_OK);
    return U8(text);
  }
  std::string TypeName() { return Get(type_.get(), &IEMSContentType::get_MimeTypeName); }
  std::string SubtypeName() { return Get(type_.get(), &IEMSContentType::get_MimeSubTypeName); }
  std::string ContentType() { return Get(type_.get(), &IEMSContentType::get_ContentType); }
  std::string Assembled() { return Get(field_.get(), &IEMSMessageParameter::AssembleHeader); }
  std::string Raw() { return Get(field_.get(), &IEMSMessageParameter::get_RawData); }
  std::string DispositionType() {
    return Get(disposition_.get(), &IEMSContentDisposition::get_DispositionType);
  }
};

// ---------------------------------------------------------------- classification from a header
TEST_F(ContentStateTest, NewFieldHasNoType) {
  EXPECT_EQ(Type(), 0);
  EXPECT_EQ(Subtype(), 0);
  EXPECT_EQ(TypeName(), "");
  EXPECT_EQ(SubtypeName(), "");
  EXPECT_EQ(ContentType(), "/");
  EXPECT_EQ(DispositionType(), "");
}

TEST_F(ContentStateTest, TextPlainWithParametersFromAHeader) {
  Parse("Content-Type: text/plain; charset=us-ascii");
  EXPECT_EQ(Type(), 6);
  EXPECT_EQ(TypeName(), "text");
  EXPECT_EQ(Subtype(), 18);
  EXPECT_EQ(SubtypeName(), "plain");
  EXPECT_EQ(ContentType(), "text/plain");
}

TEST_F(ContentStateTest, NamesKeepTheirCaseAndAreMatchedIgnoringIt) {
  Parse("Content-Type: TEXT/HTML");
  EXPECT_EQ(Type(), 6);
  EXPECT_EQ(Subtype(), 8);
  EXPECT_EQ(ContentType(), "TEXT/HTML");
}

TEST_F(ContentStateTest, TypeWithoutSubtypeIsUnknownTwice) {
  for (const char* line : {"Content-Type: text", "Content-Type: text;x=y"}) {
    Parse(line);
    EXPECT_EQ(Type(), -1) << line;
    EXPECT_EQ(Subtype(), -1) << line;
    EXPECT_EQ(TypeName(), "unknown") << line;
    EXPECT_EQ(SubtypeName(), "unknown") << line;
  }
}

TEST_F(ContentStateTest, ParseContentTypeStopsTheTypeAtASemicolon) {
  EXPECT_EQ(type_->ParseContentType(B("text;x=y").get()), S_OK);
  EXPECT_EQ(Type(), -1);
  EXPECT_EQ(ContentType(), "unknown/unknown");
}

TEST_F(ContentStateTest, EmptySubtypeIsUnknown) {
  Parse("Content-Type: text/");
  EXPECT_EQ(Type(), 6);
  EXPECT_EQ(Subtype(), -1);
  EXPECT_EQ(SubtypeName(), "unknown");
}

TEST_F(ContentStateTest, SubtypesFiledUnderAnotherLetterAreNeverRecognised) {
  Parse("Content-Type: application/mac-binhex40");
  EXPECT_EQ(Type(), 1);
  EXPECT_EQ(Subtype(), -1);
  Parse("Content-Type: text/x-vcard");
  EXPECT_EQ(Subtype(), -1);
}

TEST_F(ContentStateTest, UnknownTypeUnderAKnownLetterIsUnknown) {
  Parse("Content-Type: model/vrml");
  EXPECT_EQ(Type(), -1);
  EXPECT_EQ(Subtype(), -1);
  EXPECT_EQ(ContentType(), "model/vrml");
}

TEST_F(ContentStateTest, BlanksAroundTheSlashAreSkipped) {
  Parse("Content-Type:   multipart/ related ; type=x");
  EXPECT_EQ(Type(), 5);
  EXPECT_EQ(Subtype(), 20);
  EXPECT_EQ(ContentType(), "multipart/related");
}

TEST_F(ContentStateTest, EveryTypeAndSubtypeNameOfTheTablesIsClassified) {
  const char* types[] = {"application", "audio", "image", "message", "multipart", "text", "video"};
  for (LONG code = 1; code <= 7; ++code) {
    Parse(("Content-Type: " + std::string(types[code - 1]) + "/plain").c_str());
    EXPECT_EQ(Type(), code) << types[code - 1];
  }
  const char* subtypes[] = {
      "alternative",  "basic",    "mac-binhex40", "digest", "enriched",     "external-body",    "gif",
      "html",         "jpeg",     "mixed",        "mpeg",   "ms-rtf",       "ms-tnef",          "msword",
      "octet-stream", "parallel", "partial",      "plain",  "postscript",   "related",          "richtext",
      "rfc822",       "signed",   "x-vcard",      "wav",    "x-pkcs7-mime", "x-pkcs7-signature"};
  for (LONG code = 1; code <= 27; ++code) {
    Parse(("Content-Type: text/" + std::string(subtypes[code - 1])).c_str());
    LONG expected = (code == 3 || code == 24) ? -1 : code;  // never found under their first letter
    EXPECT_EQ(Subtype(), expected) << subtypes[code - 1];
  }
}

TEST_F(ContentStateTest, HeaderOfAnotherNameLeavesTheStateAlone) {
  Parse("Content-Type: text/html");
  Parse("Content-Transfer-Encoding: base64");
  EXPECT_EQ(Type(), 6);
  EXPECT_EQ(Subtype(), 8);
}

// ---------------------------------------------------------------- ParseContentType and ContentType put
TEST_F(ContentStateTest, ParseContentTypeResetsBeforeClassifying) {
  Parse("Content-Type: text/plain");
  EXPECT_EQ(type_->ParseContentType(B("image/tiff").get()), S_OK);
  EXPECT_EQ(Type(), 3);
  EXPECT_EQ(Subtype(), -1);
  EXPECT_EQ(ContentType(), "image/tiff");
}

TEST_F(ContentStateTest, ParseContentTypeOfMissingTextResetsAndGivesEPointer) {
  Parse("Content-Type: text/plain");
  EXPECT_EQ(type_->ParseContentType(nullptr), E_POINTER);
  EXPECT_EQ(Type(), -1);
  EXPECT_EQ(Subtype(), -1);
  EXPECT_EQ(ContentType(), "/");
}

TEST_F(ContentStateTest, ContentTypePutGivesAFieldWithoutValuesItsFirstValue) {
  field_->put_Name(B("Content-Type").get());
  EXPECT_EQ(type_->put_ContentType(B("text/html").get()), S_OK);
  EXPECT_EQ(Raw(), "text/html");
  EXPECT_EQ(Assembled(), "Content-Type: text/html");
  EXPECT_EQ(Get(field_.get(), &IEMSMessageParameter::get_DecodedData), "text/html");
  EXPECT_EQ(Type(), 6);
  EXPECT_EQ(Subtype(), 8);
}

TEST_F(ContentStateTest, ContentTypePutKeepsExistingValues) {
  Parse("Content-Type: text/plain");
  EXPECT_EQ(type_->ParseContentType(B("image/gif").get()), S_OK);
  EXPECT_EQ(Raw(), "text/plain");
  EXPECT_EQ(ContentType(), "image/gif");
}

TEST_F(ContentStateTest, ContentTypePutAppendsTokensToTheNamesItHolds) {
  Parse("Content-Type: text/plain");
  EXPECT_EQ(type_->put_ContentType(B("x/y").get()), S_OK);
  EXPECT_EQ(ContentType(), "textx/plainy");
  EXPECT_EQ(Type(), 6);  // not recognised: the code stays
  EXPECT_EQ(Subtype(), 18);
}

TEST_F(ContentStateTest, ContentTypePutWithoutSlashSetsUnknown) {
  Parse("Content-Type: text/plain");
  EXPECT_EQ(type_->put_ContentType(B("garbage").get()), S_OK);
  EXPECT_EQ(ContentType(), "unknown/unknown");
  EXPECT_EQ(Type(), -1);
  EXPECT_EQ(Subtype(), -1);
}

TEST_F(ContentStateTest, AssembleContentTypeAppendsTheParameters) {
  Parse("Content-Type: text/plain; charset=us-ascii");
  EXPECT_EQ(Get(type_.get(), &IEMSContentType::AssembleContentType), "text/plain;\r\n\tcharset=\"us-ascii\"");
  Parse("Content-Type: image/gif");
  EXPECT_EQ(Get(type_.get(), &IEMSContentType::AssembleContentType), "image/gif");
}

// ---------------------------------------------------------------- codes and names set directly
TEST_F(ContentStateTest, TypeCodeSetsTheNameFromTheTable) {
  EXPECT_EQ(type_->put_MimeType(5), S_OK);
  EXPECT_EQ(TypeName(), "multipart");
  EXPECT_EQ(type_->put_MimeType(0), S_OK);
  EXPECT_EQ(TypeName(), "");
  EXPECT_EQ(type_->put_MimeType(8), S_OK);
  EXPECT_EQ(TypeName(), "unknown");
  EXPECT_EQ(Type(), 8);
  EXPECT_EQ(type_->put_MimeType(-5), S_OK);
  EXPECT_EQ(TypeName(), "unknown");
}

TEST_F(ContentStateTest, SubtypeCodeSetsTheNameFromTheTable) {
  EXPECT_EQ(type_->put_MimeSubType(0), S_OK);
  EXPECT_EQ(SubtypeName(), "empty");
  EXPECT_EQ(type_->put_MimeSubType(3), S_OK);
  EXPECT_EQ(SubtypeName(), "mac-binhex40");
  EXPECT_EQ(type_->put_MimeSubType(27), S_OK);
  EXPECT_EQ(SubtypeName(), "x-pkcs7-signature");
  EXPECT_EQ(type_->put_MimeSubType(99), S_OK);
  EXPECT_EQ(SubtypeName(), "unknown");
  EXPECT_EQ(Subtype(), 99);
}

TEST_F(ContentStateTest, NameSettersClassifyAndKeepTheCodeForUnknownNames) {
  EXPECT_EQ(type_->put_MimeTypeName(B("Image").get()), S_OK);
  EXPECT_EQ(Type(), 3);
  EXPECT_EQ(type_->put_MimeTypeName(B("item").get()), S_OK);  // I, not recognised
  EXPECT_EQ(Type(), 3);
  EXPECT_EQ(TypeName(), "item");
  EXPECT_EQ(type_->put_MimeTypeName(B("zebra").get()), S_OK);  // any other letter
  EXPECT_EQ(Type(), -1);
  EXPECT_EQ(type_->put_MimeSubTypeName(B("GIF").get()), S_OK);
  EXPECT_EQ(Subtype(), 7);
  EXPECT_EQ(type_->put_MimeSubTypeName(B("zzz").get()), S_OK);  // Z is not examined
  EXPECT_EQ(Subtype(), 7);
  EXPECT_EQ(type_->put_MimeSubTypeName(B("mac-binhex40").get()), S_OK);
  EXPECT_EQ(Subtype(), 7);
  EXPECT_EQ(SubtypeName(), "mac-binhex40");
}

TEST_F(ContentStateTest, CodeSettersLeaveTheValuesAlone) {
  Parse("Content-Type: text/plain");
  type_->put_MimeType(5);
  type_->put_MimeSubType(10);
  EXPECT_EQ(Raw(), "text/plain");
  EXPECT_EQ(ContentType(), "multipart/mixed");
}

// ---------------------------------------------------------------- boundary
TEST_F(ContentStateTest, BoundaryWithoutTheParameterIsEFail) {
  Parse("Content-Type: multipart/mixed");
  Bstr boundary;
  EXPECT_EQ(type_->get_Boundary(boundary.put()), E_FAIL);
  EXPECT_TRUE(boundary.is_null());
}

TEST_F(ContentStateTest, BoundaryIsTheParametersRawValue) {
  Parse("Content-Type: multipart/mixed; boundary=\"=_a b\"");
  EXPECT_EQ(Get(type_.get(), &IEMSContentType::get_Boundary), "=_a b");
}

TEST_F(ContentStateTest, BoundaryPutCreatesTheParameterAndReturnsItsStatus) {
  field_->put_Name(B("Content-Type").get());
  EXPECT_EQ(type_->put_Boundary(B("one").get()), S_OK);
  EXPECT_EQ(Get(type_.get(), &IEMSContentType::get_Boundary), "one");
  EXPECT_EQ(type_->put_Boundary(B("two").get()), S_FALSE);
  EXPECT_EQ(Get(type_.get(), &IEMSContentType::get_Boundary), "two");
}

// Digits lowest first.
std::string LowDigits(uint64_t value, unsigned base, int count) {
  std::string digits;
  for (int i = 0; i < count; ++i, value /= base) digits.push_back("0123456789ABCDEF"[value % base]);
  return digits;
}

TEST_F(ContentStateTest, CreateBoundaryWritesTheDocumentedFormat) {
  field_->put_Name(B("Content-Type").get());
  int64_t before = 0, after = 0;
  Bstr boundary;
  do {
    before = CurrentTimeSeconds();
    ASSERT_EQ(type_->CreateBoundary(42, boundary.put()), S_OK);
    after = CurrentTimeSeconds();
  } while (before != after);
  std::string b = U8(boundary);
  ASSERT_EQ(b.size(), 43u);
  uint64_t t = static_cast<uint64_t>(before);
  EXPECT_EQ(b.substr(0, 34), "----=_NextPart_442_" + LowDigits(t, 10, 4) + "_" + LowDigits(t, 16, 9) + ".");
  EXPECT_EQ(b.find_first_not_of("0123456789ABCDEF", 34), std::string::npos);
  EXPECT_EQ(Get(type_.get(), &IEMSContentType::get_Boundary), b);
}

TEST_F(ContentStateTest, CreateBoundaryRepeatsTheTensDigit) {
  Bstr boundary;
  ASSERT_EQ(type_->CreateBoundary(0, boundary.put()), S_OK);
  EXPECT_EQ(U8(boundary).substr(0, 19), "----=_NextPart_000_");
  ASSERT_EQ(type_->CreateBoundary(7, boundary.put()), S_OK);
  EXPECT_EQ(U8(boundary).substr(15, 3), "007");
  ASSERT_EQ(type_->CreateBoundary(123, boundary.put()), S_OK);
  EXPECT_EQ(U8(boundary).substr(15, 3), "223");
}

TEST_F(ContentStateTest, BoundariesOfOneSecondDifferOnlyInTheRandomGroup) {
  Bstr first, second;
  int64_t before = 0, after = 0;
  do {
    before = CurrentTimeSeconds();
    ASSERT_EQ(type_->CreateBoundary(0, first.put()), S_OK);
    ASSERT_EQ(type_->CreateBoundary(0, second.put()), S_OK);
    after = CurrentTimeSeconds();
  } while (before != after);
  std::string a = U8(first), b = U8(second);
  EXPECT_EQ(a.substr(0, 34), b.substr(0, 34));
  EXPECT_NE(a.substr(34), b.substr(34));
}

TEST_F(ContentStateTest, CreateBoundaryAcceptsAMissingResultPlace) {
  EXPECT_EQ(type_->CreateBoundary(0, nullptr), S_OK);
  std::string stored = Get(type_.get(), &IEMSContentType::get_Boundary);
  EXPECT_EQ(stored.substr(0, 19), "----=_NextPart_000_");
}

TEST_F(ContentStateTest, ValuelessContentTypeWritesItsCodesAndBoundary) {
  // What restructuring a message into multipart relies on.
  field_->put_Name(B("Content-Type").get());
  type_->put_MimeType(5);
  type_->put_MimeSubType(1);
  Bstr boundary;
  type_->CreateBoundary(0, boundary.put());
  EXPECT_EQ(Assembled(), "Content-Type: multipart/alternative;\r\n\tboundary=\"" + U8(boundary) + "\"");
  EXPECT_EQ(Raw(), ";\r\n\tboundary=\"" + U8(boundary) + "\"");  // the views show values and parameters only
}

TEST_F(ContentStateTest, ValuelessContentTypeWithoutTypeNameWritesOnlyItsParameters) {
  field_->put_Name(B("Content-Type").get());
  type_->put_Boundary(B("b").get());
  EXPECT_EQ(Assembled(), "Content-Type: ;\r\n\tboundary=\"b\"");
}

TEST_F(ContentStateTest, ValuelessFieldOfAnotherNameDoesNotWriteTheTypeState) {
  field_->put_Name(B("Content-Base").get());
  type_->put_MimeType(6);
  type_->put_MimeSubType(18);
  EXPECT_EQ(Assembled(), "");
}

// ---------------------------------------------------------------- disposition
TEST_F(ContentStateTest, DispositionFromAHeader) {
  Parse("Content-Disposition:  attachment ; filename=\"a.txt\"");
  EXPECT_EQ(DispositionType(), "attachment");
  EXPECT_EQ(Get(disposition_.get(), &IEMSContentDisposition::get_FileName), "a.txt");
  EXPECT_EQ(Get(disposition_.get(), &IEMSContentDisposition::AssembleDisposition),
            "attachment;\r\n\tfilename=\"a.txt\"");
}

TEST_F(ContentStateTest, DispositionTypeIsOneToken) {
  EXPECT_EQ(disposition_->ParseDisposition(B(" \tinline/x").get()), S_OK);
  EXPECT_EQ(DispositionType(), "inline");
  EXPECT_EQ(disposition_->ParseDisposition(B("caf\xC3\xA9").get()), S_OK);
  EXPECT_EQ(DispositionType(), "caf");  // a byte of 0x80 and above ends the token
}

TEST_F(ContentStateTest, ParseDispositionOfMissingTextEmptiesTheTypeAndGivesEPointer) {
  Parse("Content-Disposition: inline");
  EXPECT_EQ(disposition_->ParseDisposition(nullptr), E_POINTER);
  EXPECT_EQ(DispositionType(), "");
}

TEST_F(ContentStateTest, DispositionTypePutStoresTheTextUnchanged) {
  EXPECT_EQ(disposition_->put_DispositionType(B(" At tachment;").get()), S_OK);
  EXPECT_EQ(DispositionType(), " At tachment;");
}

TEST_F(ContentStateTest, FileNameWithoutTheParameterWritesNothing) {
  Parse("Content-Disposition: inline");
  BSTR untouched = reinterpret_cast<BSTR>(8);
  EXPECT_EQ(disposition_->get_FileName(&untouched), S_OK);
  EXPECT_EQ(untouched, reinterpret_cast<BSTR>(8));
}

TEST_F(ContentStateTest, FileNameIsTheDecodedParameterValue) {
  Parse("Content-Disposition: attachment; filename*=utf-8''caf%C3%A9.txt");
  EXPECT_EQ(Get(disposition_.get(), &IEMSContentDisposition::get_FileName), "caf\xC3\xA9.txt");
}

TEST_F(ContentStateTest, FileNamePutCreatesTheParameterAndReturnsItsStatus) {
  field_->put_Name(B("Content-Disposition").get());
  EXPECT_EQ(disposition_->put_FileName(B("a.txt").get()), S_OK);
  EXPECT_EQ(disposition_->put_FileName(B("b.txt").get()), S_FALSE);
  EXPECT_EQ(Get(disposition_.get(), &IEMSContentDisposition::get_FileName), "b.txt");
  EXPECT_EQ(Assembled(), "Content-Disposition: ;\r\n\tfilename=\"b.txt\"");
}

TEST_F(ContentStateTest, ValuelessDispositionWritesItsTypeAndParameters) {
  field_->put_Name(B("Content-Disposition").get());
  disposition_->put_DispositionType(B("attachment").get());
  disposition_->put_FileName(B("x.bin").get());
  EXPECT_EQ(Assembled(), "Content-Disposition: attachment;\r\n\tfilename=\"x.bin\"");
  EXPECT_EQ(Raw(), ";\r\n\tfilename=\"x.bin\"");
}

TEST_F(ContentStateTest, ValuelessDispositionWithOnlyItsTypeWritesOneLine) {
  field_->put_Name(B("content-disposition").get());
  disposition_->put_DispositionType(B("inline").get());
  EXPECT_EQ(Assembled(), "content-disposition: inline");
}

// ---------------------------------------------------------------- statuses and identity
TEST_F(ContentStateTest, MissingResultPlacesGiveEPointer) {
  EXPECT_EQ(type_->AssembleContentType(nullptr), E_POINTER);
  EXPECT_EQ(type_->get_ContentType(nullptr), E_POINTER);
  EXPECT_EQ(type_->get_MimeType(nullptr), E_POINTER);
  EXPECT_EQ(type_->get_MimeTypeName(nullptr), E_POINTER);
  EXPECT_EQ(type_->get_MimeSubType(nullptr), E_POINTER);
  EXPECT_EQ(type_->get_MimeSubTypeName(nullptr), E_POINTER);
  EXPECT_EQ(type_->get_Boundary(nullptr), E_POINTER);
  EXPECT_EQ(disposition_->AssembleDisposition(nullptr), E_POINTER);
  EXPECT_EQ(disposition_->get_DispositionType(nullptr), E_POINTER);
  EXPECT_EQ(disposition_->get_FileName(nullptr), E_POINTER);
}

TEST_F(ContentStateTest, MissingStringsReadAsEmptyInThePutOperations) {
  EXPECT_EQ(type_->put_MimeTypeName(nullptr), S_OK);
  EXPECT_EQ(Type(), -1);
  EXPECT_EQ(type_->put_MimeSubTypeName(nullptr), S_OK);
  EXPECT_EQ(disposition_->put_DispositionType(nullptr), S_OK);
  EXPECT_EQ(DispositionType(), "");
}

TEST_F(ContentStateTest, BothInterfacesBelongToTheField) {
  ComPtr<IUnknown> a, b, c;
  field_.As(&a);
  type_.As(&b);
  disposition_.As(&c);
  EXPECT_EQ(a.get(), b.get());
  EXPECT_EQ(a.get(), c.get());
  ComPtr<IEMSMessageParameter> back;
  EXPECT_EQ(disposition_.As(&back), S_OK);
  EXPECT_EQ(back.get(), field_.get());
}

TEST(ContentStateList, HeaderListAnswersNeitherContentInterface) {
  auto list = Create<IEMSMessageParameters>(CLSID_EMSMessageParameters);
  ComPtr<IEMSContentType> type;
  ComPtr<IEMSContentDisposition> disposition;
  EXPECT_EQ(list.As(&type), E_NOINTERFACE);
  EXPECT_EQ(list.As(&disposition), E_NOINTERFACE);
}

}  // namespace
}  // namespace pv::test
