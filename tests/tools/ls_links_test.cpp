// ls on a directory: symbolic links out of it are not followed unless
// --follow is given; links that stay inside are read.
#ifdef PARCELVANE_TOOL_PATH

#include <gtest/gtest.h>

#include <unistd.h>

#include <filesystem>

#include "tests/tools/tool_runner.h"

namespace pvtool::test {
namespace {

std::string Message(const std::string& subject) { return "Subject: " + subject + "\r\n\r\nbody\r\n"; }

// A maildir whose cur/3 links to a message outside it and whose new/2
// links to cur/1 inside it.
struct LinkedMaildir {
  LinkedMaildir() {
    std::filesystem::create_directories(dir / "maildir/cur");
    std::filesystem::create_directories(dir / "maildir/new");
    outside = dir.Write("secret.eml", Message("outside"));
    dir.Write("maildir/cur/1", Message("inside"));
    EXPECT_EQ(symlink(outside.c_str(), (dir / "maildir/cur/3").c_str()), 0);
    EXPECT_EQ(symlink("../cur/1", (dir / "maildir/new/2").c_str()), 0);
  }
  TempDir dir;
  std::string outside;
};

TEST(ToolLsLinks, ALinkOutOfAMaildirIsNotRead) {
  LinkedMaildir m;
  const RunResult r = RunTool({"ls", "--json", m.dir / "maildir"});
  const JsonValue v = JsonOutput(r);
  ASSERT_EQ(v.size(), 2u);
  EXPECT_EQ(v[0]["path"].string(), m.dir / "maildir/cur/1");
  EXPECT_EQ(v[1]["path"].string(), m.dir / "maildir/new/2");
  EXPECT_EQ(v[1]["subject"].string(), "inside");
  EXPECT_EQ(r.err, "parcelvane: " + (m.dir / "maildir/cur/3") +
                       ": a symbolic link out of the directory, not followed (--follow follows it)\n");
  EXPECT_EQ(r.out.find("outside"), std::string::npos);
}

TEST(ToolLsLinks, FollowReadsALinkOutOfTheMaildir) {
  LinkedMaildir m;
  const RunResult r = RunTool({"ls", "--json", "--follow", m.dir / "maildir"});
  const JsonValue v = JsonOutput(r);
  ASSERT_EQ(v.size(), 3u);
  EXPECT_EQ(v[1]["path"].string(), m.dir / "maildir/cur/3");
  EXPECT_EQ(v[1]["subject"].string(), "outside");
  EXPECT_EQ(r.err, "");
}

TEST(ToolLsLinks, ALinkedFolderOutOfTheMaildirIsNotEntered) {
  TempDir dir;
  std::filesystem::create_directories(dir / "elsewhere");
  std::filesystem::create_directories(dir / "maildir/new");
  dir.Write("elsewhere/1", Message("outside"));
  ASSERT_EQ(symlink((dir / "elsewhere").c_str(), (dir / "maildir/cur").c_str()), 0);
  const RunResult r = RunTool({"ls", "--json", dir / "maildir"});
  EXPECT_EQ(JsonOutput(r).size(), 0u);
  EXPECT_NE(r.err.find("maildir/cur: a symbolic link out of the directory"), std::string::npos) << r.err;
  EXPECT_EQ(JsonOutput(RunTool({"ls", "--json", "--follow", dir / "maildir"})).size(), 1u);
}

TEST(ToolLsLinks, ALinkOutOfAPlainDirectoryIsNotRead) {
  TempDir dir;
  std::filesystem::create_directories(dir / "messages");
  const std::string outside = dir.Write("secret.eml", Message("outside"));
  dir.Write("messages/a.eml", Message("inside"));
  ASSERT_EQ(symlink(outside.c_str(), (dir / "messages/b.eml").c_str()), 0);
  const JsonValue v = JsonOutput(RunTool({"ls", "--json", dir / "messages"}));
  ASSERT_EQ(v.size(), 1u);
  EXPECT_EQ(v[0]["subject"].string(), "inside");
}

TEST(ToolLsLinks, TheDirectoryGivenMayItselfBeALink) {
  TempDir dir;
  std::filesystem::create_directories(dir / "real/cur");
  dir.Write("real/cur/1", Message("inside"));
  ASSERT_EQ(symlink((dir / "real").c_str(), (dir / "alias").c_str()), 0);
  const RunResult r = RunTool({"ls", "--json", dir / "alias"});
  EXPECT_EQ(JsonOutput(r).size(), 1u);
  EXPECT_EQ(r.err, "");
}

}  // namespace
}  // namespace pvtool::test

#endif
