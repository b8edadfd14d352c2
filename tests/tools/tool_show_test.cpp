// show, headers, text and html on the shipped samples and on generated
// messages.
#ifdef PARCELVANE_TOOL_PATH

#include <gtest/gtest.h>

#include "tests/tools/json_value.h"
#include "tests/tools/tool_runner.h"
#include "tools/line_ends.h"

namespace pvtool::test {
namespace {

const char kPlainText[] =
    "Hallo Anna,\n\nanbei der Bericht f\xC3\xBCr das dritte Quartal. Die Zahlen f\xC3\xBCr K\xC3\xB6ln und "
    "\xC5\x81\xC3\xB3"
    "d\xC5\xBA\nsind endlich vollst\xC3\xA4ndig \xE2\x80\x93 danke f\xC3\xBCr die Geduld!\n\n"
    "Viele Gr\xC3\xBC\xC3\x9F"
    "e\nJ\xC3\xBCrgen\n";

TEST(ToolShow, SummarisesTheMultipartSample) {
  const RunResult r = RunTool({"show", Sample("multipart-report.eml")});
  EXPECT_EQ(r.exit_code, 0) << r.err;
  EXPECT_NE(r.out.find("From:    J\xC3\xBCrgen M\xC3\xBCller <juergen.mueller@example.org>\n"),
            std::string::npos);
  EXPECT_NE(r.out.find("To:      Anna \xC5\x81ukasiewicz <anna@example.com>, bob@example.net\n"),
            std::string::npos);
  EXPECT_NE(r.out.find("Subject: Gr\xC3\xBC\xC3\x9F"
                       "e aus K\xC3\xB6ln \xE2\x80\x93 Bericht f\xC3\xBCr Q3\n"),
            std::string::npos);
  EXPECT_NE(r.out.find("Date:    Tue, 1 Jul 2025 10:52:37 +0200\n"), std::string::npos);
  EXPECT_NE(r.out.find("\n  multipart/mixed "), std::string::npos);
  EXPECT_NE(r.out.find("\n    multipart/alternative "), std::string::npos);
  EXPECT_NE(r.out.find("\n      text/plain                    quoted-printable"), std::string::npos);
  EXPECT_NE(r.out.find("\n      text/html                     base64"), std::string::npos);
  EXPECT_NE(r.out.find("attachment \"Bericht f\xC3\xBCr Q3.pdf\"\n"), std::string::npos);
}

TEST(ToolShow, JsonDescribesTheSameMessage) {
  const JsonValue v = JsonOf(RunTool({"show", "--json", Sample("multipart-report.eml")}));
  EXPECT_EQ(v["subject"].string(),
            "Gr\xC3\xBC\xC3\x9F"
            "e aus K\xC3\xB6ln \xE2\x80\x93 Bericht f\xC3\xBCr Q3");
  EXPECT_EQ(v["sender"]["name"].string(), "J\xC3\xBCrgen M\xC3\xBCller");
  EXPECT_EQ(v["sender"]["address"].string(), "juergen.mueller@example.org");
  ASSERT_EQ(v["recipients"].size(), 2u);
  EXPECT_EQ(v["recipients"][0]["name"].string(), "Anna \xC5\x81ukasiewicz");
  EXPECT_EQ(v["recipients"][1]["address"].string(), "bob@example.net");
  EXPECT_EQ(v["date"].string(), "Tue, 1 Jul 2025 10:52:37 +0200");
  EXPECT_TRUE(v["mime"].boolean());
  const JsonValue& parts = v["parts"];
  ASSERT_EQ(parts.size(), 5u);
  const char* types[] = {"multipart/mixed", "multipart/alternative", "text/plain", "text/html",
                         "application/pdf"};
  const int depths[] = {0, 1, 2, 2, 1};
  for (size_t i = 0; i < 5; ++i) {
    EXPECT_EQ(parts[i]["content_type"].string(), types[i]);
    EXPECT_EQ(parts[i]["depth"].number(), depths[i]);
  }
  EXPECT_EQ(parts[2]["transfer_encoding"].string(), "quoted-printable");
  // CR LF line ends, and an inner part keeps the line break before the
  // next delimiter.
  EXPECT_EQ(parts[2]["decoded_size"].number(), std::string(kPlainText).size() + 7 + 2);
  EXPECT_TRUE(parts[0]["decoded_size"].is_null());
  EXPECT_FALSE(parts[2]["attachment"].boolean());
  EXPECT_TRUE(parts[4]["attachment"].boolean());
  EXPECT_EQ(parts[4]["name"].string(), "Bericht f\xC3\xBCr Q3.pdf");
  ASSERT_EQ(v["attachments"].size(), 1u);
  EXPECT_EQ(v["attachments"][0]["name"].string(), "Bericht f\xC3\xBCr Q3.pdf");
  EXPECT_EQ(v["attachments"][0]["content_type"].string(), "application/pdf");
  EXPECT_EQ(v["attachments"][0]["size"].number(), parts[4]["decoded_size"].number());
}

TEST(ToolShow, APlainMessageHasNoParts) {
  const JsonValue v = JsonOf(RunTool({"show", "--json", Sample("plain.eml")}));
  EXPECT_FALSE(v["mime"].boolean());
  EXPECT_EQ(v["parts"].size(), 0u);
  EXPECT_EQ(v["subject"].string(), "Lunch on Friday?");
  EXPECT_EQ(v["sender"]["name"].string(), "Carol Example");
  EXPECT_EQ(v["body_size"].number(), 81);  // five lines with CR LF ends
  EXPECT_NE(RunTool({"show", Sample("plain.eml")}).out.find("Plain message (no MIME parts), body 81 B"),
            std::string::npos);
}

TEST(ToolShow, AUuencodedBlockBecomesAPartOfItsOwn) {
  const JsonValue v = JsonOf(RunTool({"show", "--json", Sample("uuencoded.eml")}));
  EXPECT_TRUE(v["mime"].boolean());
  const JsonValue& parts = v["parts"];
  ASSERT_EQ(parts.size(), 3u);
  EXPECT_EQ(parts[0]["content_type"].string(), "multipart/mixed");
  EXPECT_EQ(parts[2]["transfer_encoding"].string(), "x-uuencode");
  EXPECT_EQ(parts[2]["decoded_size"].number(), 33);  // "id,name,total\n1,Anna,42\n2,Bob,17\n"
}

TEST(ToolShow, LfInputIsConvertedToCrLfByDefault) {
  const std::string lf = ReadFile(Sample("multipart-report.eml"));
  ASSERT_EQ(lf.find('\r'), std::string::npos) << "the sample is stored with LF line ends";
  const RunResult from_lf = RunTool({"show", "--json", "-"}, WithStdin(lf));
  const RunResult from_crlf = RunTool({"show", "--json", "-"}, WithStdin(BareLfToCrLf(lf)));
  EXPECT_EQ(JsonOf(from_lf)["parts"].size(), 5u);
  EXPECT_EQ(from_lf.out, from_crlf.out);
}

TEST(ToolShow, NoCrlfReadsBareLfInputAsOneHeaderBlock) {
  const std::string lf = ReadFile(Sample("multipart-report.eml"));
  const JsonValue raw = JsonOf(RunTool({"show", "--json", "--no-crlf", "-"}, WithStdin(lf)));
  // Without a CR LF CR LF the whole message is header block: no body, so
  // no children and no attachment.
  ASSERT_EQ(raw["parts"].size(), 1u);
  EXPECT_EQ(raw["parts"][0]["children"].number(), 0);
  EXPECT_EQ(raw["parts"][0]["size"].number(), 0);
  EXPECT_EQ(raw["attachments"].size(), 0u);
  EXPECT_EQ(RunTool({"text", "--no-crlf", "-"}, WithStdin(lf)).exit_code, 1);
  const JsonValue crlf = JsonOf(RunTool({"show", "--json", "--no-crlf", "-"}, WithStdin(BareLfToCrLf(lf))));
  EXPECT_EQ(crlf["parts"].size(), 5u);
}

TEST(ToolShow, AnMboxSeparatorOpeningTheFileIsSkipped) {
  const std::string message = ReadFile(Sample("plain.eml"));
  const RunResult with =
      RunTool({"show", "--json", "-"}, WithStdin("From carol@example.com Wed Jul  2 2025\n" + message));
  const RunResult without = RunTool({"show", "--json", "-"}, WithStdin(message));
  EXPECT_EQ(with.out, without.out);
}

TEST(ToolShow, AByteOrderMarkOpeningTheFileIsSkipped) {
  const std::string message = ReadFile(Sample("plain.eml"));
  const RunResult with = RunTool({"show", "--json", "-"}, WithStdin("\xEF\xBB\xBF" + message));
  EXPECT_EQ(with.exit_code, 0) << with.err;
  EXPECT_EQ(with.out, RunTool({"show", "--json", "-"}, WithStdin(message)).out);
}

TEST(ToolShow, ControlCharactersInHeadersNeverReachTheTerminal) {
  const RunResult r = RunTool({"show", "-"}, WithStdin("Subject: =?utf-8?q?a=1B[2Jb?=\nFrom: x@y\n\nbody\n"));
  EXPECT_EQ(r.exit_code, 0);
  EXPECT_NE(r.out.find("Subject: a?[2Jb\n"), std::string::npos);
  EXPECT_EQ(r.out.find('\x1B'), std::string::npos);
}

TEST(ToolShow, RawUtf8InHeadersIsShownAsUtf8) {
  const RunResult r = RunTool({"show", "--json", "-"}, WithStdin("Subject: Gr\xC3\xBC\xC3\x9F"
                                                                 "e\nFrom: x@y\n\nbody\n"));
  EXPECT_EQ(JsonOf(r)["subject"].string(),
            "Gr\xC3\xBC\xC3\x9F"
            "e");
}

TEST(ToolShow, WritingToAFullDeviceFails) {
  RunOptions options;
  options.stdout_path = "/dev/full";
  const RunResult r = RunTool({"show", Sample("plain.eml")}, options);
  EXPECT_EQ(r.exit_code, 5);
  EXPECT_NE(r.err.find("cannot write to standard output"), std::string::npos);
}

TEST(ToolHeaders, ListsEveryFieldDecodedIncludingTheRootPart) {
  const RunResult r = RunTool({"headers", Sample("multipart-report.eml")});
  EXPECT_EQ(r.exit_code, 0);
  EXPECT_EQ(r.out,
            "From: J\xC3\xBCrgen M\xC3\xBCller <juergen.mueller@example.org>\n"
            "To: Anna \xC5\x81ukasiewicz <anna@example.com>, bob@example.net\n"
            "Subject: Gr\xC3\xBC\xC3\x9F"
            "e aus K\xC3\xB6ln \xE2\x80\x93 Bericht f\xC3\xBCr Q3\n"
            "Date: Tue, 1 Jul 2025 10:52:37 +0200\n"
            "Message-ID: <20250701105237.4711@example.org>\n"
            "MIME-Version: 1.0\n"
            "Content-Type: multipart/mixed; boundary=\"=-outer-7f3a\"\n");
}

TEST(ToolHeaders, RawPrintsTheStoredValues) {
  const RunResult r = RunTool({"headers", "--raw", Sample("multipart-report.eml")});
  EXPECT_EQ(r.exit_code, 0);
  EXPECT_NE(r.out.find("Subject: =?UTF-8?B?R3LDvMOfZSBhdXMgS8O2bG4g4oCTIEJlcmljaHQgZsO8ciBRMw==?=\n"),
            std::string::npos);
  EXPECT_NE(r.out.find("From: =?UTF-8?Q?J=C3=BCrgen_M=C3=BCller?= <juergen.mueller@example.org>\n"),
            std::string::npos);
}

TEST(ToolHeaders, RepeatedFieldsGiveOneLineEach) {
  const RunResult r =
      RunTool({"headers", "-"}, WithStdin("Received: from a\nReceived: from b\nSubject: s\n\nbody\n"));
  EXPECT_EQ(r.out, "Received: from a\nReceived: from b\nSubject: s\n");
}

TEST(ToolText, PrintsTheDecodedTextBody) {
  const RunResult r = RunTool({"text", Sample("multipart-report.eml")});
  EXPECT_EQ(r.exit_code, 0) << r.err;
  // The part keeps the line break before the next delimiter.
  EXPECT_EQ(r.out, std::string(kPlainText) + "\n");
}

TEST(ToolText, CrlfOutKeepsTheMessageLineEnds) {
  const RunResult r = RunTool({"text", "--crlf-out", Sample("multipart-report.eml")});
  EXPECT_EQ(r.out, BareLfToCrLf(std::string(kPlainText) + "\n"));
}

TEST(ToolText, APlainMessageHasATextBody) {
  const RunResult r = RunTool({"text", Sample("plain.eml")});
  EXPECT_EQ(r.exit_code, 0);
  EXPECT_EQ(r.out, "Hi Dave,\n\nare you free for lunch on Friday? The usual place at noon.\n\nCarol\n");
}

TEST(ToolText, RawUtf8InAnIso88591BodyIsShownAsUtf8) {
  // "\u00C6" (C3 86) in a body declared ISO-8859-1: 0x86 is a control there.
  const RunResult r = RunTool({"text", "-"}, WithStdin("Content-Type: text/plain; charset=iso-8859-1\n\n"
                                                       "DISCOVER\xC3\x86 Card, caf\xE9\n"));
  EXPECT_EQ(r.exit_code, 0) << r.err;
  EXPECT_EQ(r.out, "DISCOVER\xC3\x86 Card, caf\xC3\xA9\n");
}

TEST(ToolHtml, PrintsTheDecodedHtmlBody) {
  const RunResult r = RunTool({"html", Sample("multipart-report.eml")});
  EXPECT_EQ(r.exit_code, 0);
  EXPECT_EQ(r.out.rfind("<!DOCTYPE html>\n", 0), 0u);
  EXPECT_NE(r.out.find("<b>\xC5\x81\xC3\xB3"
                       "d\xC5\xBA</b>"),
            std::string::npos);
}

TEST(ToolHtml, AMessageWithoutHtmlExitsWithOne) {
  const RunResult r = RunTool({"html", Sample("plain.eml")});
  EXPECT_EQ(r.exit_code, 1);
  EXPECT_EQ(r.out, "");
  EXPECT_NE(r.err.find("has no HTML body"), std::string::npos);
}

}  // namespace
}  // namespace pvtool::test

#endif
