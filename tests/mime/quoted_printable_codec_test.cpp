#include <string>

#include "tests/mime/codec_test_util.h"

namespace pv::test {
namespace {

using namespace std::string_literals;

// ------------------------------------------------------------------ decoding

TEST(QuotedPrintableDecode, UpperCaseEscapeGivesItsByte) {
  EXPECT_EQ(QuotedPrintableDecoded("a=3Db"), "a=b");
}

TEST(QuotedPrintableDecode, LowerCaseEscapeGivesItsByte) {
  EXPECT_EQ(QuotedPrintableDecoded("a=3db"), "a=b");
}

TEST(QuotedPrintableDecode, MixedCaseEscapesGiveTheirBytes) {
  EXPECT_EQ(QuotedPrintableDecoded("=4a=4A=aB=Ff=00"), "JJ\xAB\xFF\0"s);
}

TEST(QuotedPrintableDecode, SoftBreakWithCarriageReturnIsRemoved) {
  EXPECT_EQ(QuotedPrintableDecoded("a=\r\nb"), "ab");
}

TEST(QuotedPrintableDecode, SoftBreakWithBareLineFeedIsRemoved) {
  EXPECT_EQ(QuotedPrintableDecoded("a=\nb"), "ab");
}

TEST(QuotedPrintableDecode, InvalidEscapeIsKeptLiterally) {
  EXPECT_EQ(QuotedPrintableDecoded("a=XYb"), "a=XYb");
}

TEST(QuotedPrintableDecode, EscapeWithOneHexDigitIsKeptLiterally) {
  EXPECT_EQ(QuotedPrintableDecoded("=4G=G4"), "=4G=G4");
}

TEST(QuotedPrintableDecode, KeptEscapeIsNotScannedAgain) {
  // "==4" is kept as it stands and "1" follows it: the second "=" does not
  // start an escape of its own.
  EXPECT_EQ(QuotedPrintableDecoded("==41"), "==41");
  EXPECT_EQ(QuotedPrintableDecoded("=\r=3D"), "=\r=3D");
}

TEST(QuotedPrintableDecode, CarriageReturnWithoutLineFeedIsKept) {
  EXPECT_EQ(QuotedPrintableDecoded("a=\rXb"), "a=\rXb");
}

TEST(QuotedPrintableDecode, HexDigitFollowedByLineBreakIsKept) {
  EXPECT_EQ(QuotedPrintableDecoded("=0\nx"), "=0\nx");
}

TEST(QuotedPrintableDecode, EqualsSignAtTheVeryEndIsDropped) {
  EXPECT_EQ(QuotedPrintableDecoded("ab="), "ab");
}

TEST(QuotedPrintableDecode, EqualsSignAndOneByteAtTheVeryEndAreDropped) {
  EXPECT_EQ(QuotedPrintableDecoded("ab=4"), "ab");
  EXPECT_EQ(QuotedPrintableDecoded("ab=\r"), "ab");
  EXPECT_EQ(QuotedPrintableDecoded("ab=X"), "ab");
}

TEST(QuotedPrintableDecode, SoftBreakAtTheEndLeavesNothing) {
  EXPECT_EQ(QuotedPrintableDecoded("ab=\r\n"), "ab");
}

TEST(QuotedPrintableDecode, EscapeRightAfterASoftBreakDecodes) {
  EXPECT_EQ(QuotedPrintableDecoded("=\n=41=\r\n=42"), "AB");
}

TEST(QuotedPrintableDecode, TrailingBlanksAndHardLineBreaksAreKept) {
  EXPECT_EQ(QuotedPrintableDecoded("a \t \r\nb\n\rc"), "a \t \r\nb\n\rc");
}

TEST(QuotedPrintableDecode, OtherBytesAreCopiedAsTheyStand) {
  EXPECT_EQ(QuotedPrintableDecoded("\0\x80\xFF\x7F"s), "\0\x80\xFF\x7F"s);
}

TEST(QuotedPrintableDecode, LongLinesAreNotChecked) {
  std::string line(1000, 'q');
  EXPECT_EQ(QuotedPrintableDecoded(line), line);
}

TEST(QuotedPrintableDecode, EmptyInputGivesNothing) { EXPECT_EQ(QuotedPrintableDecoded(""), ""); }

TEST(QuotedPrintableDecode, BodyThatDecodesToNothingFails) {
  std::string out;
  EXPECT_FALSE(DecodeTransferBody(kTransferQuotedPrintable, "=\r\n=", &out));
  EXPECT_FALSE(DecodeTransferBody(kTransferQuotedPrintable, "", &out));
}

// ------------------------------------------------------------------ encoding

TEST(QuotedPrintableEncode, LineBreaksAndEqualsSignsAreEscaped) {
  EXPECT_EQ(QuotedPrintableEncoded("x = 1\r\n"), "x =3D 1=0D=0A");
}

TEST(QuotedPrintableEncode, PrintableBytesAreWrittenAsThemselves) {
  EXPECT_EQ(QuotedPrintableEncoded("!<>~"), "!<>~");
  EXPECT_EQ(QuotedPrintableEncoded("Hello, world."), "Hello, world.");
}

TEST(QuotedPrintableEncode, ControlsDeleteAndHighBytesAreEscapedInUpperCase) {
  EXPECT_EQ(QuotedPrintableEncoded("\0\x1F\x7F\x80\xAB\xFF"s), "=00=1F=7F=80=AB=FF");
}

TEST(QuotedPrintableEncode, DotIsWrittenAsItselfAtColumnZeroAndElsewhere) {
  EXPECT_EQ(QuotedPrintableEncoded("."), ".");
  EXPECT_EQ(QuotedPrintableEncoded(".\r\n."), ".=0D=0A.");
}

TEST(QuotedPrintableEncode, SixtyFourColumnsHaveNoBreak) {
  EXPECT_EQ(QuotedPrintableEncoded(std::string(64, 'a')), std::string(64, 'a'));
}

TEST(QuotedPrintableEncode, SixtyFiveColumnsEndWithASoftBreak) {
  EXPECT_EQ(QuotedPrintableEncoded(std::string(65, 'a')), std::string(65, 'a') + "=\r\n");
}

TEST(QuotedPrintableEncode, SixtySixColumnsContinueOnTheNextLine) {
  EXPECT_EQ(QuotedPrintableEncoded(std::string(66, 'a')), std::string(65, 'a') + "=\r\na");
}

TEST(QuotedPrintableEncode, SeventyCharactersBreakAfterTheSixtyFifth) {
  EXPECT_EQ(QuotedPrintableEncoded(std::string(70, 'a')),
            std::string(65, 'a') + "=\r\n" + std::string(5, 'a'));
}

TEST(QuotedPrintableEncode, BlankAtColumnSixtyThreeIsWrittenAsItself) {
  EXPECT_EQ(QuotedPrintableEncoded(std::string(63, 'a') + " b"), std::string(63, 'a') + " b=\r\n");
}

TEST(QuotedPrintableEncode, BlankAtColumnSixtyFourIsEscaped) {
  EXPECT_EQ(QuotedPrintableEncoded(std::string(64, 'a') + " b"), std::string(64, 'a') + "=20=\r\nb");
}

TEST(QuotedPrintableEncode, TabAtColumnSixtyFourIsEscaped) {
  EXPECT_EQ(QuotedPrintableEncoded(std::string(64, 'a') + "\t"), std::string(64, 'a') + "=09=\r\n");
}

TEST(QuotedPrintableEncode, EscapeReachingColumnSixtyFiveBreaks) {
  EXPECT_EQ(QuotedPrintableEncoded(std::string(62, 'a') + "=b"), std::string(62, 'a') + "=3D=\r\nb");
}

TEST(QuotedPrintableEncode, EscapeEndingAtColumnSixtyFourDoesNotBreak) {
  EXPECT_EQ(QuotedPrintableEncoded(std::string(61, 'a') + "=bc"), std::string(61, 'a') + "=3Db=\r\nc");
}

TEST(QuotedPrintableEncode, EscapeStartingAtColumnSixtyThreeBreaksAfterIt) {
  EXPECT_EQ(QuotedPrintableEncoded(std::string(63, 'a') + "\xE9x"), std::string(63, 'a') + "=E9=\r\nx");
}

TEST(QuotedPrintableEncode, BlanksAfterASoftBreakAreWrittenAsThemselves) {
  EXPECT_EQ(QuotedPrintableEncoded(std::string(65, 'a') + "  "), std::string(65, 'a') + "=\r\n  ");
}

TEST(QuotedPrintableEncode, SoftBreaksComeAfterSixtyFiveToSixtySevenColumns) {
  std::string body;
  for (int i = 0; i < 2000; ++i) body.push_back(static_cast<char>(i * 37));
  std::string out = QuotedPrintableEncoded(body);
  size_t start = 0;
  for (size_t br = out.find("=\r\n"); br != std::string::npos; br = out.find("=\r\n", start)) {
    EXPECT_GE(br - start, 65u);
    EXPECT_LE(br - start, 67u);
    start = br + 3;
  }
  EXPECT_LT(out.size() - start, 65u);
}

TEST(QuotedPrintableEncode, EmptyBodyFails) {
  std::string out = "untouched";
  EXPECT_FALSE(EncodeQuotedPrintable("", &out));
}

}  // namespace
}  // namespace pv::test
