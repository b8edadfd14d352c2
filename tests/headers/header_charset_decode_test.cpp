// ParseHeader: encoded words to display text, with every rule of the
// four-state reader and of the B and Q word decoders.
#include "src/headers/header_charset.h"
#include "tests/test_util.h"

namespace pv::test {
namespace {

class ParseHeaderTest : public ::testing::Test {
 protected:
  ComPtr<IEMSHeaderCharset> cs_ = Create<IEMSHeaderCharset>(CLSID_EMSHeaderCharset);

  // Parses narrow text of the ANSI page (as a host's wide text arrives
  // after its first conversion) and answers the result as UTF-8.
  std::string Parse(std::string_view ansi) {
    Bstr in(AnsiToWide(ansi));
    Bstr out;
    EXPECT_EQ(cs_->ParseHeader(in.get(), out.put()), S_OK);
    EXPECT_FALSE(out.is_null());
    return U8(out);
  }
  LONG StoredHeaderCodePage() { return ImplOf<HeaderCharset>(cs_.get())->storedHeaderCodePage(); }
  LONG DefaultEncoding() {
    LONG value = 0;
    cs_->get_DefaultEncoding(&value);
    return value;
  }
};

// ---------------------------------------------------------------- the listed cases
TEST_F(ParseHeaderTest, AdjacentWordsJoinAndUnderscoreIsASpace) {
  EXPECT_EQ(Parse("=?iso-8859-1?Q?Caf=E9?= =?iso-8859-1?Q?_au_lait?="), "Caf\xC3\xA9 au lait");
}

TEST_F(ParseHeaderTest, PlainTextAroundAWordIsKept) {
  EXPECT_EQ(Parse("Hello =?utf-8?B?w6k=?= world"), "Hello \xC3\xA9 world");
}

TEST_F(ParseHeaderTest, LowerCaseEscapeMakesAQWordMalformed) {
  EXPECT_EQ(Parse("=?utf-8?Q?a=3db?="), "a=3db");
}

TEST_F(ParseHeaderTest, UnknownLetterLosesTheWord) {
  EXPECT_EQ(Parse("=?utf-8?X?abc?="), "");
  EXPECT_EQ(DefaultEncoding(), 0);
}

TEST_F(ParseHeaderTest, UnknownCharsetDecodesWithTheDefaultCodePage) {
  EXPECT_EQ(Parse("=?utf-8*en?Q?a?="), "a");
  EXPECT_EQ(StoredHeaderCodePage(), -1);
  EXPECT_EQ(Parse("=?x-unknown?Q?caf=E9?="), "caf\xC3\xA9");  // windows-1252
}

TEST_F(ParseHeaderTest, UnterminatedWordGivesNothing) { EXPECT_EQ(Parse("=?utf-8?Q?abc"), ""); }

TEST_F(ParseHeaderTest, SpaceAfterTheCharsetStopsTheParse) { EXPECT_EQ(Parse("=?utf-8 Q?abc?="), ""); }

TEST_F(ParseHeaderTest, SpaceInsideAWordSplitsItAndIsKept) { EXPECT_EQ(Parse("=?utf-8?Q?a b?="), "a b"); }

// ---------------------------------------------------------------- plain text
TEST_F(ParseHeaderTest, TextWithoutWordsComesBackUnchanged) {
  EXPECT_EQ(Parse("Just a subject: (with) <specials>, \"quotes\"; a=b"),
            "Just a subject: (with) <specials>, \"quotes\"; a=b");
}

TEST_F(ParseHeaderTest, EmptyTextGivesEmptyText) { EXPECT_EQ(Parse(""), ""); }

TEST_F(ParseHeaderTest, LeadingSpacesAndTabsAreSkipped) {
  EXPECT_EQ(Parse(" \t  Hello"), "Hello");
  EXPECT_EQ(Parse(" \t "), "");
}

TEST_F(ParseHeaderTest, LeadingLineBreaksAreNotSkipped) { EXPECT_EQ(Parse("\r\n Hello"), "\r\n Hello"); }

TEST_F(ParseHeaderTest, WhiteSpaceBeforeAnyEqualsSignIsDropped) {
  EXPECT_EQ(Parse("=?utf-8?Q?a?=  = b"), "a= b");
  EXPECT_EQ(Parse("x =y"), "x =y");  // the run "x " holds more than white space
}

TEST_F(ParseHeaderTest, WhiteSpaceAtTheEndIsKept) { EXPECT_EQ(Parse("=?utf-8?Q?a?= \t"), "a \t"); }

TEST_F(ParseHeaderTest, LineBreaksBetweenWordsAreKept) {
  EXPECT_EQ(Parse("=?utf-8?Q?a?=\r\n =?utf-8?Q?b?="), "a\r\n b");
}

TEST_F(ParseHeaderTest, EqualsSignsThatStartNoWordArePlainText) {
  EXPECT_EQ(Parse("a==b= =c="), "a==b= =c=");
  EXPECT_EQ(Parse("="), "=");
  EXPECT_EQ(Parse("=?"), "");
}

TEST_F(ParseHeaderTest, TextBeforeTheFirstWordUsesTheDefaultCodePage) {
  EXPECT_EQ(Parse("\xC3\xA9 =?utf-8?Q?a?="), "\xC3\x83\xC2\xA9 a");
}

TEST_F(ParseHeaderTest, TextAfterAWordUsesThatWordsPage) {
  EXPECT_EQ(Parse("=?utf-8?Q?a?= \xC3\xA9"), "a \xC3\xA9");
  EXPECT_EQ(Parse("=?koi8-r?Q?a?= \xC1"), "a \xD0\xB0");
}

TEST_F(ParseHeaderTest, TextAfterAWordOfUnknownCharsetUsesTheDefaultCodePage) {
  EXPECT_EQ(Parse("=?x-unknown?Q?a?= \xE9"), "a \xC3\xA9");
}

TEST_F(ParseHeaderTest, TextInAPageThatCannotBeConvertedIsLost) {
  cs_->put_DefaultCodePage(-5);
  EXPECT_EQ(Parse("abc"), "");
  EXPECT_EQ(Parse("=?unicode?B?YQBiAA==?= tail"), "");  // UTF-16 does not convert to text
}

// ---------------------------------------------------------------- state
TEST_F(ParseHeaderTest, StartsWithHeaderCodePageUnset) {
  cs_->put_HeaderCodePage(65001);
  EXPECT_EQ(Parse("\xC3\xA9"), "\xC3\x83\xC2\xA9");  // windows-1252, not the page set before
  EXPECT_EQ(StoredHeaderCodePage(), -1);
}

TEST_F(ParseHeaderTest, LeavesThePageAndLetterOfTheLastWord) {
  Parse("=?utf-8?B?YQ==?= =?iso-8859-2?Q?b?=");
  EXPECT_EQ(StoredHeaderCodePage(), 28592);
  EXPECT_EQ(DefaultEncoding(), 1);
  Parse("=?iso-8859-2?Q?b?= =?x-unknown?B?YQ==?=");
  EXPECT_EQ(StoredHeaderCodePage(), -1);
  EXPECT_EQ(DefaultEncoding(), 2);
}

TEST_F(ParseHeaderTest, PlainTextLeavesTheEncodingAlone) {
  cs_->put_DefaultEncoding(3);
  Parse("no words here");
  EXPECT_EQ(DefaultEncoding(), 3);
}

TEST_F(ParseHeaderTest, LowerCaseLettersAreAccepted) {
  EXPECT_EQ(Parse("=?utf-8?b?w6k=?="), "\xC3\xA9");
  EXPECT_EQ(Parse("=?utf-8?q?=C3=A9?="), "\xC3\xA9");
}

TEST_F(ParseHeaderTest, CharsetNamesIgnoreCase) { EXPECT_EQ(Parse("=?UTF-8?Q?=C3=A9?="), "\xC3\xA9"); }

// ---------------------------------------------------------------- broken structure
TEST_F(ParseHeaderTest, BrokenStructureKeepsWhatWasDecodedAndDropsTheRest) {
  EXPECT_EQ(Parse("ok =?utf-8?Q?a?= x =?utf-8 y =?utf-8?Q?b?="), "ok a x ");
}

TEST_F(ParseHeaderTest, InputEndingInsideTheCharsetOrLetterGivesWhatCameBefore) {
  EXPECT_EQ(Parse("ab =?utf-8"), "ab ");
  EXPECT_EQ(Parse("ab =?utf-8?"), "ab ");
  EXPECT_EQ(Parse("ab =?utf-8?Q"), "ab ");
}

TEST_F(ParseHeaderTest, LetterMustBeFollowedByAQuestionMark) {
  EXPECT_EQ(Parse("=?utf-8?QQ?a?="), "");
  EXPECT_EQ(DefaultEncoding(), 1);
}

TEST_F(ParseHeaderTest, CharsetEndsAtSpecialsAndHighBytes) {
  EXPECT_EQ(Parse("=?utf-8.x?Q?a?="), "");
  EXPECT_EQ(Parse("=?utf-8/x?Q?a?="), "");
  EXPECT_EQ(Parse("=?utf-8@x?Q?a?="), "");
  EXPECT_EQ(Parse("=?utf\xE9-8?Q?a?="), "");
  EXPECT_EQ(Parse("=?utf-8\t?Q?a?="), "");
}

TEST_F(ParseHeaderTest, CharsetNameIsReadUpToANul) {
  std::string input("=?utf-8\0?Q?=C3=A9?=", 19);
  EXPECT_EQ(Parse(input), "\xC3\xA9");
}

TEST_F(ParseHeaderTest, EmptyCharsetIsUnknown) {
  EXPECT_EQ(Parse("=??Q?a?="), "a");
  EXPECT_EQ(StoredHeaderCodePage(), -1);
}

TEST_F(ParseHeaderTest, UnterminatedWordLosesOnlyItsOwnText) {
  EXPECT_EQ(Parse("abc =?utf-8?Q?def"), "abc ");
  EXPECT_EQ(Parse("=?utf-8?Q?a b"), "a ");  // the part before the space was already written
}

// ---------------------------------------------------------------- encoded text
TEST_F(ParseHeaderTest, EmptyEncodedTextGivesNothing) { EXPECT_EQ(Parse("=?utf-8?Q?\?=x"), "x"); }

TEST_F(ParseHeaderTest, QuestionMarkNotFollowedByEqualsIsSkipped) {
  EXPECT_EQ(Parse("=?utf-8?Q?a?b?c?="), "abc");
  EXPECT_EQ(Parse("=?utf-8?Q?a?\?=b"), "ab");
}

TEST_F(ParseHeaderTest, EqualsSignBeforeTheCloserIsDropped) {
  EXPECT_EQ(Parse("=?utf-8?Q?a=?="), "a");
  EXPECT_EQ(Parse("=?utf-8?Q?=?="), "");
}

TEST_F(ParseHeaderTest, SpacesInsideAWordEachWriteASpace) {
  EXPECT_EQ(Parse("=?utf-8?B?w6k= w6k=?="), "\xC3\xA9 \xC3\xA9");
  EXPECT_EQ(Parse("=?utf-8?Q?a  b?="), "a  b");
  EXPECT_EQ(Parse("=?utf-8?Q? ?="), " ");
}

TEST_F(ParseHeaderTest, TabsAndLineBreaksGoIntoTheWord) {
  EXPECT_EQ(Parse("=?utf-8?Q?a\tb?="), "ab");            // Q drops them
  EXPECT_EQ(Parse("=?utf-8?B?w6\r\nk=?="), "\xC3\xA9");  // base64 skips them
}

TEST_F(ParseHeaderTest, LaterWordsDecodeAfterOneWithAnUnknownLetter) {
  EXPECT_EQ(Parse("=?utf-8?X?abc?= =?utf-8?Q?d?="), "d");
}

// ---------------------------------------------------------------- Q words
TEST_F(ParseHeaderTest, QEscapesUseUpperCaseHexDigits) {
  EXPECT_EQ(Parse("=?utf-8?Q?=41=42=5F?="), "AB_");
  EXPECT_EQ(Parse("=?utf-8?Q?=4a?="), "=4a");
}

TEST_F(ParseHeaderTest, QEqualsSignWithoutTwoDigitsComesOutRaw) {
  EXPECT_EQ(Parse("=?utf-8?Q?a=4?="), "a=4");
  EXPECT_EQ(Parse("=?utf-8?Q?a=G1?="), "a=G1");
}

TEST_F(ParseHeaderTest, QKeepsHighBytesAndDropsControls) {
  EXPECT_EQ(Parse("=?iso-8859-1?Q?caf\xE9?="), "caf\xC3\xA9");
  EXPECT_EQ(Parse("=?iso-8859-1?Q?a\x7F"
                  "b\x81"
                  "c\x9F"
                  "d\xA0"
                  "e?="),
            "abcd\xC2\xA0"
            "e");
}

TEST_F(ParseHeaderTest, QWordDecodingToNothingComesOutRaw) { EXPECT_EQ(Parse("=?utf-8?Q?\t?="), "\t"); }

TEST_F(ParseHeaderTest, QWordStartingWithByteZeroComesOutRaw) {
  EXPECT_EQ(Parse("=?utf-8?Q?=00a?="), "=00a");
}

TEST_F(ParseHeaderTest, QKeepsPunctuation) { EXPECT_EQ(Parse("=?utf-8?Q?(a),\"b\"<c>?="), "(a),\"b\"<c>"); }

// ---------------------------------------------------------------- B words
TEST_F(ParseHeaderTest, BSkipsLettersOutsideTheAlphabet) {
  EXPECT_EQ(Parse("=?utf-8?B?w6!k.?="), "\xC3\xA9");
}

TEST_F(ParseHeaderTest, BStopsAtByteZero) {
  std::string input("=?utf-8?B?w6k\0QUJD?=", 20);
  EXPECT_EQ(Parse(input), "\xC3\xA9");
}

TEST_F(ParseHeaderTest, BShortFinalGroupsGiveTheirWholeBytes) {
  EXPECT_EQ(Parse("=?utf-8?B?YWJjZA?="), "abcd");
  EXPECT_EQ(Parse("=?utf-8?B?YWJjZGU?="), "abcde");
  EXPECT_EQ(Parse("=?utf-8?B?YWJjZGU=?="), "abcde");
  EXPECT_EQ(Parse("=?utf-8?B?YW=Jj?="), "abc");  // padding in the middle is skipped too
}

TEST_F(ParseHeaderTest, BWordDecodingToNothingComesOutRaw) {
  EXPECT_EQ(Parse("=?utf-8?B?!!!?="), "!!!");
  EXPECT_EQ(Parse("=?utf-8?B?Q?="), "Q");
}

TEST_F(ParseHeaderTest, BWordStartingWithByteZeroComesOutRaw) { EXPECT_EQ(Parse("=?utf-8?B?AEE=?="), "AEE"); }

TEST_F(ParseHeaderTest, InvalidUtf8InABWordGivesReplacementCharacters) {
  EXPECT_EQ(Parse("=?utf-8?B?/w==?="), "\xEF\xBF\xBD");
}

// ---------------------------------------------------------------- pages below 1
TEST_F(ParseHeaderTest, WordsComeOutRawWhenNoRealPageIsKnown) {
  cs_->put_DefaultCodePage(0);
  EXPECT_EQ(Parse("=?x-unknown?B?w6k=?="), "w6k");
  EXPECT_EQ(Parse("=?x-unknown?Q?a_b?="), "a_b");
  cs_->put_DefaultCodePage(-5);
  EXPECT_EQ(Parse("=?x-unknown?Q?caf=E9?="), "caf=E9");
}

TEST_F(ParseHeaderTest, UnknownLetterLosesTheWordEvenWithoutARealPage) {
  cs_->put_DefaultCodePage(0);
  EXPECT_EQ(Parse("=?x-unknown?Z?abc?="), "");
}

TEST_F(ParseHeaderTest, DefaultCodePageZeroMeansTheAnsiPageForPlainText) {
  cs_->put_DefaultCodePage(0);
  EXPECT_EQ(Parse("caf\xE9"), "caf\xC3\xA9");
}

// ---------------------------------------------------------------- the charsets of mail
struct CharsetCase {
  const char* word;
  const char* utf8;
};

class CommonCharsets : public ParseHeaderTest, public ::testing::WithParamInterface<CharsetCase> {};

TEST_P(CommonCharsets, WordDecodesToItsText) { EXPECT_EQ(Parse(GetParam().word), GetParam().utf8); }

INSTANTIATE_TEST_SUITE_P(
    Mail, CommonCharsets,
    ::testing::Values(
        CharsetCase{"=?utf-8?B?R3LDvMOfZSDwn5iA?=",
                    "Gr\xC3\xBC\xC3\x9F"
                    "e \xF0\x9F\x98\x80"},
        CharsetCase{"=?utf-8?Q?Gr=C3=BC=C3=9Fe?=",
                    "Gr\xC3\xBC\xC3\x9F"
                    "e"},
        CharsetCase{"=?ISO-8859-1?Q?Andr=E9_M=FCller?=", "Andr\xC3\xA9 M\xC3\xBCller"},
        CharsetCase{"=?iso-8859-2?Q?=A3=F3d=BC?=", "\xC5\x81\xC3\xB3\x64\xC5\xBA"},
        CharsetCase{"=?iso-8859-5?Q?=BF=E0=D8=D2=D5=E2?=",
                    "\xD0\x9F\xD1\x80\xD0\xB8\xD0\xB2\xD0\xB5\xD1\x82"},
        CharsetCase{"=?iso-8859-7?Q?=C3=E5=E9=DC?=", "\xCE\x93\xCE\xB5\xCE\xB9\xCE\xAC"},
        CharsetCase{"=?iso-8859-15?Q?=A4_5?=", "\xE2\x82\xAC 5"},
        CharsetCase{"=?windows-1250?Q?D=ECkuji?=", "D\xC4\x9Bkuji"},
        CharsetCase{"=?windows-1251?B?z/Do4uXy?=", "\xD0\x9F\xD1\x80\xD0\xB8\xD0\xB2\xD0\xB5\xD1\x82"},
        CharsetCase{"=?windows-1252?Q?=80_=93quoted=94?=", "\xE2\x82\xAC \xE2\x80\x9Cquoted\xE2\x80\x9D"},
        CharsetCase{"=?koi8-r?B?8NLJ18XU?=", "\xD0\x9F\xD1\x80\xD0\xB8\xD0\xB2\xD0\xB5\xD1\x82"},
        CharsetCase{"=?Shift_JIS?B?grGC8YLJgr+CzQ==?=",
                    "\xE3\x81\x93\xE3\x82\x93\xE3\x81\xAB\xE3\x81\xA1\xE3\x81\xAF"},
        CharsetCase{"=?ISO-2022-JP?B?GyRCJDMkcyRLJEEkTxsoQg==?=",
                    "\xE3\x81\x93\xE3\x82\x93\xE3\x81\xAB\xE3\x81\xA1\xE3\x81\xAF"},
        CharsetCase{"=?gb2312?B?xOO6ww==?=", "\xE4\xBD\xA0\xE5\xA5\xBD"},
        CharsetCase{"=?big5?B?p0Gmbg==?=", "\xE4\xBD\xA0\xE5\xA5\xBD"},
        CharsetCase{"=?ks_c_5601-1987?B?vsiz58fPvLy/5A==?=",
                    "\xEC\x95\x88\xEB\x85\x95\xED\x95\x98\xEC\x84\xB8\xEC\x9A\x94"},
        CharsetCase{"=?us-ascii?Q?plain_text?=", "plain text"},
        CharsetCase{"=?gb18030?B?xOO6ww==?=", "\xE4\xBD\xA0\xE5\xA5\xBD"},
        CharsetCase{"=?euc-jp?B?pLOk86TLpMGkzw==?=",
                    "\xE3\x81\x93\xE3\x82\x93\xE3\x81\xAB\xE3\x81\xA1\xE3\x81\xAF"},
        CharsetCase{"=?utf-7?Q?+AOk-?=", "\xC3\xA9"}));

TEST_F(ParseHeaderTest, WordsOfDifferentCharsetsJoin) {
  EXPECT_EQ(Parse("=?koi8-r?B?8NLJ18XU?= =?iso-8859-1?Q?_caf=E9?= =?gb2312?B?xOO6ww==?="),
            "\xD0\x9F\xD1\x80\xD0\xB8\xD0\xB2\xD0\xB5\xD1\x82 caf\xC3\xA9\xE4\xBD\xA0\xE5\xA5\xBD");
}

TEST_F(ParseHeaderTest, ShiftedWordsSplitAcrossWordsDecodePerWord) {
  // Each word is converted on its own: an ISO-2022-JP word that ends in
  // the double-byte set still gives its characters.
  EXPECT_EQ(Parse("=?iso-2022-jp?B?GyRCJDM=?="), "\xE3\x81\x93");
}

}  // namespace
}  // namespace pv::test
