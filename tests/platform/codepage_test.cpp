// The built-in pages reproduce the platform's measured answers.
#include <cstring>

#include "tests/test_util.h"

namespace pv::test {
namespace {

std::vector<uint16_t> Decode(UINT cp, std::string_view bytes) {
  WString w;
  EXPECT_TRUE(ToWide(cp, bytes, &w));
  return std::vector<uint16_t>(w.begin(), w.end());
}

std::string Encode(UINT cp, std::vector<uint16_t> units) {
  WString w(units.begin(), units.end());
  std::string s;
  EXPECT_TRUE(ToNarrow(cp, w, &s));
  return s;
}

using Units = std::vector<uint16_t>;

TEST(CodePage, AnsiPageIsWindows1252ByDefault) {
  if (std::getenv("PARCELVANE_ACP") != nullptr) GTEST_SKIP() << "PARCELVANE_ACP is set";
  EXPECT_EQ(AnsiCodePage(), 1252u);
  EXPECT_EQ(ResolveCodePage(0), 1252u);
}

TEST(CodePage, Utf8DecodesValidSequences) {
  EXPECT_EQ(Decode(65001, "\xC3\xA9"), Units({0x00E9}));
  EXPECT_EQ(Decode(65001, "\xF0\x9F\x98\x80"), Units({0xD83D, 0xDE00}));
  EXPECT_EQ(Decode(65001,
                   "a\xE2\x82\xAC"
                   "b"),
            Units({'a', 0x20AC, 'b'}));
}

TEST(CodePage, Utf8ReplacesEachInvalidUnitLikeThePlatform) {
  EXPECT_EQ(Decode(65001, "\xC3\x28"), Units({0xFFFD, 0x0028}));
  EXPECT_EQ(Decode(65001, "\x80"), Units({0xFFFD}));
  EXPECT_EQ(Decode(65001, "\xF8\x88\x80\x80\x80"), Units(5, 0xFFFD));
  EXPECT_EQ(Decode(65001, "\xED\xA0\x80"), Units(2, 0xFFFD));
  EXPECT_EQ(Decode(65001, "\xC0\xAF"), Units(2, 0xFFFD));
  EXPECT_EQ(Decode(65001, "\xE2\x82"), Units(1, 0xFFFD));
  EXPECT_EQ(Decode(65001, "\xF4\x90\x80\x80"), Units(3, 0xFFFD));
  EXPECT_EQ(Decode(65001, "\xFF"), Units({0xFFFD}));
}

TEST(CodePage, Utf8EncodesLoneSurrogateAsReplacement) {
  EXPECT_EQ(Encode(65001, {0xD800}), "\xEF\xBF\xBD");
  EXPECT_EQ(Encode(65001, {'a', 0xD800, 'b'}),
            "a\xEF\xBF\xBD"
            "b");
  EXPECT_EQ(Encode(65001, {0x20AC}), "\xE2\x82\xAC");
  EXPECT_EQ(Encode(65001, {0x0100}), "\xC4\x80");
  EXPECT_EQ(Encode(65001, {0xD83D, 0xDE00}), "\xF0\x9F\x98\x80");
}

TEST(CodePage, Windows1252MapsUndefinedBytesToC1Controls) {
  EXPECT_EQ(Decode(1252, "\x80"), Units({0x20AC}));
  for (unsigned char b : {0x81, 0x8D, 0x8F, 0x90, 0x9D}) {
    EXPECT_EQ(Decode(1252, std::string(1, static_cast<char>(b))), Units({b}));
  }
  EXPECT_EQ(Decode(1252, "\x9F"), Units({0x0178}));
}

TEST(CodePage, Windows1252RoundTripsEveryByte) {
  std::string all;
  for (int b = 0; b < 256; ++b) all.push_back(static_cast<char>(b));
  WString w;
  ASSERT_TRUE(ToWide(1252, all, &w));
  std::string back;
  ASSERT_TRUE(ToNarrow(1252, w, &back));
  EXPECT_EQ(back, all);
}

TEST(CodePage, UnmappableCharactersBecomeQuestionMarks) {
  EXPECT_EQ(Encode(1252, {0x4E2D}), "?");
  EXPECT_EQ(Encode(28591, {0x20AC}), "?");
  EXPECT_EQ(Encode(20127, {0x20AC}), "?");
  EXPECT_EQ(Encode(1252, {0xD800}), "?");
  EXPECT_EQ(Encode(1252, {0x20AC}), "\x80");
}

TEST(CodePage, Latin1IsTheIdentityOnBytes) {
  EXPECT_EQ(Decode(28591, "\x80\xFF"), Units({0x80, 0xFF}));
  EXPECT_EQ(Encode(28591, {0xE9}), "\xE9");
}

TEST(CodePage, UsAsciiMasksTheHighBit) {
  EXPECT_EQ(Decode(20127, "\x80\xA9\xE9\xFF"), Units({0x00, 0x29, 0x69, 0x7F}));
}

TEST(CodePage, SizeQueryIsExact) {
  const char* text = "caf\xC3\xA9 \xF0\x9F\x98\x80";
  int n = MultiByteToWide(65001, text, static_cast<int>(std::strlen(text)), nullptr, 0);
  EXPECT_EQ(n, 7);
  const OLECHAR units[] = {'c', 0xE9, 0xD83D, 0xDE00};
  EXPECT_EQ(WideToMultiByte(65001, units, 4, nullptr, 0), 7);
  EXPECT_EQ(WideToMultiByte(1252, units, 4, nullptr, 0), 4);
}

TEST(CodePage, TooSmallBufferFails) {
  OLECHAR out[2];
  EXPECT_EQ(MultiByteToWide(1252, "abc", 3, out, 2), 0);
  char bytes[1];
  const OLECHAR units[] = {0xE9};
  EXPECT_EQ(WideToMultiByte(65001, units, 1, bytes, 1), 0);
}

TEST(CodePage, EmptyInputAndUnknownPageFail) {
  OLECHAR out[4];
  EXPECT_EQ(MultiByteToWide(1252, "", 0, out, 4), 0);
  EXPECT_EQ(MultiByteToWide(12345, "a", 1, out, 4), 0);
  EXPECT_FALSE(IsCodePageConvertible(12345));
  EXPECT_TRUE(IsCodePageConvertible(0));
  WString w;
  EXPECT_FALSE(ToWide(12345, "a", &w));
}

TEST(CodePage, AnsiHelpersRoundTripHighBytes) {
  std::string bytes = "x\xE9\x81\xFF";
  EXPECT_EQ(WideToAnsi(AnsiToWide(bytes)), bytes);
}

}  // namespace

TEST(AnsiRoundTrip, KeepsEveryByteOfTheDefaultPage) {
  if (std::getenv("PARCELVANE_ACP") != nullptr) GTEST_SKIP() << "PARCELVANE_ACP is set";
  EXPECT_TRUE(AnsiKeepsEveryByte());
  std::string all;
  for (int b = 1; b < 256; ++b) all.push_back(static_cast<char>(b));
  EXPECT_EQ(AnsiRoundTrip(all), all);
  EXPECT_EQ(WideToAnsi(AnsiToWide(all)), all);
}

TEST(AnsiRoundTrip, KeptBytesAreNotCopied) {
  if (std::getenv("PARCELVANE_ACP") != nullptr) GTEST_SKIP() << "PARCELVANE_ACP is set";
  const std::string bytes = "a\xE9\x81";
  std::string scratch = "untouched";
  std::string_view view = AnsiRoundTrip(bytes, &scratch);
  EXPECT_EQ(view.data(), bytes.data());
  EXPECT_EQ(view.size(), bytes.size());
  EXPECT_EQ(scratch, "untouched");
  std::string owned = bytes + std::string(64, 'x');  // longer than any in-place buffer
  const std::string expected = owned;
  const char* buffer = owned.data();
  std::string moved = AnsiRoundTrip(std::move(owned));
  EXPECT_EQ(moved, expected);
  EXPECT_EQ(moved.data(), buffer);  // taken over, not copied
}

}  // namespace pv::test
