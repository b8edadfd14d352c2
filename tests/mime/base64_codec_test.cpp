#include <string>

#include "tests/mime/codec_test_util.h"

namespace pv::test {
namespace {

using namespace std::string_literals;

// ------------------------------------------------------------------ decoding

TEST(Base64Decode, PaddedPairGivesOneByte) { EXPECT_EQ(Base64Decoded("QQ=="), "A"); }

TEST(Base64Decode, UnpaddedPairAlsoGivesOneByte) { EXPECT_EQ(Base64Decoded("QQ"), "A"); }

TEST(Base64Decode, SingleCharacterGivesNothing) { EXPECT_EQ(Base64Decoded("Q"), ""); }

TEST(Base64Decode, SingleCharacterBodyFailsTheWholeDecode) {
  std::string out = "untouched";
  EXPECT_FALSE(DecodeTransferBody(kTransferBase64, "Q", &out));
}

TEST(Base64Decode, ThreeCharactersGiveTwoBytes) {
  EXPECT_EQ(Base64Decoded("QUI"), "AB");
  EXPECT_EQ(Base64Decoded("QUI="), "AB");
}

TEST(Base64Decode, FourCharactersGiveThreeBytes) { EXPECT_EQ(Base64Decoded("QUJD"), "ABC"); }

TEST(Base64Decode, DecodesAWholeAlphabetLine) {
  EXPECT_EQ(Base64Decoded("SGVsbG8sIHdvcmxk"), "Hello, world");
  EXPECT_EQ(Base64Decoded("+/+/"), "\xFB\xFF\xBF"s);
}

TEST(Base64Decode, NulAtAGroupBoundaryEndsTheData) { EXPECT_EQ(Base64Decoded("QUJD\0QUJD"s), "ABC"); }

TEST(Base64Decode, NulAtTheVeryStartGivesNothing) { EXPECT_EQ(Base64Decoded("\0QUJD"s), ""); }

TEST(Base64Decode, NulInsideAGroupIsSkipped) { EXPECT_EQ(Base64Decoded("QU\0JD"s), "ABC"); }

TEST(Base64Decode, NulAfterALineBreakIsInsideTheGroupAndSkipped) {
  // The group starts at the CR, which is not a NUL; the NUL is then a stray
  // byte of that group.
  EXPECT_EQ(Base64Decoded("QUJD\r\n\0QUJD"s), "ABCABC");
}

TEST(Base64Decode, PaddingDoesNotEndTheGroup) {
  // "QQ" and "QQ" of the next stream fill one group: 16 16 16 16.
  EXPECT_EQ(Base64Decoded("QQ==QQ=="), "A\x04\x10"s);
}

TEST(Base64Decode, ConcatenatedStreamsDecodeAsOneMisalignedStream) {
  EXPECT_EQ(Base64Decoded("QUI=QUI="), "AB\x10P"s);
}

TEST(Base64Decode, LineBreaksBlanksAndStrayCharactersAreSkipped) {
  EXPECT_EQ(Base64Decoded("QU JD\r\nR\tEV*G"), "ABCDEF");
  EXPECT_EQ(Base64Decoded("-_.QUJD!~"), "ABC");
  EXPECT_EQ(Base64Decoded("\x80Q\xFFUJ\x7F"
                          "D"),
            "ABC");
}

TEST(Base64Decode, StrayBytesBeforeAGroupDoNotCount) { EXPECT_EQ(Base64Decoded("\r\n\r\n===QUJD"), "ABC"); }

TEST(Base64Decode, LinesOfAnyLengthAreAccepted) {
  std::string line;
  for (int i = 0; i < 250; ++i) line += "QUJD";
  std::string expected;
  for (int i = 0; i < 250; ++i) expected += "ABC";
  EXPECT_EQ(Base64Decoded(line), expected);
}

TEST(Base64Decode, EmptyInputGivesNothing) { EXPECT_EQ(Base64Decoded(""), ""); }

TEST(Base64Decode, InputOfOnlyStrayBytesGivesNothing) { EXPECT_EQ(Base64Decoded("==\r\n  ***"), ""); }

TEST(Base64Decode, GroupSplitAcrossLinesDecodes) { EXPECT_EQ(Base64Decoded("QU\r\nJDQU\r\nJD"), "ABCABC"); }

// ------------------------------------------------------------------ encoding

TEST(Base64Encode, SmallBodiesGiveTheirExactCharacters) {
  EXPECT_EQ(Base64Encoded("M"), "TQ==");
  EXPECT_EQ(Base64Encoded("Ma"), "TWE=");
  EXPECT_EQ(Base64Encoded("Man"), "TWFu");
  EXPECT_EQ(Base64Encoded("Hello, world"), "SGVsbG8sIHdvcmxk");
  EXPECT_EQ(Base64Encoded("\xFB\xFF\xBF"s), "+/+/");
  EXPECT_EQ(Base64Encoded("\0\0\0\0"s), "AAAAAA==");
}

TEST(Base64Encode, ThreeBytesGiveFourCharactersWithoutLineBreak) { EXPECT_EQ(Base64Encoded("abc"), "YWJj"); }

TEST(Base64Encode, FiftySixBytesFillOneLineWithThePaddedGroupAndNoBreak) {
  std::string out = Base64Encoded(std::string(56, 'a'));
  EXPECT_EQ(out.size(), 76u);
  EXPECT_EQ(out.find('\r'), std::string::npos);
  EXPECT_EQ(out.substr(72), "YWE=");
}

TEST(Base64Encode, FiftySevenBytesGiveOneLineFollowedByALineBreak) {
  std::string line;
  for (int i = 0; i < 19; ++i) line += "YWFh";
  EXPECT_EQ(Base64Encoded(std::string(57, 'a')), line + "\r\n");
}

TEST(Base64Encode, FiftyEightBytesGiveALineALineBreakAndAPaddedGroup) {
  std::string line;
  for (int i = 0; i < 19; ++i) line += "YWFh";
  EXPECT_EQ(Base64Encoded(std::string(58, 'a')), line + "\r\nYQ==");
}

TEST(Base64Encode, HundredFourteenBytesGiveTwoLinesEachFollowedByALineBreak) {
  std::string line;
  for (int i = 0; i < 19; ++i) line += "YWFh";
  EXPECT_EQ(Base64Encoded(std::string(114, 'a')), line + "\r\n" + line + "\r\n");
}

TEST(Base64Encode, ShortLastLineHasNoLineBreak) {
  std::string line;
  for (int i = 0; i < 19; ++i) line += "YWFh";
  EXPECT_EQ(Base64Encoded(std::string(60, 'a')), line + "\r\nYWFh");
  EXPECT_EQ(Base64Encoded(std::string(113, 'a')), line + "\r\n" + line.substr(0, 72) + "YWE=");
}

TEST(Base64Encode, PaddedGroupFollowsAFullLastLineDirectly) {
  std::string line;
  for (int i = 0; i < 19; ++i) line += "YWFh";
  EXPECT_EQ(Base64Encoded(std::string(115, 'a')), line + "\r\n" + line + "\r\nYQ==");
  EXPECT_EQ(Base64Encoded(std::string(116, 'a')), line + "\r\n" + line + "\r\nYWE=");
}

TEST(Base64Encode, EveryFullLineHasSeventySixCharacters) {
  std::string out = Base64Encoded(std::string(57 * 10 + 20, '\x9C'));
  size_t start = 0;
  for (int i = 0; i < 10; ++i) {
    size_t br = out.find("\r\n", start);
    ASSERT_NE(br, std::string::npos);
    EXPECT_EQ(br - start, 76u);
    start = br + 2;
  }
  EXPECT_EQ(out.size() - start, 28u);  // six full groups and a padded one
}

TEST(Base64Encode, EmptyBodyFails) {
  std::string out = "untouched";
  EXPECT_FALSE(EncodeBase64("", &out));
}

}  // namespace
}  // namespace pv::test
