#include "src/platform/byte_search.h"

#include <gtest/gtest.h>

#include <string>

namespace pv {
namespace {

TEST(FindBytes, FindsTheFirstOccurrenceFromAPosition) {
  EXPECT_EQ(FindBytes("abcabc", "bc"), 1u);
  EXPECT_EQ(FindBytes("abcabc", "bc", 2), 4u);
  EXPECT_EQ(FindBytes("abcabc", "cb"), std::string_view::npos);
  EXPECT_EQ(FindBytes("abc", "abcd"), std::string_view::npos);
  EXPECT_EQ(FindBytes("abc", "", 1), 1u);
  EXPECT_EQ(FindBytes("abc", "a", 4), std::string_view::npos);
}

TEST(FindBytes, HandlesBytesAboveAsciiAndZeros) {
  std::string hay("x\0\xFFy\xFF", 5);
  EXPECT_EQ(FindBytes(hay, std::string_view("\0\xFF", 2)), 1u);
  EXPECT_EQ(FindBytes(hay, "\xFF"), 2u);
}

TEST(BytePattern, ListsOverlappingOccurrencesInOrder) {
  BytePattern pattern("aa");
  BytePattern::Occurrences all(pattern, "aaaa");
  EXPECT_EQ(all.Next(), 0u);
  EXPECT_EQ(all.Next(), 1u);
  EXPECT_EQ(all.Next(), 2u);
  EXPECT_EQ(all.Next(), std::string_view::npos);
}

TEST(BytePattern, FindsPeriodicNeedlesInLinearTime) {
  std::string hay(8 << 20, '-');
  std::string needle(4096, '-');
  needle += 'x';
  EXPECT_EQ(FindBytes(hay, needle), std::string_view::npos);
  hay += needle;
  EXPECT_EQ(FindBytes(hay, needle), 8u << 20);
}

}  // namespace
}  // namespace pv
