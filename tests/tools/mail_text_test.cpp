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

// The entries as text: "m:piece" for a mailbox, "g:name[a|b]" for a group.
std::vector<std::string> Entries(std::string_view value) {
  std::vector<std::string> out;
  for (const AddressPieces& entry : SplitAddressList(value)) {
    if (!entry.group) {
      EXPECT_EQ(entry.members.size(), 1u);
      out.push_back("m:" + entry.members.at(0));
      continue;
    }
    std::string text = "g:" + entry.group_name + "[";
    for (size_t i = 0; i < entry.members.size(); ++i) text += (i > 0 ? "|" : "") + entry.members[i];
    out.push_back(text + "]");
  }
  return out;
}

TEST(SplitAddressList, SplitsAtCommasOutsideQuotesAnglesAndComments) {
  EXPECT_EQ(Entries("Joe <j@x>, \"Ann, B.\" <a@y>; c@z (Carl, Jr.)"),
            (std::vector<std::string>{"m:Joe <j@x>", "m:\"Ann, B.\" <a@y>", "m:c@z (Carl, Jr.)"}));
}

TEST(SplitAddressList, DropsEmptyPiecesAndKeepsEscapedQuotes) {
  EXPECT_EQ(Entries(" , a@x,, \"q\\\",\" <b@y> ,"),
            (std::vector<std::string>{"m:a@x", "m:\"q\\\",\" <b@y>"}));
  EXPECT_TRUE(SplitAddressList("").empty());
}

TEST(SplitAddressList, AColonOpensAGroupThatASemicolonCloses) {
  EXPECT_EQ(
      Entries("A Group:Chris Jones <c@x>, b@y;, undisclosed-recipients:;, z@q"),
      (std::vector<std::string>{"g:A Group[Chris Jones <c@x>|b@y]", "g:undisclosed-recipients[]", "m:z@q"}));
  // A group left open at the end keeps its members.
  EXPECT_EQ(Entries("Team: a@x, b@y"), (std::vector<std::string>{"g:Team[a@x|b@y]"}));
}

TEST(SplitAddressList, AColonAfterARouteOrInsideAnEncodedWordOpensNoGroup) {
  EXPECT_EQ(Entries("@develop:nsb@example.com, =?utf-8?Q?date=3E2017-08-20T10:08?= <d@x>"),
            (std::vector<std::string>{"m:@develop:nsb@example.com",
                                      "m:=?utf-8?Q?date=3E2017-08-20T10:08?= <d@x>"}));
  EXPECT_EQ(Entries("=?utf-8?q?Gruppe?=: a@x;"), (std::vector<std::string>{"g:=?utf-8?q?Gruppe?=[a@x]"}));
}

TEST(SplitAddressList, AColonInQuotesAnglesOrCommentsOpensNoGroup) {
  EXPECT_EQ(Entries("\"Re: Bob\" <b@x>, <@route:c@y>, d@z (note: hi)"),
            (std::vector<std::string>{"m:\"Re: Bob\" <b@x>", "m:<@route:c@y>", "m:d@z (note: hi)"}));
}

TEST(RepairRawUtf8, RawUtf8ReadAsSingleBytesIsReadAgain) {
  // "Grüße" in UTF-8 read byte by byte: "GrÃ¼ÃŸe".
  EXPECT_EQ(RepairRawUtf8(u"Gr\u00C3\u00BC\u00C3\u0178e"), u"Gr\u00FC\u00DFe");
}

TEST(RepairRawUtf8, RawUtf8ReadAsIso88591IsReadAgain) {
  // "Æ" is C3 86 in UTF-8; ISO-8859-1 reads 0x86 as the control U+0086.
  EXPECT_EQ(RepairRawUtf8(u"DISCOVER\u00C3\u0086 Card"), u"DISCOVER\u00C6 Card");
  EXPECT_EQ(RepairRawUtf8(u"\u00C2\u0080"), u"\u0080");
  // A control character alone is no UTF-8 sequence and stays.
  EXPECT_EQ(RepairRawUtf8(u"a\u0086b"), u"a\u0086b");
}

TEST(RepairRawUtf8, RealSingleByteTextStays) {
  EXPECT_EQ(RepairRawUtf8(u"Gr\u00FC\u00DFe"), u"Gr\u00FC\u00DFe");
  EXPECT_EQ(RepairRawUtf8(u"\u20AC 5"), u"\u20AC 5");
  EXPECT_EQ(RepairRawUtf8(u"\u0141\u00F3d\u017A"), u"\u0141\u00F3d\u017A");
}

TEST(UnfoldValue, JoinsContinuationLines) { EXPECT_EQ(UnfoldValue(" a\r\n\tb\r\n  c "), "a b c"); }

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

TEST(LeadingBlankBytes, SkipsBlankLinesAndLinesOfBlanks) {
  EXPECT_EQ(LeadingBlankBytes("\r\n \t\r\n\n  \nSubject: x\r\n"), 10u);
  EXPECT_EQ(LeadingBlankBytes("Subject: x\r\n"), 0u);
  EXPECT_EQ(LeadingBlankBytes(""), 0u);
  EXPECT_EQ(LeadingBlankBytes(" \r\n\t"), 3u);  // a last line of blanks with no line end stays
}

TEST(LeadingBlankBytes, AnIndentedHeaderFieldLosesItsIndentationOnly) {
  EXPECT_EQ(LeadingBlankBytes("  Subject: x\r\nFrom: a@b\r\n"), 2u);
  EXPECT_EQ(LeadingBlankBytes("\r\n\tSubject: x\r\n"), 3u);
  // Not a field: the indentation stays, so that the input is refused.
  EXPECT_EQ(LeadingBlankBytes("  hello world\r\n"), 0u);
  EXPECT_EQ(LeadingBlankBytes("\r\n  hello\r\nSubject: x\r\n"), 2u);
}

TEST(GroupedNumber, PutsACommaBetweenThousands) {
  EXPECT_EQ(GroupedNumber(0), "0");
  EXPECT_EQ(GroupedNumber(999), "999");
  EXPECT_EQ(GroupedNumber(1234), "1,234");
  EXPECT_EQ(GroupedNumber(1234567), "1,234,567");
}

TEST(NotAMessageReason, AZeroByteInTheBodyIsFine) {
  EXPECT_EQ(NotAMessageReason(std::string("Subject: a\n\nb\0dy", 16)), "");
}

}  // namespace
}  // namespace pvtool

#endif
