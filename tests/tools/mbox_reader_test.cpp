// Reading the messages of an mbox file.
#ifdef PARCELVANE_TOOL_PATH

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "tools/mbox_reader.h"

namespace pvtool {
namespace {

// All messages of `text`, read in chunks of `chunk` bytes.
std::vector<MboxMessage> ReadAll(const std::string& text, size_t chunk = 1 << 20, bool* not_mbox = nullptr) {
  size_t at = 0;
  MboxReader reader(
      [&](char* buffer, size_t capacity) {
        const size_t n = std::min(capacity, text.size() - at);
        std::memcpy(buffer, text.data() + at, n);
        at += n;
        return n;
      },
      chunk);
  std::vector<MboxMessage> messages;
  MboxMessage message;
  while (reader.Next(&message)) messages.push_back(message);
  if (not_mbox != nullptr) *not_mbox = reader.not_mbox();
  return messages;
}

const char kTwo[] =
    "From a@example.org Tue Jul  1 10:52:37 2025\n"
    "Subject: one\n"
    "\n"
    "body one\n"
    "\n"
    "From b@example.org Wed Jul  2 10:52:37 2025\n"
    "Subject: two\n"
    "\n"
    "body two\n";

TEST(MboxReader, SplitsAtSeparatorLinesAfterAnEmptyLine) {
  const auto messages = ReadAll(kTwo);
  ASSERT_EQ(messages.size(), 2u);
  EXPECT_EQ(messages[0].bytes, "Subject: one\n\nbody one\n");
  EXPECT_EQ(messages[1].bytes, "Subject: two\n\nbody two\n");
  EXPECT_EQ(messages[0].from_line, "From a@example.org Tue Jul  1 10:52:37 2025");
}

TEST(MboxReader, GivesTheOffsetOfEachSeparator) {
  const auto messages = ReadAll(kTwo);
  ASSERT_EQ(messages.size(), 2u);
  EXPECT_EQ(messages[0].offset, 0u);
  EXPECT_EQ(messages[1].offset, std::string(kTwo).find("From b@"));
}

TEST(MboxReader, GivesTheSameMessagesWhateverTheChunkSize) {
  const auto whole = ReadAll(kTwo);
  for (size_t chunk : {1, 2, 7, 64}) {
    const auto pieces = ReadAll(kTwo, chunk);
    ASSERT_EQ(pieces.size(), whole.size()) << chunk;
    for (size_t i = 0; i < whole.size(); ++i) {
      EXPECT_EQ(pieces[i].bytes, whole[i].bytes) << chunk;
      EXPECT_EQ(pieces[i].offset, whole[i].offset) << chunk;
    }
  }
}

TEST(MboxReader, AFromLineInsideAParagraphDoesNotSplit) {
  const auto messages = ReadAll("From x\nSubject: s\n\ntext\nFrom here on\nmore\n");
  ASSERT_EQ(messages.size(), 1u);
  EXPECT_EQ(messages[0].bytes, "Subject: s\n\ntext\nFrom here on\nmore\n");
}

TEST(MboxReader, QuotedFromLinesLoseOneQuote) {
  const auto messages = ReadAll("From x\nSubject: s\n\n>From me\n>>From you\n> From not\n");
  ASSERT_EQ(messages.size(), 1u);
  EXPECT_EQ(messages[0].bytes, "Subject: s\n\nFrom me\n>From you\n> From not\n");
}

TEST(MboxReader, CrLfFilesSplitToo) {
  const auto messages = ReadAll("From x\r\nSubject: a\r\n\r\nA\r\n\r\nFrom y\r\nSubject: b\r\n\r\nB\r\n");
  ASSERT_EQ(messages.size(), 2u);
  EXPECT_EQ(messages[0].bytes, "Subject: a\r\n\r\nA\r\n");
  EXPECT_EQ(messages[1].bytes, "Subject: b\r\n\r\nB\r\n");
}

TEST(MboxReader, TheLastLineMayLackItsLineEnd) {
  const auto messages = ReadAll("From x\nSubject: s\n\nend");
  ASSERT_EQ(messages.size(), 1u);
  EXPECT_EQ(messages[0].bytes, "Subject: s\n\nend");
}

TEST(MboxReader, AnEmptyFileHoldsNoMessages) {
  bool not_mbox = true;
  EXPECT_TRUE(ReadAll("", 16, &not_mbox).empty());
  EXPECT_FALSE(not_mbox);
}

TEST(MboxReader, AFileThatDoesNotStartWithASeparatorIsNotAnMbox) {
  bool not_mbox = false;
  EXPECT_TRUE(ReadAll("Subject: s\n\nbody\n", 16, &not_mbox).empty());
  EXPECT_TRUE(not_mbox);
}

TEST(MboxReader, ConsecutiveSeparatorsGiveEmptyMessages) {
  const auto messages = ReadAll("From a\n\nFrom b\nSubject: b\n");
  ASSERT_EQ(messages.size(), 2u);
  EXPECT_EQ(messages[0].bytes, "");
  EXPECT_EQ(messages[1].bytes, "Subject: b\n");
}

TEST(MboxReader, AVeryLongLineIsReadInLinearTime) {
  std::string text = "From x\nSubject: s\n\n" + std::string(16 << 20, 'a') + "\n";
  const auto messages = ReadAll(text, 4096);
  ASSERT_EQ(messages.size(), 1u);
  EXPECT_EQ(messages[0].bytes.size(), text.size() - 7);
}

TEST(MboxReader, ManyMessagesAreAllFound) {
  std::string text;
  for (int i = 0; i < 5000; ++i)
    text += "From m" + std::to_string(i) + "\nSubject: " + std::to_string(i) + "\n\nx\n\n";
  const auto messages = ReadAll(text, 1000);
  ASSERT_EQ(messages.size(), 5000u);
  EXPECT_EQ(messages[4999].bytes, "Subject: 4999\n\nx\n");
}

}  // namespace
}  // namespace pvtool

#endif
