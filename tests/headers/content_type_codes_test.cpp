#include "src/headers/content_type_codes.h"

#include <gtest/gtest.h>

namespace pv {
namespace {

ContentState Parsed(std::string_view value) {
  ContentState s;
  s.ResetContentType();
  s.ParseContentTypeText(value);
  return s;
}

TEST(ContentTypeCodes, TextPlainFromAHeaderValue) {
  ContentState s = Parsed("text/plain");
  EXPECT_EQ(s.typeCode, kTypeText);
  EXPECT_EQ(s.subtypeCode, kSubtypePlain);
  EXPECT_EQ(s.ContentType(), "text/plain");
}

TEST(ContentTypeCodes, NamesKeepTheirCaseAndMatchIgnoringIt) {
  ContentState s = Parsed("TEXT/HTML");
  EXPECT_EQ(s.typeCode, 6);
  EXPECT_EQ(s.subtypeCode, 8);
  EXPECT_EQ(s.typeName, "TEXT");
  EXPECT_EQ(s.subtypeName, "HTML");
}

TEST(ContentTypeCodes, TypeWithoutSlashIsUnknownTwice) {
  for (std::string_view value : {"text", "text;x=y", ""}) {
    ContentState s = Parsed(value);
    EXPECT_EQ(s.typeCode, -1) << value;
    EXPECT_EQ(s.subtypeCode, -1) << value;
    EXPECT_EQ(s.typeName, "unknown") << value;
    EXPECT_EQ(s.subtypeName, "unknown") << value;
  }
}

TEST(ContentTypeCodes, EmptySubtypeIsUnknown) {
  ContentState s = Parsed("text/");
  EXPECT_EQ(s.typeCode, 6);
  EXPECT_EQ(s.subtypeCode, -1);
  EXPECT_EQ(s.subtypeName, "unknown");
}

TEST(ContentTypeCodes, NamesFiledUnderAnotherLetterAreNeverRecognised) {
  ContentState s = Parsed("application/mac-binhex40");
  EXPECT_EQ(s.typeCode, 1);
  EXPECT_EQ(s.subtypeCode, -1);
  EXPECT_EQ(Parsed("text/x-vcard").subtypeCode, -1);
}

TEST(ContentTypeCodes, UnknownTypeUnderAKnownLetterStaysAtTheReset) {
  ContentState s = Parsed("model/vrml");
  EXPECT_EQ(s.typeCode, -1);
  EXPECT_EQ(s.subtypeCode, -1);
  EXPECT_EQ(s.typeName, "model");
}

TEST(ContentTypeCodes, BlanksAroundTokensAreSkipped) {
  ContentState s = Parsed("  multipart/ mixed");
  EXPECT_EQ(s.typeCode, kTypeMultipart);
  EXPECT_EQ(s.subtypeCode, kSubtypeMixed);
  EXPECT_EQ(s.subtypeName, "mixed");
}

TEST(ContentTypeCodes, TokensEndAtSpecialsAndHighBytes) {
  ContentState s = Parsed("image/gif\xE9x");
  EXPECT_EQ(s.subtypeName, "gif");
  EXPECT_EQ(s.subtypeCode, 7);
  EXPECT_EQ(Parsed("text/plain;charset=x").subtypeName, "plain");
  EXPECT_EQ(Parsed("text@x/plain").typeCode, -1);
}

TEST(ContentTypeCodes, WithoutResetTokensAreAppended) {
  ContentState s = Parsed("text/plain");
  s.ParseContentTypeText("html/x");
  EXPECT_EQ(s.typeName, "texthtml");
  EXPECT_EQ(s.subtypeName, "plainx");
  EXPECT_EQ(s.typeCode, 6);  // not recognised: the previous code stays
}

TEST(ContentTypeCodes, EverySubtypeOfTheTableExceptTwoIsRecognised) {
  for (LONG code = 0; code <= 27; ++code) {
    std::string_view name = SubtypeNameForCode(code);
    LONG expected = (code == 0 || code == 3 || code == 24) ? 99 : code;
    EXPECT_EQ(ClassifySubtypeName(name, 99), expected) << name;
  }
}

TEST(ContentTypeCodes, EveryTypeOfTheTableIsRecognised) {
  for (LONG code = 1; code <= 7; ++code) EXPECT_EQ(ClassifyTypeName(TypeNameForCode(code), 99), code);
  EXPECT_EQ(ClassifyTypeName("UNKNOWN", 99), -1);
  EXPECT_EQ(ClassifyTypeName("unheard", 99), 99);
  EXPECT_EQ(ClassifyTypeName("amazing", 99), 99);
  EXPECT_EQ(ClassifyTypeName("zebra", 99), -1);
  EXPECT_EQ(ClassifyTypeName("", 99), -1);
}

TEST(ContentTypeCodes, SubtypeNamesOutsideTheLettersLeaveTheCode) {
  EXPECT_EQ(ClassifySubtypeName("zip", 5), 5);
  EXPECT_EQ(ClassifySubtypeName("1x", 5), 5);
  EXPECT_EQ(ClassifySubtypeName("", 5), 5);
  EXPECT_EQ(ClassifySubtypeName("Unknown", 5), -1);
}

TEST(ContentTypeCodes, SettingCodesSetsTheTableNames) {
  ContentState s;
  s.SetTypeCode(5);
  EXPECT_EQ(s.typeName, "multipart");
  s.SetTypeCode(0);
  EXPECT_EQ(s.typeName, "");
  s.SetTypeCode(8);
  EXPECT_EQ(s.typeName, "unknown");
  EXPECT_EQ(s.typeCode, 8);
  s.SetSubtypeCode(0);
  EXPECT_EQ(s.subtypeName, "empty");
  s.SetSubtypeCode(99);
  EXPECT_EQ(s.subtypeName, "unknown");
  EXPECT_EQ(s.subtypeCode, 99);
  s.SetSubtypeCode(-1);
  EXPECT_EQ(s.subtypeName, "unknown");
}

TEST(ContentTypeCodes, SettingAnUnrecognisedNameKeepsTheCode) {
  ContentState s;
  s.SetSubtypeCode(18);
  s.SetSubtypeName("mac-binhex40");
  EXPECT_EQ(s.subtypeCode, 18);
  EXPECT_EQ(s.subtypeName, "mac-binhex40");
  s.SetTypeName("Zoo");
  EXPECT_EQ(s.typeCode, -1);
}

TEST(ContentTypeCodes, DispositionIsTheFirstToken) {
  ContentState s;
  s.ParseDispositionText("  attachment; filename=x");
  EXPECT_EQ(s.dispositionType, "attachment");
  s.ParseDispositionText("inline");
  EXPECT_EQ(s.dispositionType, "inline");
  s.ParseDispositionText(";x");
  EXPECT_EQ(s.dispositionType, "");
}

TEST(MakeBoundary, RepeatsTheTensDigit) {
  EXPECT_EQ(MakeBoundary(0, 0, 0, 0).substr(0, 19), "----=_NextPart_000_");
  EXPECT_EQ(MakeBoundary(7, 0, 0, 0).substr(15, 3), "007");
  EXPECT_EQ(MakeBoundary(42, 0, 0, 0).substr(15, 3), "442");
  EXPECT_EQ(MakeBoundary(123, 0, 0, 0).substr(15, 3), "223");
}

TEST(MakeBoundary, WritesTimeAndRandomDigitsLowestFirst) {
  // 1700549616 = 0x655C53F0; 41 * 18467 = 757147 = 0xB8D9B.
  EXPECT_EQ(MakeBoundary(0, 1700549616, 41, 18467), "----=_NextPart_000_6169_0F35C5560.B9D8B0000");
  EXPECT_EQ(MakeBoundary(0, 1700549616, 41, 18467).size(), 43u);
}

TEST(MakeBoundary, NegativeProductIsWidenedWithItsSign) {
  // 46341 * 46341 = 2147488281 does not fit: as a signed 32-bit number it is
  // negative, and widening it fills the upper digits with F.
  std::string b = MakeBoundary(0, 0, 46341, 46341);
  EXPECT_EQ(b.substr(34), "91210008F");
}

TEST(MakeBoundary, NegativeNumbersStayInsideTheDigitTable) {
  EXPECT_EQ(MakeBoundary(-42, 0, 0, 0).substr(15, 3), "442");
}

}  // namespace
}  // namespace pv
