// Real files as they come: blank lines before the header, address groups,
// attachments the library does not flag, multiparts with no closing
// delimiter and trees nested very deep.
#ifdef PARCELVANE_TOOL_PATH

#include <gtest/gtest.h>

#include <algorithm>

#include "tests/tools/json_value.h"
#include "tests/tools/tool_runner.h"

namespace pvtool::test {
namespace {

const std::string kPlain = "From: Carol <carol@example.com>\r\nSubject: Lunch\r\n\r\nSee you.\r\n";

// ---------------------------------------------------------------- leading blank lines
TEST(ToolRealFiles, BlankLinesBeforeTheHeaderAreSkipped) {
  const std::string expected = RunTool({"show", "--json", "-"}, WithStdin(kPlain)).out;
  for (const char* opening : {"\r\n", "\n\n", " \t\r\n\r\n   \n", "\xEF\xBB\xBF\r\n",
                              "From carol@example.com Wed Jul  2 2025\r\n\r\n  \r\n"}) {
    const RunResult r = RunTool({"show", "--json", "-"}, WithStdin(std::string(opening) + kPlain));
    EXPECT_EQ(r.exit_code, 0) << r.err;
    EXPECT_EQ(r.out, expected);
  }
  const JsonValue v = JsonOf(RunTool({"show", "--json", "-"}, WithStdin("\r\n\r\n" + kPlain)));
  EXPECT_EQ(v["subject"].string(), "Lunch");
  EXPECT_EQ(v["body_size"].number(), 10);
}

TEST(ToolRealFiles, AnIndentedFirstLineCountsOnlyWhenItIsAHeaderField) {
  const JsonValue v = JsonOf(RunTool({"show", "--json", "-"}, WithStdin("\r\n   " + kPlain)));
  EXPECT_EQ(v["sender"]["address"].string(), "carol@example.com");
  EXPECT_EQ(v["subject"].string(), "Lunch");
  const RunResult text = RunTool({"show", "-"}, WithStdin("\r\n  Dear Carol,\r\nSubject: x\r\n\r\nbody\r\n"));
  EXPECT_EQ(text.exit_code, 4);
  EXPECT_EQ(text.err, "parcelvane: standard input: not a message: it does not begin with a header field\n");
  EXPECT_EQ(RunTool({"show", "-"}, WithStdin("\r\n \t\r\n")).exit_code, 4);
}

TEST(ToolRealFiles, AMessageWithoutHeaderFieldsReadsBackFromItsOwnOutput) {
  // Obsolete fields (a blank before the colon) are no fields to the library,
  // which then writes the message with an empty header.
  const std::string obsolete = "From  : jdoe@example.org\r\nSubject  : hi\r\n\r\nHello.\r\n";
  const RunResult once = RunTool({"roundtrip", "-"}, WithStdin(obsolete));
  ASSERT_EQ(once.exit_code, 0) << once.err;
  EXPECT_EQ(once.out, "\r\n\r\nHello.\r\n");
  const RunResult twice = RunTool({"roundtrip", "-"}, WithStdin(once.out));
  EXPECT_EQ(twice.exit_code, 0) << twice.err;
  EXPECT_EQ(twice.out, once.out);
  const JsonValue v = JsonOf(RunTool({"show", "--json", "-"}, WithStdin("\n\nHello.\n")));
  EXPECT_EQ(v["body_size"].number(), 8);
  // Blank lines before a header field are still skipped.
  EXPECT_EQ(JsonOf(RunTool({"show", "--json", "-"}, WithStdin("\r\n\r\n" + kPlain)))["subject"].string(),
            "Lunch");
}

TEST(ToolRealFiles, HelpSaysWhatIsSkipped) {
  for (const char* command : {"show", "extract", "ls"}) {
    const std::string help = RunTool({command, "--help"}).out;
    EXPECT_NE(help.find("blank lines"), std::string::npos) << command;
    EXPECT_NE(help.find("byte order mark"), std::string::npos) << command;
  }
  EXPECT_NE(RunTool({"--help"}).out.find("blank lines"), std::string::npos);
}

TEST(ToolRealFiles, ARepeatedSubjectShowsItsFirstField) {
  const std::string twice = "From: a@b\r\nSubject: Testing outlook\r\nSubject: Another PDF\r\n\r\nbody\r\n";
  EXPECT_EQ(JsonOf(RunTool({"show", "--json", "-"}, WithStdin(twice)))["subject"].string(),
            "Testing outlook");
  EXPECT_NE(RunTool({"headers", "-"}, WithStdin(twice)).out.find("Another PDF"), std::string::npos);
}

// ---------------------------------------------------------------- address groups
const std::string kGroups =
    "From: Team: Ann <ann@example.com>, bob@example.com;\r\n"
    "To: A Group:Chris Jones <c@example.org>, d@example.org;, undisclosed-recipients:;, e@example.net\r\n"
    "Subject: groups\r\n\r\nbody\r\n";

TEST(ToolRealFiles, ShowPrintsAGroupAsItsNameAndItsMembers) {
  const RunResult r = RunTool({"show", "-"}, WithStdin(kGroups));
  EXPECT_EQ(r.exit_code, 0) << r.err;
  EXPECT_NE(r.out.find("From:    Team: Ann <ann@example.com>, bob@example.com;\n"), std::string::npos)
      << r.out;
  EXPECT_NE(
      r.out.find("To:      A Group: Chris Jones <c@example.org>, d@example.org; undisclosed-recipients, "
                 "e@example.net\n"),
      std::string::npos)
      << r.out;
}

TEST(ToolRealFiles, ShowJsonGivesGroupMembersAGroupKey) {
  const JsonValue v = JsonOf(RunTool({"show", "--json", "-"}, WithStdin(kGroups)));
  const JsonValue& to = v["recipients"];
  ASSERT_EQ(to.size(), 4u);
  EXPECT_EQ(to[0]["name"].string(), "Chris Jones");
  EXPECT_EQ(to[0]["address"].string(), "c@example.org");
  EXPECT_EQ(to[0]["group"].string(), "A Group");
  EXPECT_EQ(to[1]["address"].string(), "d@example.org");
  EXPECT_EQ(to[1]["group"].string(), "A Group");
  // An empty group is its name alone.
  EXPECT_EQ(to[2]["group"].string(), "undisclosed-recipients");
  EXPECT_EQ(to[2]["name"].string(), "");
  EXPECT_EQ(to[2]["address"].string(), "");
  EXPECT_EQ(to[3]["address"].string(), "e@example.net");
  EXPECT_FALSE(to[3].has("group"));
  EXPECT_EQ(v["sender"]["name"].string(), "Ann");
  EXPECT_EQ(v["sender"]["address"].string(), "ann@example.com");
}

TEST(ToolRealFiles, LsShowsTheSenderOfAGroup) {
  TempDir dir;
  dir.Write("1.eml", kGroups);
  dir.Write("2.eml", "From: undisclosed-senders:;\r\nSubject: none\r\n\r\nbody\r\n");
  const JsonValue v = JsonOf(RunTool({"ls", "--json", dir.path()}));
  ASSERT_EQ(v.size(), 2u);
  EXPECT_EQ(v[0]["sender"].string(), "Ann");
  EXPECT_EQ(v[1]["sender"].string(), "undisclosed-senders");
}

// ---------------------------------------------------------------- attachments
const std::string kMixed =
    "From: a@example.com\r\nSubject: files\r\nMIME-Version: 1.0\r\n"
    "Content-Type: multipart/mixed; boundary=\"XX\"\r\n\r\n"
    "--XX\r\nContent-Type: text/plain\r\n\r\nHere they are.\r\n\r\nbegin 644 "
    "old.txt\r\n#86)C\r\n`\r\nend\r\n\r\n"
    "--XX\r\nContent-Type: application/octet-stream\r\nContent-Transfer-Encoding: base64\r\n\r\nAAEC\r\n"
    "--XX\r\nContent-Type: text/csv; name=\"figures.csv\"\r\n\r\na,b\r\n"
    "--XX\r\nContent-Type: text/html\r\n\r\n<p>not an attachment</p>\r\n"
    "--XX--\r\n";

TEST(ToolRealFiles, ExtractWritesEveryAttachmentShowLists) {
  const JsonValue shown = JsonOf(RunTool({"show", "--json", "-"}, WithStdin(kMixed)));
  ASSERT_EQ(shown["attachments"].size(), 3u);
  EXPECT_EQ(shown["attachments"][1]["name"].string(), "figures.csv");
  EXPECT_EQ(shown["attachments"][2]["name"].string(), "old.txt");  // uuencoded in the text, placed last
  TempDir dir;
  const JsonValue written = JsonOf(RunTool({"extract", "--json", "-d", dir.path(), "-"}, WithStdin(kMixed)));
  ASSERT_EQ(written.size(), 3u);
  for (size_t i = 0; i < 3; ++i)
    EXPECT_EQ(written[i]["attachment"].string(), shown["attachments"][i]["name"].string());
  EXPECT_EQ(ReadFile(written[0]["path"].string()), std::string("\x00\x01\x02", 3));
  EXPECT_EQ(ReadFile(written[1]["path"].string()), "a,b\r\n");  // an inner part keeps its last line break
  EXPECT_EQ(ReadFile(written[2]["path"].string()), "abc");
}

TEST(ToolRealFiles, ShowMarksTheSameAttachmentsInThePartTree) {
  const JsonValue v = JsonOf(RunTool({"show", "--json", "-"}, WithStdin(kMixed)));
  std::vector<std::string> marked;
  for (const JsonValue& part : v["parts"].array()) {
    marked.push_back(part["content_type"].string() + (part["attachment"].boolean() ? "+" : "-"));
  }
  EXPECT_EQ(marked, (std::vector<std::string>{"multipart/mixed-", "text/plain-", "application/octet-stream+",
                                              "text/csv+", "text/html-", "text/plain+"}));
  const RunResult ls =
      RunTool({"ls", "--json", "-"}, WithStdin("From x@y Mon Jan  1 00:00:00 2024\n" + kMixed));
  EXPECT_EQ(JsonOf(ls)[0]["attachments"].number(), 3);
}

// ---------------------------------------------------------------- no closing delimiter
const std::string kUnshown = "Content-Type: application/pdf; name=a.pdf\r\n\r\n%PDF-1.4 ...\r\n";
const std::string kUnclosed =
    "From: a@example.com\r\nSubject: cut\r\nMIME-Version: 1.0\r\n"
    "Content-Type: multipart/mixed; boundary=\"XX\"\r\n\r\n"
    "--XX\r\nContent-Type: multipart/alternative; boundary=\"YY\"\r\n\r\n"
    "--YY\r\n\r\nplain\r\n--YY\r\nContent-Type: text/html\r\n\r\n<p>html</p>\r\n--YY--\r\n"
    "--XX\r\n" +
    kUnshown;

TEST(ToolRealFiles, ShowSaysWhenAMultipartHasNoClosingDelimiter) {
  const std::string warning = "multipart/mixed at depth 0 has no closing delimiter: its last " +
                              std::to_string(kUnshown.size()) + " bytes are not shown";
  const RunResult r = RunTool({"show", "-"}, WithStdin(kUnclosed));
  EXPECT_EQ(r.exit_code, 0);
  EXPECT_EQ(r.err, "parcelvane: standard input: " + warning + "\n");
  const JsonValue v = JsonOf(RunTool({"show", "--json", "-"}, WithStdin(kUnclosed)));
  ASSERT_EQ(v["warnings"].size(), 1u);
  EXPECT_EQ(v["warnings"][0].string(), warning);
  EXPECT_EQ(v["parts"].size(), 4u);  // the pdf is not among them
}

TEST(ToolRealFiles, ExtractAndLsSayItToo) {
  TempDir dir;
  const RunResult extract = RunTool({"extract", "-d", dir.path(), "-"}, WithStdin(kUnclosed));
  EXPECT_EQ(extract.exit_code, 0);
  ASSERT_EQ(kUnshown.size(), 59u);
  EXPECT_EQ(extract.err,
            "parcelvane: standard input: multipart/mixed at depth 0 has no closing delimiter: its last 59 "
            "bytes are "
            "not shown\nparcelvane: standard input: no attachments\n");
  const std::string nested = "From: a@b\r\nContent-Type: multipart/mixed; boundary=o\r\n\r\n--o\r\n" +
                             kUnclosed.substr(kUnclosed.find("Content-Type")) + "\r\n--o--\r\n";
  dir.Write("m.eml", nested);
  const RunResult ls = RunTool({"ls", dir.path()});
  EXPECT_EQ(ls.exit_code, 0);
  EXPECT_EQ(ls.err,
            "parcelvane: " + dir / "m.eml" +
                ": multipart/mixed at depth 1 has no closing delimiter: its last 59 bytes are not shown\n");
  EXPECT_EQ(RunTool({"show", "-"}, WithStdin(kMixed)).err, "");
}

// ---------------------------------------------------------------- parts without an empty line
// The library drops a part whose header no empty line ends; the command says
// so and still lays the other parts out.
const std::string kHeaderless = "Content-Type: application/zip; name=a.zip\r\nUEsDBBQ=";
const std::string kWithHeaderless =
    "From: a@example.com\r\nMIME-Version: 1.0\r\nContent-Type: multipart/mixed; boundary=\"XX\"\r\n\r\n"
    "--XX\r\nContent-Type: text/plain\r\n\r\nfirst\r\n"
    "--XX\r\n" +
    kHeaderless +
    "\r\n"
    "--XX\r\n\r\nthird\r\n"
    "--XX\r\n--XX--\r\n";

TEST(ToolRealFiles, ShowSaysWhenAPartHasNoEmptyLineAfterItsHeader) {
  // The part keeps the line break before the next delimiter.
  const std::string warning = "multipart/mixed at depth 0 has 1 part with no empty line after the header: " +
                              std::to_string(kHeaderless.size() + 2) + " bytes are not shown";
  const RunResult r = RunTool({"show", "-"}, WithStdin(kWithHeaderless));
  EXPECT_EQ(r.exit_code, 0);
  EXPECT_EQ(r.err, "parcelvane: standard input: " + warning + "\n");
  const JsonValue v = JsonOf(RunTool({"show", "--json", "-"}, WithStdin(kWithHeaderless)));
  ASSERT_EQ(v["warnings"].size(), 1u);
  EXPECT_EQ(v["warnings"][0].string(), warning);
  ASSERT_EQ(v["parts"].size(), 3u);  // the multipart and the two parts the library keeps
  // The two consecutive delimiters at the end lose nothing and say nothing;
  // the multipart is still laid out, so its size is known.
  EXPECT_EQ(v["parts"][0]["size"].kind(), JsonValue::Kind::kNumber);
  EXPECT_EQ(RunTool({"show", "-"}, WithStdin(kMixed)).err, "");
}

TEST(ToolRealFiles, AMultipartTheLibraryDoesNotSplitGetsNoWarning) {
  // The library splits at the raw boundary value, here still RFC 2231 coded,
  // so it finds no delimiter and keeps the body whole: nothing is dropped.
  const std::string coded =
      "From: a@b\r\nMIME-Version: 1.0\r\nContent-Type: multipart/mixed; boundary*=us-ascii''XX\r\n\r\n"
      "--XX\r\n\r\none\r\n--XX\r\n\r\ntwo\r\n";
  const RunResult r = RunTool({"show", "--json", "-"}, WithStdin(coded));
  EXPECT_EQ(r.err, "");
  const JsonValue v = JsonOf(r);
  EXPECT_EQ(v["parts"].size(), 1u);
  EXPECT_EQ(v["warnings"].size(), 0u);
}

// ---------------------------------------------------------------- deep trees
std::string Nested(int depth) {
  std::string message = "From: a@b\r\nSubject: deep\r\n";
  for (int i = 0; i < depth; ++i) {
    if (i > 0) message += "--b" + std::to_string(i - 1) + "\r\n";
    message += "Content-Type: multipart/mixed; boundary=\"b" + std::to_string(i) + "\"\r\n\r\n";
  }
  message += "--b" + std::to_string(depth - 1) + "\r\nContent-Type: text/plain\r\n\r\nhello\r\n";
  for (int i = depth - 1; i >= 0; --i) message += "--b" + std::to_string(i) + "--\r\n";
  return message;
}

TEST(ToolRealFiles, ShowCapsTheIndentationAndPrintsTheDepthBeyondIt) {
  const RunResult r = RunTool({"show", "-"}, WithStdin(Nested(40)));
  EXPECT_EQ(r.exit_code, 0) << r.err;
  EXPECT_NE(r.out.find("\n" + std::string(2 + 64, ' ') + "multipart/mixed"), std::string::npos);  // depth 32
  EXPECT_NE(r.out.find("\n" + std::string(2 + 64, ' ') + "[33] multipart/mixed"), std::string::npos);
  EXPECT_NE(r.out.find("\n" + std::string(2 + 64, ' ') + "[40] text/plain "), std::string::npos);
  EXPECT_EQ(r.out.find(std::string(2 + 66, ' ') + "multipart"), std::string::npos);
}

TEST(ToolRealFiles, ShowWalksAHundredThousandLevelsOnASmallStack) {
  constexpr int kDepth = 100000;
  RunOptions options = WithStdin(Nested(kDepth));
  options.stack_bytes = 256 * 1024;
  const RunResult r = RunTool({"show", "-"}, options);
  ASSERT_EQ(r.exit_code, 0) << r.err;
  EXPECT_EQ(static_cast<size_t>(std::count(r.out.begin(), r.out.end(), '\n')), 5u + kDepth + 1);
  // Linear output: no line grows with the depth beyond the cap.
  EXPECT_LT(r.out.size(), static_cast<size_t>(kDepth + 1) * 150);
  EXPECT_NE(r.out.find("[100000] text/plain"), std::string::npos);
  // The sizes of the multiparts are those of the input.
  EXPECT_NE(r.out.find("[99999] multipart/mixed  -                   55 B raw\n"), std::string::npos);
  const RunResult json = RunTool({"show", "--json", "-"}, options);
  EXPECT_EQ(JsonOf(json)["parts"].size(), static_cast<size_t>(kDepth + 1));
}

}  // namespace
}  // namespace pvtool::test

#endif
