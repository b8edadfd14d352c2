// The content-type database off Windows: a mime.types file, parsed into
// the two lookups the registry gives on Windows.
#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>

#include "src/platform/content_types.h"
#include "src/platform/content_types_table.h"
#include "tests/test_util.h"

namespace pv::test {
namespace {

std::string FixturePath(const char* name) {
  return std::string(PARCELVANE_TEST_FIXTURES) + "/platform/" + name;
}

const ContentTypeTable& Fixture() {
  static const ContentTypeTable table = ContentTypeTable::Load(FixturePath("mime.types").c_str());
  return table;
}

// The answer, or "(none)" when there is none.
std::string TypeOf(const ContentTypeTable& table, WStringView extension) {
  WString type;
  return table.ContentTypeOf(extension, &type) ? U8(type) : "(none)";
}
std::string TypeOf(const ContentTypeTable& table, std::string_view extension) {
  return TypeOf(table, W(extension));
}

std::string ExtensionOf(const ContentTypeTable& table, std::string_view type) {
  WString extension;
  return table.ExtensionOf(W(type), &extension) ? U8(extension) : "(none)";
}

TEST(ContentTypeTable, FixtureIsRead) {
  EXPECT_EQ(Fixture().type_count(), 15u);
  EXPECT_EQ(Fixture().extension_count(), 36u);
}

TEST(ContentTypeTable, ExtensionGivesItsContentType) {
  EXPECT_EQ(TypeOf(Fixture(), ".pdf"), "application/pdf");
  EXPECT_EQ(TypeOf(Fixture(), ".jpg"), "image/jpeg");
  EXPECT_EQ(TypeOf(Fixture(), ".jfif"), "image/jpeg");
  EXPECT_EQ(TypeOf(Fixture(), ".txt"), "text/plain");
}

TEST(ContentTypeTable, ExtensionIsMatchedWithoutRegardToCase) {
  EXPECT_EQ(TypeOf(Fixture(), ".PDF"), "application/pdf");
  EXPECT_EQ(TypeOf(Fixture(), ".JpEg"), "image/jpeg");
}

TEST(ContentTypeTable, ContentTypeKeepsTheFilesSpelling) {
  EXPECT_EQ(TypeOf(Fixture(), ".kne"), "application/vnd.Kinar");
  EXPECT_EQ(ExtensionOf(Fixture(), "APPLICATION/VND.KINAR"), ".sdf");
}

TEST(ContentTypeTable, FirstContentTypeOfAnExtensionListedTwiceCounts) {
  EXPECT_EQ(TypeOf(Fixture(), ".sdf"), "application/vnd.Kinar");
  EXPECT_EQ(TypeOf(Fixture(), ".art"), "image/x-jg");
  EXPECT_EQ(ExtensionOf(Fixture(), "chemical/x-mdl-sdfile"), ".sdf");
}

TEST(ContentTypeTable, ContentTypeGivesTheExtensionWindowsUsersKnow) {
  EXPECT_EQ(ExtensionOf(Fixture(), "image/jpeg"), ".jpg");
  EXPECT_EQ(ExtensionOf(Fixture(), "text/html"), ".htm");
  EXPECT_EQ(ExtensionOf(Fixture(), "text/plain"), ".txt");
  EXPECT_EQ(ExtensionOf(Fixture(), "audio/mpeg"), ".mp3");
  EXPECT_EQ(ExtensionOf(Fixture(), "video/quicktime"), ".mov");
  EXPECT_EQ(ExtensionOf(Fixture(), "message/rfc822"), ".eml");
  EXPECT_EQ(ExtensionOf(Fixture(), "application/msword"), ".doc");
  EXPECT_EQ(ExtensionOf(Fixture(), "application/pdf"), ".pdf");
}

TEST(ContentTypeTable, ContentTypeWithoutAPreferenceGivesItsFirstExtension) {
  EXPECT_EQ(ExtensionOf(Fixture(), "application/octet-stream"), ".bin");
  EXPECT_EQ(ExtensionOf(Fixture(), "text/csv"), ".csv");
}

TEST(ContentTypeTable, ContentTypeIsMatchedWithoutRegardToCase) {
  EXPECT_EQ(ExtensionOf(Fixture(), "IMAGE/JPEG"), ".jpg");
  EXPECT_EQ(ExtensionOf(Fixture(), "Text/Plain"), ".txt");
}

TEST(ContentTypeTable, ContentTypeWithoutExtensionsHasNone) {
  EXPECT_EQ(ExtensionOf(Fixture(), "application/3gppHal+json"), "(none)");
}

TEST(ContentTypeTable, UnknownExtensionHasNoContentType) {
  EXPECT_EQ(TypeOf(Fixture(), ".xyz"), "(none)");
  EXPECT_EQ(TypeOf(Fixture(), ".pd"), "(none)");
  EXPECT_EQ(TypeOf(Fixture(), ".pdfx"), "(none)");
}

TEST(ContentTypeTable, UnknownContentTypeHasNoExtension) {
  EXPECT_EQ(ExtensionOf(Fixture(), "application/x-unknown"), "(none)");
  EXPECT_EQ(ExtensionOf(Fixture(), "image"), "(none)");
  EXPECT_EQ(ExtensionOf(Fixture(), "image/jpeg; name=a.jpg"), "(none)");
}

TEST(ContentTypeTable, FailedLookupsLeaveTheResultAlone) {
  WString type = W("unchanged");
  EXPECT_FALSE(Fixture().ContentTypeOf(W(".xyz"), &type));
  EXPECT_EQ(U8(type), "unchanged");
  WString extension = W("unchanged");
  EXPECT_FALSE(Fixture().ExtensionOf(W("a/b"), &extension));
  EXPECT_EQ(U8(extension), "unchanged");
}

TEST(ContentTypeTable, ExtensionMustBeGivenWithItsDot) {
  EXPECT_EQ(TypeOf(Fixture(), "pdf"), "(none)");
  EXPECT_EQ(TypeOf(Fixture(), ".."), "(none)");
  EXPECT_EQ(TypeOf(Fixture(), "..pdf"), "(none)");
}

TEST(ContentTypeTable, EmptyInputsHaveNoAnswer) {
  EXPECT_EQ(TypeOf(Fixture(), ""), "(none)");
  EXPECT_EQ(TypeOf(Fixture(), "."), "(none)");
  EXPECT_EQ(ExtensionOf(Fixture(), ""), "(none)");
}

TEST(ContentTypeTable, ExtensionWithBlanksOrOtherCharactersHasNoAnswer) {
  EXPECT_EQ(TypeOf(Fixture(), ".a b"), "(none)");
  EXPECT_EQ(TypeOf(Fixture(), ".pdf "), "(none)");
  EXPECT_EQ(TypeOf(Fixture(), ".pdfé"), "(none)");
}

TEST(ContentTypeTable, TextAfterANulIsIgnored) {
  WString extension = W(".pdf");
  extension.push_back(0);
  extension += W("junk");
  EXPECT_EQ(TypeOf(Fixture(), WStringView(extension)), "application/pdf");
}

TEST(ContentTypeTable, CommentsEndALine) {
  EXPECT_EQ(TypeOf(Fixture(), ".ind"), "text/x-indented");
  EXPECT_EQ(TypeOf(Fixture(), ".cmt"), "text/x-commented");
  EXPECT_EQ(TypeOf(Fixture(), ".#not-an-extension"), "(none)");
  EXPECT_EQ(TypeOf(Fixture(), ".a"), "(none)");
  EXPECT_EQ(TypeOf(Fixture(), ".dis"), "(none)");
  EXPECT_EQ(ExtensionOf(Fixture(), "text/x-disabled"), "(none)");
}

TEST(ContentTypeTable, LinesWithoutAContentTypeAreSkipped) { EXPECT_EQ(TypeOf(Fixture(), ".nct"), "(none)"); }

TEST(ContentTypeTable, CarriageReturnsAndAMissingLastLineBreakAreHandled) {
  EXPECT_EQ(TypeOf(Fixture(), ".csv"), "text/csv");
  EXPECT_EQ(TypeOf(Fixture(), ".mov"), "video/quicktime");
}

TEST(ContentTypeTable, PreferenceAppliesOnlyWhenTheFileListsIt) {
  ContentTypeTable table = ContentTypeTable::Parse("image/jpeg jpeg jpe\ntext/html html\n");
  EXPECT_EQ(ExtensionOf(table, "image/jpeg"), ".jpeg");
  EXPECT_EQ(ExtensionOf(table, "text/html"), ".html");
}

TEST(ContentTypeTable, PreferenceOnALaterLineOfTheSameTypeWins) {
  ContentTypeTable table = ContentTypeTable::Parse("image/jpeg jpeg\nimage/jpeg jpe JPG\n");
  EXPECT_EQ(ExtensionOf(table, "image/jpeg"), ".JPG");
  EXPECT_EQ(TypeOf(table, ".jpe"), "image/jpeg");
}

TEST(ContentTypeTable, WordsWithOtherThanPrintableAsciiAreSkipped) {
  static const char text[] = "text/pl\xC3\xA4in txt\nimage/png p\x01g png\nx/y a\0b c\n";
  ContentTypeTable table = ContentTypeTable::Parse(std::string_view(text, sizeof text - 1));
  EXPECT_EQ(TypeOf(table, ".txt"), "(none)");
  EXPECT_EQ(ExtensionOf(table, "image/png"), ".png");
  EXPECT_EQ(TypeOf(table, ".c"), "x/y");
  EXPECT_EQ(table.extension_count(), 2u);
}

TEST(ContentTypeTable, EmptyTextGivesAnEmptyTable) {
  ContentTypeTable table = ContentTypeTable::Parse("");
  EXPECT_EQ(table.type_count(), 0u);
  EXPECT_EQ(TypeOf(table, ".pdf"), "(none)");
}

TEST(ContentTypeTable, AbsentFileGivesAnEmptyTable) {
  ContentTypeTable table = ContentTypeTable::Load("/nonexistent/parcelvane/mime.types");
  EXPECT_EQ(table.extension_count(), 0u);
  EXPECT_EQ(ExtensionOf(table, "image/jpeg"), "(none)");
}

TEST(ContentTypeTable, UnreadableFileGivesAnEmptyTable) {
  ContentTypeTable table = ContentTypeTable::Load(PARCELVANE_TEST_FIXTURES);  // a directory
  EXPECT_EQ(table.extension_count(), 0u);
}

TEST(ContentTypeTable, NullPathGivesAnEmptyTable) {
  EXPECT_EQ(ContentTypeTable::Load(nullptr).type_count(), 0u);
}

TEST(ContentTypeTable, FileLargerThanTheLimitIsNotRead) {
  char name[] = "/tmp/parcelvane-mime-types-XXXXXX";
  int fd = mkstemp(name);
  ASSERT_GE(fd, 0);
  const char line[] = "image/png png\n";
  ASSERT_EQ(write(fd, line, sizeof line - 1), static_cast<ssize_t>(sizeof line - 1));
  ASSERT_EQ(ftruncate(fd, static_cast<off_t>(ContentTypeTable::kMaxFileSize) + 1), 0);
  close(fd);
  EXPECT_EQ(ContentTypeTable::Load(name).type_count(), 0u);
  ASSERT_EQ(truncate(name, static_cast<off_t>(ContentTypeTable::kMaxFileSize)), 0);
  EXPECT_EQ(ExtensionOf(ContentTypeTable::Load(name), "image/png"), ".png");
  unlink(name);
}

TEST(ContentTypeTable, SystemFileAnswersWhatWindowsUsersKnow) {
  if (access("/etc/mime.types", R_OK) != 0) GTEST_SKIP() << "no /etc/mime.types";
  ContentTypeTable table = ContentTypeTable::Load("/etc/mime.types");
  EXPECT_EQ(TypeOf(table, ".pdf"), "application/pdf");
  EXPECT_EQ(TypeOf(table, ".JPG"), "image/jpeg");
  EXPECT_EQ(ExtensionOf(table, "image/jpeg"), ".jpg");
  EXPECT_EQ(ExtensionOf(table, "text/plain"), ".txt");
  EXPECT_EQ(ExtensionOf(table, "text/html"), ".htm");
  EXPECT_EQ(ExtensionOf(table, "application/pdf"), ".pdf");
  EXPECT_EQ(ExtensionOf(table, "application/msword"), ".doc");
  EXPECT_EQ(ExtensionOf(table, "application/vnd.ms-excel"), ".xls");
  EXPECT_EQ(ExtensionOf(table, "application/zip"), ".zip");
  EXPECT_EQ(ExtensionOf(table, "image/png"), ".png");
  EXPECT_EQ(ExtensionOf(table, "image/gif"), ".gif");
  EXPECT_EQ(ExtensionOf(table, "message/rfc822"), ".eml");
}

// ---------------------------------------------------------------- the process's database
// The process reads its database once, so each of these runs in a fresh
// process started with the environment it sets up.
class SystemContentTypes : public ::testing::Test {
 protected:
  void SetUp() override {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const char* old = std::getenv("PARCELVANE_MIME_TYPES");
    hadOld_ = old != nullptr;
    if (hadOld_) old_ = old;
  }
  void TearDown() override {
    if (hadOld_) {
      setenv("PARCELVANE_MIME_TYPES", old_.c_str(), 1);
    } else {
      unsetenv("PARCELVANE_MIME_TYPES");
    }
  }

 private:
  bool hadOld_ = false;
  std::string old_;
};

// Exit status 0 when the process's lookups give these answers.
[[noreturn]] void ExitWithLookups(const char* extension, const char* expectedType, const char* type,
                                  const char* expectedExtension) {
  WString answer;
  std::string gotType = ContentTypeOfExtension(W(extension), &answer) ? U8(answer) : "(none)";
  std::string gotExtension = ExtensionOfContentType(W(type), &answer) ? U8(answer) : "(none)";
  std::exit((gotType == expectedType ? 0 : 1) | (gotExtension == expectedExtension ? 0 : 2));
}

TEST_F(SystemContentTypes, EnvironmentVariableNamesTheFile) {
  setenv("PARCELVANE_MIME_TYPES", FixturePath("mime.types").c_str(), 1);
  EXPECT_EXIT(ExitWithLookups(".KNE", "application/vnd.Kinar", "text/html", ".htm"),
              ::testing::ExitedWithCode(0), "");
}

TEST_F(SystemContentTypes, AbsentFileAnswersNothing) {
  setenv("PARCELVANE_MIME_TYPES", "/nonexistent/parcelvane/mime.types", 1);
  EXPECT_EXIT(ExitWithLookups(".pdf", "(none)", "image/jpeg", "(none)"), ::testing::ExitedWithCode(0), "");
}

TEST_F(SystemContentTypes, WithoutTheVariableTheSystemFileIsRead) {
  if (access("/etc/mime.types", R_OK) != 0) GTEST_SKIP() << "no /etc/mime.types";
  unsetenv("PARCELVANE_MIME_TYPES");
  EXPECT_EXIT(ExitWithLookups(".pdf", "application/pdf", "image/jpeg", ".jpg"), ::testing::ExitedWithCode(0),
              "");
}

TEST_F(SystemContentTypes, EmptyVariableReadsTheSystemFile) {
  if (access("/etc/mime.types", R_OK) != 0) GTEST_SKIP() << "no /etc/mime.types";
  setenv("PARCELVANE_MIME_TYPES", "", 1);
  EXPECT_EXIT(ExitWithLookups(".gif", "image/gif", "text/plain", ".txt"), ::testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace pv::test
