// AssembleHeader: display text to encoded words, with the automatic choice
// of encoding, the length budgets and chunk cutting, surrogate pairs at a
// chunk boundary, round trips through ParseHeader and linear time.
#include <chrono>

#include "src/headers/header_charset.h"
#include "tests/test_util.h"

namespace pv::test {
namespace {

class AssembleHeaderTest : public ::testing::Test {
 protected:
  ComPtr<IEMSHeaderCharset> cs_ = Create<IEMSHeaderCharset>(CLSID_EMSHeaderCharset);

  std::string Assemble(std::string_view utf8) { return AssembleWide(W(utf8)); }
  std::string AssembleWide(WStringView text) {
    Bstr in(text);
    Bstr out;
    EXPECT_EQ(cs_->AssembleHeader(in.get(), out.put()), S_OK);
    EXPECT_FALSE(out.is_null());
    return U8(out);
  }
  LONG DefaultEncoding() {
    LONG value = 0;
    cs_->get_DefaultEncoding(&value);
    return value;
  }
  void Set(LONG headerCodePage, LONG encoding) {
    cs_->put_HeaderCodePage(headerCodePage);
    cs_->put_DefaultEncoding(encoding);
  }
};

// The encoded words of an assembled value, split at its folds.
std::vector<std::string> Words(const std::string& value) {
  std::vector<std::string> words;
  size_t start = 0;
  for (;;) {
    size_t fold = value.find("\r\n ", start);
    words.push_back(value.substr(start, fold == std::string::npos ? std::string::npos : fold - start));
    if (fold == std::string::npos) return words;
    start = fold + 3;
  }
}

// What a header field does before ParseHeader: lines joined again.
std::string Unfold(std::string value) {
  for (size_t at; (at = value.find("\r\n")) != std::string::npos;) value.erase(at, 2);
  return value;
}

// ---------------------------------------------------------------- the listed cases
TEST_F(AssembleHeaderTest, NewObjectBEncodesEvenPureAscii) {
  EXPECT_EQ(Assemble("Hello"), "=?windows-1252?B?SGVsbG8=?=");
  EXPECT_EQ(DefaultEncoding(), 2);
}

TEST_F(AssembleHeaderTest, AutomaticWithAnIso8859CharsetChoosesQEvenForAscii) {
  Set(28591, 3);
  EXPECT_EQ(Assemble("Hello"), "=?iso-8859-1?Q?Hello?=");
  EXPECT_EQ(DefaultEncoding(), 1);
  Set(28592, 3);
  EXPECT_EQ(Assemble("Hello"), "=?iso-8859-2?Q?Hello?=");
}

TEST_F(AssembleHeaderTest, AutomaticWithFiftyNinePercentAsciiChoosesB) {
  Set(65001, 3);
  std::string text(59, 'a');
  for (int i = 0; i < 41; ++i) text += "\xC3\xA9";
  Assemble(text);
  EXPECT_EQ(DefaultEncoding(), 2);
}

TEST_F(AssembleHeaderTest, AutomaticWithSixtyPercentAsciiChoosesQ) {
  Set(65001, 3);
  std::string text(60, 'a');
  for (int i = 0; i < 40; ++i) text += "\xC3\xA9";
  Assemble(text);
  EXPECT_EQ(DefaultEncoding(), 1);
}

TEST_F(AssembleHeaderTest, AutomaticWithPureAsciiReturnsTheTextAndStoresNone) {
  Set(65001, 3);
  EXPECT_EQ(Assemble("Plain subject"), "Plain subject");
  EXPECT_EQ(DefaultEncoding(), 0);
}

TEST_F(AssembleHeaderTest, EmptyInputGivesEmptyResultUnderEveryEncoding) {
  for (LONG encoding : {0, 1, 2, 3, 4, 5, -1}) {
    Set(-1, encoding);
    EXPECT_EQ(Assemble(""), "") << encoding;
  }
}

TEST_F(AssembleHeaderTest, EncodingFiveReturnsNothing) {
  Set(-1, 5);
  EXPECT_EQ(Assemble("Hello"), "");
  EXPECT_EQ(DefaultEncoding(), 5);
}

TEST_F(AssembleHeaderTest, OtherUnknownEncodingsReturnNothingToo) {
  for (LONG encoding : {4, 100, -1}) {
    Set(-1, encoding);
    EXPECT_EQ(Assemble("Hello"), "") << encoding;
  }
}

// ---------------------------------------------------------------- automatic choice
TEST_F(AssembleHeaderTest, AutomaticWithAnIso2022CharsetChoosesB) {
  Set(50220, 3);
  EXPECT_EQ(Assemble("Hello"), "=?iso-2022-jp?B?SGVsbG8=?=");
  EXPECT_EQ(DefaultEncoding(), 2);
}

TEST_F(AssembleHeaderTest, AutomaticChoosesByTheHeaderNameOfThePage) {
  // 932's header name is iso-2022-jp, so its text is B-encoded.
  Set(932, 3);
  Assemble("Hello");
  EXPECT_EQ(DefaultEncoding(), 2);
}

TEST_F(AssembleHeaderTest, AutomaticChoiceIsMadeOnceAndKept) {
  Set(65001, 3);
  EXPECT_EQ(Assemble("Plain"), "Plain");
  EXPECT_EQ(Assemble("\xC3\xA9\xC3\xA9\xC3\xA9"), "\xC3\xA9\xC3\xA9\xC3\xA9");  // no longer chooses
}

TEST_F(AssembleHeaderTest, AutomaticWithEmptyTextStoresNoneOrTheNameChoice) {
  Set(65001, 3);
  EXPECT_EQ(Assemble(""), "");
  EXPECT_EQ(DefaultEncoding(), 0);
  Set(28605, 3);
  EXPECT_EQ(Assemble(""), "");
  EXPECT_EQ(DefaultEncoding(), 1);
}

TEST_F(AssembleHeaderTest, AutomaticCountsUtf16Units) {
  // One emoji is two units above 127: 3 of 5 units are ASCII, 60 percent.
  Set(65001, 3);
  Assemble("abc\xF0\x9F\x98\x80");
  EXPECT_EQ(DefaultEncoding(), 1);
}

// ---------------------------------------------------------------- encoding none
TEST_F(AssembleHeaderTest, EncodingNoneRoundTripsThroughTheAnsiPage) {
  Set(65001, 0);
  EXPECT_EQ(Assemble("caf\xC3\xA9 \xE4\xB8\xAD \xC4\x80"), "caf\xC3\xA9 ? A");
}

// ---------------------------------------------------------------- Q and B
TEST_F(AssembleHeaderTest, QWritesUnderscoreForSpaceAndEscapesEqualsQuestionAndUnderscore) {
  Set(1252, 1);
  EXPECT_EQ(Assemble("a b_c=d?e"), "=?windows-1252?Q?a_b=5Fc=3Dd=3Fe?=");
}

TEST_F(AssembleHeaderTest, QLeavesOtherSpecialsAlone) {
  Set(1252, 1);
  EXPECT_EQ(Assemble("(a),\"b\"<c>@d.e:f;g"), "=?windows-1252?Q?(a),\"b\"<c>@d.e:f;g?=");
}

TEST_F(AssembleHeaderTest, QEscapesControlsAndHighBytesInUpperCase) {
  Set(1252, 1);
  EXPECT_EQ(Assemble("caf\xC3\xA9\t\x7F"), "=?windows-1252?Q?caf=E9=09=7F?=");
}

TEST_F(AssembleHeaderTest, BPadsToAMultipleOfFour) {
  Set(65001, 2);
  EXPECT_EQ(Assemble("a"), "=?utf-8?B?YQ==?=");
  EXPECT_EQ(Assemble("ab"), "=?utf-8?B?YWI=?=");
  EXPECT_EQ(Assemble("abc"), "=?utf-8?B?YWJj?=");
  EXPECT_EQ(Assemble("\xC3\xBF\xEF\xBB\xBF"), "=?utf-8?B?w7/vu78=?=");
}

TEST_F(AssembleHeaderTest, TextIsConvertedToTheEncodingPage) {
  Set(20866, 2);
  EXPECT_EQ(Assemble("\xD0\x9F\xD1\x80\xD0\xB8\xD0\xB2\xD0\xB5\xD1\x82"), "=?koi8-r?B?8NLJ18XU?=");
  Set(50220, 2);
  EXPECT_EQ(Assemble("\xE3\x81\x93\xE3\x82\x93\xE3\x81\xAB\xE3\x81\xA1\xE3\x81\xAF"),
            "=?iso-2022-jp?B?GyRCJDMkcyRLJEEkTxsoQg==?=");
}

TEST_F(AssembleHeaderTest, Page932IsLabelledWithItsHeaderName) {
  // The database names 932 iso-2022-jp for headers; the bytes stay Shift_JIS.
  Set(932, 2);
  EXPECT_EQ(Assemble("\xE3\x81\x93\xE3\x82\x93\xE3\x81\xAB\xE3\x81\xA1\xE3\x81\xAF"),
            "=?iso-2022-jp?B?grGC8YLJgr+CzQ==?=");
}

TEST_F(AssembleHeaderTest, CharactersThePageCannotHoldBecomeQuestionMarks) {
  Set(28591, 1);
  EXPECT_EQ(Assemble("\xE2\x82\xAC"), "=?iso-8859-1?Q?=3F?=");
}

// ---------------------------------------------------------------- effective page
TEST_F(AssembleHeaderTest, UnsetHeaderCodePageUsesTheDefaultCodePage) {
  cs_->put_DefaultCodePage(28605);
  Set(-1, 1);
  EXPECT_EQ(Assemble("\xE2\x82\xAC"), "=?iso-8859-15?Q?=A4?=");
}

TEST_F(AssembleHeaderTest, OtherNegativeHeaderCodePagesAreUsedAsTheyStand) {
  Set(-2, 2);
  EXPECT_EQ(Assemble("Hello"), "");  // no such page: every chunk is empty
}

TEST_F(AssembleHeaderTest, HeaderCodePageZeroConvertsWithTheAnsiPageUnderNoName) {
  Set(0, 2);
  EXPECT_EQ(Assemble("Hi"), "=??B?SGk=?=");
}

TEST_F(AssembleHeaderTest, UnconvertiblePageGivesNothing) {
  Set(1200, 2);
  EXPECT_EQ(Assemble("Hello"), "");
}

// ---------------------------------------------------------------- budgets
TEST_F(AssembleHeaderTest, LaterQWordsCarryNineteenBytesWithAnIsoPrefix) {
  Set(28591, 1);
  std::vector<std::string> words = Words(Assemble(std::string(100, 'x')));
  ASSERT_EQ(words.size(), 6u);
  EXPECT_EQ(words[0], "=?iso-8859-1?Q?" + std::string(20, 'x') + "?=");  // budget 66
  for (size_t i = 1; i < 5; ++i)
    EXPECT_EQ(words[i], "=?iso-8859-1?Q?" + std::string(19, 'x') + "?=");  // budget 63
  EXPECT_EQ(words[5], "=?iso-8859-1?Q?xxxx?=");
}

TEST_F(AssembleHeaderTest, LaterBWordsCarryFortyEightBytesWithAUtf8Prefix) {
  Set(65001, 2);
  std::string text(51 + 48 + 10, 'y');
  std::vector<std::string> words = Words(Assemble(text));
  ASSERT_EQ(words.size(), 3u);
  EXPECT_EQ(words[0].size(), 10 + 68 + 2u);  // 51 bytes in the first word (budget 71)
  EXPECT_EQ(words[1].size(), 10 + 64 + 2u);  // 48 bytes
  EXPECT_EQ(words[2].size(), 10 + 16 + 2u);
}

TEST_F(AssembleHeaderTest, HeaderNameReserveShortensOnlyTheFirstWord) {
  Set(28591, 1);
  cs_->put_HeaderName(B("Subject").get());
  std::vector<std::string> words = Words(Assemble(std::string(40, 'x')));
  ASSERT_EQ(words.size(), 3u);
  EXPECT_EQ(words[0], "=?iso-8859-1?Q?" + std::string(17, 'x') + "?=");  // budget 55
  EXPECT_EQ(words[1], "=?iso-8859-1?Q?" + std::string(19, 'x') + "?=");
  EXPECT_EQ(words[2], "=?iso-8859-1?Q?" + std::string(4, 'x') + "?=");
}

TEST_F(AssembleHeaderTest, QEstimateIsConservativeWhateverTheBytes) {
  // The estimate counts every byte as an escape, so escaped text fits too.
  Set(28591, 1);
  std::string text;
  for (int i = 0; i < 40; ++i) text += "\xC3\xA9";
  std::vector<std::string> words = Words(Assemble(text));
  ASSERT_EQ(words.size(), 3u);
  EXPECT_EQ(words[0].size(), 15 + 60 + 2u);  // 20 bytes
  EXPECT_EQ(words[1].size(), 15 + 57 + 2u);  // 19 bytes
  EXPECT_EQ(words[2], "=?iso-8859-1?Q?=E9?=");
}

TEST_F(AssembleHeaderTest, WordsAreJoinedByCrLfAndOneSpace) {
  Set(28591, 1);
  std::string value = Assemble(std::string(30, 'z'));
  EXPECT_EQ(value, "=?iso-8859-1?Q?" + std::string(20, 'z') + "?=\r\n =?iso-8859-1?Q?" +
                       std::string(10, 'z') + "?=");
}

TEST_F(AssembleHeaderTest, EveryLineStaysWithinEightyCharactersAfterTheFieldName) {
  const char* name = "Subject";
  std::string text;
  for (int i = 0; i < 30; ++i)
    text +=
        "Gr\xC3\xBC\xC3\x9F"
        "e \xE2\x82\xAC \xF0\x9F\x98\x80 \xE4\xB8\xAD ";
  for (LONG page : {65001, 28591, 1252, 20866, 932, 50220, 936}) {
    for (LONG encoding : {1, 2}) {
      Set(page, encoding);
      cs_->put_HeaderName(B(name).get());
      std::string value = std::string(name) + ": " + Assemble(text);
      size_t start = 0;
      for (;;) {
        size_t end = value.find("\r\n", start);
        size_t length = (end == std::string::npos ? value.size() : end) - start;
        EXPECT_LE(length, 80u) << page << "/" << encoding << ": " << value.substr(start, length);
        if (end == std::string::npos) break;
        start = end + 2;
      }
    }
  }
}

TEST_F(AssembleHeaderTest, BudgetTooSmallForOneCharacterGivesNothing) {
  Set(65001, 2);
  cs_->put_HeaderName(B(std::string(80, 'X')).get());
  EXPECT_EQ(Assemble("Hello"), "");
}

TEST_F(AssembleHeaderTest, FirstWordMayBeShortWhileLaterOnesAreFull) {
  Set(65001, 2);
  cs_->put_HeaderName(B(std::string(60, 'X')).get());  // first budget 81 - 64 - 10 = 7
  std::vector<std::string> words = Words(Assemble("abcdefgh"));
  ASSERT_EQ(words.size(), 2u);
  EXPECT_EQ(words[0], "=?utf-8?B?YWJj?=");  // 3 bytes estimate 4, 4 bytes 8
  EXPECT_EQ(words[1], "=?utf-8?B?ZGVmZ2g=?=");
}

// ---------------------------------------------------------------- surrogate pairs
TEST_F(AssembleHeaderTest, ChunkNeverEndsBetweenTheUnitsOfASurrogatePair) {
  // 48 bytes then a four-byte character: its first unit alone (3 bytes of
  // U+FFFD) would still fit the 51-byte first word, the pair does not.
  Set(65001, 2);
  std::string text = std::string(48, 'a') + "\xF0\x9F\x98\x80" + "b";
  std::string value = Assemble(text);
  std::vector<std::string> words = Words(value);
  ASSERT_EQ(words.size(), 2u);
  std::string as;
  for (int i = 0; i < 16; ++i) as += "YWFh";
  EXPECT_EQ(words[0], "=?utf-8?B?" + as + "?=");
  EXPECT_EQ(words[1], "=?utf-8?B?8J+YgGI=?=");
  Bstr out;
  ASSERT_EQ(cs_->ParseHeader(B(Unfold(value)).get(), out.put()), S_OK);
  EXPECT_EQ(U8(out), text);
}

TEST_F(AssembleHeaderTest, SurrogatePairStaysWholeInQToo) {
  Set(65001, 1);
  cs_->put_HeaderName(B("Subject").get());  // first budget 81 - 11 - 10 = 60: 18 bytes at most
  std::string text = std::string(15, 'a') + "\xF0\x9F\x98\x80";
  std::vector<std::string> words = Words(Assemble(text));
  ASSERT_EQ(words.size(), 2u);
  EXPECT_EQ(words[0], "=?utf-8?Q?" + std::string(15, 'a') + "?=");
  EXPECT_EQ(words[1], "=?utf-8?Q?=F0=9F=98=80?=");
}

TEST_F(AssembleHeaderTest, LoneSurrogatesAreWrittenAsThePageWritesThem) {
  Set(65001, 2);
  WString text = W("a");
  text.push_back(static_cast<OLECHAR>(0xD800));
  text += W("b");
  EXPECT_EQ(AssembleWide(text), "=?utf-8?B?Ye+/vWI=?=");
  Set(1252, 1);
  EXPECT_EQ(AssembleWide(text), "=?windows-1252?Q?a=3Fb?=");
}

// ---------------------------------------------------------------- round trips
TEST_F(AssembleHeaderTest, AssembledTextParsesBackAfterUnfolding) {
  std::string text;
  for (int i = 0; i < 20; ++i)
    text +=
        "Gr\xC3\xBC\xC3\x9F"
        "e, \xE2\x82\xAC 5 \xF0\x9F\x98\x80 \xE4\xB8\xAD_a=b?c ";
  for (LONG encoding : {1, 2}) {
    Set(65001, encoding);
    std::string value = Assemble(text);
    Bstr out;
    ASSERT_EQ(cs_->ParseHeader(B(Unfold(value)).get(), out.put()), S_OK);
    EXPECT_EQ(U8(out), text) << encoding;
  }
}

TEST_F(AssembleHeaderTest, RoundTripsInTheCommonPages) {
  struct Case {
    LONG page;
    const char* text;
  } cases[] = {
      {28592, "Za\xC5\xBC\xC3\xB3\xC5\x82\xC4\x87 g\xC4\x99\xC5\x9Bl\xC4\x85 ja\xC5\xBA\xC5\x84"},
      {20866, "\xD0\x9F\xD1\x80\xD0\xB8\xD0\xB2\xD0\xB5\xD1\x82, \xD0\xBC\xD0\xB8\xD1\x80"},
      {50220, "\xE3\x81\x93\xE3\x82\x93\xE3\x81\xAB\xE3\x81\xA1\xE3\x81\xAF\xE4\xB8\x96\xE7\x95\x8C"},
      {936, "\xE4\xBD\xA0\xE5\xA5\xBD\xEF\xBC\x8C\xE4\xB8\x96\xE7\x95\x8C"},
      {950, "\xE4\xBD\xA0\xE5\xA5\xBD"},
      {949, "\xEC\x95\x88\xEB\x85\x95\xED\x95\x98\xEC\x84\xB8\xEC\x9A\x94"},
      {28597, "\xCE\x93\xCE\xB5\xCE\xB9\xCE\xAC \xCF\x83\xCE\xBF\xCF\x85"},
      {1250, "D\xC4\x9Bkuji"},
  };
  for (const Case& c : cases) {
    std::string text;
    for (int i = 0; i < 10; ++i) text += c.text;
    for (LONG encoding : {1, 2}) {
      Set(c.page, encoding);
      std::string value = Assemble(text);
      Bstr out;
      ASSERT_EQ(cs_->ParseHeader(B(Unfold(value)).get(), out.put()), S_OK);
      EXPECT_EQ(U8(out), text) << c.page << "/" << encoding;
    }
  }
}

// ---------------------------------------------------------------- linear time
TEST_F(AssembleHeaderTest, HundredThousandCharacterSubjectEncodesAndDecodesInLinearTime) {
  WString piece =
      W("Gr\xC3\xBC\xC3\x9F"
        "e aus K\xC3\xB6ln \xE4\xB8\xAD\xE6\x96\x87 ");
  WString wide;
  while (wide.size() < 100000) wide += piece;
  wide.resize(100000);
  ComPtr<HeaderCharset> cs;
  ASSERT_EQ(MakeObject(&cs), S_OK);
  auto start = std::chrono::steady_clock::now();
  for (LONG page : {65001, 50220}) {
    for (LONG encoding : {1, 2}) {
      cs->SetHeaderCodePage(page);
      cs->SetDefaultEncoding(encoding);
      WString encoded;
      ASSERT_EQ(cs->Encode(wide, &encoded), S_OK);
      std::string unfolded = Unfold(U8(encoded));
      WString decoded;
      ASSERT_EQ(cs->Decode(unfolded, &decoded), S_OK);
      if (page == 65001) {
        EXPECT_EQ(decoded, wide) << encoding;
      }
    }
  }
  double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  EXPECT_LT(seconds, 10.0);  // quadratic work would take minutes
}

TEST_F(AssembleHeaderTest, HugeTextUnderAnUnknownEncodingReturnsAtOnce) {
  Set(65001, 7);
  auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(AssembleWide(WString(1u << 20, u'x')), "");
  double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  EXPECT_LT(seconds, 5.0);
}

}  // namespace
}  // namespace pv::test
