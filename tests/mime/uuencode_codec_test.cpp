#include <string>

#include "tests/mime/codec_test_util.h"

namespace pv::test {
namespace {

using namespace std::string_literals;

std::string UuOk(std::string_view in) {
  std::string out;
  EXPECT_TRUE(UuDecoded(in, &out)) << "decode failed";
  return out;
}

bool UuFails(std::string_view in) {
  std::string out;
  return !UuDecoded(in, &out);
}

// ------------------------------------------------------------------ decoding

TEST(UuDecode, BeginDataGraveAndEndLinesGiveOneByte) {
  EXPECT_EQ(UuOk("begin 644 a.txt\r\n!80``\r\n`\r\nend\r\n"), "a");
}

TEST(UuDecode, CountPromisingMoreCharactersThanTheLineCarriesFails) {
  EXPECT_TRUE(UuFails("begin 644 a.txt\r\n#80\r\n`\r\nend\r\n"));
}

TEST(UuDecode, DecodesAFullGroup) { EXPECT_EQ(UuOk("#0V%T\r\n"), "Cat"); }

TEST(UuDecode, GraveAccentAndBlankBothMeanZero) {
  EXPECT_EQ(UuOk("#````\r\n"), "\0\0\0"s);
  EXPECT_EQ(UuOk("#    \r\n"), "\0\0\0"s);
  EXPECT_EQ(UuOk("!80  \r\n"), "a");
}

TEST(UuDecode, GraveAccentCountIsAnEmptyLine) { EXPECT_EQ(UuOk("`\r\n#0V%T\r\n"), "Cat"); }

TEST(UuDecode, CountComesOnlyFromTheFirstCharacter) {
  // Only "!" counts: one byte of the four-character group is produced.
  EXPECT_EQ(UuOk("!0V%T\r\n"), "C");
}

TEST(UuDecode, ReportedSizeIsTheSumOfTheLineCounts) {
  EXPECT_EQ(UuOk("#0V%T\r\n\"86(@\r\n!80``\r\n"),
            "Catab"
            "a");
}

TEST(UuDecode, BeginAndEndAreRecognisedInAnyCase) {
  EXPECT_EQ(UuOk("BEGIN 644 X\r\n#0V%T\r\nEnd\r\n"), "Cat");
  EXPECT_EQ(UuOk("BeGiN\r\n#0V%T\r\neNd\r\n"), "Cat");
}

TEST(UuDecode, ModeAndNameOfTheBeginLineAreIgnored) {
  EXPECT_EQ(UuOk("begin 9999 \x01\x02 odd name #0V%T\r\n#0V%T\r\nend\r\n"), "Cat");
}

TEST(UuDecode, DecodingContinuesAfterAnEndLine) {
  EXPECT_EQ(UuOk("begin 644 a\r\n!80``\r\nend\r\nbegin 644 b\r\n!8@``\r\nend\r\n"), "ab");
}

TEST(UuDecode, DataLineBeginningWithBeginOrEndLettersIsSkipped) {
  EXPECT_EQ(UuOk("ENDOFTHIS\r\n#0V%T\r\n"), "Cat");
  EXPECT_EQ(UuOk("Beginning\r\n#0V%T\r\n"), "Cat");
}

TEST(UuDecode, SkippedLineEndsAtABareCarriageReturnOrLineFeed) {
  EXPECT_EQ(UuOk("end\r#0V%T"), "Cat");
  EXPECT_EQ(UuOk("end\n#0V%T"), "Cat");
}

TEST(UuDecode, BeginNeedsFiveBytesToBeSeen) {
  // "begi" at the end is a data line: count "b" is 2, its group is "egi"
  // and one character past the end.
  EXPECT_EQ(UuOk("begi"), "\x14\x72"s);
}

TEST(UuDecode, BeginLineOfExactlyFiveBytesIsSkipped) {
  std::string out = "x";
  EXPECT_TRUE(UuDecoded("begin", &out));
  EXPECT_EQ(out, "");
}

TEST(UuDecode, EndOfExactlyThreeBytesIsSkipped) {
  std::string out = "x";
  EXPECT_TRUE(UuDecoded("end", &out));
  EXPECT_EQ(out, "");
}

TEST(UuDecode, LastOneOrTwoBytesAreADataLine) {
  // The final "!" counts one byte whose group lies wholly past the end.
  EXPECT_EQ(UuOk("!80``\r\n!"), "a\0"s);
  EXPECT_EQ(UuOk("!80``\r\n!8"), "a\x60"s);
}

TEST(UuDecode, TwoBytesThatCouldStartEndAreADataLineThatOverruns) {
  // "e" counts 37 bytes, more than the input has room for.
  EXPECT_TRUE(UuFails("en"));
}

TEST(UuDecode, CharactersPastTheEndCountAsZero) { EXPECT_EQ(UuOk("#0V"), "C`\0"s); }

TEST(UuDecode, TextAfterTheLastGroupStartsANewLine) { EXPECT_EQ(UuOk("!80``#0V%T\r\n"), "aCat"); }

TEST(UuDecode, TextAfterTheLastGroupCanFailTheDecode) {
  // "x" counts 24 bytes, and the group after it meets the line break.
  EXPECT_TRUE(UuFails("!80``xyz\r\n"));
}

TEST(UuDecode, TextAfterTheLastGroupCanSpellEnd) { EXPECT_EQ(UuOk("!80``end junk\r\n#0V%T\r\n"), "aCat"); }

TEST(UuDecode, CarriageReturnInsideAGroupFails) { EXPECT_TRUE(UuFails("#0V\r%T\r\n")); }

TEST(UuDecode, LineFeedInsideAGroupFails) { EXPECT_TRUE(UuFails("#0V%\nT\r\n")); }

TEST(UuDecode, LineBreakInsideAGroupFailsEvenAfterGoodLines) {
  EXPECT_TRUE(UuFails("#0V%T\r\n#0V%T\r\n&0V%T\r\n"));
}

TEST(UuDecode, CountBeyondTheWorkBufferFails) {
  EXPECT_TRUE(UuFails("M"));
  EXPECT_TRUE(UuFails("M````"));
}

TEST(UuDecode, CountThatExactlyFillsTheWorkBufferSucceeds) { EXPECT_EQ(UuOk("!"), "\0"s); }

TEST(UuDecode, CountCharacterBelowBlankWrapsAround) {
  // (0x1F - 32) AND 63 is 63: more than these eight bytes can hold.
  EXPECT_TRUE(
      UuFails("\x1F"
              "0V%T0V%"));
}

TEST(UuDecode, OnlyBeginAndEndLinesGiveNothing) {
  std::string out = "x";
  EXPECT_TRUE(UuDecoded("begin 644 a\r\nend\r\n", &out));
  EXPECT_EQ(out, "");
  EXPECT_FALSE(DecodeTransferBody(kTransferUuencode, "begin 644 a\r\nend\r\n", &out));
}

TEST(UuDecode, EmptyInputGivesNothingAndTheWholeDecodeFails) {
  std::string out = "x";
  EXPECT_TRUE(UuDecoded("", &out));
  EXPECT_EQ(out, "");
  EXPECT_FALSE(DecodeTransferBody(kTransferUuencode, "", &out));
}

TEST(UuDecode, LinesWithoutLineBreaksAtAllDecode) { EXPECT_EQ(UuOk("#0V%T#0V%T"), "CatCat"); }

// ------------------------------------------------------------------ encoding

TEST(UuEncode, SmallBodyGivesItsExactLines) {
  EXPECT_EQ(Uuencoded("Cat", "cat.txt"), "begin 644 cat.txt\r\n#0V%T\r\n`\r\nend\r\n");
  EXPECT_EQ(Uuencoded("Hi!", "h"), "begin 644 h\r\n#2&DA\r\n`\r\nend\r\n");
}

TEST(UuEncode, EmptyBodyHasNoDataLines) { EXPECT_EQ(Uuencoded("", "e"), "begin 644 e\r\n`\r\nend\r\n"); }

TEST(UuEncode, EmptyNameIsWrittenAsNothing) {
  EXPECT_EQ(Uuencoded("Cat", ""), "begin 644 \r\n#0V%T\r\n`\r\nend\r\n");
}

TEST(UuEncode, NameIsWrittenAsItsBytes) {
  EXPECT_EQ(Uuencoded("Cat", "r\xE9sum\xE9 1.txt"), "begin 644 r\xE9sum\xE9 1.txt\r\n#0V%T\r\n`\r\nend\r\n");
}

TEST(UuEncode, NameEndsAtItsFirstNul) {
  EXPECT_EQ(Uuencoded("Cat", "a.txt\0.exe"s), "begin 644 a.txt\r\n#0V%T\r\n`\r\nend\r\n");
}

TEST(UuEncode, ZeroValuesAreGraveAccents) {
  EXPECT_EQ(Uuencoded("\0\0\0"s), "begin 644 f\r\n#````\r\n`\r\nend\r\n");
}

TEST(UuEncode, SixtyThreeIsAnUnderscore) {
  EXPECT_EQ(Uuencoded("\xFF\xFF\xFF"s), "begin 644 f\r\n#____\r\n`\r\nend\r\n");
}

TEST(UuEncode, FourteenByteBodyHasItsDotCountCharacterTwice) {
  std::string body;
  for (int i = 0; i < 14; ++i) body.push_back(static_cast<char>(i));
  EXPECT_EQ(Uuencoded(body, "a.txt"), "begin 644 a.txt\r\n..``$\"`P0%!@<(\"0H+#`T@\r\n`\r\nend\r\n");
}

TEST(UuEncode, LastGroupOfATwoByteBodyIsFilledWithABlank) {
  // "a", "b" and a blank (not a zero byte, which would end in a grave accent).
  EXPECT_EQ(Uuencoded("ab"), "begin 644 f\r\n\"86(@\r\n`\r\nend\r\n");
}

TEST(UuEncode, LastGroupOfAOneByteBodyIsFilledWithTwoBlanks) {
  EXPECT_EQ(Uuencoded("a"), "begin 644 f\r\n!82`@\r\n`\r\nend\r\n");
}

TEST(UuEncode, FortyFourBytesFitOneLine) {
  std::string out = Uuencoded(std::string(44, '\0'));
  std::string line = "L" + std::string(56, '`') + "```@" + "\r\n";
  EXPECT_EQ(out, "begin 644 f\r\n" + line + "`\r\nend\r\n");
}

TEST(UuEncode, FortyFiveBytesFillOneLine) {
  std::string out = Uuencoded(std::string(45, '\0'));
  EXPECT_EQ(out, "begin 644 f\r\nM" + std::string(60, '`') + "\r\n`\r\nend\r\n");
}

TEST(UuEncode, FortySixBytesStartASecondLine) {
  std::string out = Uuencoded(std::string(46, '\0'));
  EXPECT_EQ(out, "begin 644 f\r\nM" + std::string(60, '`') + "\r\n!`\"`@\r\n`\r\nend\r\n");
}

TEST(UuEncode, FullLinesAllCountFortyFive) {
  std::string out = Uuencoded(std::string(90, 'z'));
  std::string line = "M" + std::string(60, ' ');
  for (size_t i = 0; i < 15; ++i) line.replace(1 + 4 * i, 4, ">GIZ");
  EXPECT_EQ(out, "begin 644 f\r\n" + line + "\r\n" + line + "\r\n`\r\nend\r\n");
}

}  // namespace
}  // namespace pv::test
