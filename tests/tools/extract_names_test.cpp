// extract's file names for duplicate attachment names: numbered names are
// found in constant time each, so many attachments of one name cost what
// as many distinct names cost.
#ifdef PARCELVANE_TOOL_PATH

#include <gtest/gtest.h>

#include <sys/resource.h>

#include <chrono>
#include <cstdio>
#include <string>
#include <vector>

#include "tests/tools/tool_runner.h"
#include "tools/safe_name.h"

namespace pvtool::test {
namespace {

TEST(RunNames, HandsOutTheNameThenNumberedNames) {
  RunNames names;
  std::vector<std::string> given;
  for (int i = 0; i < 4; ++i) {
    given.push_back(names.Next("same.txt"));
    names.MarkUsed(given.back());
  }
  EXPECT_EQ(given, (std::vector<std::string>{"same.txt", "same-1.txt", "same-2.txt", "same-3.txt"}));
}

TEST(RunNames, SkipsNamesThatAnotherAttachmentTook) {
  RunNames names;
  names.MarkUsed(names.Next("a-1.txt"));
  names.MarkUsed(names.Next("a.txt"));
  unsigned number = 99;
  EXPECT_EQ(names.Next("a.txt", &number), "a-2.txt");
  EXPECT_EQ(number, 2u);
}

TEST(RunNames, ACandidateRefusedOnDiskIsNotOfferedAgain) {
  // A file that existed before the run: the caller asks for the next one.
  RunNames names;
  EXPECT_EQ(names.Next("x.bin"), "x.bin");
  EXPECT_EQ(names.Next("x.bin"), "x-1.bin");
  names.MarkUsed("x-1.bin");
  EXPECT_EQ(names.Next("x.bin"), "x-2.bin");
}

TEST(RunNames, EveryDuplicateTakesOneCandidate) {
  RunNames names;
  for (unsigned i = 0; i < 10000; ++i) {
    unsigned number = 0;
    names.MarkUsed(names.Next("same.bin", &number));
    ASSERT_EQ(number, i);
  }
}

double SecondsToName(const std::vector<std::string>& all) {
  const auto start = std::chrono::steady_clock::now();
  RunNames names;
  for (const std::string& name : all) names.MarkUsed(names.Next(name));
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

TEST(RunNames, SameNamesCostWhatDistinctNamesCost) {
  constexpr int kCount = 100000;
  const std::vector<std::string> same(kCount, "same.bin");
  std::vector<std::string> distinct;
  for (int i = 0; i < kCount; ++i) distinct.push_back("file" + std::to_string(i) + ".bin");
  double same_seconds = 1e9, distinct_seconds = 1e9;
  for (int run = 0; run < 3; ++run) {
    same_seconds = std::min(same_seconds, SecondsToName(same));
    distinct_seconds = std::min(distinct_seconds, SecondsToName(distinct));
  }
  std::printf("naming 100,000 attachments: one name %.3f s, distinct names %.3f s\n", same_seconds,
              distinct_seconds);
  // Loose, for a loaded machine: numbering from the start each time took
  // hundreds of times longer.
  EXPECT_LT(same_seconds, 2.0 * distinct_seconds + 0.01);
}

// A message of `count` one-byte attachments, named `name` or, when it is
// empty, each its own name.
std::string ManyAttachments(int count, const std::string& name) {
  std::string m = "MIME-Version: 1.0\r\nContent-Type: multipart/mixed; boundary=\"b\"\r\n\r\n";
  for (int i = 0; i < count; ++i) {
    m += "--b\r\nContent-Type: application/octet-stream\r\nContent-Disposition: attachment; filename=\"" +
         (name.empty() ? "file" + std::to_string(i) + ".bin" : name) + "\"\r\n\r\nx\r\n";
  }
  return m + "--b--\r\n";
}

// Processor time that finished children spent in the tool's own code.
// Writing the files (system time, waiting for the disk) is the same for
// both runs and varies too much on a shared machine to compare.
double ChildUserSeconds() {
  rusage usage{};
  getrusage(RUSAGE_CHILDREN, &usage);
  return static_cast<double>(usage.ru_utime.tv_sec) + static_cast<double>(usage.ru_utime.tv_usec) / 1e6;
}

// The user time of `extract` for `count` attachments, and its elapsed time.
double ExtractUserSeconds(int count, const std::string& name, double* elapsed) {
  TempDir dir;
  const std::string message = dir.Write("in.eml", ManyAttachments(count, name));
  RunOptions options;
  options.stdout_path = dir / "report";
  const double before = ChildUserSeconds();
  const auto start = std::chrono::steady_clock::now();
  const RunResult r = RunTool({"extract", "-d", dir / "out", message}, options);
  *elapsed = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  const double taken = ChildUserSeconds() - before;
  EXPECT_EQ(r.exit_code, 0) << r.err;
  EXPECT_EQ(ListDir(dir / "out").size(), static_cast<size_t>(count));
  return taken;
}

TEST(ToolExtract, TenThousandAttachmentsOfOneNameCostWhatDistinctNamesCost) {
  double distinct_elapsed = 0, same_elapsed = 0;
  const double distinct = ExtractUserSeconds(10000, "", &distinct_elapsed);
  const double same = ExtractUserSeconds(10000, "same.bin", &same_elapsed);
  std::printf(
      "extract, 10,000 attachments: distinct names %.2f s (user %.2f s), one name %.2f s (user %.2f s)\n",
      distinct_elapsed, distinct, same_elapsed, same);
  // Loose, for a loaded machine: numbering from the start each time took
  // about 4 s of user time more than distinct names.
  EXPECT_LT(same, 1.6 * distinct + 0.3);
}

}  // namespace
}  // namespace pvtool::test

#endif
