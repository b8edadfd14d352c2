#include "src/message/uuencoded_blocks.h"

#include <gtest/gtest.h>

#include <string>

namespace pv {
namespace {

const char kBlock[] = "begin 644 file.txt\r\n#86)C\r\n`\r\nend\r\n";

std::string Data(std::string_view text, const UuencodedBlock& b) {
  return std::string(text.substr(b.dataOffset, b.dataLength));
}

TEST(FindUuencodedBlocks, TextAroundOneBlock) {
  std::string text = std::string("Hello\r\n") + kBlock + "Bye\r\n";
  UuencodedText found;
  ASSERT_TRUE(FindUuencodedBlocks(text, &found));
  ASSERT_EQ(found.blocks.size(), 1u);
  EXPECT_EQ(found.blocks[0].fileName, "file.txt");
  EXPECT_EQ(Data(text, found.blocks[0]), "#86)C\r\n");
  EXPECT_EQ(found.text, "Hello\r\nBye\r\n");
}

TEST(FindUuencodedBlocks, TextThatBeginsWithABlockLosesItsTail) {
  std::string text = std::string(kBlock) + "Bye\r\n";
  UuencodedText found;
  ASSERT_TRUE(FindUuencodedBlocks(text, &found));
  EXPECT_EQ(found.blocks.size(), 1u);
  EXPECT_EQ(found.text, "");
}

TEST(FindUuencodedBlocks, SeveralBlocks) {
  std::string text = std::string("a\r\n") + kBlock + "b\r\n" + kBlock + "c";
  UuencodedText found;
  ASSERT_TRUE(FindUuencodedBlocks(text, &found));
  EXPECT_EQ(found.blocks.size(), 2u);
  EXPECT_EQ(found.text, "a\r\nb\r\nc");
}

TEST(FindUuencodedBlocks, ModeWithASevenIsNotABlock) {
  UuencodedText found;
  EXPECT_FALSE(FindUuencodedBlocks("x\r\nbegin 755 f\r\nM\r\n`\r\nend\r\n", &found));
  EXPECT_FALSE(FindUuencodedBlocks("x\r\nbegin 647 f\r\nM\r\n`\r\nend\r\n", &found));
  EXPECT_TRUE(found.blocks.empty());
}

TEST(FindUuencodedBlocks, ByteAfterBeginIsNeverLookedAt) {
  // Any byte may stand between "begin" and the mode...
  std::string text = "t\r\nbegins600 name\r\nM\r\n`\r\nend\r\n";
  UuencodedText found;
  ASSERT_TRUE(FindUuencodedBlocks(text, &found));
  EXPECT_EQ(found.blocks[0].fileName, "name");
  // ...but it is exactly one byte: a longer word puts its blank where the
  // first mode digit must be.
  EXPECT_FALSE(FindUuencodedBlocks("t\r\nbegins 600 name\r\nM\r\n`\r\nend\r\n", &found));
}

TEST(FindUuencodedBlocks, BeginAnywhereInALine) {
  std::string text = "see: begin 644 a.bin\r\nM\r\n`\r\nend\r\n";
  UuencodedText found;
  ASSERT_TRUE(FindUuencodedBlocks(text, &found));
  EXPECT_EQ(found.text, "see: ");
  EXPECT_EQ(found.blocks[0].fileName, "a.bin");
}

TEST(FindUuencodedBlocks, MissingEndMarkerEndsTheScan) {
  UuencodedText found;
  EXPECT_FALSE(FindUuencodedBlocks("x\r\nbegin 644 f\r\nM\r\nend\r\n", &found));
  std::string text = std::string("x\r\n") + kBlock + "begin 644 g\r\nM\r\n";
  ASSERT_TRUE(FindUuencodedBlocks(text, &found));
  EXPECT_EQ(found.blocks.size(), 1u);
  EXPECT_EQ(found.text, "x\r\nbegin 644 g\r\nM\r\n");
}

TEST(FindUuencodedBlocks, NameStopsAtABlank) {
  UuencodedText found;
  ASSERT_TRUE(FindUuencodedBlocks("z begin 644  my file\r\nM\r\n`\r\nend\r\n", &found));
  EXPECT_EQ(found.blocks[0].fileName, "my");
  EXPECT_EQ(found.text, "z ");
}

TEST(FindUuencodedBlocks, EmptyNameMovesTenBytesOn) {
  // After "begin 644 " the name is empty (a line break); ten bytes further on
  // the name is collected again.
  std::string text = "z begin 644 \r\n0123456789abc\r\nM\r\n`\r\nend\r\n";
  UuencodedText found;
  ASSERT_TRUE(FindUuencodedBlocks(text, &found));
  EXPECT_EQ(found.blocks[0].fileName, "89abc");
}

TEST(FindUuencodedBlocks, TooShortTailIsNotSearched) {
  UuencodedText found;
  EXPECT_FALSE(FindUuencodedBlocks("begin 644 ", &found));
  EXPECT_FALSE(FindUuencodedBlocks("", &found));
}

TEST(FindUuencodedBlocks, ManyFalseBeginsScanInLinearTime) {
  std::string text;
  for (int i = 0; i < 10000; ++i) text += "begin 999 " + std::string(5000, 'x') + "\r\n";
  UuencodedText found;
  EXPECT_FALSE(FindUuencodedBlocks(text, &found));
}

}  // namespace
}  // namespace pv
