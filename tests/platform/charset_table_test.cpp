// The compiled charset database answers exactly as the platform's database
// measured in tests/fixtures/platform/mlang-*.tsv.
#include "src/platform/charset_table.h"

#include <fstream>
#include <map>
#include <set>
#include <sstream>

#include "tests/test_util.h"

namespace pv::test {
namespace {

using Row = std::vector<std::string>;

std::vector<Row> ReadTsv(const char* name) {
  std::ifstream file(std::string(PARCELVANE_TEST_FIXTURES) + "/platform/" + name);
  EXPECT_TRUE(file.good()) << name;
  std::vector<Row> rows;
  std::string line;
  std::getline(file, line);  // the column names
  while (std::getline(file, line)) {
    if (line.empty()) continue;
    Row row;
    std::stringstream fields(line);
    std::string field;
    while (std::getline(fields, field, '\t')) row.push_back(field);
    if (line.back() == '\t') row.push_back("");
    rows.push_back(row);
  }
  return rows;
}

constexpr char kUnknownName[] = "0x80004005";

std::string Lowered(std::string name) {
  for (char& c : name) c = ToLowerAscii(c);
  return name;
}

// What a name should resolve to, from the measured rows alone: the measured
// internet encoding of a name the lookup knows; otherwise, for a name the
// classes root's MIME database lists, its internet encoding there, or the
// answer for the name it is listed as an alias of; otherwise -1.
class ExpectedAnswers {
 public:
  explicit ExpectedAnswers(const std::vector<Row>& rows) {
    for (const Row& row : rows) {
      if (row[2] != kUnknownName) measured_[Lowered(row[1])] = std::stoi(row[4]);
      if (row[0] != "registry-MIME-DB" || row.size() < 9) continue;
      if (row[7] != "-") listed_[Lowered(row[1])] = std::stoi(row[7]);
      if (row[8] != "-") aliases_[Lowered(row[1])] = Lowered(row[8]);
    }
  }

  LONG For(const std::string& name) const {
    std::string key = Lowered(name);
    for (int hops = 0; hops < 8; ++hops) {
      if (auto it = measured_.find(key); it != measured_.end()) return it->second;
      if (auto it = listed_.find(key); it != listed_.end()) return it->second;
      auto alias = aliases_.find(key);
      if (alias == aliases_.end()) return -1;
      key = alias->second;
    }
    return -1;
  }

 private:
  std::map<std::string, LONG> measured_;
  std::map<std::string, LONG> listed_;
  std::map<std::string, std::string> aliases_;
};

TEST(CharsetTable, EveryMeasuredNameResolvesToItsInternetEncoding) {
  std::vector<Row> rows = ReadTsv("mlang-charsets.tsv");
  ASSERT_GT(rows.size(), 280u);
  ExpectedAnswers expected(rows);
  for (const Row& row : rows) {
    ASSERT_GE(row.size(), 9u);
    const std::string& name = row[1];
    // A name the lookup resolved when measured keeps exactly that answer.
    if (row[2] != kUnknownName) {
      ASSERT_EQ(expected.For(name), std::stoi(row[4])) << name;
    }
    EXPECT_EQ(CharsetToCodePageNumber(std::string_view(name)), expected.For(name)) << row[0] << " " << name;
    EXPECT_EQ(CharsetToCodePageNumber(WStringView(W(name))), expected.For(name)) << row[0] << " " << name;
  }
}

TEST(CharsetTable, NamesOfTheMimeDatabaseResolveToTheirInternetEncoding) {
  EXPECT_EQ(CharsetToCodePageNumber(std::string_view("euc-kr")), 949);
  EXPECT_EQ(CharsetToCodePageNumber(std::string_view("EUC-KR")), 949);
  EXPECT_EQ(CharsetToCodePageNumber(std::string_view("windows-874")), 874);
  EXPECT_EQ(CharsetToCodePageNumber(std::string_view("ibm866")), 866);
  EXPECT_EQ(CharsetToCodePageNumber(std::string_view("koi8-ru")), 21866);
  EXPECT_EQ(CharsetToCodePageNumber(std::string_view("iso-8859-8-i")), 38598);
  EXPECT_EQ(CharsetToCodePageNumber(std::string_view("iso-2022-kr")), 50225);
  EXPECT_EQ(CharsetToCodePageNumber(std::string_view("ASMO-708")), 708);
  EXPECT_EQ(CharsetToCodePageNumber(std::string_view("DOS-720")), 720);
  EXPECT_EQ(CharsetToCodePageNumber(std::string_view("DOS-874")), 874);
  EXPECT_EQ(CharsetToCodePageNumber(WStringView(W("Euc-Kr"))), 949);
}

TEST(CharsetTable, AliasesOfTheMimeDatabaseResolveAsTheNameTheyStandFor) {
  for (const char* alias : {"csEUCKR", "korean", "iso-ir-149", "KSC5601"}) {
    EXPECT_EQ(CharsetToCodePageNumber(std::string_view(alias)), 949) << alias;  // as ks_c_5601-1987
  }
  EXPECT_EQ(CharsetToCodePageNumber(std::string_view("cp1256")), 1256);      // as windows-1256
  EXPECT_EQ(CharsetToCodePageNumber(std::string_view("latin1")), 28591);     // as iso-8859-1
  EXPECT_EQ(CharsetToCodePageNumber(std::string_view("l1")), 1252);          // as windows-1252
  EXPECT_EQ(CharsetToCodePageNumber(std::string_view("iso-8859-11")), 874);  // as windows-874, listed itself
  EXPECT_EQ(CharsetToCodePageNumber(std::string_view("csISO2022KR")),
            50225);                                                     // as iso-2022-kr, listed itself
  EXPECT_EQ(CharsetToCodePageNumber(std::string_view("x-sjis")), 932);  // as shift_jis
  EXPECT_EQ(CharsetToCodePageNumber(std::string_view("ISO-8859-8 Visual")), 28598);
  EXPECT_EQ(CharsetToCodePageNumber(std::string_view("Extended_UNIX_Code_Packed_Format_for_Japanese")),
            51932);
}

TEST(CharsetTable, NamesThatResolvedBeforeKeepTheirAnswers) {
  // The MIME database lists other pages for these; the lookup's own answer wins.
  EXPECT_EQ(CharsetToCodePageNumber(std::string_view("iso-8859-1")), 28591);
  EXPECT_EQ(CharsetToCodePageNumber(std::string_view("iso-8859-9")), 28599);
  EXPECT_EQ(CharsetToCodePageNumber(std::string_view("cp866")), 866);
  EXPECT_EQ(CharsetToCodePageNumber(std::string_view("Windows-1254")), 1254);
  EXPECT_EQ(CharsetToCodePageNumber(std::string_view("us-ascii")), 20127);
}

TEST(CharsetTable, EveryRegistryEntryIsSortedAndAbsentFromTheLookupsOwnNames) {
  for (const CharsetName* it = RegistryCharsetNamesBegin(); it != RegistryCharsetNamesEnd(); ++it) {
    if (it != RegistryCharsetNamesBegin()) {
      EXPECT_LT(std::string((it - 1)->name), std::string(it->name));
    }
    EXPECT_EQ(Lowered(std::string(it->name)), std::string(it->name));
    for (const CharsetName* own = CharsetNamesBegin(); own != CharsetNamesEnd(); ++own) {
      EXPECT_NE(own->name, it->name);
    }
  }
  EXPECT_EQ(RegistryCharsetNamesEnd() - RegistryCharsetNamesBegin(), 119);
}

TEST(CharsetTable, SeventyTwoDistinctNamesResolve) {
  std::set<std::string> resolved;
  for (const Row& row : ReadTsv("mlang-charsets.tsv")) {
    std::string lower = row[1];
    for (char& c : lower) c = ToLowerAscii(c);
    if (row[2] != kUnknownName) resolved.insert(lower);
  }
  EXPECT_EQ(resolved.size(), 72u);
  EXPECT_EQ(static_cast<size_t>(CharsetNamesEnd() - CharsetNamesBegin()), 72u);
  for (const CharsetName* it = CharsetNamesBegin(); it != CharsetNamesEnd(); ++it) {
    EXPECT_EQ(resolved.count(std::string(it->name)), 1u) << it->name;
  }
}

TEST(CharsetTable, NamesMatchWithoutRegardToCase) {
  EXPECT_EQ(CharsetToCodePageNumber(std::string_view("UTF-8")), 65001);
  EXPECT_EQ(CharsetToCodePageNumber(std::string_view("Iso-8859-15")), 28605);
  EXPECT_EQ(CharsetToCodePageNumber(std::string_view("KS_C_5601-1987")), 949);
  EXPECT_EQ(CharsetToCodePageNumber(std::string_view("X-MAC-ICELANDIC")), 10079);
  EXPECT_EQ(CharsetToCodePageNumber(std::string_view("_AUTODETECT_CHS")), 50936);
}

TEST(CharsetTable, AliasesTheDatabaseDoesNotKnowAnswerMinusOne) {
  for (const char* alias :
       {"utf8", "cp1252", "sjis", "utf-16", "tis-620", "x-unknown", "", "utf-8 ", " utf-8", "utf-8x",
        "euc-kr ", "latin", "iso-8859-8-", "extended_unix_code_packed_format_for_japanese-"}) {
    EXPECT_EQ(CharsetToCodePageNumber(std::string_view(alias)), -1) << alias;
  }
}

TEST(CharsetTable, InternetEncodingIsAnsweredNotThePlainCodePage) {
  EXPECT_EQ(CharsetToCodePageNumber(std::string_view("iso-8859-1")), 28591);  // plain page 1252
  EXPECT_EQ(CharsetToCodePageNumber(std::string_view("us-ascii")), 20127);
  EXPECT_EQ(CharsetToCodePageNumber(std::string_view("iso-2022-jp")), 50220);  // plain page 932
  EXPECT_EQ(CharsetToCodePageNumber(std::string_view("csISO2022JP")), 50221);
  EXPECT_EQ(CharsetToCodePageNumber(std::string_view("euc-jp")), 51932);
}

TEST(CharsetTable, NameIsReadUpToItsFirstNul) {
  EXPECT_EQ(CharsetToCodePageNumber(std::string_view("utf-8\0junk", 10)), 65001);
  EXPECT_EQ(CharsetToCodePageNumber(WStringView(OLESTR("big5\0x"), 6)), 950);
  EXPECT_EQ(CharsetToCodePageNumber(std::string_view("\0utf-8", 6)), -1);
}

TEST(CharsetTable, WideNamesOutsideAsciiAreUnknown) {
  EXPECT_EQ(CharsetToCodePageNumber(WStringView(W("utf\xE2\x80\x91"
                                                  "8"))),
            -1);
  WString name = W("utf-8");
  name[0] = static_cast<OLECHAR>(0x0175);  // 'u' plus 0x100 must not wrap to 'u'
  EXPECT_EQ(CharsetToCodePageNumber(WStringView(name)), -1);
}

TEST(CharsetTable, VeryLongNamesAreUnknown) {
  EXPECT_EQ(CharsetToCodePageNumber(std::string_view(std::string(100000, 'a'))), -1);
  EXPECT_EQ(CharsetToCodePageNumber(WStringView(WString(100000, u'a'))), -1);
}

TEST(CharsetTable, EveryEnumeratedPageAnswersItsHeaderName) {
  size_t pages = 0;
  for (const Row& row : ReadTsv("mlang-codepages.tsv")) {
    if (row[0] != "enum-latest+enum-0") continue;
    ++pages;
    EXPECT_EQ(CodePageToHeaderCharset(std::stoi(row[1])), row[3]) << row[1];
  }
  EXPECT_EQ(pages, 72u);
  EXPECT_EQ(static_cast<size_t>(CodePageNamesEnd() - CodePageNamesBegin()), 72u);
}

TEST(CharsetTable, EveryRequestedPageAnswersAsMeasured) {
  for (const Row& row : ReadTsv("mlang-codepages.tsv")) {
    if (row[0] != "requested") continue;
    std::string expected = row[2] == "0x00000001" ? "" : row[3];
    EXPECT_EQ(CodePageToHeaderCharset(std::stoi(row[1])), expected) << row[1];
  }
}

TEST(CharsetTable, HeaderNamesOfTheCommonPages) {
  EXPECT_EQ(CodePageToHeaderCharset(1252), "windows-1252");
  EXPECT_EQ(CodePageToHeaderCharset(932), "iso-2022-jp");
  EXPECT_EQ(CodePageToHeaderCharset(949), "ks_c_5601-1987");
  EXPECT_EQ(CodePageToHeaderCharset(20127), "us-ascii");
  EXPECT_EQ(CodePageToHeaderCharset(65001), "utf-8");
  EXPECT_EQ(CodePageToHeaderCharset(54936), "GB18030");
}

TEST(CharsetTable, UnknownPagesAnswerTheEmptyName) {
  for (LONG page : {0, 1, 3, 1201, 51949, 99999, -1, -2, 0x7FFFFFFF}) {
    EXPECT_EQ(CodePageToHeaderCharset(page), "") << page;
  }
}

TEST(CharsetTable, StatefulPagesAreTheShiftingOnes) {
  for (LONG page : {50220, 50221, 50222, 52936, 65000}) EXPECT_TRUE(IsStatefulCodePage(page)) << page;
  for (LONG page : {932, 936, 1252, 20127, 28591, 51932, 54936, 65001})
    EXPECT_FALSE(IsStatefulCodePage(page)) << page;
}

}  // namespace
}  // namespace pv::test
