// Dates, addresses, raw 8-bit text and the message check of the tool.
#ifdef PARCELVANE_TOOL_PATH

#include <gtest/gtest.h>

#include "tools/mail_text.h"

namespace pvtool {
namespace {

TEST(ShortDate, GivesDateAndTimeAsWritten) {
  EXPECT_EQ(ShortDate("Tue, 1 Jul 2003 10:52:37 +0200"), "2003-07-01 10:52");
  EXPECT_EQ(ShortDate("1 Jul 2003 10:52 +0200"), "2003-07-01 10:52");
  EXPECT_EQ(ShortDate(" Fri,\r\n 21 Nov 97 09:55:06 GMT"), "1997-11-21 09:55");
  EXPECT_EQ(ShortDate("Mon, 3 Jan 25 00:00:00 +0000"), "2025-01-03 00:00");
}

TEST(ShortDate, KeepsTextThatIsNotADate) {
  EXPECT_EQ(ShortDate("  yesterday\r\n evening "), "yesterday evening");
  EXPECT_EQ(ShortDate("Tue, 1 Foo 2003 10:52:37"), "Tue, 1 Foo 2003 10:52:37");
  EXPECT_EQ(ShortDate(""), "");
}

TEST(HeaderDate, FormatsSecondsInUtc) {
  EXPECT_EQ(HeaderDate(0), "Thu, 01 Jan 1970 00:00:00 +0000");
  EXPECT_EQ(HeaderDate(1751367157), "Tue, 01 Jul 2025 10:52:37 +0000");
  EXPECT_EQ(HeaderDate(951782400), "Tue, 29 Feb 2000 00:00:00 +0000");
}

TEST(SplitAddress, SplitsNameAndAddress) {
  const Address a = SplitAddress("J\xC3\xBCrgen M\xC3\xBCller <jm@example.org>");
  EXPECT_EQ(a.name, "J\xC3\xBCrgen M\xC3\xBCller");
  EXPECT_EQ(a.address, "jm@example.org");
}

TEST(SplitAddress, UnquotesAQuotedName) {
  const Address a = SplitAddress("\"M\xC3\xBCller, J. \\\"Jo\\\"\" <jm@example.org>");
  EXPECT_EQ(a.name, "M\xC3\xBCller, J. \"Jo\"");
  EXPECT_EQ(a.address, "jm@example.org");
}

TEST(SplitAddress, ABareAddressHasNoName) {
  const Address a = SplitAddress("  jm@example.org ");
  EXPECT_EQ(a.name, "");
  EXPECT_EQ(a.address, "jm@example.org");
}

TEST(RepairRawUtf8, RawUtf8ReadAsSingleBytesIsReadAgain) {
  // "Grüße" in UTF-8 read byte by byte: "GrÃ¼ÃŸe".
  EXPECT_EQ(RepairRawUtf8(u"Gr\u00C3\u00BC\u00C3\u0178e"), u"Gr\u00FC\u00DFe");
}

TEST(RepairRawUtf8, RealSingleByteTextStays) {
  EXPECT_EQ(RepairRawUtf8(u"Gr\u00FC\u00DFe"), u"Gr\u00FC\u00DFe");
  EXPECT_EQ(RepairRawUtf8(u"\u20AC 5"), u"\u20AC 5");
  EXPECT_EQ(RepairRawUtf8(u"\u0141\u00F3d\u017A"), u"\u0141\u00F3d\u017A");
}

TEST(UnfoldValue, JoinsContinuationLines) {
  EXPECT_EQ(UnfoldValue(" a\r\n\tb\r\n  c "), "a b c");
}

TEST(NotAMessageReason, AcceptsAHeaderBlock) {
  EXPECT_EQ(NotAMessageReason("Subject: x\r\n\r\nbody"), "");
  EXPECT_EQ(NotAMessageReason("X-Odd-Name  : x\n"), "");
}

TEST(NotAMessageReason, RejectsWhatIsNotAMessage) {
  EXPECT_EQ(NotAMessageReason(""), "is empty");
  EXPECT_EQ(NotAMessageReason("%PDF-1.4\n%\xE2\xE3\n"), "does not begin with a header field");
  EXPECT_EQ(NotAMessageReason("\r\n\r\nbody only"), "does not begin with a header field");
  EXPECT_EQ(NotAMessageReason(": no name\n"), "does not begin with a header field");
  EXPECT_EQ(NotAMessageReason(std::string("Subject: a\0b\n\nbody", 18)), "holds a zero byte in its header");
}

TEST(NotAMessageReason, AZeroByteInTheBodyIsFine) {
  EXPECT_EQ(NotAMessageReason(std::string("Subject: a\n\nb\0dy", 16)), "");
}

}  // namespace
}  // namespace pvtool

#endif
