#include "src/headers/header_block.h"

#include <gtest/gtest.h>

#include <string>

namespace pv {
namespace {

using Texts = std::vector<std::string_view>;

TEST(SplitHeaderBlock, OneTextPerFieldLine) {
  EXPECT_EQ(SplitHeaderBlock("Received: a\r\nReceived: b\r\nSubject: s\r\n"),
            Texts({"Received: a\r", "Received: b\r", "Subject: s\r\n"}));
}

TEST(SplitHeaderBlock, FoldedLinesStayWithTheirField) {
  EXPECT_EQ(SplitHeaderBlock("Subject: one\r\n two\r\n"), Texts({"Subject: one\r\n two\r\n"}));
  EXPECT_EQ(SplitHeaderBlock("A: 1\r\n\tx\r\nB: 2"), Texts({"A: 1\r\n\tx\r", "B: 2"}));
}

TEST(SplitHeaderBlock, LinesWithoutColonAreDropped) {
  EXPECT_EQ(SplitHeaderBlock("garbage line\r\n\r\nTo: x\r\n"), Texts({"To: x\r\n"}));
}

TEST(SplitHeaderBlock, BlankBeforeTheColonMeansNoField) {
  EXPECT_EQ(SplitHeaderBlock("Subject : x\r\nTo: y\r\n"), Texts({"To: y\r\n"}));
  EXPECT_EQ(SplitHeaderBlock("X\tY: z\r\n"), Texts());
}

TEST(SplitHeaderBlock, BlankAfterTheColonIsFine) {
  EXPECT_EQ(SplitHeaderBlock("A:b c: d\r\n"), Texts({"A:b c: d\r\n"}));
}

TEST(SplitHeaderBlock, WholeSpanIsReadBlankLinesIncluded) {
  EXPECT_EQ(SplitHeaderBlock("A: 1\r\n\r\nbody: 2"), Texts({"A: 1\r", "body: 2"}));
}

TEST(SplitHeaderBlock, LastFieldWithoutLineBreakIsTaken) {
  EXPECT_EQ(SplitHeaderBlock("A: 1"), Texts({"A: 1"}));
  EXPECT_EQ(SplitHeaderBlock(""), Texts());
  EXPECT_EQ(SplitHeaderBlock("no colon"), Texts());
}

TEST(SplitHeaderBlock, OneByteLineIsNotFolded) {
  // ":" alone before a line feed and a blank: the text so far is one byte,
  // so the line ends there; the next line starts with a blank and is dropped.
  EXPECT_EQ(SplitHeaderBlock(":\n x: 1\n"), Texts({":"}));
}

TEST(SplitHeaderBlock, BareLineFeedsEndLinesToo) {
  EXPECT_EQ(SplitHeaderBlock("A: 1\nB: 2\n"), Texts({"A: 1", "B: 2\n"}));
}

TEST(SplitHeaderBlock, HundredThousandFieldsSplitInLinearTime) {
  std::string block;
  for (int i = 0; i < 100000; ++i) block += "X-Field-" + std::to_string(i) + ": value\r\n";
  EXPECT_EQ(SplitHeaderBlock(block).size(), 100000u);
}

TEST(FindHeaderBlockEnd, FindsTheFirstEmptyLine) {
  EXPECT_EQ(FindHeaderBlockEnd("A: 1\r\n\r\nbody\r\n\r\n"), 4u);
  EXPECT_EQ(FindHeaderBlockEnd("\r\n\r\n"), 0u);
  EXPECT_EQ(FindHeaderBlockEnd("\r\r\n\r\n"), 1u);
  EXPECT_EQ(FindHeaderBlockEnd("A: 1\n\nbody"), std::string_view::npos);
  EXPECT_EQ(FindHeaderBlockEnd("\r\n\r"), std::string_view::npos);
  EXPECT_EQ(FindHeaderBlockEnd(""), std::string_view::npos);
}

}  // namespace
}  // namespace pv
