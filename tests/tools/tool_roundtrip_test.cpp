// roundtrip: parse and assemble again.
#ifdef PARCELVANE_TOOL_PATH

#include <gtest/gtest.h>

#include "tests/tools/json_value.h"
#include "tests/tools/tool_runner.h"
#include "tools/line_ends.h"

namespace pvtool::test {
namespace {

TEST(ToolRoundtrip, APlainMessageComesBackWithCrLfLineEnds) {
  const RunResult r = RunTool({"roundtrip", Sample("plain.eml")});
  EXPECT_EQ(r.exit_code, 0) << r.err;
  EXPECT_EQ(r.out, BareLfToCrLf(ReadFile(Sample("plain.eml"))));
}

// The show --json output without the sizes of multiparts: those count the
// bytes as they stand, preamble included, which assembly does not keep.
std::string ShowWithoutContainerSizes(const std::string& file) {
  const JsonValue v = JsonOf(RunTool({"show", "--json", file}));
  std::string text = v["subject"].string() + "\n";
  for (const JsonValue& part : v["parts"].array()) {
    text += std::to_string(part["depth"].number()) + " " + part["content_type"].string() + " " +
            part["transfer_encoding"].string() + " " + std::to_string(part["decoded_size"].number()) + " " +
            (part["attachment"].boolean() ? part["name"].string() : "-") + " " +
            (part["children"].number() == 0 ? std::to_string(part["size"].number()) : "") + "\n";
  }
  return text;
}

TEST(ToolRoundtrip, AMultipartMessageShowsTheSameAfterwards) {
  TempDir dir;
  ASSERT_EQ(RunTool({"roundtrip", Sample("multipart-report.eml"), "-o", dir / "again.eml"}).exit_code, 0);
  EXPECT_EQ(ShowWithoutContainerSizes(dir / "again.eml"),
            ShowWithoutContainerSizes(Sample("multipart-report.eml")));
  EXPECT_EQ(RunTool({"text", dir / "again.eml"}).out, RunTool({"text", Sample("multipart-report.eml")}).out);
}

TEST(ToolRoundtrip, ASecondRoundtripChangesNothing) {
  TempDir dir;
  ASSERT_EQ(RunTool({"roundtrip", Sample("multipart-report.eml"), "-o", dir / "once.eml"}).exit_code, 0);
  ASSERT_EQ(RunTool({"roundtrip", dir / "once.eml", "-o", dir / "twice.eml"}).exit_code, 0);
  EXPECT_EQ(ReadFile(dir / "twice.eml"), ReadFile(dir / "once.eml"));
}

TEST(ToolRoundtrip, WriteFailuresAreReported) {
  TempDir dir;
  EXPECT_EQ(RunTool({"roundtrip", Sample("plain.eml"), "-o", dir / "no/such/dir.eml"}).exit_code, 5);
  RunOptions full;
  full.stdout_path = "/dev/full";
  EXPECT_EQ(RunTool({"roundtrip", Sample("plain.eml")}, full).exit_code, 5);
}

}  // namespace
}  // namespace pvtool::test

#endif
