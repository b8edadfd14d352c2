// extract: attachments land in the target directory, never outside it,
// never over an existing file, and none is lost.
#ifdef PARCELVANE_TOOL_PATH

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include "tests/tools/json_value.h"
#include "tests/tools/tool_runner.h"

namespace pvtool::test {
namespace {

// A message with one attachment per name, each holding "<i>:<name>".
// Every part but the last keeps the line break before the next delimiter,
// so its content ends in CR LF (see Content).
std::string MessageWithAttachments(const std::vector<std::string>& filenames) {
  std::string m =
      "From: a@example.org\nSubject: files\nMIME-Version: 1.0\n"
      "Content-Type: multipart/mixed; boundary=\"b\"\n\n";
  for (size_t i = 0; i < filenames.size(); ++i) {
    m += "--b\nContent-Type: application/octet-stream\nContent-Disposition: attachment; filename=\"" +
         filenames[i] + "\"\n\n" + std::to_string(i) + ":" + filenames[i] + "\n";
  }
  return m + "--b--\n";
}

// What extracting attachment `i` of `count` gives.
std::string Content(size_t i, size_t count, const std::string& name) {
  return std::to_string(i) + ":" + name + (i + 1 < count ? "\r\n" : "");
}

bool Exists(const std::string& path) {
  struct stat st;
  return lstat(path.c_str(), &st) == 0;
}

TEST(ToolExtract, WritesTheAttachmentUnderItsName) {
  TempDir dir;
  const RunResult r = RunTool({"extract", "-d", dir.path(), Sample("multipart-report.eml")});
  EXPECT_EQ(r.exit_code, 0) << r.err;
  const std::string name = "Bericht f\xC3\xBCr Q3.pdf";
  EXPECT_EQ(ListDir(dir.path()), std::vector<std::string>{name});
  EXPECT_EQ(ReadFile(dir / name).rfind("%PDF-1.4\n", 0), 0u);
  EXPECT_EQ(r.out,
            "wrote " + (dir / name) + " (" + std::to_string(ReadFile(dir / name).size()) + " bytes)\n");
}

TEST(ToolExtract, WritesIntoTheCurrentDirectoryByDefault) {
  TempDir dir;
  const RunResult r = RunTool({"extract", Sample("multipart-report.eml")}, InDir(dir.path()));
  EXPECT_EQ(r.exit_code, 0) << r.err;
  EXPECT_EQ(ListDir(dir.path()), std::vector<std::string>{"Bericht f\xC3\xBCr Q3.pdf"});
  EXPECT_EQ(r.out, "wrote Bericht f\xC3\xBCr Q3.pdf (142 bytes)\n");
}

TEST(ToolExtract, CreatesAMissingDirectory) {
  TempDir dir;
  EXPECT_EQ(RunTool({"extract", "-d", dir / "a/b", Sample("multipart-report.eml")}).exit_code, 0);
  EXPECT_EQ(ListDir(dir / "a/b"), std::vector<std::string>{"Bericht f\xC3\xBCr Q3.pdf"});
}

TEST(ToolExtract, HostileNamesStayInsideTheDirectory) {
  TempDir dir;
  const std::string out = dir / "out";
  ::remove("/tmp/parcelvane-absolute.txt");
  const RunResult r = RunTool({"extract", "-d", out, Sample("unsafe-names.eml")});
  EXPECT_EQ(r.exit_code, 0) << r.err;
  EXPECT_EQ(ListDir(dir.path()), std::vector<std::string>{"out"});
  EXPECT_FALSE(Exists("/tmp/parcelvane-absolute.txt"));
  const std::vector<std::string> names = ListDir(out);
  EXPECT_EQ(names.size(), 8u);
  for (const std::string& name : names) {
    EXPECT_NE(name[0], '.') << name;
    EXPECT_NE(name.substr(0, 3), "CON") << name;
    for (char c : name) EXPECT_TRUE(static_cast<unsigned char>(c) >= 0x20 && c != '\\') << name;
  }
}

TEST(ToolExtract, TwoAttachmentsOfTheSameNameBothSurvive) {
  TempDir dir;
  const RunResult r = RunTool({"extract", "-d", dir.path(), "-"},
                              WithStdin(MessageWithAttachments({"same.txt", "same.txt"})));
  EXPECT_EQ(r.exit_code, 0) << r.err;
  EXPECT_EQ(ListDir(dir.path()), (std::vector<std::string>{"same-1.txt", "same.txt"}));
  EXPECT_EQ(ReadFile(dir / "same.txt"), Content(0, 2, "same.txt"));
  EXPECT_EQ(ReadFile(dir / "same-1.txt"), Content(1, 2, "same.txt"));
}

TEST(ToolExtract, AnExistingFileIsNeverOverwritten) {
  TempDir dir;
  dir.Write("same.txt", "precious");
  const RunResult r = RunTool({"extract", "-d", dir.path(), "-"},
                              WithStdin(MessageWithAttachments({"same.txt", "same.txt"})));
  EXPECT_EQ(r.exit_code, 0) << r.err;
  EXPECT_EQ(ReadFile(dir / "same.txt"), "precious");
  EXPECT_EQ(ReadFile(dir / "same-1.txt"), Content(0, 2, "same.txt"));
  EXPECT_EQ(ReadFile(dir / "same-2.txt"), Content(1, 2, "same.txt"));
  EXPECT_NE(r.out.find("same-1.txt (12 bytes, attachment \"same.txt\")"), std::string::npos);
}

TEST(ToolExtract, ForceOverwritesOlderFilesButKeepsDuplicates) {
  TempDir dir;
  dir.Write("same.txt", "old");
  const RunResult r = RunTool({"extract", "--force", "-d", dir.path(), "-"},
                              WithStdin(MessageWithAttachments({"same.txt", "same.txt"})));
  EXPECT_EQ(r.exit_code, 0) << r.err;
  EXPECT_EQ(ListDir(dir.path()), (std::vector<std::string>{"same-1.txt", "same.txt"}));
  EXPECT_EQ(ReadFile(dir / "same.txt"), Content(0, 2, "same.txt"));
  EXPECT_EQ(ReadFile(dir / "same-1.txt"), Content(1, 2, "same.txt"));
}

TEST(ToolExtract, DotDotAndAbsoluteNamesAreWrittenInsideTheDirectory) {
  TempDir dir;
  const std::string out = dir / "out";
  const RunResult r =
      RunTool({"extract", "-d", out, "-"},
              WithStdin(MessageWithAttachments({"../up.txt", "..", "/abs.txt", "a/../../b.txt"})));
  EXPECT_EQ(r.exit_code, 0) << r.err;
  EXPECT_EQ(ListDir(dir.path()), std::vector<std::string>{"out"});
  EXPECT_EQ(ListDir(out).size(), 4u);
  EXPECT_FALSE(Exists("/abs.txt"));
}

TEST(ToolExtract, ALinkPlantedInTheDirectoryIsNotFollowed) {
  TempDir dir;
  const std::string victim = dir.Write("victim", "safe");
  ASSERT_EQ(symlink(victim.c_str(), (dir / "out-link.txt").c_str()), 0);
  const RunResult r =
      RunTool({"extract", "-d", dir.path(), "-"}, WithStdin(MessageWithAttachments({"out-link.txt"})));
  EXPECT_EQ(r.exit_code, 0) << r.err;
  EXPECT_EQ(ReadFile(victim), "safe");
  EXPECT_EQ(ReadFile(dir / "out-link-1.txt"), Content(0, 1, "out-link.txt"));
}

TEST(ToolExtract, JsonListsWhatWasWritten) {
  TempDir dir;
  const RunResult r = RunTool({"extract", "--json", "-d", dir.path(), "-"},
                              WithStdin(MessageWithAttachments({"a.txt", "CON"})));
  JsonValue v;
  std::string error;
  ASSERT_TRUE(ParseJson(r.out, &v, &error)) << error;
  ASSERT_EQ(v.size(), 2u);
  EXPECT_EQ(v[0]["attachment"].string(), "a.txt");
  EXPECT_EQ(v[0]["path"].string(), dir / "a.txt");
  EXPECT_EQ(v[0]["size"].number(), Content(0, 2, "a.txt").size());
  EXPECT_EQ(v[1]["attachment"].string().substr(0, 3), "CON");
  EXPECT_EQ(v[1]["path"].string().rfind(dir / "_CON", 0), 0u);
}

TEST(ToolExtract, AMessageWithoutAttachmentsWritesNothing) {
  TempDir dir;
  const RunResult r = RunTool({"extract", "-d", dir.path(), Sample("plain.eml")});
  EXPECT_EQ(r.exit_code, 0);
  EXPECT_EQ(r.out, "");
  EXPECT_NE(r.err.find("no attachments"), std::string::npos);
  EXPECT_EQ(ListDir(dir.path()), std::vector<std::string>{});
}

TEST(ToolExtract, ADirectoryThatIsAFileIsAWriteFailure) {
  TempDir dir;
  const std::string file = dir.Write("file", "x");
  const RunResult r = RunTool({"extract", "-d", file, Sample("multipart-report.eml")});
  EXPECT_EQ(r.exit_code, 5);
  EXPECT_EQ(ReadFile(file), "x");
}

TEST(ToolExtract, AnUnwritableDirectoryLeavesNoPartialFile) {
  if (geteuid() == 0) GTEST_SKIP() << "root may write anywhere";
  TempDir dir;
  ASSERT_EQ(chmod(dir.path().c_str(), 0500), 0);
  const RunResult r = RunTool({"extract", "-d", dir.path(), Sample("multipart-report.eml")});
  chmod(dir.path().c_str(), 0700);
  EXPECT_EQ(r.exit_code, 5);
  EXPECT_EQ(ListDir(dir.path()), std::vector<std::string>{});
}

}  // namespace
}  // namespace pvtool::test

#endif
