// compose: messages built from options parse back to the same values.
#ifdef PARCELVANE_TOOL_PATH

#include <gtest/gtest.h>

#include "tests/tools/json_value.h"
#include "tests/tools/tool_runner.h"

namespace pvtool::test {
namespace {

JsonValue ShowJson(const std::string& file) { return JsonOutput(RunTool({"show", "--json", file})); }

std::string WithoutTrailingLineBreaks(std::string text) {
  while (!text.empty() && text.back() == '\n') text.pop_back();
  return text;
}

const std::string kSubject =
    "Gr\xC3\xBC\xC3\x9F"
    "e \xE2\x80\x93 \xD0\x9E\xD1\x82\xD1\x87\xD1\x91\xD1\x82 \xE5\xA0\xB1\xE5\x91\x8A";
const std::string kFromName = "J\xC3\xBCrgen M\xC3\xBCller";
const std::string kToName = "\xD0\x90\xD0\xBD\xD0\xBD\xD0\xB0 \xC5\x81ukasiewicz";
const std::string kText =
    "Hallo \xE2\x80\x93 \xD0\xBF\xD1\x80\xD0\xB8\xD0\xB2\xD0\xB5\xD1\x82, \xE4\xBD\xA0\xE5\xA5\xBD!\nZweite "
    "Zeile.\n";
const std::string kAttachmentName = "\xD0\x9E\xD1\x82\xD1\x87\xD1\x91\xD1\x82 f\xC3\xBCr Q3.pdf";

TEST(ToolCompose, NonAsciiValuesSurviveComposeAndShow) {
  TempDir dir;
  const std::string attachment = dir.Write(kAttachmentName, std::string("%PDF-1.4\n\0\x01\xFF binary", 19));
  const RunResult r = RunTool({"compose", "--from", kFromName + " <jm@example.org>", "--to",
                               kToName + " <anna@example.com>", "--to", "bob@example.net", "--subject",
                               kSubject, "--text", kText, "--attach", attachment, "-o", dir / "out.eml"});
  ASSERT_EQ(r.exit_code, 0) << r.err;
  EXPECT_EQ(r.out, "");
  const JsonValue v = ShowJson(dir / "out.eml");
  EXPECT_EQ(v["subject"].string(), kSubject);
  EXPECT_EQ(v["sender"]["name"].string(), kFromName);
  EXPECT_EQ(v["sender"]["address"].string(), "jm@example.org");
  ASSERT_EQ(v["recipients"].size(), 2u);
  EXPECT_EQ(v["recipients"][0]["name"].string(), kToName);
  EXPECT_EQ(v["recipients"][0]["address"].string(), "anna@example.com");
  EXPECT_EQ(v["recipients"][1]["address"].string(), "bob@example.net");
  ASSERT_EQ(v["attachments"].size(), 1u);
  EXPECT_EQ(v["attachments"][0]["name"].string(), kAttachmentName);
  EXPECT_EQ(v["attachments"][0]["content_type"].string(), "application/pdf");
  EXPECT_EQ(v["attachments"][0]["size"].number(), 19);
  EXPECT_EQ(RunTool({"text", dir / "out.eml"}).out, kText);
}

TEST(ToolCompose, TheAttachmentExtractsToTheSameBytesAndName) {
  TempDir dir;
  const std::string bytes("\x00\x01\x02\xFE\xFF\r\n\n\r", 9);
  const std::string attachment = dir.Write(kAttachmentName, bytes);
  ASSERT_EQ(RunTool({"compose", "--attach", attachment, "-o", dir / "out.eml"}).exit_code, 0);
  const std::string out = dir / "extracted";
  ASSERT_EQ(RunTool({"extract", "-d", out, dir / "out.eml"}).exit_code, 0);
  EXPECT_EQ(ListDir(out), std::vector<std::string>{kAttachmentName});
  EXPECT_EQ(ReadFile(out + "/" + kAttachmentName), bytes);
}

TEST(ToolCompose, TheHeaderIsSevenBitAndLinesEndInCrLf) {
  const RunResult r = RunTool({"compose", "--from", kFromName + " <jm@example.org>", "--subject", kSubject,
                               "--text", kText, "--header", "X-Note: \xC3\xA9t\xC3\xA9"});
  ASSERT_EQ(r.exit_code, 0) << r.err;
  const size_t header_end = r.out.find("\r\n\r\n");
  ASSERT_NE(header_end, std::string::npos);
  for (size_t i = 0; i < header_end; ++i) {
    EXPECT_LT(static_cast<unsigned char>(r.out[i]), 0x80) << "byte " << i;
  }
  for (size_t i = 0; i < r.out.size(); ++i) {
    if (r.out[i] != '\n') continue;
    ASSERT_TRUE(i > 0 && r.out[i - 1] == '\r') << "bare LF at " << i;
  }
  EXPECT_NE(r.out.find("MIME-Version: 1.0\r\n"), std::string::npos);
  EXPECT_NE(r.out.find("charset=\"utf-8\""), std::string::npos);
}

TEST(ToolCompose, TextHtmlAndAttachmentsMakeTheUsualTree) {
  TempDir dir;
  const std::string html = dir.Write("body.html", "<p>K\xC3\xB6ln</p>\n");
  const std::string text = dir.Write("body.txt", "K\xC3\xB6ln\n");
  const std::string a = dir.Write("a.txt", "alpha\n");
  const std::string b = dir.Write("b.bin", "beta");
  ASSERT_EQ(RunTool({"compose", "--text-file", text, "--html-file", html, "--attach", a, "--attach", b, "-o",
                     dir / "out.eml"})
                .exit_code,
            0);
  const JsonValue v = ShowJson(dir / "out.eml");
  const JsonValue& parts = v["parts"];
  ASSERT_EQ(parts.size(), 6u);
  EXPECT_EQ(parts[0]["content_type"].string(), "multipart/mixed");
  EXPECT_EQ(parts[1]["content_type"].string(), "multipart/alternative");
  EXPECT_EQ(parts[2]["content_type"].string(), "text/plain");
  EXPECT_EQ(parts[3]["content_type"].string(), "text/html");
  EXPECT_EQ(parts[4]["name"].string(), "a.txt");
  EXPECT_EQ(parts[5]["name"].string(), "b.bin");
  EXPECT_EQ(RunTool({"html", dir / "out.eml"}).out, "<p>K\xC3\xB6ln</p>\n");
  // The text part is not the last of its list: it may come back with the
  // line break before the next delimiter.
  EXPECT_EQ(WithoutTrailingLineBreaks(RunTool({"text", dir / "out.eml"}).out), "K\xC3\xB6ln");
}

TEST(ToolCompose, TheDateIsSetOrGiven) {
  const RunResult given = RunTool({"compose", "--date", "Tue, 01 Jul 2025 10:52:37 +0000", "--text", "x"});
  EXPECT_NE(given.out.find("Date: Tue, 01 Jul 2025 10:52:37 +0000\r\n"), std::string::npos);
  const RunResult now = RunTool({"compose", "--text", "x"});
  EXPECT_NE(now.out.find("Date: "), std::string::npos);
  EXPECT_NE(now.out.find(" +0000\r\n"), std::string::npos);
}

TEST(ToolCompose, ABadHeaderOptionIsAUsageError) {
  EXPECT_EQ(RunTool({"compose", "--header", "no colon here"}).exit_code, 2);
  EXPECT_EQ(RunTool({"compose", "--header", "bad name: x"}).exit_code, 2);
}

TEST(ToolCompose, AnUnwritableOutputLeavesNothingBehind) {
  TempDir dir;
  const RunResult r = RunTool({"compose", "--text", "x", "-o", dir / "missing/out.eml"});
  EXPECT_EQ(r.exit_code, 5);
  EXPECT_EQ(ListDir(dir.path()), std::vector<std::string>{});
}

TEST(ToolCompose, OutputReplacesAnOlderFileWhole) {
  TempDir dir;
  dir.Write("out.eml", std::string(10000, '~'));
  ASSERT_EQ(RunTool({"compose", "--text", "short", "-o", dir / "out.eml"}).exit_code, 0);
  const std::string written = ReadFile(dir / "out.eml");
  EXPECT_EQ(written.find('~'), std::string::npos);
  EXPECT_EQ(ListDir(dir.path()), std::vector<std::string>{"out.eml"});
}

TEST(ToolCompose, ALineBreakInAnAddressIsAUsageErrorNamingTheOption) {
  const RunResult to = RunTool({"compose", "--to", "c@d\r\nBcc: evil@example.net", "--text", "x"});
  EXPECT_EQ(to.exit_code, 2);
  EXPECT_EQ(to.out, "");
  EXPECT_EQ(to.err,
            "parcelvane: compose: --to holds a line break (CR or LF), which would end the header field\n");
  const RunResult header = RunTool({"compose", "--header", "X-Note: a\nBcc: evil@example.net"});
  EXPECT_EQ(header.exit_code, 2);
  EXPECT_NE(header.err.find("--header"), std::string::npos) << header.err;
  EXPECT_EQ(RunTool({"compose", "--from", "a@b\rBcc: x"}).exit_code, 2);
  EXPECT_EQ(RunTool({"compose", "--cc", "Ann <a\"@b>"}).exit_code, 2);
  EXPECT_EQ(RunTool({"compose", "--date", "today\r\nBcc: x"}).exit_code, 2);
}

TEST(ToolCompose, ALineBreakInTheSubjectIsDataNotAField) {
  TempDir dir;
  const std::string subject = "Hi\r\nBcc: evil@example.net";
  ASSERT_EQ(RunTool({"compose", "--subject", subject, "--text", "x", "-o", dir / "out.eml"}).exit_code, 0);
  const std::string message = ReadFile(dir / "out.eml");
  EXPECT_EQ(message.find("Bcc"), std::string::npos);
  EXPECT_NE(message.find("Subject: =?utf-8?B?SGkNCkJjYzogZXZpbEBleGFtcGxlLm5ldA==?=\r\n"), std::string::npos);
  EXPECT_EQ(ShowJson(dir / "out.eml")["subject"].string(), subject);
}

TEST(ToolCompose, AQuoteInAFileNameStaysInTheName) {
  TempDir dir;
  const std::string name = "x.txt\"; name=\"evil.exe";
  const std::string attachment = dir.Write(name, "abc");
  ASSERT_EQ(RunTool({"compose", "--attach", attachment, "-o", dir / "out.eml"}).exit_code, 0);
  const std::string message = ReadFile(dir / "out.eml");
  EXPECT_EQ(message.find("name=\"evil.exe\""), std::string::npos);
  EXPECT_NE(message.find("\tfilename*=utf-8''x.txt%22%3B%20name%3D%22evil.exe\r\n"), std::string::npos);
  const JsonValue v = ShowJson(dir / "out.eml");
  ASSERT_EQ(v["attachments"].size(), 1u);
  EXPECT_EQ(v["attachments"][0]["name"].string(), name);
  EXPECT_EQ(v["attachments"][0]["size"].number(), 3);
}

TEST(ToolCompose, ALineBreakInAFileNameAddsNoFieldAndNoPart) {
  TempDir dir;
  // A file name cannot hold "/": "%" stands in the type's place.
  const std::string name = "a\r\nContent-Type: text%html\r\n\r\n<b>.txt";
  const std::string attachment = dir.Write(name, "abc");
  ASSERT_EQ(RunTool({"compose", "--text", "x", "--attach", attachment, "-o", dir / "out.eml"}).exit_code, 0);
  const JsonValue v = ShowJson(dir / "out.eml");
  ASSERT_EQ(v["parts"].size(), 3u);
  ASSERT_EQ(v["attachments"].size(), 1u);
  EXPECT_EQ(v["attachments"][0]["name"].string(), name);
  EXPECT_EQ(v["attachments"][0]["content_type"].string(), "text/plain");
  EXPECT_EQ(ReadFile(dir / "out.eml").find("Content-Type: text%html"), std::string::npos);
}

TEST(ToolCompose, AnEmptyFileAttachesAsAnEmptyPart) {
  for (const bool last : {true, false}) {
    TempDir dir;
    const std::string empty = dir.Write("empty.dat", "");
    const std::string other = dir.Write("other.txt", "other");
    std::vector<std::string> args = {"compose", "--text", "x"};
    for (const std::string& file :
         last ? std::vector<std::string>{other, empty} : std::vector<std::string>{empty, other}) {
      args.push_back("--attach");
      args.push_back(file);
    }
    args.insert(args.end(), {"-o", dir / "out.eml"});
    const RunResult r = RunTool(args);
    ASSERT_EQ(r.exit_code, 0) << r.err;
    const JsonValue v = ShowJson(dir / "out.eml");
    ASSERT_EQ(v["attachments"].size(), 2u) << "empty part last: " << last;
    const std::string out = dir / "extracted";
    ASSERT_EQ(RunTool({"extract", "-d", out, dir / "out.eml"}).exit_code, 0);
    EXPECT_EQ(ListDir(out), (std::vector<std::string>{"empty.dat", "other.txt"}));
    EXPECT_EQ(ReadFile(out + "/empty.dat"), "");
    EXPECT_EQ(ReadFile(out + "/other.txt"), "other");
  }
}

}  // namespace
}  // namespace pvtool::test

#endif
