// MultipartSplitter: the split of nested bodies of one buffer, which must
// give exactly what SplitMultipartBody gives for each body on its own.
#include "src/mime/multipart_splitter.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "tests/mime/multipart_reference.h"

namespace pv {
namespace {

using Mode = MultipartSplitter::Mode;
constexpr Mode kModes[] = {Mode::kAdaptive, Mode::kScanOnly, Mode::kIndexOnly};

struct Result {
  std::vector<std::pair<size_t, size_t>> children;
  bool found;
  bool operator==(const Result& o) const { return children == o.children && found == o.found; }
};

std::ostream& operator<<(std::ostream& out, const Result& r) {
  out << (r.found ? "found" : "not found") << " {";
  for (auto [offset, length] : r.children) out << " " << offset << "+" << length;
  return out << " }";
}

// SplitMultipartBody on the body alone, its offsets moved to the buffer.
Result Reference(std::string_view text, size_t begin, size_t end, std::string_view boundary) {
  Result r{{}, false};
  for (ChildSpan c : SplitMultipartBody(text.substr(begin, end - begin), boundary, &r.found)) {
    r.children.emplace_back(begin + c.offset, c.length);
  }
  return r;
}

Result Split(MultipartSplitter& splitter, size_t begin, size_t end, std::string_view boundary) {
  Result r{{}, false};
  for (ChildSpan c : splitter.Split(begin, end, boundary, &r.found))
    r.children.emplace_back(c.offset, c.length);
  return r;
}

void ExpectSameAsReference(std::string_view text, size_t begin, size_t end, std::string_view boundary) {
  for (Mode mode : kModes) {
    MultipartSplitter splitter(text, 0, text.size(), mode);
    EXPECT_EQ(Split(splitter, begin, end, boundary), Reference(text, begin, end, boundary))
        << "mode " << static_cast<int>(mode) << ", boundary \"" << boundary << "\", body \""
        << text.substr(begin, end - begin) << "\"";
  }
}

void ExpectSameAsReference(std::string_view body, std::string_view boundary) {
  // The body alone, and surrounded by other bytes of the buffer.
  ExpectSameAsReference(body, 0, body.size(), boundary);
  std::string framed = "\r\n--" + std::string(boundary) + "\r\n" + std::string(body) + "\r\n--" +
                       std::string(boundary) + "--\r\n";
  size_t begin = 4 + boundary.size() + 2;
  ExpectSameAsReference(framed, begin, begin + body.size(), boundary);
}

TEST(MultipartSplitter, GivesTheSplitOfEveryDocumentedCase) {
  const char* bodies[] = {
      "--b\r\nA: 1\r\n\r\nx\r\n--b\r\nA: 2\r\n\r\ny\r\n--b--\r\n",
      "--b\r\n\r\nhello\r\n--b--",
      "preamble--b\r\nx\r\n--b--\r\nepilogue",
      "--b\r\nx\r\n--b  \r\ny\r\n--b--",
      "--b\r\nA: 1\r\n\r\nx--b--",
      "--b\r\nx\r\n--b\r\ny\r\n",
      "--b\r\nx\r\n--b-",
      "--b\r\nx\r\n--b",
      "--b\r\nx--b\r\ny\r\n--b--",
      "no delimiters here",
      "--b--b\r\nx\r\n--b--",
      "--b\r\n--b--",
      "--b\r\nx\r\n--b--",
      "--B\r\nx\r\n--b\r\ny\r\n--b--",
      "--b\r\n",
      "--b",
      "",
      "\r\n--b--",
      "--b\r\n\r\n--b--\r\n--b--",
      "--bb\r\nx\r\n--b\r\ny\r\n--bb--",
  };
  for (const char* body : bodies) ExpectSameAsReference(body, "b");
}

TEST(MultipartSplitter, BoundaryWithALineBreakIsSplitLikeAnyOther) {
  ExpectSameAsReference("--x\r\n--x\r\n--", "x\r\n");
  ExpectSameAsReference("--a\nb\r\nx\r\n--a\nb\r\ny\r\n--a\nb--", "a\nb");
}

TEST(MultipartSplitter, EmptyBoundaryFindsNothing) {
  MultipartSplitter splitter("--\r\nx\r\n----", 0, 12);
  bool found = true;
  EXPECT_TRUE(splitter.Split(0, 12, "", &found).empty());
  EXPECT_FALSE(found);
}

TEST(MultipartSplitter, ClosingDelimiterNeedsItsLineBreakInsideTheBody) {
  // The "\r\n" before "--b--" lies just before the body: not a closing one.
  std::string text = "xx\r\n--b--\r\n--b\r\ny\r\n--b--";
  ExpectSameAsReference(text, 4, text.size(), "b");
  ExpectSameAsReference(text, 2, text.size(), "b");
}

TEST(MultipartSplitter, LastDelimiterIsFoundAtEitherOfItsTwoPlaces) {
  std::string text = "--b\r\nx\r\n--b\r\n";
  for (size_t end = 8; end <= text.size(); ++end) ExpectSameAsReference(text, 0, end, "b");
}

// Random bodies made of the pieces delimiters are made of, so that
// delimiters of every kind, near misses and overlaps are common.
std::string RandomBody(std::mt19937& random, size_t pieces) {
  static const char* const kPieces[] = {"--b",     "--b--",   "\r\n",      "-",  "b",  "x",  "--bb",
                                        "\r\n--b", "--b\r\n", "\r\n--b--", "\r", "\n", "--", "bb"};
  std::uniform_int_distribution<size_t> pick(0, sizeof kPieces / sizeof kPieces[0] - 1);
  std::string body;
  for (size_t i = 0; i < pieces; ++i) body += kPieces[pick(random)];
  return body;
}

TEST(MultipartSplitter, RandomBodiesSplitAsTheReferenceDoes) {
  std::mt19937 random(7);
  const char* boundaries[] = {"b", "bb", "b-", "-", "--", "b\r\n", "x"};
  std::uniform_int_distribution<size_t> pieces(0, 40);
  for (int round = 0; round < 3000; ++round) {
    std::string text = RandomBody(random, pieces(random));
    std::uniform_int_distribution<size_t> cut(0, text.size());
    size_t a = cut(random);
    size_t b = cut(random);
    if (a > b) std::swap(a, b);
    for (const char* boundary : boundaries) ExpectSameAsReference(text, a, b, boundary);
    if (HasFailure()) return;
  }
}

// `levels` multiparts nested in one another, each with a boundary of its
// own (all of one length), around one text leaf; and where each level's
// body begins and ends.
struct Nest {
  std::string text;
  std::vector<std::pair<size_t, size_t>> bodies;
};

std::string LevelBoundary(size_t level) {
  std::string digits = std::to_string(level);
  return "b" + std::string(6 - digits.size(), '0') + digits;
}

Nest NestedMultiparts(size_t levels) {
  Nest nest;
  std::vector<size_t> ends;
  for (size_t level = 0; level < levels; ++level) {
    nest.text += "Content-Type: multipart/mixed; boundary=\"" + LevelBoundary(level) + "\"\r\n\r\n";
    nest.bodies.emplace_back(nest.text.size(), 0);
    nest.text += "--" + LevelBoundary(level) + "\r\n";
  }
  nest.text += "Content-Type: text/plain\r\n\r\nleaf";
  for (size_t level = levels; level-- > 0;) {
    nest.text += "\r\n--" + LevelBoundary(level) + "--";
    nest.bodies[level].second = nest.text.size();
  }
  return nest;
}

TEST(MultipartSplitter, NestedBodiesGiveTheSameChildrenInEveryMode) {
  Nest nest = NestedMultiparts(40);
  for (Mode mode : kModes) {
    MultipartSplitter splitter(nest.text, 0, nest.text.size(), mode);
    for (size_t level = 0; level < nest.bodies.size(); ++level) {
      auto [begin, end] = nest.bodies[level];
      EXPECT_EQ(Split(splitter, begin, end, LevelBoundary(level)),
                Reference(nest.text, begin, end, LevelBoundary(level)))
          << "level " << level;
    }
  }
}

TEST(MultipartSplitter, DeepNestBuildsOneIndexForItsDelimiterLength) {
  Nest nest = NestedMultiparts(2000);
  MultipartSplitter splitter(nest.text, 0, nest.text.size());
  for (size_t level = 0; level < nest.bodies.size(); ++level) {
    auto [begin, end] = nest.bodies[level];
    std::vector<ChildSpan> children = splitter.Split(begin, end, LevelBoundary(level));
    ASSERT_EQ(children.size(), 1u) << level;
  }
  EXPECT_EQ(splitter.index_count(), 1u);
}

TEST(MultipartSplitter, ShallowMessageNeedsNoIndex) {
  Nest nest = NestedMultiparts(1);
  MultipartSplitter splitter(nest.text, 0, nest.text.size());
  auto [begin, end] = nest.bodies[0];
  EXPECT_EQ(splitter.Split(begin, end, LevelBoundary(0)).size(), 1u);
  EXPECT_EQ(splitter.index_count(), 0u);
}

}  // namespace
}  // namespace pv
