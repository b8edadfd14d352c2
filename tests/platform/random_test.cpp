// The private generator gives the runtime's measured sequence and leaves
// the host's own rand() alone.
#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <thread>

#include "src/platform/random.h"
#include "tests/test_util.h"

namespace pv::test {
namespace {

std::string FixturePath(const char* name) {
  return std::string(PARCELVANE_TEST_FIXTURES) + "/platform/" + name;
}

// The measured rows: what each runtime's rand() gave first, and RAND_MAX.
struct RandFacts {
  std::vector<std::vector<int>> sequences;
  int randMax = -1;
};

RandFacts ReadFacts() {
  std::ifstream in(FixturePath("rand.tsv"));
  EXPECT_TRUE(in.good());
  RandFacts facts;
  std::string line;
  std::getline(in, line);  // the column names
  while (std::getline(in, line)) {
    std::string values = line.substr(line.rfind('\t') + 1);
    std::stringstream numbers(values);
    std::vector<int> sequence;
    int n;
    while (numbers >> n) sequence.push_back(n);
    if (line.rfind("RAND_MAX", 0) == 0) {
      facts.randMax = sequence.at(0);
    } else {
      facts.sequences.push_back(sequence);
    }
  }
  return facts;
}

TEST(CrtRandom, ReproducesEveryMeasuredSequence) {
  RandFacts facts = ReadFacts();
  ASSERT_EQ(facts.sequences.size(), 6u);
  for (const std::vector<int>& sequence : facts.sequences) {
    ASSERT_EQ(sequence.size(), 6u);
    CrtRandom generator;
    for (int expected : sequence) EXPECT_EQ(generator.Next(), expected);
  }
}

TEST(CrtRandom, LargestValueIsTheMeasuredRandMax) { EXPECT_EQ(kRandomMax, ReadFacts().randMax); }

TEST(CrtRandom, ValuesStayWithinRangeOverAFullPeriodOfTheOutput) {
  CrtRandom generator;
  int low = kRandomMax;
  int high = 0;
  for (int i = 0; i < 1 << 20; ++i) {
    int v = generator.Next();
    low = std::min(low, v);
    high = std::max(high, v);
  }
  EXPECT_EQ(low, 0);
  EXPECT_EQ(high, kRandomMax);
}

TEST(CrtRandom, StateWrapsAroundThirtyTwoBits) {
  // The 100th value depends on products far beyond 32 bits.
  CrtRandom generator;
  int value = 0;
  for (int i = 0; i < 100; ++i) value = generator.Next();
  uint64_t state = 1;
  for (int i = 0; i < 100; ++i) state = (state * 214013u + 2531011u) & 0xFFFFFFFFu;
  EXPECT_EQ(value, static_cast<int>((state >> 16) & 0x7FFF));
}

// The first draws of the process's generator, against the measured ones.
int DrawAndCountMismatches() {
  std::vector<int> expected = ReadFacts().sequences.at(0);
  int mismatches = 0;
  for (int e : expected) mismatches += NextRandom() != e;
  return mismatches;
}

TEST(NextRandom, FreshProcessStartsWithTheUnseededSequence) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  // A new process, so that no earlier draw of this program has moved it.
  EXPECT_EXIT(std::exit(DrawAndCountMismatches()), ::testing::ExitedWithCode(0), "");
}

TEST(NextRandom, LeavesTheHostGeneratorAlone) {
  std::srand(7);
  int first = std::rand();
  int second = std::rand();
  std::srand(7);
  EXPECT_EQ(std::rand(), first);
  for (int i = 0; i < 10; ++i) NextRandom();
  EXPECT_EQ(std::rand(), second);
}

// Draws from several threads at once, in a fresh process: together they
// must be exactly the first values of the sequence, none lost or repeated.
int DrawConcurrentlyAndCountMismatches() {
  constexpr int kThreads = 4;
  constexpr int kPerThread = 5000;
  std::vector<std::vector<int>> drawn(kThreads);
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&drawn, t] {
      for (int i = 0; i < kPerThread; ++i) drawn[t].push_back(NextRandom());
    });
  }
  for (std::thread& thread : threads) thread.join();
  std::vector<int> all;
  for (const auto& d : drawn) all.insert(all.end(), d.begin(), d.end());
  CrtRandom replay;
  std::vector<int> expected;
  for (int i = 0; i < kThreads * kPerThread; ++i) expected.push_back(replay.Next());
  std::sort(all.begin(), all.end());
  std::sort(expected.begin(), expected.end());
  return all == expected ? 0 : 1;
}

TEST(NextRandom, ConcurrentDrawsShareOneSequenceWithoutLosingAValue) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(std::exit(DrawConcurrentlyAndCountMismatches()), ::testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace pv::test
