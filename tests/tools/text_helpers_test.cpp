// The tool's own text handling: UTF-8 and UTF-16, line ends, columns.
#ifdef PARCELVANE_TOOL_PATH

#include <gtest/gtest.h>

#include "tools/line_ends.h"
#include "tools/utf.h"

namespace pvtool {
namespace {

TEST(Utf, ConvertsBetweenUtf8AndUtf16BothWays) {
  const std::string text =
      "Gr\xC3\xBC\xC3\x9F"
      "e \xE2\x80\x93 \xF0\x9F\x93\x8E";
  const U16String wide = Utf8ToUtf16(text);
  EXPECT_EQ(wide, u"Gr\u00FC\u00DFe \u2013 \U0001F4CE");
  EXPECT_EQ(Utf16ToUtf8(wide), text);
}

TEST(Utf, InvalidUtf8BecomesOneReplacementCharacterPerByte) {
  EXPECT_EQ(Utf8ToUtf16("a\xFF"
                        "b"),
            u"a\uFFFDb");
  EXPECT_EQ(Utf8ToUtf16("\xC3"), u"\uFFFD");                      // truncated
  EXPECT_EQ(Utf8ToUtf16("\xC0\xAF"), u"\uFFFD\uFFFD");            // overlong
  EXPECT_EQ(Utf8ToUtf16("\xED\xA0\x80"), u"\uFFFD\uFFFD\uFFFD");  // a surrogate
}

TEST(Utf, ALoneSurrogateBecomesAReplacementCharacter) {
  const char16_t lone[] = {u'a', 0xD800, u'b', 0};
  EXPECT_EQ(Utf16ToUtf8(lone),
            "a\xEF\xBF\xBD"
            "b");
}

TEST(Utf, ValidityAndCounting) {
  EXPECT_TRUE(IsValidUtf8("K\xC3\xB6ln"));
  EXPECT_FALSE(IsValidUtf8("K\xF6ln"));
  EXPECT_EQ(CodePointCount("K\xC3\xB6ln"), 4u);
}

TEST(Utf, APrefixNeverCutsACharacter) {
  EXPECT_EQ(Utf8Prefix("a\xC3\xB6", 2), "a");
  EXPECT_EQ(Utf8Prefix("a\xC3\xB6", 3), "a\xC3\xB6");
  EXPECT_EQ(Utf8FirstCodePoints("\xC3\xB6\xC3\xB6x", 2), "\xC3\xB6\xC3\xB6");
}

TEST(Utf, FitColumnPadsAndCutsByCharacters) {
  EXPECT_EQ(FitColumn("K\xC3\xB6ln", 6), "K\xC3\xB6ln  ");
  EXPECT_EQ(FitColumn("abcdef", 4), "abc\xE2\x80\xA6");
  EXPECT_EQ(PadRight("abc", 2), "abc");
}

TEST(Utf, TerminalSafeTextHasNoControlCharacters) {
  EXPECT_EQ(TerminalSafe("a\x1B[2Jb\tc\x07"), "a?[2Jb c?");
  EXPECT_EQ(TerminalSafe("x\xC2\x9By"), "x?y");  // the C1 control sequence introducer
}

TEST(LineEnds, BareLfBecomesCrLf) {
  EXPECT_EQ(BareLfToCrLf("a\nb\n"), "a\r\nb\r\n");
  EXPECT_EQ(BareLfToCrLf("\n\n"), "\r\n\r\n");
}

TEST(LineEnds, CrLfAndLoneCrAreKept) {
  EXPECT_EQ(BareLfToCrLf("a\r\nb\rc\n"), "a\r\nb\rc\r\n");
  EXPECT_EQ(BareLfToCrLf(""), "");
  EXPECT_EQ(BareLfToCrLf("no line end"), "no line end");
}

TEST(LineEnds, DetectsBareLf) {
  EXPECT_TRUE(HasBareLf("a\r\nb\n"));
  EXPECT_FALSE(HasBareLf("a\r\nb\r\n"));
}

TEST(LineEnds, CrLfBecomesLfForOutput) {
  EXPECT_EQ(CrLfToLf("a\r\nb\r\n\r\n"), "a\nb\n\n");
  EXPECT_EQ(CrLfToLf("a\rb\n"), "a\rb\n");
}

TEST(LineEnds, ConversionIsLinearOnLargeInput) {
  const std::string big(8 << 20, '\n');
  EXPECT_EQ(BareLfToCrLf(big).size(), big.size() * 2);
}

}  // namespace
}  // namespace pvtool

#else

#include <gtest/gtest.h>

TEST(ToolTests, NeedTheCommandBuilt) { GTEST_SKIP() << "configure with PARCELVANE_BUILD_TOOLS=ON"; }

#endif
