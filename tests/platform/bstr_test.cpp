#include <cstring>

#include "tests/test_util.h"

namespace pv::test {
namespace {

TEST(Bstr, AllocStringCopiesTextAndTerminates) {
  BSTR s = SysAllocString(OLESTR("abc"));
  ASSERT_NE(s, nullptr);
  EXPECT_EQ(SysStringLen(s), 3u);
  EXPECT_EQ(SysStringByteLen(s), 6u);
  EXPECT_EQ(s[3], 0);
  EXPECT_EQ(WStringView(s), WStringView(OLESTR("abc")));
  SysFreeString(s);
}

TEST(Bstr, LengthPrefixHoldsTheByteCount) {
  BSTR s = SysAllocString(OLESTR("hello"));
  uint32_t prefix = 0;
  std::memcpy(&prefix, reinterpret_cast<char*>(s) - 4, 4);
  EXPECT_EQ(prefix, 10u);
  SysFreeString(s);
}

TEST(Bstr, AllocStringOfNullIsNull) { EXPECT_EQ(SysAllocString(nullptr), nullptr); }

TEST(Bstr, AllocStringLenKeepsEmbeddedZeros) {
  const OLECHAR text[] = {'a', 0, 'b'};
  BSTR s = SysAllocStringLen(text, 3);
  EXPECT_EQ(SysStringLen(s), 3u);
  EXPECT_EQ(s[1], 0);
  EXPECT_EQ(s[2], 'b');
  EXPECT_EQ(s[3], 0);
  SysFreeString(s);
}

TEST(Bstr, AllocStringLenWithoutSourceGivesZeroedRoom) {
  BSTR s = SysAllocStringLen(nullptr, 4);
  ASSERT_NE(s, nullptr);
  EXPECT_EQ(SysStringLen(s), 4u);
  for (int i = 0; i <= 4; ++i) EXPECT_EQ(s[i], 0);
  SysFreeString(s);
}

TEST(Bstr, EmptyStringIsNotNull) {
  BSTR s = SysAllocString(OLESTR(""));
  ASSERT_NE(s, nullptr);
  EXPECT_EQ(SysStringLen(s), 0u);
  EXPECT_EQ(s[0], 0);
  SysFreeString(s);
}

TEST(Bstr, ByteLenCountsOddBytesAndTerminates) {
  BSTR s = SysAllocStringByteLen("abc", 3);
  EXPECT_EQ(SysStringByteLen(s), 3u);
  EXPECT_EQ(SysStringLen(s), 1u);
  EXPECT_EQ(std::memcmp(s, "abc", 3), 0);
  EXPECT_EQ(reinterpret_cast<char*>(s)[3], 0);
  EXPECT_EQ(reinterpret_cast<char*>(s)[4], 0);
  SysFreeString(s);
}

TEST(Bstr, NullStringHasLengthZeroAndFreesQuietly) {
  EXPECT_EQ(SysStringLen(nullptr), 0u);
  EXPECT_EQ(SysStringByteLen(nullptr), 0u);
  SysFreeString(nullptr);
}

TEST(Bstr, ReAllocReplacesTheString) {
  BSTR s = SysAllocString(OLESTR("old"));
  EXPECT_TRUE(SysReAllocString(&s, OLESTR("newer")));
  EXPECT_EQ(WStringView(s), WStringView(OLESTR("newer")));
  EXPECT_TRUE(SysReAllocStringLen(&s, s + 1, 2));  // a source inside the old string
  EXPECT_EQ(WStringView(s), WStringView(OLESTR("ew")));
  SysFreeString(s);
}

TEST(Bstr, TooLongRequestFailsWithNull) { EXPECT_EQ(SysAllocStringLen(nullptr, 0xFFFFFFFFu), nullptr); }

TEST(BstrHelpers, NullBstrViewsAsEmpty) {
  EXPECT_TRUE(View(nullptr).empty());
  Bstr b(W("x"));
  EXPECT_EQ(U8(b), "x");
  BSTR* place = b.put();
  EXPECT_EQ(*place, nullptr);
}

TEST(BstrHelpers, ReturnBstrWritesANewString) {
  BSTR out = nullptr;
  EXPECT_EQ(ReturnBstr(W("caf\xC3\xA9"), &out), S_OK);
  EXPECT_EQ(U8(out), "caf\xC3\xA9");
  SysFreeString(out);
}

}  // namespace
}  // namespace pv::test
