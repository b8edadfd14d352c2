// Reading inputs and writing files without leaving half of one.
#ifdef PARCELVANE_TOOL_PATH

#include <gtest/gtest.h>
#include <unistd.h>

#include <functional>

#include "tests/tools/tool_runner.h"
#include "tools/exit_codes.h"
#include "tools/file_io.h"

namespace pvtool {
namespace {

using test::ListDir;
using test::ReadFile;
using test::TempDir;

ExitCode CodeOf(const std::function<void()>& action) {
  try {
    action();
  } catch (const ToolError& error) {
    return error.code();
  }
  return kExitOk;
}

TEST(WriteFileAtomically, WritesANewFileAndLeavesNoTemporaryFile) {
  TempDir dir;
  EXPECT_EQ(WriteFileAtomically(PathFromUtf8(dir / "a.txt"), "hello", false), WriteResult::kWritten);
  EXPECT_EQ(ReadFile(dir / "a.txt"), "hello");
  EXPECT_EQ(ListDir(dir.path()), std::vector<std::string>{"a.txt"});
}

TEST(WriteFileAtomically, NeverReplacesAnExistingFileUnlessAsked) {
  TempDir dir;
  dir.Write("a.txt", "old");
  EXPECT_EQ(WriteFileAtomically(PathFromUtf8(dir / "a.txt"), "new", false), WriteResult::kTargetExists);
  EXPECT_EQ(ReadFile(dir / "a.txt"), "old");
  EXPECT_EQ(ListDir(dir.path()), std::vector<std::string>{"a.txt"});
  EXPECT_EQ(WriteFileAtomically(PathFromUtf8(dir / "a.txt"), "new", true), WriteResult::kWritten);
  EXPECT_EQ(ReadFile(dir / "a.txt"), "new");
}

TEST(WriteFileAtomically, ADanglingLinkCountsAsTaken) {
  TempDir dir;
  ASSERT_EQ(symlink((dir / "elsewhere").c_str(), (dir / "link").c_str()), 0);
  EXPECT_EQ(WriteFileAtomically(PathFromUtf8(dir / "link"), "x", false), WriteResult::kTargetExists);
  EXPECT_EQ(ListDir(dir.path()), std::vector<std::string>{"link"});
}

TEST(WriteFileAtomically, FailureInAMissingDirectoryIsAWriteError) {
  TempDir dir;
  EXPECT_EQ(CodeOf([&] { WriteFileAtomically(PathFromUtf8(dir / "no/such/file"), "x", true); }),
            kExitWriteFailed);
}

TEST(ReadInput, AMissingFileIsUnreadable) {
  TempDir dir;
  EXPECT_EQ(CodeOf([&] { ReadInput(dir / "missing.eml"); }), kExitUnreadable);
}

TEST(ReadInput, ADirectoryIsUnreadable) {
  TempDir dir;
  EXPECT_EQ(CodeOf([&] { ReadInput(dir.path()); }), kExitUnreadable);
}

TEST(ReadInput, ReadsBytesUnchanged) {
  TempDir dir;
  const std::string bytes("a\r\nb\0c\xFF", 7);
  EXPECT_EQ(ReadInput(dir.Write("f", bytes)), bytes);
}

}  // namespace
}  // namespace pvtool

#endif
