// Case-insensitive search with the platform's answers
// (tests/fixtures/platform/strstri.tsv) and in linear time.
#include "src/platform/strstri.h"

#include <chrono>
#include <fstream>

#include "tests/test_util.h"

namespace pv::test {
namespace {

// The text of a C string literal in the fixture: "\xC9" escapes only.
std::string Unescape(const std::string& text) {
  std::string out;
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '\\' && i + 3 < text.size() && text[i + 1] == 'x') {
      out.push_back(static_cast<char>(std::stoi(text.substr(i + 2, 2), nullptr, 16)));
      i += 3;
    } else {
      out.push_back(text[i]);
    }
  }
  return out;
}

struct SearchRow {
  std::string haystack;
  std::string needle;
  std::string result;
};

// The StrStrIA("haystack","needle") rows.
std::vector<SearchRow> SearchRows() {
  std::ifstream file(std::string(PARCELVANE_TEST_FIXTURES) + "/platform/strstri.tsv");
  std::vector<SearchRow> rows;
  std::string line;
  const std::string call = "StrStrIA(\"";
  while (std::getline(file, line)) {
    if (line.compare(0, call.size(), call) != 0) continue;
    size_t split = line.find("\",\"");
    size_t close = line.find("\")\t");
    if (split == std::string::npos || close == std::string::npos) continue;
    rows.push_back({Unescape(line.substr(call.size(), split - call.size())),
                    Unescape(line.substr(split + 3, close - split - 3)), line.substr(close + 3)});
  }
  return rows;
}

TEST(FindIgnoreCase, EveryMeasuredCallGivesThePlatformsAnswer) {
  std::vector<SearchRow> rows = SearchRows();
  ASSERT_EQ(rows.size(), 7u);
  for (const SearchRow& row : rows) {
    size_t found = FindIgnoreCase(row.haystack, row.needle);
    if (row.result == "NULL") {
      EXPECT_EQ(found, std::string_view::npos) << row.haystack << " / " << row.needle;
    } else {
      EXPECT_EQ("offset " + std::to_string(found), row.result) << row.haystack << " / " << row.needle;
    }
  }
}

TEST(FindIgnoreCase, EmptyNeedleFindsNothing) {
  EXPECT_EQ(FindIgnoreCase("abc", ""), std::string_view::npos);
  EXPECT_EQ(FindIgnoreCase("", ""), std::string_view::npos);
}

TEST(FindIgnoreCase, NeedleLongerThanTheTextFindsNothing) {
  EXPECT_EQ(FindIgnoreCase("", "a"), std::string_view::npos);
  EXPECT_EQ(FindIgnoreCase("abc", "ABCD"), std::string_view::npos);
}

TEST(FindIgnoreCase, FindsTheFirstOccurrence) {
  EXPECT_EQ(FindIgnoreCase("xISO-8859-1 iso-8859-2", "ISO-8859"), 1u);
  EXPECT_EQ(FindIgnoreCase("abcABC", "c"), 2u);
}

TEST(FindIgnoreCase, LettersOfTheAnsiPageMatchTheirOtherCase) {
  if (std::getenv("PARCELVANE_ACP") != nullptr) GTEST_SKIP() << "PARCELVANE_ACP is set";
  EXPECT_EQ(FindIgnoreCase("\xC0\xDE", "\xE0\xFE"), 0u);                   // À Þ / à þ
  EXPECT_EQ(FindIgnoreCase("x\x8A\x8C\x8E\x9F", "\x9A\x9C\x9E\xFF"), 1u);  // Š Œ Ž Ÿ / š œ ž ÿ
  EXPECT_EQ(FindIgnoreCase("\xD7", "\xF7"), std::string_view::npos);       // × and ÷ are no pair
  EXPECT_EQ(FindIgnoreCase("\xDF", "SS"), std::string_view::npos);         // ß stays one letter
}

TEST(FindIgnoreCase, OnlyLettersFold) {
  EXPECT_EQ(FindIgnoreCase("[\\]", "{|}"), std::string_view::npos);
  EXPECT_EQ(FindIgnoreCase("@", "`"), std::string_view::npos);
}

TEST(FindIgnoreCase, PartialMatchesDoNotHideALaterOne) {
  EXPECT_EQ(FindIgnoreCase("aaaaaab", "AAAB"), 3u);
  EXPECT_EQ(FindIgnoreCase("abababc", "ABABC"), 2u);
  EXPECT_EQ(FindIgnoreCase("iso-iso-8859", "ISO-8859"), 4u);
}

TEST(FindIgnoreCase, LongNeedlesWork) {
  std::string needle(200, 'x');
  needle += "Y";
  std::string text = std::string(100, 'X') + "y" + std::string(500, 'X') + "y";
  EXPECT_EQ(FindIgnoreCase(text, needle), 401u);
}

TEST(FindIgnoreCase, RepetitiveTextIsSearchedInLinearTime) {
  std::string text(4u << 20, 'a');
  std::string needle(5000, 'A');
  needle += "b";
  auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(FindIgnoreCase(text, needle), std::string_view::npos);
  text += "B";
  EXPECT_EQ(FindIgnoreCase(text, needle), text.size() - needle.size());
  double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  EXPECT_LT(seconds, 5.0);  // a quadratic search would take hours
}

TEST(FindIgnoreCase, NulBytesAreOrdinaryBytes) {
  EXPECT_EQ(FindIgnoreCase(std::string_view("a\0B", 3), std::string_view("\0b", 2)), 1u);
}

}  // namespace
}  // namespace pv::test
