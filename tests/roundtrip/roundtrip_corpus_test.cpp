// The round-trip invariant on real messages: the team's shared corpus when
// it is present, the samples and the roundtrip fuzz target's seeds.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "tests/roundtrip/roundtrip_invariant.h"
#include "tests/test_util.h"

namespace pv::roundtrip {
namespace {

namespace fs = std::filesystem;

std::string ReadFile(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  std::stringstream bytes;
  bytes << file.rdbuf();
  return bytes.str();
}

// Files saved on Linux end their lines with a bare LF; the library finds
// structure only at CR LF.
std::string WithCrLf(const std::string& text) {
  std::string out;
  out.reserve(text.size() + text.size() / 16);
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '\n' && (i == 0 || text[i - 1] != '\r')) out += '\r';
    out += text[i];
  }
  return out;
}

std::vector<fs::path> FilesIn(const fs::path& dir) {
  std::vector<fs::path> files;
  std::error_code error;
  for (const auto& entry : fs::directory_iterator(dir, error)) {
    if (entry.is_regular_file() && entry.path().filename() != "SOURCES.md") files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());
  return files;
}

const fs::path kRoot = fs::path(PARCELVANE_TEST_FIXTURES).parent_path().parent_path();

void CheckEvery(const std::vector<fs::path>& files, bool crlf) {
  for (const fs::path& path : files) {
    std::string x = ReadFile(path);
    if (crlf) x = WithCrLf(x);
    EXPECT_EQ(CheckMessage(x), "") << path;
    EXPECT_EQ(CheckPart(x), "") << path;
  }
}

TEST(RoundTripCorpus, SharedCorpusReadsBackAsItWasWritten) {
  if (!test::HaveCorpus()) GTEST_SKIP() << "no shared corpus at " << test::CorpusDir();
  std::vector<fs::path> files = FilesIn(test::CorpusDir());
  EXPECT_GT(files.size(), 100u);
  CheckEvery(files, false);
}

TEST(RoundTripCorpus, SamplesReadBackAsTheyWereWritten) {
  std::vector<fs::path> files = FilesIn(kRoot / "samples");
  ASSERT_GE(files.size(), 4u);
  CheckEvery(files, true);
}

TEST(RoundTripCorpus, RealMessageCollectionReadsBackAsItWasWritten) {
  std::vector<fs::path> files = FilesIn(kRoot / "tests" / "data" / "real");
  ASSERT_GE(files.size(), 100u);
  CheckEvery(files, false);
}

TEST(RoundTripCorpus, FuzzSeedsReadBackAsTheyWereWritten) {
  std::vector<fs::path> files = FilesIn(kRoot / "fuzz" / "corpus" / "roundtrip_fuzz");
  ASSERT_GE(files.size(), 6u);
  CheckEvery(files, false);
}

}  // namespace
}  // namespace pv::roundtrip
