// Locale-aware comparison reproduces the platform's measured order of
// parameter-like names.
#include <algorithm>
#include <fstream>
#include <random>
#include <sstream>
#include <thread>

#include "src/platform/collation.h"
#include "tests/test_util.h"

namespace pv::test {
namespace {

std::string FixturePath(const char* name) {
  return std::string(PARCELVANE_TEST_FIXTURES) + "/platform/" + name;
}

std::string Unquote(const std::string& field) {
  EXPECT_GE(field.size(), 2u);
  return field.size() < 2 ? field : field.substr(1, field.size() - 2);
}

struct PairRow {
  std::string a, b;
  int result;  // with no flags: -1, 0 or 1
};

struct CollationFacts {
  std::vector<PairRow> pairs;
  std::vector<std::string> sorted;  // with no flags
};

CollationFacts ReadFacts() {
  std::ifstream in(FixturePath("varbstrcmp.tsv"));
  EXPECT_TRUE(in.good());
  CollationFacts facts;
  const std::string sortedKey = "# sorted (VarBstrCmp flags=0, stable): ";
  std::string line;
  while (std::getline(in, line)) {
    if (line.rfind(sortedKey, 0) == 0) {
      std::stringstream names(line.substr(sortedKey.size()));
      std::string name;
      while (names >> name) facts.sorted.push_back(name);
      continue;
    }
    if (line.empty() || line[0] != '"') continue;  // comments and column names
    std::stringstream fields(line);
    std::string a, b, result;
    std::getline(fields, a, '\t');
    std::getline(fields, b, '\t');
    std::getline(fields, result, '\t');
    facts.pairs.push_back({Unquote(a), Unquote(b), std::stoi(result)});
  }
  return facts;
}

int Compare(std::string_view a, std::string_view b) { return CompareLocale(W(a), W(b)); }

int Sign(int r) { return r < 0 ? -1 : (r > 0 ? 1 : 0); }

TEST(Collation, ReproducesEveryMeasuredPair) {
  CollationFacts facts = ReadFacts();
  ASSERT_EQ(facts.pairs.size(), 12u);
  for (const PairRow& row : facts.pairs) {
    EXPECT_EQ(Sign(Compare(row.a, row.b)), row.result) << '"' << row.a << "\" vs \"" << row.b << '"';
  }
}

TEST(Collation, SortsTheMeasuredListIntoTheMeasuredOrder) {
  CollationFacts facts = ReadFacts();
  ASSERT_EQ(facts.sorted.size(), 23u);
  std::vector<std::string> names = facts.sorted;
  std::mt19937 shuffle(12345);
  for (int round = 0; round < 20; ++round) {
    std::shuffle(names.begin(), names.end(), shuffle);
    std::sort(names.begin(), names.end(),
              [](const std::string& a, const std::string& b) { return Compare(a, b) < 0; });
    EXPECT_EQ(names, facts.sorted);
  }
}

TEST(Collation, MeasuredOrderIsStrictBetweenEveryTwoNames) {
  std::vector<std::string> sorted = ReadFacts().sorted;
  for (size_t i = 0; i < sorted.size(); ++i) {
    for (size_t j = 0; j < sorted.size(); ++j) {
      EXPECT_EQ(Sign(Compare(sorted[i], sorted[j])), i < j ? -1 : (i > j ? 1 : 0))
          << sorted[i] << " vs " << sorted[j];
    }
  }
}

TEST(Collation, EqualStringsCompareEqual) {
  EXPECT_EQ(Compare("charset", "charset"), 0);
  EXPECT_EQ(Compare("", ""), 0);
  EXPECT_EQ(Compare("a-b", "a-b"), 0);
}

TEST(Collation, EmptySortsFirst) {
  EXPECT_LT(Compare("", "-"), 0);
  EXPECT_LT(Compare("", "_"), 0);
  EXPECT_GT(Compare("a", ""), 0);
}

TEST(Collation, CaseDecidesOnlyWhenNothingElseDiffers) {
  EXPECT_LT(Compare("name", "Name"), 0);
  EXPECT_LT(Compare("Name", "NAME"), 0);
  EXPECT_LT(Compare("Name", "namf"), 0);
  EXPECT_LT(Compare("A", "a.b"), 0);
}

TEST(Collation, HyphenAndApostropheOnlyBreakTies) {
  EXPECT_LT(Compare("coop", "co-op"), 0);
  EXPECT_LT(Compare("co-op", "coopa"), 0);
  EXPECT_LT(Compare("co-op", "Coop"), 0);  // case outranks the hyphen
  EXPECT_LT(Compare("ab", "-ab"), 0);
  EXPECT_LT(Compare("-ab", "a-b"), 0);   // an earlier hyphen first
  EXPECT_LT(Compare("a-b", "a--b"), 0);  // fewer first
  EXPECT_LT(Compare("a'b", "a-b"), 0);   // apostrophe before hyphen
}

TEST(Collation, OtherPunctuationSortsBeforeDigitsInTheMeasuredWay) {
  EXPECT_LT(Compare("a.b", "a_b"), 0);
  EXPECT_LT(Compare("a_b", "a0"), 0);
  EXPECT_LT(Compare("_a", "1"), 0);
  EXPECT_LT(Compare("9", "a"), 0);
  EXPECT_LT(Compare("name", "name*"), 0);
  EXPECT_LT(Compare("name*", "name*0"), 0);
  EXPECT_LT(Compare("name*0", "name*0*"), 0);
  EXPECT_LT(Compare("name*1", "name0"), 0);
}

TEST(Collation, PunctuationFollowsThePlatformsSymbolOrder) {
  const std::string order = " !\"#$%&()*,./:;?@[\\]^_`{|}~+<=>";
  for (size_t i = 0; i + 1 < order.size(); ++i) {
    std::string a = std::string("x") + order[i] + "y";
    std::string b = std::string("x") + order[i + 1] + "y";
    EXPECT_LT(Compare(a, b), 0) << a << " vs " << b;
  }
  EXPECT_LT(Compare("x>y", "x0y"), 0);
}

TEST(Collation, AccentsDecideAfterLettersAndBeforeCase) {
  EXPECT_LT(Compare("resume", "résumé"), 0);
  EXPECT_LT(Compare("résumé", "resumf"), 0);
  EXPECT_GT(Compare("résumé", "Resume"), 0);
  EXPECT_LT(Compare("Resume", "résumé"), 0);
}

TEST(Collation, DifferentStringsAreNeverEqual) {
  WString withControl = W("ab");
  withControl.insert(withControl.begin() + 1, OLECHAR(0x0001));
  EXPECT_NE(CompareLocale(W("ab"), withControl), 0);
  EXPECT_EQ(Sign(CompareLocale(W("ab"), withControl)), -Sign(CompareLocale(withControl, W("ab"))));
  WString withNul = W("ab");
  withNul.push_back(0);
  EXPECT_LT(CompareLocale(W("ab"), withNul), 0);
  EXPECT_NE(Compare("x-mac", "X-MAC"), 0);
}

TEST(Collation, OrderIsConsistentAcrossManyNames) {
  std::vector<std::string> names = {"a",     "A",      "a-",    "-a",    "a'",     "'a",    "a-a",   "a'a",
                                    "aa",    "Aa",     "aA",    "a.a",   "a_a",    "a a",   "a0",    "a*",
                                    "name*", "name*0", "NAME*", "name-", "Name*1", "x-mac", "x_mac", "xmac",
                                    "",      "-",      "'",     "--",    "é",      "E",     "e",     "ê"};
  for (const auto& a : names) {
    for (const auto& b : names) {
      int ab = Sign(Compare(a, b));
      EXPECT_EQ(ab, -Sign(Compare(b, a))) << a << " vs " << b;
      EXPECT_EQ(ab == 0, a == b) << a << " vs " << b;
      for (const auto& c : names) {
        if (ab < 0 && Compare(b, c) < 0) {
          EXPECT_LT(Compare(a, c), 0) << a << " < " << b << " < " << c;
        }
      }
    }
  }
}

// ASCII names take a path of their own; a shared non-ASCII first letter
// sends the same comparison through the collator, which must agree.
TEST(Collation, AsciiNamesCompareAsTheCollatorDoes) {
  const std::string alphabet = "aAbBzZ09-'._*!~+>  \t\r\x01\x7f";
  std::mt19937 random(2024);
  auto randomName = [&] {
    std::string name(random() % 6, ' ');
    for (char& c : name) c = alphabet[random() % alphabet.size()];
    return name;
  };
  int disagreements = 0;
  for (int i = 0; i < 200000; ++i) {
    std::string a = randomName();
    std::string b = randomName();
    int ascii = Sign(Compare(a, b));
    int collated = Sign(Compare("é" + a, "é" + b));
    if (ascii != collated && ++disagreements <= 10) {
      ADD_FAILURE() << "\"" << a << "\" vs \"" << b << "\": " << ascii << " but " << collated;
    }
  }
  EXPECT_EQ(disagreements, 0);
}

TEST(Collation, EveryAsciiCharacterOrdersAsTheCollatorDoes) {
  for (int x = 0; x < 0x80; ++x) {
    for (int y = 0; y < 0x80; ++y) {
      std::string a = std::string("a") + static_cast<char>(x) + "b";
      std::string b = std::string("a") + static_cast<char>(y) + "b";
      EXPECT_EQ(Sign(Compare(a, b)), Sign(Compare("é" + a, "é" + b))) << x << " vs " << y;
    }
  }
}

TEST(Collation, ThreadsCompareConcurrentlyWithTheSameAnswers) {
  std::vector<std::string> sorted = ReadFacts().sorted;
  ASSERT_FALSE(sorted.empty());
  std::vector<int> failures(4, 0);
  std::vector<std::thread> threads;
  for (size_t t = 0; t < failures.size(); ++t) {
    threads.emplace_back([&sorted, &failures, t] {
      for (int round = 0; round < 50; ++round) {
        for (size_t i = 0; i + 1 < sorted.size(); ++i) {
          if (Compare(sorted[i], sorted[i + 1]) >= 0) ++failures[t];
        }
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  for (int f : failures) EXPECT_EQ(f, 0);
}

}  // namespace
}  // namespace pv::test
