#include "src/headers/mailbox_text.h"

#include "tests/test_util.h"

namespace pv::test {
namespace {

MailboxParts<char> N(std::string_view text) { return SplitMailbox(text); }

TEST(SplitMailbox, NameAndAddress) {
  auto m = N("Joe Bloggs <j@x>");
  EXPECT_EQ(m.name, "Joe Bloggs");
  EXPECT_EQ(m.address, "j@x");
}

TEST(SplitMailbox, QuotedNameKeepsItsComma) {
  auto m = N("\"Bloggs, Joe\" <j@x>");
  EXPECT_EQ(m.name, "Bloggs, Joe");
  EXPECT_EQ(m.address, "j@x");
}

TEST(SplitMailbox, BareAddressMovesToTheAddress) {
  auto m = N("j@x");
  EXPECT_EQ(m.name, "");
  EXPECT_EQ(m.address, "j@x");
}

TEST(SplitMailbox, NameWithoutAddressStaysAName) {
  auto m = N("Joe");
  EXPECT_EQ(m.name, "Joe");
  EXPECT_EQ(m.address, "");
}

TEST(SplitMailbox, UnclosedAngleBracketRunsToTheEnd) {
  auto m = N("<a@b");
  EXPECT_EQ(m.address, "a@b");
  EXPECT_EQ(m.name, "");
}

TEST(SplitMailbox, QuotedStringsAreJoinedAndBackslashesKept) {
  auto m = N("\"Joe\" \"Q. \\\"Public\\\"\" <j@x>");
  EXPECT_EQ(m.name, "JoeQ. \\\"Public\\\"");
}

TEST(SplitMailbox, TextAfterAQuotedNameIsAppended) {
  auto m = N("\"Joe\" Smith <j@x>");
  EXPECT_EQ(m.name, "JoeSmith");
}

TEST(SplitMailbox, CommentsAreNotRecognised) {
  auto m = N("a@b (Joe)");
  EXPECT_EQ(m.address, "a@b (Joe)");
  EXPECT_EQ(m.name, "");
}

TEST(SplitMailbox, LineBreaksAreDroppedFromTheNameAndTrimmed) {
  auto m = N("Joe\r\n Bloggs\r\n <\r\n j@x \t>trailing");
  EXPECT_EQ(m.name, "Joe Bloggs");
  EXPECT_EQ(m.address, "j@x");
}

TEST(SplitMailbox, UnclosedQuoteRunsToTheEnd) {
  auto m = N("\"Joe <j@x>");
  // The whole rest is the name, and a name with "@" but no address moves.
  EXPECT_EQ(m.name, "");
  EXPECT_EQ(m.address, "Joe <j@x>");
  EXPECT_EQ(N("\"Joe <jx>").name, "Joe <jx>");
}

TEST(SplitMailbox, EmptyAndBlankInputsGiveNothing) {
  EXPECT_EQ(N("").name, "");
  EXPECT_EQ(N("   ").address, "");
  EXPECT_EQ(N("<>").address, "");
}

TEST(SplitMailbox, WideWalkSkipsCharactersWhoseLowByteIsABlank) {
  WString text = WString(1, OLECHAR(0x0120)) + W("Joe <j@x>");
  MailboxParts<OLECHAR> m = SplitMailbox(WStringView(text));
  EXPECT_EQ(U8(m.name), "Joe");
  EXPECT_EQ(U8(m.address), "j@x");
}

TEST(SplitMailbox, WideWalkKeepsOtherCharacters) {
  MailboxParts<OLECHAR> m = SplitMailbox(WStringView(W("Ren\xC3\xA9 <r@x>")));
  EXPECT_EQ(U8(m.name), "Ren\xC3\xA9");
}

// The pieces of the wide walk, checked against those of the narrow walk
// over the UTF-8 bytes (whose trail bytes are never delimiters).
std::vector<std::string> Pieces(std::string_view utf8) {
  WString text = W(utf8);
  std::vector<std::string> out;
  for (WStringView piece : SplitMailboxList(text)) out.push_back(U8(piece));
  std::vector<std::string> narrow;
  for (std::string_view piece : SplitMailboxList(utf8)) narrow.emplace_back(piece);
  EXPECT_EQ(narrow, out) << utf8;
  return out;
}

TEST(SplitMailboxList, SplitsBareAddresses) {
  EXPECT_EQ(Pieces("a@x, b@y"), (std::vector<std::string>{"a@x", " b@y"}));
  EXPECT_EQ(Pieces("a@x;b@y"), (std::vector<std::string>{"a@x", "b@y"}));
}

TEST(SplitMailboxList, AddressInAngleBracketsDoesNotCount) {
  EXPECT_EQ(Pieces("Joe <j@x>, Ann <a@y>"), (std::vector<std::string>{"Joe <j@x>, Ann <a@y>"}));
}

TEST(SplitMailboxList, QuotedSeparatorsAreNotSeen) {
  EXPECT_EQ(Pieces("\"Bloggs, Joe\" <j@x>"), (std::vector<std::string>{"\"Bloggs, Joe\" <j@x>"}));
  EXPECT_EQ(Pieces("\"a@b, c\" d@e, f@g"), (std::vector<std::string>{"\"a@b, c\" d@e", " f@g"}));
}

TEST(SplitMailboxList, UnquotedCommaBeforeAnyAtSignStaysInThePiece) {
  EXPECT_EQ(Pieces("Bloggs, Joe j@x, a@y"), (std::vector<std::string>{"Bloggs, Joe j@x", " a@y"}));
}

TEST(SplitMailboxList, TheOpenPieceIsHandedOnWithoutAnAtSign) {
  EXPECT_EQ(Pieces("Joe"), (std::vector<std::string>{"Joe"}));
  EXPECT_EQ(Pieces("a@x, "), (std::vector<std::string>{"a@x", " "}));
  EXPECT_EQ(Pieces("a@x,"), (std::vector<std::string>{"a@x"}));
  EXPECT_TRUE(Pieces("").empty());
}

TEST(SplitMailboxList, UnclosedQuoteOrBracketRunsToTheEnd) {
  EXPECT_EQ(Pieces("a@x, \"b, c@d"), (std::vector<std::string>{"a@x", " \"b, c@d"}));
  EXPECT_EQ(Pieces("a@x, <b, c@d"), (std::vector<std::string>{"a@x", " <b, c@d"}));
}

TEST(SplitMailboxList, MegabyteListSplitsInLinearTime) {
  WString text;
  for (int i = 0; i < 40000; ++i) text += W("user" + std::to_string(i) + "@example.com, ");
  EXPECT_EQ(SplitMailboxList(text).size(), 40001u);
}

}  // namespace
}  // namespace pv::test
