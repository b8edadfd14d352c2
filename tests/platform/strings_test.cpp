#include "tests/test_util.h"

namespace pv::test {
namespace {

TEST(AsciiCase, EqualityIgnoresOnlyAsciiCase) {
  EXPECT_TRUE(EqualsIgnoreCaseAscii(std::string_view("Content-Type"), std::string_view("content-TYPE")));
  EXPECT_FALSE(EqualsIgnoreCaseAscii(std::string_view("\xC9"), std::string_view("\xE9")));
  EXPECT_FALSE(EqualsIgnoreCaseAscii(std::string_view("ab"), std::string_view("abc")));
  EXPECT_TRUE(EqualsIgnoreCaseAscii(WStringView(OLESTR("BASE64")), WStringView(OLESTR("base64"))));
}

TEST(AsciiCase, PrefixTestIgnoresCase) {
  EXPECT_TRUE(StartsWithIgnoreCaseAscii(std::string_view("content-id"), std::string_view("Content-")));
  EXPECT_FALSE(StartsWithIgnoreCaseAscii(std::string_view("X-Content-id"), std::string_view("Content-")));
  EXPECT_FALSE(StartsWithIgnoreCaseAscii(std::string_view("Cont"), std::string_view("Content-")));
}

TEST(AsciiCase, ComparisonOrdersFoldedText) {
  EXPECT_EQ(CompareIgnoreCaseAscii(std::string_view("abc"), std::string_view("ABC")), 0);
  EXPECT_LT(CompareIgnoreCaseAscii(std::string_view("abc"), std::string_view("ABD")), 0);
  EXPECT_GT(CompareIgnoreCaseAscii(std::string_view("b"), std::string_view("A")), 0);
  EXPECT_LT(CompareIgnoreCaseAscii(std::string_view("ab"), std::string_view("abc")), 0);
}

TEST(WidenAscii, CopiesEachByte) { EXPECT_EQ(WidenAscii("Az"), WString(OLESTR("Az"))); }

}  // namespace
}  // namespace pv::test
