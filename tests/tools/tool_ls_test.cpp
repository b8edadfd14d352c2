// ls: mbox files and directories of messages, one line per message, in
// time linear in the size of the mailbox.
#ifdef PARCELVANE_TOOL_PATH

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>

#include "tests/tools/json_value.h"
#include "tests/tools/tool_runner.h"

namespace pvtool::test {
namespace {

std::vector<std::string> Lines(const std::string& text) {
  std::vector<std::string> lines;
  size_t start = 0;
  for (size_t end; (end = text.find('\n', start)) != std::string::npos; start = end + 1) {
    lines.push_back(text.substr(start, end - start));
  }
  return lines;
}

// An mbox of `count` generated messages; every third has an attachment.
std::string GeneratedMbox(int count) {
  std::string mbox;
  for (int i = 1; i <= count; ++i) {
    const std::string n = std::to_string(i);
    mbox += "From sender" + n + "@example.org Mon Jul  7 12:00:00 2025\n";
    mbox += "From: Sender " + n + " <sender" + n + "@example.org>\nTo: list@example.org\n";
    mbox += "Subject: Message " + n + "\nDate: Mon, 7 Jul 2025 12:00:00 +0000\n";
    if (i % 3 == 0) {
      mbox += "MIME-Version: 1.0\nContent-Type: multipart/mixed; boundary=\"s" + n + "\"\n\n--s" + n +
              "\nContent-Type: text/plain\n\nHello " + n + "\n--s" + n +
              "\nContent-Type: application/octet-stream\nContent-Disposition: attachment; filename=\"f" + n +
              ".bin\"\nContent-Transfer-Encoding: base64\n\nAAECAwQFBgcICQ==\n--s" + n + "--\n\n";
    } else {
      mbox += "\nHello " + n + ",\nFrom the list, a line that must not split the mbox.\n>From quoted.\n\n";
    }
  }
  return mbox;
}

TEST(ToolLs, ListsTheSampleMbox) {
  const RunResult r = RunTool({"ls", Sample("mailbox.mbox")});
  EXPECT_EQ(r.exit_code, 0) << r.err;
  const std::vector<std::string> lines = Lines(r.out);
  ASSERT_EQ(lines.size(), 3u) << r.out;
  EXPECT_EQ(lines[0].rfind("     1  2025-07-01 10:52  J\xC3\xBCrgen M\xC3\xBCller", 0), 0u) << lines[0];
  EXPECT_NE(lines[0].find("Gr\xC3\xBC\xC3\x9F"
                          "e aus K\xC3\xB6ln"),
            std::string::npos);
  EXPECT_EQ(lines[0].substr(lines[0].size() - 3), "  1");
  EXPECT_EQ(lines[1].rfind("     2  2025-07-02 09:15  Carol Example ", 0), 0u) << lines[1];
  EXPECT_EQ(lines[1].substr(lines[1].size() - 3), "  0");
  EXPECT_EQ(lines[2].rfind("     3  2025-07-03 14:00  Old Client ", 0), 0u) << lines[2];
}

TEST(ToolLs, JsonGivesEveryMessageWithItsOffset) {
  const JsonValue v = JsonOf(RunTool({"ls", "--json", Sample("mailbox.mbox")}));
  ASSERT_EQ(v.size(), 3u);
  EXPECT_EQ(v[0]["offset"].number(), 0);
  EXPECT_EQ(v[1]["subject"].string(), "Lunch on Friday?");
  EXPECT_EQ(v[1]["sender"].string(), "Carol Example");
  EXPECT_EQ(v[1]["date"].string(), "2025-07-02 09:15");
  EXPECT_EQ(v[2]["subject"].string(), "Figures, the old way");
  const std::string mbox = ReadFile(Sample("mailbox.mbox"));
  EXPECT_EQ(mbox.compare(static_cast<size_t>(v[1]["offset"].number()), 22, "From carol@example.com"), 0);
}

TEST(ToolLs, ReadsStandardInput) {
  const JsonValue v = JsonOf(RunTool({"ls", "--json", "-"}, WithStdin(GeneratedMbox(5))));
  ASSERT_EQ(v.size(), 5u);
  EXPECT_EQ(v[4]["subject"].string(), "Message 5");
}

TEST(ToolLs, QuotedFromLinesDoNotSplitMessages) {
  const JsonValue v = JsonOf(RunTool({"ls", "--json", "-"}, WithStdin(GeneratedMbox(4))));
  ASSERT_EQ(v.size(), 4u);
  EXPECT_EQ(v[2]["attachments"].number(), 1);
  EXPECT_EQ(v[3]["sender"].string(), "Sender 4");
}

TEST(ToolLs, AnUnreadableMessageIsListedWithTheReason) {
  const RunResult r = RunTool({"ls", "-"}, WithStdin("From a\n%PDF-1.4\n\nFrom b\nSubject: fine\n\nbody\n"));
  EXPECT_EQ(r.exit_code, 0);
  const std::vector<std::string> lines = Lines(r.out);
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_NE(lines[0].find("(not a message"), std::string::npos);
  EXPECT_NE(lines[1].find("fine"), std::string::npos);
}

TEST(ToolLs, ListsAMaildirCurThenNew) {
  TempDir dir;
  std::filesystem::create_directories(dir / "cur");
  std::filesystem::create_directories(dir / "new");
  std::filesystem::create_directories(dir / "tmp");
  dir.Write("cur/1000.a:2,S", "Subject: old one\n\nx\n");
  dir.Write("cur/1001.b:2,S", "Subject: old two\n\nx\n");
  dir.Write("new/1002.c", "Subject: new one\n\nx\n");
  dir.Write("tmp/1003.d", "Subject: in delivery\n\nx\n");
  const JsonValue v = JsonOf(RunTool({"ls", "--json", dir.path()}));
  ASSERT_EQ(v.size(), 3u);
  EXPECT_EQ(v[0]["subject"].string(), "old one");
  EXPECT_EQ(v[1]["subject"].string(), "old two");
  EXPECT_EQ(v[2]["subject"].string(), "new one");
  EXPECT_EQ(v[2]["path"].string(), dir / "new/1002.c");
}

TEST(ToolLs, ListsADirectoryOfMessageFilesWithoutHiddenFiles) {
  TempDir dir;
  dir.Write("b.eml", "Subject: second\n\nx\n");
  dir.Write("a.eml", "Subject: first\n\nx\n");
  dir.Write(".hidden", "Subject: hidden\n\nx\n");
  const JsonValue v = JsonOf(RunTool({"ls", "--json", dir.path()}));
  ASSERT_EQ(v.size(), 2u);
  EXPECT_EQ(v[0]["subject"].string(), "first");
  EXPECT_EQ(v[1]["subject"].string(), "second");
  EXPECT_EQ(v[0]["size"].number(), 18);
}

TEST(ToolLs, BareLfMessagesAreConverted) {
  const JsonValue v = JsonOf(RunTool({"ls", "--json", "-"}, WithStdin(GeneratedMbox(3))));
  EXPECT_EQ(v[2]["attachments"].number(), 1);
  const JsonValue raw = JsonOf(RunTool({"ls", "--json", "--no-crlf", "-"}, WithStdin(GeneratedMbox(3))));
  EXPECT_EQ(raw[2]["attachments"].number(), 0);
}

// Seconds taken by `ls` on a generated mbox of `count` messages.
double SecondsForLs(int count, size_t* lines) {
  TempDir dir;
  const std::string mbox = dir.Write("big.mbox", GeneratedMbox(count));
  RunOptions options;
  options.stdout_path = dir / "listing";
  const auto start = std::chrono::steady_clock::now();
  const RunResult r = RunTool({"ls", mbox}, options);
  const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
  EXPECT_EQ(r.exit_code, 0) << r.err;
  EXPECT_EQ(r.err, "") << "no progress bar when standard error is not a terminal";
  *lines = Lines(ReadFile(dir / "listing")).size();
  return taken.count();
}

TEST(ToolLs, TimeGrowsLinearlyWithTheNumberOfMessages) {
  size_t small_lines = 0, large_lines = 0;
  const double small = SecondsForLs(2500, &small_lines);
  const double large = SecondsForLs(10000, &large_lines);
  EXPECT_EQ(small_lines, 2500u);
  EXPECT_EQ(large_lines, 10000u);
  std::printf("ls: 2,500 messages in %.3f s, 10,000 messages in %.3f s\n", small, large);
  // Four times the messages: linear work takes about four times as long;
  // quadratic work would take sixteen times.
  EXPECT_LT(large, small * 8 + 0.5);
}

TEST(ToolLs, ALongRunShowsAProgressBarOnATerminal) {
  TempDir dir;
  const std::string mbox = dir.Write("big.mbox", GeneratedMbox(3000));
  // Show the bar from the start rather than after half a second.
  const RunResult r = RunToolWithTerminalStderr({"ls", mbox}, "PARCELVANE_PROGRESS_DELAY_MS=0");
  EXPECT_EQ(r.exit_code, 0);
  EXPECT_EQ(Lines(r.out).size(), 3000u);
  EXPECT_NE(r.err.find("\r["), std::string::npos);
  EXPECT_NE(r.err.find(" messages"), std::string::npos);
  // The bar is wiped at the end.
  EXPECT_EQ(r.err.substr(r.err.size() - 1), "\r");
}

}  // namespace
}  // namespace pvtool::test

#endif
