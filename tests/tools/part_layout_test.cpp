// Finding the multiparts of a parsed message in its bytes.
#ifdef PARCELVANE_TOOL_PATH

#include <gtest/gtest.h>

#include "tools/part_layout.h"

namespace pvtool {
namespace {

const std::string kHeader = "Content-Type: multipart/mixed; boundary=a\r\n\r\n";
const std::string kInner = "Content-Type: multipart/alternative; boundary=b\r\n\r\n";

TEST(LayOutParts, FindsEveryMultipartOfAClosedTree) {
  const std::string inner_body = "--b\r\n\r\none\r\n--b\r\n\r\ntwo\r\n--b--\r\n";
  const std::string root_body =
      "preamble\r\n--a\r\n" + kInner + inner_body + "\r\n--a\r\n\r\nthree\r\n--a--\r\nepilogue\r\n";
  const std::vector<LayoutPart> parts = {{2, "a"}, {2, "b"}, {0, ""}, {0, ""}, {0, ""}};
  const std::vector<PartRegion> regions = LayOutParts(kHeader + root_body, parts);
  ASSERT_EQ(regions.size(), 5u);
  for (const PartRegion& region : regions) {
    EXPECT_TRUE(region.known);
    EXPECT_FALSE(region.unclosed);
  }
  EXPECT_EQ(regions[0].body_size, root_body.size());
  // A part keeps the line break before an ordinary delimiter, not the one
  // before the closing delimiter.
  EXPECT_EQ(regions[1].body_size, inner_body.size() + 2);
  EXPECT_EQ(regions[2].body_size, 5u);  // "one\r\n"
  EXPECT_EQ(regions[3].body_size, 3u);  // "two"
  EXPECT_EQ(regions[4].body_size, 5u);  // "three"
}

TEST(LayOutParts, AMultipartWithNoClosingDelimiterSaysHowMuchIsNotShown) {
  const std::string last = "Content-Type: application/pdf\r\n\r\nlast part\r\n";
  const std::string message = kHeader + "--a\r\n\r\nfirst\r\n--a\r\n" + last;
  // The library drops the part after the last delimiter: one part is left.
  const std::vector<PartRegion> regions = LayOutParts(message, {{1, "a"}, {0, ""}});
  EXPECT_TRUE(regions[0].unclosed);
  EXPECT_EQ(regions[0].unshown, last.size());
  EXPECT_TRUE(regions[1].known);
  EXPECT_EQ(regions[1].body_size, 7u);  // "first\r\n"
  EXPECT_FALSE(regions[1].unclosed);
}

TEST(LayOutParts, BlanksAfterABoundaryMakeNoDelimiterButMayFollowAClosingOne) {
  const std::string first = "\r\nfirst\r\n--a \r\n\r\nstill first";
  const std::string message = kHeader + "--a\r\n" + first + "\r\n--a--  trailing\r\n";
  const std::vector<PartRegion> regions = LayOutParts(message, {{1, "a"}, {0, ""}});
  EXPECT_FALSE(regions[0].unclosed);
  EXPECT_TRUE(regions[1].known);
  EXPECT_EQ(regions[1].body_size, first.size() - 2);  // after the blank line that ends its (empty) header
}

TEST(LayOutParts, AnEmptyPartBeforeTheClosingDelimiterIsNoPart) {
  const std::string message = kHeader + "--a\r\n\r\none\r\n--a\r\n--a--\r\n";
  const std::vector<PartRegion> regions = LayOutParts(message, {{1, "a"}, {0, ""}});
  EXPECT_FALSE(regions[0].unclosed);
  EXPECT_TRUE(regions[1].known);
  EXPECT_EQ(regions[1].body_size, 5u);  // "one" and the line break before the next delimiter
}

TEST(LayOutParts, PartsAreUnknownWhenTheLibrarySplitADifferentNumberOfParts) {
  const std::string message = kHeader + "--a\r\n" + kInner + "--b\r\n\r\nx\r\n--b--\r\n--a--\r\n";
  // Three parts where the message has one (as after a uuencode split).
  const std::vector<PartRegion> regions =
      LayOutParts(message, {{3, "a"}, {1, "b"}, {0, ""}, {0, ""}, {0, ""}});
  EXPECT_TRUE(regions[0].known);
  EXPECT_FALSE(regions[0].unclosed);
  for (size_t i = 1; i < regions.size(); ++i) EXPECT_FALSE(regions[i].known) << i;
}

TEST(LayOutParts, ATreeAHundredThousandLevelsDeepIsLaidOutInOnePass) {
  constexpr int kDepth = 100000;
  std::string message;
  std::vector<LayoutPart> parts;
  for (int i = 0; i < kDepth; ++i) {
    if (i > 0) message += "--b" + std::to_string(i - 1) + "\r\n";
    message += "Content-Type: multipart/mixed; boundary=b" + std::to_string(i) + "\r\n\r\n";
    parts.push_back({1, "b" + std::to_string(i)});
  }
  message += "--b" + std::to_string(kDepth - 1) + "\r\n\r\nhello\r\n";
  parts.push_back({0, ""});
  for (int i = kDepth - 1; i >= 0; --i) message += "--b" + std::to_string(i) + "--\r\n";
  const std::vector<PartRegion> regions = LayOutParts(message, parts);
  ASSERT_EQ(regions.size(), parts.size());
  EXPECT_TRUE(regions.back().known);
  EXPECT_EQ(regions.back().body_size, 5u);
  EXPECT_EQ(regions[0].body_size, message.size() - message.find("\r\n\r\n") - 4);
}

}  // namespace
}  // namespace pvtool

#endif
