#include "src/headers/mime_char_class.h"

#include <gtest/gtest.h>

#include <string>

namespace pv {
namespace {

std::string Members(uint16_t flag) {
  std::string s;
  for (int c = 0; c < 128; ++c) {
    if (kMimeCharClass[c] & flag) s.push_back(static_cast<char>(c));
  }
  return s;
}

std::string Range(int from, int to) {
  std::string s;
  for (int c = from; c <= to; ++c) s.push_back(static_cast<char>(c));
  return s;
}

TEST(MimeCharClass, ControlIsTheC0RangeAndDelete) { EXPECT_EQ(Members(kCharControl), Range(0, 31) + "\x7F"); }

TEST(MimeCharClass, LettersDigitsAndAlphanumerics) {
  EXPECT_EQ(Members(kCharLetter), Range('A', 'Z') + Range('a', 'z'));
  EXPECT_EQ(Members(kCharDigit), Range('0', '9'));
  EXPECT_EQ(Members(kCharAlphanumeric), Range('0', '9') + Range('A', 'Z') + Range('a', 'z'));
}

TEST(MimeCharClass, WhiteSpaceIsSpaceAndTabOnly) { EXPECT_EQ(Members(kCharWhiteSpace), "\t "); }

TEST(MimeCharClass, PunctuationIsEveryOtherPrintable) {
  EXPECT_EQ(Members(kCharPunctuation),
            Range(0x21, 0x2F) + Range(0x3A, 0x40) + Range(0x5B, 0x60) + Range(0x7B, 0x7E));
}

TEST(MimeCharClass, AddressSpecialsIncludeEqualsSign) {
  EXPECT_EQ(Members(kCharAddressSpecial), "\"(),.:;<=>@[\\]");
}

TEST(MimeCharClass, MimeSpecialsExcludeAtSign) { EXPECT_EQ(Members(kCharMimeSpecial), "\"(),/:;<=>?[\\]"); }

TEST(MimeCharClass, HexDigitsAreUpperCaseOnly) { EXPECT_EQ(Members(kCharHexDigit), "0123456789ABCDEF"); }

TEST(MimeCharClass, LineBreakIsCarriageReturnAndLineFeed) { EXPECT_EQ(Members(kCharLineBreak), "\n\r"); }

TEST(MimeCharClass, HighBytesBelongToNoClass) {
  for (int c = 0x80; c < 0x100; ++c) EXPECT_FALSE(HasCharClass(static_cast<unsigned char>(c), 0x3FF));
  EXPECT_TRUE(HasCharClass('=', kCharAddressSpecial | kCharMimeSpecial));
  EXPECT_FALSE(HasCharClassWide(0x120, kCharWhiteSpace));
}

}  // namespace
}  // namespace pv
