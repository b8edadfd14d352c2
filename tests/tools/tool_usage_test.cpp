// The command as a shell user meets it: help, version, usage errors and
// the exit codes of inputs it cannot use.
#ifdef PARCELVANE_TOOL_PATH

#include <gtest/gtest.h>

#include "tests/tools/tool_runner.h"

namespace pvtool::test {
namespace {

const char* const kCommands[] = {"show", "headers", "text", "html", "extract", "compose", "ls", "roundtrip"};

TEST(ToolUsage, WithoutArgumentsPrintsHelpAndFailsWithUsage) {
  const RunResult r = RunTool({});
  EXPECT_EQ(r.exit_code, 2);
  EXPECT_EQ(r.out, "");
  EXPECT_NE(r.err.find("Usage: parcelvane COMMAND"), std::string::npos);
}

TEST(ToolUsage, HelpDocumentsTheLineEndConversionAndTheExitCodes) {
  const RunResult r = RunTool({"--help"});
  EXPECT_EQ(r.exit_code, 0);
  EXPECT_NE(r.out.find("bare LF"), std::string::npos);
  EXPECT_NE(r.out.find("--no-crlf"), std::string::npos);
  for (const char* code : {"  0  ", "  1  ", "  2  ", "  3  ", "  4  ", "  5  ", "  6  "}) {
    EXPECT_NE(r.out.find(code), std::string::npos) << code;
  }
  for (const char* command : kCommands) EXPECT_NE(r.out.find(std::string("  ") + command), std::string::npos);
}

TEST(ToolUsage, VersionPrintsTheVersion) {
  const RunResult r = RunTool({"--version"});
  EXPECT_EQ(r.exit_code, 0);
  EXPECT_EQ(r.out, "parcelvane 0.1.0\n");
}

TEST(ToolUsage, EverySubcommandHasHelp) {
  for (const char* command : kCommands) {
    const RunResult r = RunTool({command, "--help"});
    EXPECT_EQ(r.exit_code, 0) << command;
    EXPECT_EQ(r.out.rfind(std::string("Usage: parcelvane ") + command, 0), 0u) << command;
    EXPECT_NE(r.out.find("Exit codes:"), std::string::npos) << command;
    EXPECT_EQ(RunTool({"help", command}).out, r.out) << command;
  }
}

TEST(ToolUsage, ReadingCommandsDocumentNoCrlf) {
  for (const char* command : {"show", "headers", "text", "html", "extract", "ls", "roundtrip"}) {
    EXPECT_NE(RunTool({command, "-h"}).out.find("--no-crlf"), std::string::npos) << command;
  }
}

TEST(ToolUsage, UnknownCommandsAndOptionsAreUsageErrors) {
  EXPECT_EQ(RunTool({"frobnicate"}).exit_code, 2);
  EXPECT_EQ(RunTool({"--frobnicate"}).exit_code, 2);
  EXPECT_EQ(RunTool({"help", "frobnicate"}).exit_code, 2);
  const RunResult r = RunTool({"show", "--frobnicate", "x.eml"});
  EXPECT_EQ(r.exit_code, 2);
  EXPECT_EQ(r.err, "parcelvane: unknown option --frobnicate\n");
}

TEST(ToolUsage, AMissingOrExtraFileArgumentIsAUsageError) {
  EXPECT_EQ(RunTool({"show"}).exit_code, 2);
  EXPECT_EQ(RunTool({"show", "a.eml", "b.eml"}).exit_code, 2);
  EXPECT_EQ(RunTool({"extract", "-d"}).exit_code, 2);
  EXPECT_EQ(RunTool({"compose", "stray"}).exit_code, 2);
}

TEST(ToolUsage, ComposeRefusesTextAndTextFileTogether) {
  TempDir dir;
  const RunResult r = RunTool({"compose", "--text", "a", "--text-file", dir.Write("t.txt", "b")});
  EXPECT_EQ(r.exit_code, 2);
  EXPECT_EQ(r.out, "");
}

TEST(ToolUsage, AMissingFileIsUnreadable) {
  TempDir dir;
  for (const char* command : {"show", "headers", "text", "html", "extract", "roundtrip", "ls"}) {
    const RunResult r = RunTool({command, dir / "missing.eml"});
    EXPECT_EQ(r.exit_code, 3) << command;
    EXPECT_EQ(r.out, "") << command;
    EXPECT_EQ(r.err.rfind("parcelvane: ", 0), 0u) << command;
  }
}

TEST(ToolUsage, ADirectoryIsNotAMessageFile) {
  TempDir dir;
  EXPECT_EQ(RunTool({"show", dir.path()}).exit_code, 3);
}

TEST(ToolUsage, AMissingAttachmentIsUnreadable) {
  TempDir dir;
  const RunResult r = RunTool({"compose", "--attach", dir / "missing.pdf", "-o", dir / "out.eml"});
  EXPECT_EQ(r.exit_code, 3);
  EXPECT_EQ(ListDir(dir.path()), std::vector<std::string>{});
}

TEST(ToolUsage, InputThatIsNotAMessageIsRejected) {
  TempDir dir;
  const std::string pdf = dir.Write("file.pdf", "%PDF-1.4\n%\xE2\xE3\xCF\xD3\n1 0 obj\n");
  const RunResult r = RunTool({"show", pdf});
  EXPECT_EQ(r.exit_code, 4);
  EXPECT_EQ(r.out, "");
  EXPECT_EQ(r.err, "parcelvane: " + pdf + ": not a message: it does not begin with a header field\n");
}

TEST(ToolUsage, EmptyStandardInputIsNotAMessage) {
  const RunResult r = RunTool({"show", "-"});
  EXPECT_EQ(r.exit_code, 4);
  EXPECT_EQ(r.err, "parcelvane: standard input: not a message: it is empty\n");
}

TEST(ToolUsage, BinaryGarbageIsRejectedWithoutACrash) {
  std::string garbage;
  for (int i = 0; i < 4096; ++i) garbage.push_back(static_cast<char>((i * 7919) % 256));
  for (const char* command : {"show", "headers", "text", "extract", "roundtrip"}) {
    EXPECT_EQ(RunTool({command, "-"}, WithStdin(garbage)).exit_code, 4) << command;
  }
}

TEST(ToolUsage, AFileThatIsNotAnMboxIsRejectedByLs) {
  TempDir dir;
  const RunResult r = RunTool({"ls", dir.Write("m", "Subject: x\n\nbody\n")});
  EXPECT_EQ(r.exit_code, 4);
  EXPECT_NE(r.err.find("not an mbox file"), std::string::npos);
}

TEST(ToolUsage, AnEmptyMboxListsNothing) {
  TempDir dir;
  const RunResult r = RunTool({"ls", dir.Write("empty.mbox", "")});
  EXPECT_EQ(r.exit_code, 0);
  EXPECT_EQ(r.out, "");
  EXPECT_EQ(RunTool({"ls", "--json", dir / "empty.mbox"}).out, "[]\n");
}

TEST(ToolUsage, AnEmptyDirectoryListsNothing) {
  TempDir dir;
  const RunResult r = RunTool({"ls", dir.path()});
  EXPECT_EQ(r.exit_code, 0);
  EXPECT_EQ(r.out, "");
}

}  // namespace
}  // namespace pvtool::test

#endif
