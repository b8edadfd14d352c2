// index: one JSON line per message, in input order on any number of
// threads, from mbox files, message files, maildirs and directories.
#ifdef PARCELVANE_TOOL_PATH

#include <gtest/gtest.h>

#include <unistd.h>

#include <filesystem>
#include <string>
#include <vector>

#include "tests/tools/json_value.h"
#include "tests/tools/tool_runner.h"

namespace pvtool::test {
namespace {

std::vector<JsonValue> JsonLines(const RunResult& r) {
  EXPECT_EQ(r.exit_code, 0) << r.err;
  std::vector<JsonValue> lines;
  size_t start = 0;
  while (start < r.out.size()) {
    const size_t end = r.out.find('\n', start);
    EXPECT_NE(end, std::string::npos) << "every line ends in a line break";
    if (end == std::string::npos) break;
    JsonValue value;
    std::string error;
    EXPECT_TRUE(ParseJson(r.out.substr(start, end - start), &value, &error)) << error;
    lines.push_back(value);
    start = end + 1;
  }
  return lines;
}

// An mbox of `count` messages of different sizes; every third has an
// attachment holding "data <i>".
std::string GeneratedMbox(int count) {
  std::string mbox;
  for (int i = 0; i < count; ++i) {
    mbox += "From sender@example.org Tue Jul  1 10:52:37 2025\n";
    mbox += "From: Sender <s@example.org>\nTo: r@example.net\nSubject: message " + std::to_string(i) +
            "\nDate: Tue, 1 Jul 2025 10:52:37 +0200\nMessage-ID: <" + std::to_string(i) + "@example.org>\n";
    const std::string text = std::string(static_cast<size_t>(i % 13) * 300, 'x') + "\n";
    if (i % 3 == 0) {
      mbox +=
          "MIME-Version: 1.0\nContent-Type: multipart/mixed; boundary=\"b\"\n\n--b\nContent-Type: "
          "text/plain\n\n" +
          text +
          "--b\nContent-Type: application/octet-stream\nContent-Disposition: attachment; filename=\"d" +
          std::to_string(i) + ".bin\"\n\ndata " + std::to_string(i) + "\n--b--\n\n";
    } else {
      mbox += "\n" + text + "\n";
    }
  }
  return mbox;
}

TEST(ToolIndex, DescribesEveryMessageOfAnMbox) {
  const std::vector<JsonValue> lines = JsonLines(RunTool({"index", Sample("mailbox.mbox")}));
  ASSERT_EQ(lines.size(), 3u);
  const JsonValue& first = lines[0];
  EXPECT_EQ(first["source"].string(), Sample("mailbox.mbox"));
  EXPECT_EQ(first["offset"].number(), 0);
  EXPECT_EQ(first["message_id"].string(), "<20250701105237.4711@example.org>");
  EXPECT_EQ(first["date"].string(), "2025-07-01T10:52:37+02:00");
  EXPECT_EQ(first["from"].string(), "J\xC3\xBCrgen M\xC3\xBCller <juergen.mueller@example.org>");
  EXPECT_EQ(first["subject"].string(),
            "Gr\xC3\xBC\xC3\x9F"
            "e aus K\xC3\xB6ln \xE2\x80\x93 Bericht f\xC3\xBCr Q3");
  ASSERT_EQ(first["attachments"].size(), 1u);
  EXPECT_EQ(first["attachments"][0]["name"].string(), "Bericht f\xC3\xBCr Q3.pdf");
  EXPECT_EQ(first["attachments"][0]["content_type"].string(), "application/pdf");
  EXPECT_EQ(first["attachments"][0]["size"].number(), 142);
  EXPECT_EQ(first["attachments"][0]["sha256"].string().size(), 64u);
  EXPECT_EQ(first["text"].string().compare(0, 11, "Hallo Anna,"), 0);
  EXPECT_EQ(lines[1]["offset"].number(), 1816);
  EXPECT_EQ(lines[1]["attachments"].size(), 0u);
}

TEST(ToolIndex, TheTextIsCutAtTwoHundredCharactersAndTheDigestIsOfTheDecodedBytes) {
  TempDir dir;
  std::string text;
  for (int i = 0; i < 300; ++i) text += "\xC3\xA9";
  const std::string file = dir.Write(
      "m.eml",
      "Subject: s\r\nMIME-Version: 1.0\r\nContent-Type: multipart/mixed; boundary=\"b\"\r\n\r\n--b\r\n"
      "Content-Type: text/plain; charset=utf-8\r\n\r\n" +
          text +
          "\r\n--b\r\n"
          "Content-Type: application/octet-stream\r\nContent-Transfer-Encoding: base64\r\n"
          "Content-Disposition: attachment; filename=\"abc.bin\"\r\n\r\nYWJj\r\n--b--\r\n");
  const std::vector<JsonValue> lines = JsonLines(RunTool({"index", file}));
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_EQ(lines[0]["text"].string(), text.substr(0, 400));
  EXPECT_EQ(lines[0]["attachments"][0]["sha256"].string(),
            "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
  EXPECT_EQ(lines[0]["attachments"][0]["size"].number(), 3);
  EXPECT_TRUE(lines[0]["message_id"].string().empty());
}

TEST(ToolIndex, OutputIsInInputOrderOnAnyNumberOfThreads) {
  TempDir dir;
  const std::string mbox = dir.Write("big.mbox", GeneratedMbox(700));
  const RunResult one = RunTool({"index", "-j", "1", mbox});
  ASSERT_EQ(one.exit_code, 0) << one.err;
  for (const char* threads : {"2", "4", "7"}) {
    const RunResult many = RunTool({"index", "-j", threads, mbox});
    EXPECT_EQ(many.out, one.out) << threads << " threads";
  }
  const std::vector<JsonValue> lines = JsonLines(one);
  ASSERT_EQ(lines.size(), 700u);
  for (size_t i = 0; i < lines.size(); ++i) {
    ASSERT_EQ(lines[i]["subject"].string(), "message " + std::to_string(i));
    if (i > 0) {
      ASSERT_GT(lines[i]["offset"].number(), lines[i - 1]["offset"].number());
    }
  }
  EXPECT_EQ(lines[3]["attachments"][0]["name"].string(), "d3.bin");
}

// A directory's own files come first, then its subdirectories, each in
// name order.
TEST(ToolIndex, WalksDirectoriesAndMaildirsInNameOrder) {
  TempDir dir;
  std::filesystem::create_directories(dir / "archive/b-maildir/cur");
  std::filesystem::create_directories(dir / "archive/b-maildir/new");
  std::filesystem::create_directories(dir / "archive/c/deeper");
  dir.Write("archive/a.eml", "Subject: a\r\n\r\nx\r\n");
  dir.Write("archive/b-maildir/new/1", "Subject: maildir new\r\n\r\nx\r\n");
  dir.Write("archive/b-maildir/cur/1", "Subject: maildir cur\r\n\r\nx\r\n");
  dir.Write("archive/c/deeper/x.mbox", "From a\nSubject: mbox one\n\nx\n\nFrom b\nSubject: mbox two\n\ny\n");
  dir.Write("archive/c/z.eml", "Subject: z\r\n\r\nx\r\n");
  dir.Write("archive/.hidden", "Subject: hidden\r\n\r\nx\r\n");
  std::vector<std::string> subjects;
  for (const JsonValue& line : JsonLines(RunTool({"index", "-j", "2", dir / "archive"}))) {
    subjects.push_back(line["subject"].string());
  }
  EXPECT_EQ(subjects,
            (std::vector<std::string>{"a", "maildir cur", "maildir new", "z", "mbox one", "mbox two"}));
}

TEST(ToolIndex, ALinkOutOfTheDirectoryIsReadOnlyWithFollow) {
  TempDir dir;
  std::filesystem::create_directories(dir / "archive");
  const std::string outside = dir.Write("secret.eml", "Subject: outside\r\n\r\nx\r\n");
  dir.Write("archive/a.eml", "Subject: inside\r\n\r\nx\r\n");
  ASSERT_EQ(symlink(outside.c_str(), (dir / "archive/b.eml").c_str()), 0);
  const RunResult plain = RunTool({"index", dir / "archive"});
  EXPECT_EQ(JsonLines(plain).size(), 1u);
  EXPECT_NE(plain.err.find("b.eml: a symbolic link out of the directory"), std::string::npos) << plain.err;
  const std::vector<JsonValue> followed = JsonLines(RunTool({"index", "--follow", dir / "archive"}));
  ASSERT_EQ(followed.size(), 2u);
  EXPECT_EQ(followed[1]["subject"].string(), "outside");
}

TEST(ToolIndex, AFollowedLinkLoopIsEnteredOnce) {
  TempDir dir;
  std::filesystem::create_directories(dir / "archive/sub");
  dir.Write("archive/sub/a.eml", "Subject: a\r\n\r\nx\r\n");
  ASSERT_EQ(symlink("..", (dir / "archive/sub/up").c_str()), 0);
  ASSERT_EQ(symlink(dir.path().c_str(), (dir / "archive/sub/top").c_str()), 0);
  const std::vector<JsonValue> inside = JsonLines(RunTool({"index", dir / "archive"}));
  EXPECT_EQ(inside.size(), 1u);
  const RunResult followed = RunTool({"index", "--follow", dir / "archive"});
  // The link to the top reaches the archive once more through its real
  // path only: every directory is entered once.
  EXPECT_EQ(JsonLines(followed).size(), 1u) << followed.out;
}

TEST(ToolIndex, ExtractWritesTheAttachmentsSafelyInOrder) {
  TempDir dir;
  const std::string mbox = dir.Write("m.mbox", GeneratedMbox(30));
  const RunResult r =
      RunTool({"index", "-j", "3", "--extract", dir / "out", mbox, Sample("unsafe-names.eml")});
  EXPECT_EQ(JsonLines(r).size(), 31u);
  const std::vector<std::string> written = ListDir(dir / "out");
  EXPECT_EQ(written.size(), 10u + 8u);
  // The attachment is the last part of its message: its line break goes
  // with the closing delimiter.
  EXPECT_EQ(ReadFile(dir / "out/d3.bin"), "data 3");
  EXPECT_EQ(ListDir(dir.path()), (std::vector<std::string>{"m.mbox", "out"}));
  for (const std::string& name : written) {
    EXPECT_NE(name.find_first_not_of("._"), std::string::npos) << name;
    EXPECT_EQ(name.find('/'), std::string::npos) << name;
  }
}

TEST(ToolIndex, AMessageThatCannotBeReadIsListedWithItsProblem) {
  TempDir dir;
  const std::string file = dir.Write("bad.eml", "no header here\r\n");
  const std::vector<JsonValue> lines = JsonLines(RunTool({"index", file}));
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_FALSE(lines[0]["problem"].string().empty());
}

TEST(ToolIndex, UsageErrors) {
  EXPECT_EQ(RunTool({"index"}).exit_code, 2);
  EXPECT_EQ(RunTool({"index", "-j", "0", Sample("plain.eml")}).exit_code, 2);
  EXPECT_EQ(RunTool({"index", "-j", "many", Sample("plain.eml")}).exit_code, 2);
  EXPECT_EQ(RunTool({"index", "/no/such/mailbox"}).exit_code, 3);
}

TEST(ToolIndex, AProgressBarOnlyOnATerminal) {
  TempDir dir;
  const std::string mbox = dir.Write("big.mbox", GeneratedMbox(2000));
  const RunResult terminal =
      RunToolWithTerminalStderr({"index", "-j", "2", mbox}, "PARCELVANE_PROGRESS_DELAY_MS=0");
  EXPECT_EQ(terminal.exit_code, 0);
  EXPECT_NE(terminal.err.find(" messages/s"), std::string::npos) << terminal.err;
  RunOptions options;
  options.stdout_path = dir / "out.jsonl";
  const RunResult file = RunTool({"index", mbox}, options);
  EXPECT_EQ(file.err, "");
}

}  // namespace
}  // namespace pvtool::test

#endif
