#include "tests/mime/multipart_reference.h"

#include <gtest/gtest.h>

#include <string>

namespace pv {
namespace {

std::vector<std::string> Children(std::string_view body, std::string_view boundary, bool* found = nullptr) {
  std::vector<std::string> out;
  for (ChildSpan c : SplitMultipartBody(body, boundary, found))
    out.emplace_back(body.substr(c.offset, c.length));
  return out;
}

using Strings = std::vector<std::string>;

TEST(SplitMultipartBody, ChildrenKeepTheLineBreaksAroundThem) {
  EXPECT_EQ(Children("--b\r\nA: 1\r\n\r\nx\r\n--b\r\nA: 2\r\n\r\ny\r\n--b--\r\n", "b"),
            Strings({"\r\nA: 1\r\n\r\nx\r\n", "\r\nA: 2\r\n\r\ny"}));
}

TEST(SplitMultipartBody, ChildWithoutHeadersStartsWithTheEmptyLine) {
  EXPECT_EQ(Children("--b\r\n\r\nhello\r\n--b--", "b"), Strings({"\r\n\r\nhello"}));
}

TEST(SplitMultipartBody, PreambleAndEpilogueAreDropped) {
  EXPECT_EQ(Children("preamble--b\r\nx\r\n--b--\r\nepilogue", "b"), Strings({"\r\nx"}));
}

TEST(SplitMultipartBody, BlanksAfterTheBoundaryMakeNoDelimiter) {
  EXPECT_EQ(Children("--b\r\nx\r\n--b  \r\ny\r\n--b--", "b"), Strings({"\r\nx\r\n--b  \r\ny"}));
}

TEST(SplitMultipartBody, ClosingDelimiterWithoutLineBreakBeforeItLosesThePart) {
  bool found = false;
  EXPECT_EQ(Children("--b\r\nA: 1\r\n\r\nx--b--", "b", &found), Strings());
  EXPECT_TRUE(found);
}

TEST(SplitMultipartBody, WithoutClosingDelimiterTheLastPartIsLost) {
  EXPECT_EQ(Children("--b\r\nx\r\n--b\r\ny\r\n", "b"), Strings({"\r\nx\r\n"}));
}

TEST(SplitMultipartBody, DelimiterTooCloseToTheEndIsTheLastOne) {
  EXPECT_EQ(Children("--b\r\nx\r\n--b-", "b"), Strings({"\r\nx\r\n"}));
  EXPECT_EQ(Children("--b\r\nx\r\n--b", "b"), Strings({"\r\nx\r\n"}));
}

TEST(SplitMultipartBody, DelimitersNeedNotStartALine) {
  EXPECT_EQ(Children("--b\r\nx--b\r\ny\r\n--b--", "b"), Strings({"\r\nx", "\r\ny"}));
}

TEST(SplitMultipartBody, BoundaryNeverFoundMeansNoChildren) {
  bool found = true;
  EXPECT_EQ(Children("no delimiters here", "b", &found), Strings());
  EXPECT_FALSE(found);
  EXPECT_EQ(Children("--b", "", &found), Strings());
  EXPECT_FALSE(found);
}

TEST(SplitMultipartBody, EmptyChildrenAreLeftOut) {
  // "--b" right after the first delimiter is an ordinary one: the child
  // between them is empty.
  EXPECT_EQ(Children("--b--b\r\nx\r\n--b--", "b"), Strings({"\r\nx"}));
  EXPECT_EQ(Children("--b\r\n--b--", "b"), Strings());
}

TEST(SplitMultipartBody, ChildEndingExactlyAtTheEndOfTheBody) {
  EXPECT_EQ(Children("--b\r\nx\r\n--b--", "b"), Strings({"\r\nx"}));
}

TEST(SplitMultipartBody, MatchingIsCaseSensitive) {
  EXPECT_EQ(Children("--B\r\nx\r\n--b\r\ny\r\n--b--", "b"), Strings({"\r\ny"}));
}

TEST(SplitMultipartBody, BoundaryEndingInALineBreakCannotGiveANegativeChild) {
  EXPECT_EQ(Children("--x\r\n--x\r\n--", "x\r\n"), Strings());
}

TEST(SplitMultipartBody, PeriodicBoundaryInABodyOfDashesStaysLinear) {
  std::string body(4 << 20, '-');
  // Never found.
  std::string boundary(2000, '-');
  boundary += "x";
  EXPECT_TRUE(SplitMultipartBody(body, boundary).empty());
  // Found everywhere: no occurrence is followed by a line break, so only the
  // one too close to the end ends the single child.
  std::string dashes(2000, '-');
  std::vector<ChildSpan> children = SplitMultipartBody(body, dashes);
  ASSERT_EQ(children.size(), 1u);
  EXPECT_EQ(children[0].offset, 2002u);
  EXPECT_EQ(children[0].length, body.size() - 2 * 2002 - 1);
}

}  // namespace
}  // namespace pv
