// Path splitting reproduces the runtime's measured answers and its buffer
// limits.
#include <cerrno>
#include <fstream>
#include <sstream>

#include "src/platform/split_path.h"
#include "tests/test_util.h"

namespace pv::test {
namespace {

std::string FixturePath(const char* name) {
  return std::string(PARCELVANE_TEST_FIXTURES) + "/platform/" + name;
}

// A quoted field of a fact file: "..." with \\ and \" escapes.
std::string Unquote(std::string_view field) {
  EXPECT_GE(field.size(), 2u);
  EXPECT_EQ(field.front(), '"');
  EXPECT_EQ(field.back(), '"');
  std::string text;
  for (size_t i = 1; i + 1 < field.size(); ++i) {
    if (field[i] == '\\' && i + 2 < field.size()) ++i;
    text.push_back(field[i]);
  }
  return text;
}

std::vector<std::string> Fields(const std::string& line) {
  std::vector<std::string> fields;
  std::stringstream in(line);
  std::string field;
  while (std::getline(in, field, '\t')) fields.push_back(field);
  return fields;
}

struct FactRow {
  std::string input;
  int status;
  std::string drive, directory, name, extension;
};

std::vector<FactRow> ReadFacts() {
  std::ifstream in(FixturePath("splitpath.tsv"));
  EXPECT_TRUE(in.good());
  std::vector<FactRow> rows;
  std::string line;
  std::getline(in, line);  // the column names
  while (std::getline(in, line)) {
    std::vector<std::string> f = Fields(line);
    EXPECT_EQ(f.size(), 6u) << line;
    if (f.size() != 6) continue;
    rows.push_back(
        {Unquote(f[0]), std::stoi(f[1]), Unquote(f[2]), Unquote(f[3]), Unquote(f[4]), Unquote(f[5])});
  }
  return rows;
}

PathParts Split(std::string_view path, int expectedStatus = kSplitPathOk) {
  PathParts parts;
  EXPECT_EQ(SplitPath(W(path), &parts), expectedStatus) << path;
  return parts;
}

void ExpectParts(const PathParts& parts, std::string_view drive, std::string_view directory,
                 std::string_view name, std::string_view extension) {
  EXPECT_EQ(U8(parts.drive), drive);
  EXPECT_EQ(U8(parts.directory), directory);
  EXPECT_EQ(U8(parts.name), name);
  EXPECT_EQ(U8(parts.extension), extension);
}

TEST(SplitPath, ReproducesEveryMeasuredRow) {
  std::vector<FactRow> rows = ReadFacts();
  ASSERT_EQ(rows.size(), 12u);
  for (const FactRow& row : rows) {
    SCOPED_TRACE(row.input);
    PathParts parts = Split(row.input, row.status);
    ExpectParts(parts, row.drive, row.directory, row.name, row.extension);
  }
}

TEST(SplitPath, EmptyInputGivesEmptyParts) { ExpectParts(Split(""), "", "", "", ""); }

TEST(SplitPath, BothSlashesSeparateDirectories) {
  ExpectParts(Split("C:/a\\b/c.d"), "C:", "/a\\b/", "c", ".d");
  ExpectParts(Split("a\\b"), "", "a\\", "b", "");
}

TEST(SplitPath, PathEndingInASeparatorHasNoName) { ExpectParts(Split("C:\\dir\\"), "C:", "\\dir\\", "", ""); }

TEST(SplitPath, DotInADirectoryIsNotAnExtension) {
  ExpectParts(Split("a.b\\c"), "", "a.b\\", "c", "");
  ExpectParts(Split("a.b/"), "", "a.b/", "", "");
}

TEST(SplitPath, ExtensionKeepsBlanksAndStartsAtTheLastDot) {
  ExpectParts(Split("my report.final version.tx t"), "", "", "my report.final version", ".tx t");
  ExpectParts(Split(" . "), "", "", " ", ". ");
  ExpectParts(Split(".."), "", "", ".", ".");
}

TEST(SplitPath, AnyFirstCharacterBeforeAColonIsADrive) {
  ExpectParts(Split("1:x.txt"), "1:", "", "x", ".txt");
  ExpectParts(Split("z:"), "z:", "", "", "");
}

TEST(SplitPath, ColonElsewhereBelongsToTheName) {
  ExpectParts(Split("ab:c.txt"), "", "", "ab:c", ".txt");
  ExpectParts(Split(":"), "", "", ":", "");
}

TEST(SplitPath, TextAfterANulIsIgnored) {
  WString path = W("a.txt");
  path.push_back(0);
  path += W("\\b.doc");
  PathParts parts;
  ASSERT_EQ(SplitPath(path, &parts), kSplitPathOk);
  ExpectParts(parts, "", "", "a", ".txt");
}

TEST(SplitPath, NonAsciiTextIsKept) {
  ExpectParts(Split("C:\\café\\résumé.pdf"), "C:", "\\café\\", "résumé", ".pdf");
}

TEST(SplitPath, ComponentsUpToTheirBufferLessOneFit) {
  std::string directory = std::string(254, 'd') + "\\";
  std::string name(259, 'n');
  std::string extension = "." + std::string(258, 'e');
  ExpectParts(Split("C:" + directory + name + extension), "C:", directory, name, extension);
}

TEST(SplitPath, OverlongDirectoryIsAnErrorAndEmptiesEveryPart) {
  PathParts parts = Split(std::string(255, 'd') + "\\x.txt", kSplitPathTooLong);
  ExpectParts(parts, "", "", "", "");
}

TEST(SplitPath, OverlongNameIsAnError) {
  ExpectParts(Split(std::string(260, 'n') + ".txt", kSplitPathTooLong), "", "", "", "");
}

TEST(SplitPath, OverlongExtensionIsAnError) {
  ExpectParts(Split("x." + std::string(259, 'e'), kSplitPathTooLong), "", "", "", "");
}

TEST(SplitPath, LongPathWithShortComponentsFits) {
  std::string directory;
  for (int i = 0; i < 25; ++i) directory += "abcdefghi\\";
  std::string name(250, 'n');
  ExpectParts(Split("C:" + directory + name + ".txt"), "C:", directory, name, ".txt");
}

TEST(SplitPath, ErrorClearsPartsFromAnEarlierCall) {
  PathParts parts;
  ASSERT_EQ(SplitPath(W("C:\\dir\\a.txt"), &parts), kSplitPathOk);
  ASSERT_EQ(SplitPath(W(std::string(300, 'n')), &parts), kSplitPathTooLong);
  ExpectParts(parts, "", "", "", "");
}

TEST(SplitPath, NullResultPlaceIsInvalid) { EXPECT_EQ(SplitPath(W("a.txt"), nullptr), kSplitPathInvalid); }

TEST(SplitPath, StatusesAreTheRuntimeErrnoValues) {
  EXPECT_EQ(kSplitPathTooLong, ERANGE);
  EXPECT_EQ(kSplitPathInvalid, EINVAL);
}

}  // namespace
}  // namespace pv::test
