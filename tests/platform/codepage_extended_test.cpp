// Conversions of every page of the charset table: the platform's measured
// answers (tests/fixtures/platform/mbcs.tsv, convertible.tsv), known texts
// in both directions, best fit, size queries and use from many threads.
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <thread>

#include "src/platform/charset_table.h"
#include "tests/test_util.h"

namespace pv::test {
namespace {

using Row = std::vector<std::string>;
using Units = std::vector<uint16_t>;

std::vector<Row> ReadTsv(const char* name) {
  std::ifstream file(std::string(PARCELVANE_TEST_FIXTURES) + "/platform/" + name);
  std::vector<Row> rows;
  std::string line;
  while (std::getline(file, line)) {
    if (line.empty()) continue;
    Row row;
    std::stringstream fields(line);
    std::string field;
    while (std::getline(fields, field, '\t')) row.push_back(field);
    rows.push_back(row);
  }
  return rows;
}

// "C3 A9" as bytes, "0061 D800" as units.
std::vector<unsigned> Hex(const std::string& text) {
  std::vector<unsigned> values;
  std::stringstream in(text);
  std::string word;
  while (in >> word) values.push_back(static_cast<unsigned>(std::stoul(word, nullptr, 16)));
  return values;
}

std::string Bytes(const std::vector<unsigned>& values) {
  std::string s;
  for (unsigned v : values) s.push_back(static_cast<char>(v));
  return s;
}

Units Decode(UINT cp, std::string_view bytes) {
  WString w;
  EXPECT_TRUE(ToWide(cp, bytes, &w)) << cp;
  return Units(w.begin(), w.end());
}

std::string Encode(UINT cp, WStringView text) {
  std::string s;
  EXPECT_TRUE(ToNarrow(cp, text, &s)) << cp;
  return s;
}

WString Wide(const Units& units) { return WString(units.begin(), units.end()); }

// ---------------------------------------------------------------- mbcs.tsv
// One test per row measured without flags (the only way the library calls
// the conversions).
struct MbcsRow {
  std::string api;
  UINT codePage;
  std::string label;
  std::string input;
  int result;
  std::string output;
};

std::vector<MbcsRow> MbcsRows() {
  std::vector<MbcsRow> rows;
  for (const Row& row : ReadTsv("mbcs.tsv")) {
    if (row.size() < 7 || row[0] == "api" || row[2] != "0") continue;
    rows.push_back(
        {row[0], static_cast<UINT>(std::stoul(row[1])), row[3], row[4], std::stoi(row[5]), row[6]});
  }
  return rows;
}

class MbcsFact : public ::testing::TestWithParam<MbcsRow> {};

TEST_P(MbcsFact, ConversionGivesTheMeasuredAnswer) {
  const MbcsRow& row = GetParam();
  if (row.api == "MultiByteToWideChar") {
    std::string input;
    if (row.input == "80..FF") {
      for (int b = 0x80; b <= 0xFF; ++b) input.push_back(static_cast<char>(b));
    } else {
      input = Bytes(Hex(row.input));
    }
    int n = static_cast<int>(input.size());
    ASSERT_EQ(MultiByteToWide(row.codePage, input.data(), n, nullptr, 0), row.result);
    Units units = Decode(row.codePage, input);
    ASSERT_EQ(static_cast<int>(units.size()), row.result);
    if (row.output.find("identity=128") != std::string::npos) {
      for (int i = 0; i < 128; ++i) EXPECT_EQ(units[i], 0x80 + i);
    } else if (row.output.find("high-bit-stripped=128") != std::string::npos) {
      for (int i = 0; i < 128; ++i) EXPECT_EQ(units[i], i);
    } else {
      std::vector<unsigned> expected = Hex(row.output);
      EXPECT_EQ(units, Units(expected.begin(), expected.end()));
    }
  } else {
    std::vector<unsigned> input = Hex(row.input);
    WString text(input.begin(), input.end());
    ASSERT_EQ(WideToMultiByte(row.codePage, text.data(), static_cast<int>(text.size()), nullptr, 0),
              row.result);
    EXPECT_EQ(Encode(row.codePage, text), Bytes(Hex(row.output)));
  }
}

std::string MbcsRowName(const ::testing::TestParamInfo<MbcsRow>& info) {
  std::string name = (info.param.api == "MultiByteToWideChar" ? "Decode" : "Encode") +
                     std::to_string(info.param.codePage) + "_" + info.param.label;
  for (char& c : name) {
    if (!std::isalnum(static_cast<unsigned char>(c))) c = '_';
  }
  return name + "_" + std::to_string(info.index);
}

INSTANTIATE_TEST_SUITE_P(Platform, MbcsFact, ::testing::ValuesIn(MbcsRows()), MbcsRowName);

TEST(MbcsFacts, FixtureHoldsEveryRowWithoutFlags) { EXPECT_EQ(MbcsRows().size(), 72u); }

// ---------------------------------------------------------------- convertible.tsv
// Pages the platform measured as not converting at all, which convert
// here through ICU because mail uses them (or ICU has their table).
const UINT kConvertedHereOnly[] = {424, 856, 1006, 20936, 50220, 50221, 50222, 51932, 52936, 54936};
// Pages that convert neither there nor here: UTF-16 is not byte text, CNS
// has no table, and the auto-detecting pages have no single mapping.
const UINT kUnconvertible[] = {1200, 1201, 12000, 20000, 50932, 50936, 50950, 51949};

bool Contains(const UINT* begin, const UINT* end, UINT page) { return std::find(begin, end, page) != end; }

TEST(ConvertiblePages, EveryPageThePlatformConvertsGivesItsAnswerForAz) {
  int checked = 0;
  for (const Row& row : ReadTsv("convertible.tsv")) {
    if (row.size() < 3 || row[0] == "codepage" || row[0] == "sample" || !std::isdigit(row[0][0])) continue;
    if (row[2] == "fail") continue;
    UINT page = static_cast<UINT>(std::stoul(row[0]));
    EXPECT_TRUE(IsCodePageConvertible(page)) << page;
    std::vector<unsigned> expected = Hex(row[2]);
    EXPECT_EQ(Decode(page, "Az"), Units(expected.begin(), expected.end())) << page;
    ++checked;
  }
  EXPECT_EQ(checked, 58);
}

TEST(ConvertiblePages, PagesThePlatformCannotConvertAreListedOneByOne) {
  for (const Row& row : ReadTsv("convertible.tsv")) {
    if (row.size() < 3 || !std::isdigit(row[0][0]) || row[2] != "fail") continue;
    UINT page = static_cast<UINT>(std::stoul(row[0]));
    bool here = Contains(std::begin(kConvertedHereOnly), std::end(kConvertedHereOnly), page);
    bool nowhere = Contains(std::begin(kUnconvertible), std::end(kUnconvertible), page);
    EXPECT_TRUE(here != nowhere) << page << " is in neither list";
    EXPECT_EQ(IsCodePageConvertible(page), here) << page;
  }
}

TEST(ConvertiblePages, UnconvertiblePagesFailEveryConversion) {
  for (UINT page : kUnconvertible) {
    EXPECT_FALSE(IsCodePageConvertible(page)) << page;
    EXPECT_EQ(MultiByteToWide(page, "Az", 2, nullptr, 0), 0) << page;
    EXPECT_EQ(WideToMultiByte(page, OLESTR("Az"), 2, nullptr, 0), 0) << page;
  }
}

TEST(ConvertiblePages, MeasuredSamplesDecodeAsTheDatabaseDecodesThem) {
  EXPECT_EQ(Decode(50220, "\x1B$B$3$s$K$A$O\x1B(B"), Units({0x3053, 0x3093, 0x306B, 0x3061, 0x306F}));
  EXPECT_EQ(Decode(50221, "\x1B$B$3$s$K$A$O\x1B(B"), Units({0x3053, 0x3093, 0x306B, 0x3061, 0x306F}));
  EXPECT_EQ(Decode(51932, "\xA4\xB3\xA4\xF3\xA4\xCB\xA4\xC1\xA4\xCF"),
            Units({0x3053, 0x3093, 0x306B, 0x3061, 0x306F}));
  EXPECT_EQ(Decode(932, "\x82\xB1\x82\xF1\x82\xC9\x82\xBF\x82\xCD"),
            Units({0x3053, 0x3093, 0x306B, 0x3061, 0x306F}));
  EXPECT_EQ(Decode(65000, "+AOk-"), Units({0x00E9}));
  EXPECT_EQ(Decode(20866, "\xC1\xC2"), Units({0x0430, 0x0431}));
  EXPECT_EQ(Decode(28605, "\xA4"), Units({0x20AC}));
  EXPECT_EQ(Decode(949, "\xB0\xA1"), Units({0xAC00}));
}

TEST(ConvertiblePages, PagesNeitherServiceMeasuredDecodeByTheirStandards) {
  EXPECT_EQ(Decode(54936, "\x81\x30\x81\x30"), Units({0x0080}));  // the first four-byte code
  EXPECT_EQ(Decode(52936, "~{<:Ky~}"), Units({0x5DF1, 0x6240}));  // GB2312 BCBA CBF9
  // The pages that charset names of the MIME database lead to.
  EXPECT_EQ(Decode(708, "\xC7\xE4"), Units({0x0627, 0x0644}));           // ASMO-708: alef, lam
  EXPECT_EQ(Decode(720, "\x9F\xE9"), Units({0x0627, 0x0644}));           // DOS-720: alef, lam
  EXPECT_EQ(Decode(38598, "\xE0\xE1"), Units({0x05D0, 0x05D1}));         // iso-8859-8-i: alef, bet
  EXPECT_EQ(Decode(50225, "\x1B$)C\x0E\x30\x21\x0F"), Units({0xAC00}));  // iso-2022-kr: one syllable
}

// ---------------------------------------------------------------- every page both ways
struct KnownText {
  UINT codePage;
  const char* utf8;
  std::string bytes;
};

// Texts whose bytes in each page are fixed by the page's standard.
const KnownText kKnownTexts[] = {
    {37, "Az", "\xC1\xA9"},
    {437, "caf\xC3\xA9 \xE2\x94\x80", "caf\x82 \xC4"},
    {500, "Az!", "\xC1\xA9\x4F"},
    {737, "\xCE\xB1\xCE\xB2", "\x98\x99"},
    {775, "\xC4\x80", "\xA0"},
    {850, "\xC3\xA9\xC3\x80", "\x82\xB7"},
    {852, "\xC5\x81\xC3\xB3", "\x9D\xA2"},
    {855, "\xD1\x92", "\x80"},
    {857, "\xC4\xB1", "\x8D"},
    {860, "\xC3\xA3", "\x84"},
    {861, "\xC3\xB0", "\x8C"},
    {862, "\xD7\x90", "\x80"},
    {863, "\xC3\x82", "\x84"},
    {865, "\xC3\xB8", "\x9B"},
    {866, "\xD0\x9F\xD1\x80\xD0\xB8", "\x8F\xE0\xA8"},
    {869, "\xCE\x86", "\x86"},
    {874, "\xE0\xB8\x81", "\xA1"},
    {875, "\xCE\x91", "\x41"},
    {932, "\xE6\x97\xA5\xE6\x9C\xAC", "\x93\xFA\x96\x7B"},
    {936, "\xE4\xBD\xA0\xE5\xA5\xBD", "\xC4\xE3\xBA\xC3"},
    {949, "\xEC\x95\x88\xEB\x85\x95", "\xBE\xC8\xB3\xE7"},
    {950, "\xE4\xBD\xA0\xE5\xA5\xBD", "\xA7\x41\xA6\x6E"},
    {1026, "Az", "\xC1\xA9"},
    {1250, "D\xC4\x9Bkuji", "D\xECkuji"},
    {1251, "\xD0\x9F\xD1\x80\xD0\xB8\xD0\xB2\xD0\xB5\xD1\x82", "\xCF\xF0\xE8\xE2\xE5\xF2"},
    {1253, "\xCE\x93\xCE\xB5\xCE\xB9\xCE\xAC", "\xC3\xE5\xE9\xDC"},
    {1254, "\xC4\x9F\xC4\xB1", "\xF0\xFD"},
    {1255, "\xD7\xA9\xD7\x9C\xD7\x95\xD7\x9D", "\xF9\xEC\xE5\xED"},
    {1256, "\xD8\xB3\xD9\x84\xD8\xA7\xD9\x85", "\xD3\xE1\xC7\xE3"},
    {1257, "\xC4\x85\xC5\xA1", "\xE0\xF0"},
    {1258, "\xC4\x83\xC6\xB0", "\xE3\xFD"},
    {10000, "\xC3\xA9\xE2\x80\xA0", "\x8E\xA0"},
    {10001, "\xE6\x97\xA5\xE6\x9C\xAC", "\x93\xFA\x96\x7B"},
    {10006, "\xCE\x91", "\xB0"},
    {10007, "\xD0\x90", "\x80"},
    {10029, "\xC4\x80", "\x81"},
    {10079, "\xC3\x9D\xC3\xB0\xC3\xBE", "\xA0\xDD\xDF"},
    {10081, "\xC4\x9E", "\xDA"},
    {20866, "\xD0\x9F\xD1\x80\xD0\xB8\xD0\xB2\xD0\xB5\xD1\x82", "\xF0\xD2\xC9\xD7\xC5\xD4"},
    {20932, "\xE3\x81\x82", "\xA4\xA2"},
    {20936, "\xE4\xBD\xA0\xE5\xA5\xBD", "\xC4\xE3\xBA\xC3"},
    {21866, "\xD1\x94", "\xA4"},
    {28592, "\xC5\x81\xC3\xB3\x64\xC5\xBA", "\xA3\xF3\x64\xBC"},
    {28593, "\xC4\x9F", "\xBB"},
    {28594, "\xC4\x81", "\xE0"},
    {28595, "\xD0\x9F\xD1\x80\xD0\xB8\xD0\xB2\xD0\xB5\xD1\x82", "\xBF\xE0\xD8\xD2\xD5\xE2"},
    {28596, "\xD8\xB3", "\xD3"},
    {28597, "\xCE\x93\xCE\xB5\xCE\xB9\xCE\xAC", "\xC3\xE5\xE9\xDC"},
    {28598, "\xD7\xA9", "\xF9"},
    {28599, "\xC4\x9F", "\xF0"},
    {28603, "\xC4\x85", "\xE0"},
    {28605, "\xE2\x82\xAC\xC5\x93", "\xA4\xBD"},
    {50220, "\xE3\x81\x82", "\x1B$B$\"\x1B(B"},
    {51932, "\xE3\x81\x82", "\xA4\xA2"},
    {52936, "\xE4\xBD\xA0", "~{Dc~}"},
    {54936, "\xE4\xBD\xA0\xE2\x82\xAC", "\xC4\xE3\xA2\xE3"},
    {65000, "\xC3\xA9", "+AOk-"},
};

TEST(EveryPage, KnownTextsConvertBothWays) {
  for (const KnownText& known : kKnownTexts) {
    WString text = W(known.utf8);
    EXPECT_EQ(Encode(known.codePage, text), known.bytes) << known.codePage;
    EXPECT_EQ(Decode(known.codePage, known.bytes), Units(text.begin(), text.end())) << known.codePage;
  }
}

TEST(EveryPage, EveryConvertiblePageOfTheTableRoundTripsItsOwnText) {
  // The text: "Az" as the page decodes it (ASCII, or EBCDIC's own letters)
  // and every unit its single bytes 0xA0..0xFF decode to, which the page
  // must write back as the same bytes.
  for (const CodePageName* it = CodePageNamesBegin(); it != CodePageNamesEnd(); ++it) {
    UINT page = static_cast<UINT>(it->codePage);
    if (!IsCodePageConvertible(page)) {
      EXPECT_TRUE(Contains(std::begin(kUnconvertible), std::end(kUnconvertible), page)) << page;
      continue;
    }
    WString text;
    ASSERT_TRUE(ToWide(page, "Az", &text)) << page;
    std::string bytes = Encode(page, text);
    EXPECT_EQ(Decode(page, bytes), Units(text.begin(), text.end())) << page;
    if (page == 65000 || IsStatefulCodePage(it->codePage)) continue;
    for (int b = 0xA0; b <= 0xFF; ++b) {
      std::string one(1, static_cast<char>(b));
      WString unit;
      if (!ToWide(page, one, &unit) || unit.size() != 1) continue;
      uint16_t u = static_cast<uint16_t>(unit[0]);
      if (u == 0xFFFD || u == 0x30FB) continue;  // bytes that map to nothing
      if (u < 0x80) continue;                    // US-ASCII masks the high bit
      EXPECT_EQ(Encode(page, unit), one) << page << " byte " << b;
    }
  }
}

TEST(EveryPage, HeaderNamedPagesAllConvertOrAreListed) {
  int convertible = 0;
  for (const CodePageName* it = CodePageNamesBegin(); it != CodePageNamesEnd(); ++it) {
    if (IsCodePageConvertible(static_cast<UINT>(it->codePage))) ++convertible;
  }
  EXPECT_EQ(convertible, 67);  // 72 pages less 1200, 20000, 50932, 50936, 50950
}

// ---------------------------------------------------------------- platform rules
TEST(DoubleBytePages, LeadByteTakesTheNextByteWhateverItIs) {
  EXPECT_EQ(Decode(932,
                   "\x81\x20"
                   "a"),
            Units({0x30FB, 'a'}));
  EXPECT_EQ(Decode(936,
                   "\x81\x20"
                   "a"),
            Units({0x30FB, 'a'}));
  EXPECT_EQ(Decode(949,
                   "\x81\x20"
                   "a"),
            Units({0x30FB, 'a'}));
  EXPECT_EQ(Decode(950,
                   "\x81\x20"
                   "a"),
            Units({0x30FB, 'a'}));
}

TEST(DoubleBytePages, LeadByteAtTheEndDecodesToTheDefaultCharacter) {
  EXPECT_EQ(Decode(936, "a\xC4"), Units({'a', 0x30FB}));
  EXPECT_EQ(Decode(950, "\xA7"), Units({0x30FB}));
}

TEST(DoubleBytePages, SingleBytesOfThePagesDecode) {
  EXPECT_EQ(Decode(936, "\x80"), Units({0x20AC}));
  EXPECT_EQ(Decode(932, "\xB1"), Units({0xFF71}));
  EXPECT_EQ(Decode(932, "\x5C\x7E"), Units({0x5C, 0x7E}));
}

TEST(DoubleBytePages, PlatformOnlyBytesOf932RoundTrip) {
  EXPECT_EQ(Encode(932, Wide({0x0080, 0xF8F0, 0xF8F1, 0xF8F2, 0xF8F3})), "\x80\xA0\xFD\xFE\xFF");
}

TEST(DoubleBytePages, UnitsReachedFromSeveralCodesAreWrittenInOneWay) {
  // U+2252 sits both in the JIS rows (0x81E0) and the NEC rows (0x8790).
  EXPECT_EQ(Decode(932, "\x81\xE0\x87\x90"), Units({0x2252, 0x2252}));
  EXPECT_EQ(Encode(932, Wide({0x2252})), "\x81\xE0");
}

TEST(SingleBytePages, AsciiBytesStayAscii) {
  for (UINT page : {437u, 850u, 852u, 866u, 1251u, 10000u, 20866u, 28592u}) {
    std::string ascii;
    for (int b = 0; b < 0x80; ++b) ascii.push_back(static_cast<char>(b));
    Units units = Decode(page, ascii);
    ASSERT_EQ(units.size(), 128u) << page;
    for (int b = 0; b < 0x80; ++b) EXPECT_EQ(units[b], b) << page;
    EXPECT_EQ(Encode(page, Wide(units)), ascii) << page;
  }
}

TEST(SingleBytePages, UndefinedHighControlBytesKeepTheirC1Control) {
  EXPECT_EQ(Decode(1253, "\x81"), Units({0x0081}));
  EXPECT_EQ(Encode(1253, Wide({0x0081})), "\x81");
}

TEST(SingleBytePages, BytesThatMapToNothingDecodeToTheReplacementCharacter) {
  EXPECT_EQ(Decode(28596, "\xA1"), Units({0xFFFD}));  // ISO-8859-6 leaves A1 unassigned
  EXPECT_EQ(Decode(28593, "\xA5"), Units({0xFFFD}));
}

TEST(SingleBytePages, MacIcelandicHasItsOwnLetters) {
  EXPECT_EQ(Decode(10079, "\xA0\xDC\xDD\xDE\xDF\xE0"), Units({0xDD, 0xD0, 0xF0, 0xDE, 0xFE, 0xFD}));
  EXPECT_EQ(Decode(10000, "\xA0"), Units({0x2020}));
}

// ---------------------------------------------------------------- unmappable characters
TEST(BestFit, LettersWithAccentsLoseThemWhereThePageHasNoSuchLetter) {
  EXPECT_EQ(Encode(1252, Wide({0x0100})), "A");   // measured
  EXPECT_EQ(Encode(28591, Wide({0x0100})), "A");  // measured
  EXPECT_EQ(Encode(20127, Wide({0x0100})), "A");  // measured
  EXPECT_EQ(Encode(20127, W("caf\xC3\xA9")), "cafe");
  EXPECT_EQ(Encode(1251, W("\xC3\xA9")), "e");
  EXPECT_EQ(Encode(932, W("\xC4\x81")), "a");
  EXPECT_EQ(Encode(50220, W("\xC4\x81")), "a");
  // The fit is the base letter, not the nearest accented letter of the page.
  EXPECT_EQ(Encode(1252, W("\xE1\xBA\xA5")), "a");
}

TEST(BestFit, CompatibilityFormsBecomeTheirPlainForm) {
  EXPECT_EQ(Encode(1252, W("\xEF\xBC\xA1")), "A");  // full-width A
  EXPECT_EQ(Encode(20127, W("\xC2\xA0")), " ");     // no-break space
  EXPECT_EQ(Encode(28592, W("\xEF\xBD\x9A")), "z");
}

TEST(BestFit, DocumentedDifferenceLettersWithoutADecompositionBecomeQuestionMarks) {
  // The platform's best-fit tables also strip strokes and bars (L with
  // stroke to "L"); a stroke is not a combining mark, so here it is "?".
  EXPECT_EQ(Encode(1252, W("\xC5\x81")), "?");
  EXPECT_EQ(Encode(20127, W("\xC4\x90")), "?");
}

TEST(Unmappable, CharactersWithoutAnyFitBecomeQuestionMarks) {
  EXPECT_EQ(Encode(1251, W("\xE4\xB8\xAD")), "?");
  EXPECT_EQ(Encode(932, W("\xE0\xB8\x81")), "?");
  EXPECT_EQ(Encode(37, W("\xE4\xB8\xAD")), "\x6F");  // EBCDIC's own question mark
  EXPECT_EQ(Encode(50220, W("\xE0\xB8\x81")), "?");
  EXPECT_EQ(Encode(54936, Wide({0xD800})), "?");
  EXPECT_EQ(Encode(1251, Wide({0xD83D, 0xDE00})), "??");
}

// ---------------------------------------------------------------- sizes and buffers
TEST(Sizes, SizeQueryIsExactOnEveryKindOfPage) {
  WString text = W("\xE6\x97\xA5\xE6\x9C\xAC a");
  for (UINT page : {932u, 936u, 1251u, 50220u, 51932u, 54936u, 65000u}) {
    int size = WideToMultiByte(page, text.data(), static_cast<int>(text.size()), nullptr, 0);
    std::string bytes = Encode(page, text);
    EXPECT_EQ(size, static_cast<int>(bytes.size())) << page;
    int units = MultiByteToWide(page, bytes.data(), static_cast<int>(bytes.size()), nullptr, 0);
    EXPECT_EQ(units, static_cast<int>(Decode(page, bytes).size())) << page;
  }
}

TEST(Sizes, TooSmallBufferFailsOnEveryKindOfPage) {
  const OLECHAR text[] = {0x65E5, 0x672C};
  for (UINT page : {932u, 1251u, 50220u, 54936u}) {
    char bytes[1];
    EXPECT_EQ(WideToMultiByte(page, text, 2, bytes, 1), 0) << page;
    OLECHAR units[1];
    EXPECT_EQ(MultiByteToWide(page, "ab", 2, units, 1), 0) << page;
  }
}

TEST(Sizes, ExactBufferIsEnough) {
  OLECHAR units[2];
  EXPECT_EQ(MultiByteToWide(50220, "ab", 2, units, 2), 2);
  EXPECT_EQ(units[1], u'b');
  char bytes[4];
  EXPECT_EQ(WideToMultiByte(936, OLESTR("\x4F60\x597D"), 2, bytes, 4), 4);
  EXPECT_EQ(std::string(bytes, 4), "\xC4\xE3\xBA\xC3");
}

// ---------------------------------------------------------------- threads
TEST(Threads, PagesBuiltAndUsedFromManyThreadsAtOnceAgree) {
  const UINT pages[] = {50221, 51932, 866, 10079, 949};
  std::vector<std::thread> threads;
  std::vector<int> failures(8, 0);
  for (int t = 0; t < 8; ++t) {
    threads.emplace_back([&, t] {
      for (int i = 0; i < 200; ++i) {
        UINT page = pages[(t + i) % 5];
        WString text;
        ToWide(page, "Hello", &text);
        std::string back;
        ToNarrow(page, text, &back);
        if (back != "Hello") ++failures[t];
      }
    });
  }
  for (auto& thread : threads) thread.join();
  for (int f : failures) EXPECT_EQ(f, 0);
}

// ---------------------------------------------------------------- the ANSI page
TEST(AnsiPage, OemAndMacintoshPageNumbersStandForTheirPages) {
  EXPECT_EQ(ResolveCodePage(1), 437u);
  EXPECT_EQ(ResolveCodePage(2), 10000u);
  EXPECT_EQ(Decode(1, "\x82"), Units({0xE9}));
}

TEST(AnsiPage, MatchesTheMeasuredDefaultLocale) {
  if (std::getenv("PARCELVANE_ACP") != nullptr) GTEST_SKIP() << "PARCELVANE_ACP is set";
  bool found = false;
  for (const Row& row : ReadTsv("locale.tsv")) {
    if (row.size() == 2 && row[0] == "GetACP") {
      EXPECT_EQ(AnsiCodePage(), static_cast<UINT>(std::stoul(row[1])));
      found = true;
    }
  }
  EXPECT_TRUE(found);
}

// Runs this program again with PARCELVANE_ACP set, asking only for the
// check below.
int RunWithAnsiPage(const char* value, UINT expected) {
  char self[4096];
  ssize_t n = readlink("/proc/self/exe", self, sizeof self - 1);
  if (n <= 0) return -1;
  self[n] = '\0';
  std::string command = std::string("PARCELVANE_ACP=") + value +
                        " PARCELVANE_EXPECTED_ACP=" + std::to_string(expected) + " '" + self +
                        "' --gtest_filter=AnsiPage.FollowsTheEnvironment >/dev/null 2>&1";
  int status = std::system(command.c_str());
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST(AnsiPage, FollowsTheEnvironment) {
  const char* expected = std::getenv("PARCELVANE_EXPECTED_ACP");
  if (expected == nullptr) GTEST_SKIP() << "runs inside ChosenAtStartUpThroughTheEnvironment";
  EXPECT_EQ(AnsiCodePage(), static_cast<UINT>(std::stoul(expected)));
  EXPECT_EQ(ResolveCodePage(0), static_cast<UINT>(std::stoul(expected)));
}

TEST(AnsiPage, ChosenAtStartUpThroughTheEnvironment) {
  EXPECT_EQ(RunWithAnsiPage("65001", 65001), 0);
  EXPECT_EQ(RunWithAnsiPage("1251", 1251), 0);
  EXPECT_EQ(RunWithAnsiPage("932", 932), 0);
  EXPECT_EQ(RunWithAnsiPage("28592", 28592), 0);
}

TEST(AnsiPage, PagesThatCannotHoldAsciiTextAreIgnored) {
  EXPECT_EQ(RunWithAnsiPage("50220", 1252), 0);  // shifts state
  EXPECT_EQ(RunWithAnsiPage("37", 1252), 0);     // EBCDIC
  EXPECT_EQ(RunWithAnsiPage("1200", 1252), 0);   // not convertible
  EXPECT_EQ(RunWithAnsiPage("99999", 1252), 0);
  EXPECT_EQ(RunWithAnsiPage("abc", 1252), 0);
}

}  // namespace
}  // namespace pv::test
