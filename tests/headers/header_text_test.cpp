#include "src/headers/header_text.h"

#include <gtest/gtest.h>

#include <string>

namespace pv {
namespace {

TEST(UnfoldHeaderText, LineBreakAndFollowingBlanksBecomeOneSpace) {
  EXPECT_EQ(UnfoldHeaderText("a\r\n\tb"), "a b");
  EXPECT_EQ(UnfoldHeaderText("a\r\n \t  b"), "a b");
  EXPECT_EQ(UnfoldHeaderText("a\n\r\r\nb"), "a b");
}

TEST(UnfoldHeaderText, BreakAtTheEndStillYieldsItsSpace) { EXPECT_EQ(UnfoldHeaderText("a\r\n"), "a "); }

TEST(UnfoldHeaderText, OtherBytesAreCopiedAndNothingElseIsTrimmed) {
  EXPECT_EQ(UnfoldHeaderText("  x \xE9\xFF  "), "  x \xE9\xFF  ");
  EXPECT_EQ(UnfoldHeaderText(""), "");
  EXPECT_EQ(UnfoldHeaderText("\r\n"), " ");
}

TEST(FoldHeaderText, ShortTextIsLeftAlone) { EXPECT_EQ(FoldHeaderText("Hello world", 7), "Hello world"); }

TEST(FoldHeaderText, CutsInFrontOfTheLastBlankOnceTheWidthIsReached) {
  // A name of 70 characters leaves 4 columns on the first line.
  EXPECT_EQ(FoldHeaderText("aaa bbb", 70), "aaa\r\n bbb");
}

TEST(FoldHeaderText, LineWithoutBlankRunsOnToTheFirstBlank) {
  EXPECT_EQ(FoldHeaderText("abcdefghij klm", 70), "abcdefghij\r\n klm");
  EXPECT_EQ(FoldHeaderText("abcdefghijklm", 70), "abcdefghijklm");
}

TEST(FoldHeaderText, BlankAfterSemicolonIsPreferred) {
  // A name of 68 characters leaves 6 columns.
  EXPECT_EQ(FoldHeaderText("ab; cd ef", 68), "ab;\r\n cd ef");
  EXPECT_EQ(FoldHeaderText("ab, cd ef", 68), "ab, cd\r\n ef");
}

TEST(FoldHeaderText, BlankAfterClosingParenthesisIsPreferred) {
  EXPECT_EQ(FoldHeaderText("a) cd ef", 68), "a)\r\n cd ef");
}

TEST(FoldHeaderText, PreferredCutTooFarBackIsNotTaken) {
  // A line break resets the column but not the preferred blank, which then
  // lies a full width (14 columns) or more before the plain one.
  std::string text = "x; y\r\n" + std::string(15, 'a') + " b";
  EXPECT_EQ(FoldHeaderText(text, 60), "x; y\r\n" + std::string(15, 'a') + "\r\n b");
}

TEST(FoldHeaderText, NothingIsCutBetweenBrackets) {
  EXPECT_EQ(FoldHeaderText("[a b c d e f g h]", 70), "[a b c d e f g h]");
  EXPECT_EQ(FoldHeaderText("x [a b c d e f g h]", 70), "x\r\n [a b c d e f g h]");
}

TEST(FoldHeaderText, FirstBlankIsNeverACut) { EXPECT_EQ(FoldHeaderText(" abcdef", 70), " abcdef"); }

TEST(FoldHeaderText, ExistingLineBreaksRestartTheColumn) {
  EXPECT_EQ(FoldHeaderText("ab\r\n cd", 70), "ab\r\n cd");
  EXPECT_EQ(FoldHeaderText("ab cd\r\n ef gh", 71), "ab\r\n cd\r\n ef gh");
}

TEST(FoldHeaderText, FieldsKeepThePreferredCandidateAcrossALineBreak) {
  std::string text = "x; y\r\na " + std::string(13, 'b');
  EXPECT_EQ(FoldHeaderText(text, 60, FoldLineBreak::kKeepPreferredCandidate),
            "x;\r\n y\r\na " + std::string(13, 'b'));
  EXPECT_EQ(FoldHeaderText(text, 60, FoldLineBreak::kForgetBothCandidates),
            "x; y\r\na\r\n " + std::string(13, 'b'));
}

TEST(FoldHeaderText, LongSubjectOfWordsFoldsToTheLineWidths) {
  std::string text;
  while (text.size() < 200) text += "word ";
  text.resize(200);
  std::string folded = FoldHeaderText(text, 7);  // "Subject"
  std::string unbroken;
  size_t from = 0;
  int line = 0;
  for (;;) {
    size_t brk = folded.find("\r\n", from);
    std::string piece = folded.substr(from, brk == std::string::npos ? std::string::npos : brk - from);
    if (line == 0) {
      EXPECT_LE(piece.size(), 67u);
    } else {
      ASSERT_FALSE(piece.empty());
      EXPECT_EQ(piece[0], ' ');
      EXPECT_LE(piece.size() - 1, 78u);
    }
    unbroken += piece;
    ++line;
    if (brk == std::string::npos) break;
    from = brk + 2;
  }
  EXPECT_GT(line, 2);
  EXPECT_EQ(unbroken, text);
}

TEST(FoldHeaderText, HugeInputFoldsInLinearTime) {
  std::string text;
  for (int i = 0; i < 200000; ++i) text += "w[x y] z; ";
  std::string folded = FoldHeaderText(text, 7);
  EXPECT_GT(folded.size(), text.size());
}

TEST(SplitParameters, SplitsAtTheFirstSemicolon) {
  ParameterSplit s = SplitParameters("  text/plain ; charset=us-ascii; format=flowed");
  EXPECT_EQ(s.value, "text/plain ");
  EXPECT_EQ(s.parameters, "; charset=us-ascii; format=flowed");
}

TEST(SplitParameters, WithoutSemicolonTheParametersAreEmpty) {
  ParameterSplit s = SplitParameters("\tattachment");
  EXPECT_EQ(s.value, "attachment");
  EXPECT_EQ(s.parameters, "");
}

TEST(IsContentFieldName, ComparesTheFirstEightCharactersIgnoringCase) {
  EXPECT_TRUE(IsContentFieldName("Content-Type"));
  EXPECT_TRUE(IsContentFieldName("content-id"));
  EXPECT_TRUE(IsContentFieldName("Content-"));
  EXPECT_FALSE(IsContentFieldName("Content"));
  EXPECT_FALSE(IsContentFieldName("X-Content-Type"));
}

TEST(Trim, TrimsBlanksAndLineBreaks) {
  EXPECT_EQ(TrimBlanks(" \t a b \t"), "a b");
  EXPECT_EQ(TrimLeadingBlanks("  a "), "a ");
  EXPECT_EQ(TrimTrailingLineBreaks("a \r\n\n"), "a ");
}

}  // namespace
}  // namespace pv
