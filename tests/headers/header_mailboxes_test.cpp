// EMSHeaderMailboxes: splitting address lists, the stored names and
// addresses, decoded and wire forms, index bounds, statuses, late binding
// and linear work on large lists.
#include "src/headers/header_mailboxes.h"

#include <chrono>
#include <cstdint>
#include <iterator>

#include "tests/test_util.h"

namespace pv::test {
namespace {

class HeaderMailboxesTest : public ::testing::Test {
 protected:
  ComPtr<IEMSHeaderMailboxes> l_ = Create<IEMSHeaderMailboxes>(CLSID_EMSHeaderMailboxes);

  HRESULT Parse(std::string_view utf8, LONG encoded) { return l_->ParseMailboxes(B(utf8).get(), encoded); }
  LONG Count() {
    LONG value = 12345;
    EXPECT_EQ(l_->get_Count(&value), S_OK);
    return value;
  }
  std::string Read(HRESULT (STDMETHODCALLTYPE IEMSHeaderMailboxes::*getter)(LONG, BSTR*), LONG index) {
    Bstr value;
    EXPECT_EQ((l_.get()->*getter)(index, value.put()), S_OK);
    EXPECT_FALSE(value.is_null());
    return U8(value);
  }
  std::string NameAt(LONG i) { return Read(&IEMSHeaderMailboxes::get_MailboxName, i); }
  std::string AddressAt(LONG i) { return Read(&IEMSHeaderMailboxes::get_MailboxAddress, i); }
  std::string DecodedAt(LONG i) { return Read(&IEMSHeaderMailboxes::get_DecodedMailbox, i); }
  std::string EncodedAt(LONG i) { return Read(&IEMSHeaderMailboxes::get_EncodedMailbox, i); }
  std::string Whole(HRESULT (STDMETHODCALLTYPE IEMSHeaderMailboxes::*getter)(BSTR*)) {
    Bstr value;
    EXPECT_EQ((l_.get()->*getter)(value.put()), S_OK);
    EXPECT_FALSE(value.is_null());
    return U8(value);
  }
  std::string Assemble() { return Whole(&IEMSHeaderMailboxes::AssembleMailboxes); }
  std::string Decoded() { return Whole(&IEMSHeaderMailboxes::get_DecodedMailboxes); }
  void Add(std::string_view name, std::string_view address) {
    ASSERT_EQ(l_->put_MailboxData(-1, B(name).get(), B(address).get()), S_OK);
  }
  void Settings(LONG codePage, LONG encoding) {
    ASSERT_EQ(l_->put_DefaultCodePage(codePage), S_OK);
    ASSERT_EQ(l_->put_DefaultEncoding(encoding), S_OK);
  }
  LONG CodePage() {
    LONG value = 12345;
    EXPECT_EQ(l_->get_DefaultCodePage(&value), S_OK);
    return value;
  }
  LONG Encoding() {
    LONG value = 12345;
    EXPECT_EQ(l_->get_DefaultEncoding(&value), S_OK);
    return value;
  }
};

// ---------------------------------------------------------------- state
TEST_F(HeaderMailboxesTest, NewListIsEmptyWithAnsiPageAndNoEncoding) {
  EXPECT_EQ(Count(), 0);
  EXPECT_EQ(CodePage(), 0);
  EXPECT_EQ(Encoding(), 0);
  EXPECT_EQ(Assemble(), "");
  EXPECT_EQ(Decoded(), "");
}

TEST_F(HeaderMailboxesTest, SettingsAreStoredAsGiven) {
  Settings(-4, 7);
  EXPECT_EQ(CodePage(), -4);
  EXPECT_EQ(Encoding(), 7);
}

TEST_F(HeaderMailboxesTest, NullOutPointersGiveEPointer) {
  LONG* noLong = nullptr;
  EXPECT_EQ(l_->AssembleMailboxes(nullptr), E_POINTER);
  EXPECT_EQ(l_->get_Count(noLong), E_POINTER);
  EXPECT_EQ(l_->get_MailboxName(0, nullptr), E_POINTER);
  EXPECT_EQ(l_->get_MailboxAddress(0, nullptr), E_POINTER);
  EXPECT_EQ(l_->get_DecodedMailbox(0, nullptr), E_POINTER);
  EXPECT_EQ(l_->get_DecodedMailboxes(nullptr), E_POINTER);
  EXPECT_EQ(l_->get_EncodedMailbox(0, nullptr), E_POINTER);
  EXPECT_EQ(l_->get_DefaultCodePage(noLong), E_POINTER);
  EXPECT_EQ(l_->get_DefaultEncoding(noLong), E_POINTER);
}

// ---------------------------------------------------------------- ParseMailboxes
TEST_F(HeaderMailboxesTest, BareAddressesSplitAndAssembleWithFoldingCommas) {
  EXPECT_EQ(Parse("a@x, b@y", 1), S_OK);
  ASSERT_EQ(Count(), 2);
  EXPECT_EQ(AddressAt(0), "a@x");
  EXPECT_EQ(AddressAt(1), "b@y");
  EXPECT_EQ(Assemble(), "a@x,\r\n\tb@y");
}

TEST_F(HeaderMailboxesTest, SemicolonSeparatesToo) {
  EXPECT_EQ(Parse("a@x;b@y", 0), S_OK);
  EXPECT_EQ(Count(), 2);
}

TEST_F(HeaderMailboxesTest, QuotedNameWithACommaStaysOneMailbox) {
  EXPECT_EQ(Parse("\"Bloggs, Joe\" <j@x>", 0), S_OK);
  ASSERT_EQ(Count(), 1);
  EXPECT_EQ(NameAt(0), "Bloggs, Joe");
  EXPECT_EQ(AddressAt(0), "j@x");
}

TEST_F(HeaderMailboxesTest, UnquotedNameWithACommaStaysOneMailbox) {
  EXPECT_EQ(Parse("Bloggs, Joe <j@x>", 1), S_OK);
  ASSERT_EQ(Count(), 1);
  EXPECT_EQ(NameAt(0), "Bloggs, Joe");
}

TEST_F(HeaderMailboxesTest, AddressesInAngleBracketsDoNotEndAPiece) {
  EXPECT_EQ(Parse("Joe <j@x>, Ann <a@y>", 1), S_OK);
  ASSERT_EQ(Count(), 1);
  EXPECT_EQ(NameAt(0), "Joe");
  EXPECT_EQ(AddressAt(0), "j@x");
}

TEST_F(HeaderMailboxesTest, AtInTheNameEndsThePieceAtTheNextComma) {
  EXPECT_EQ(Parse("joe@home <j@x>, Ann <a@y>", 1), S_OK);
  ASSERT_EQ(Count(), 2);
  EXPECT_EQ(NameAt(0), "joe@home");
  EXPECT_EQ(AddressAt(0), "j@x");
  EXPECT_EQ(NameAt(1), "Ann");
  EXPECT_EQ(AddressAt(1), "a@y");
}

TEST_F(HeaderMailboxesTest, EncodedNameIsDecodedOnlyWhenAskedTo) {
  EXPECT_EQ(Parse("=?utf-8?B?w6k=?= <e@x>", 1), S_OK);
  EXPECT_EQ(NameAt(0), "é");
  EXPECT_EQ(Parse("=?utf-8?B?w6k=?= <e@x>", 0), S_OK);
  EXPECT_EQ(NameAt(0), "=?utf-8?B?w6k=?=");
  EXPECT_EQ(AddressAt(0), "e@x");
}

TEST_F(HeaderMailboxesTest, AnyNonZeroFlagDecodes) {
  EXPECT_EQ(Parse("=?utf-8?B?w6k=?= <e@x>", -1), S_OK);
  EXPECT_EQ(NameAt(0), "é");
}

TEST_F(HeaderMailboxesTest, ParseEmptiesTheListFirst) {
  Add("Old", "o@x");
  EXPECT_EQ(Parse("a@x", 1), S_OK);
  ASSERT_EQ(Count(), 1);
  EXPECT_EQ(AddressAt(0), "a@x");
}

TEST_F(HeaderMailboxesTest, EmptyInputGivesAnEmptyList) {
  Add("Old", "o@x");
  EXPECT_EQ(Parse("", 1), S_OK);
  EXPECT_EQ(Count(), 0);
}

TEST_F(HeaderMailboxesTest, NullInputEmptiesTheListAndGivesEPointer) {
  Add("Old", "o@x");
  EXPECT_EQ(l_->ParseMailboxes(nullptr, 1), E_POINTER);
  EXPECT_EQ(Count(), 0);
}

TEST_F(HeaderMailboxesTest, SeparatorAtTheEndAddsNothing) {
  EXPECT_EQ(Parse("a@x,", 1), S_OK);
  EXPECT_EQ(Count(), 1);
}

TEST_F(HeaderMailboxesTest, BlankAfterTheLastSeparatorIsAnEmptyMailbox) {
  EXPECT_EQ(Parse("a@x, ", 1), S_OK);
  ASSERT_EQ(Count(), 2);
  EXPECT_EQ(NameAt(1), "");
  EXPECT_EQ(AddressAt(1), "");
  EXPECT_EQ(Decoded(), "a@x");
  EXPECT_EQ(Assemble(), "a@x,\r\n\t");
}

TEST_F(HeaderMailboxesTest, FoldedListSplitsAndTrims) {
  EXPECT_EQ(Parse("a@x,\r\n\tb@y,\r\n c@z", 1), S_OK);
  ASSERT_EQ(Count(), 3);
  EXPECT_EQ(AddressAt(2), "c@z");
}

TEST_F(HeaderMailboxesTest, ParsedNamesKeepTheListSettings) {
  EXPECT_EQ(Parse("=?koi8-r?B?8NLJ18XU?= <p@x>", 1), S_OK);
  EXPECT_EQ(NameAt(0), "Привет");
  EXPECT_EQ(CodePage(), 0);
  EXPECT_EQ(Encoding(), 0);
}

TEST_F(HeaderMailboxesTest, NamesInSeveralCharsetsDecode) {
  const char* texts[] = {"=?iso-8859-1?Q?Andr=E9?= <a@x>", "=?koi8-r?B?8NLJ18XU?= <p@x>",
                         "=?shift_jis?B?k/qWew==?= <n@x>", "\"=?utf-8?Q?Zo=C3=AB?=\" <z@x>"};
  for (const char* text : texts) ASSERT_EQ(l_->put_EncodedMailbox(-1, B(text).get()), S_OK);
  ASSERT_EQ(Count(), 4);
  EXPECT_EQ(NameAt(0), "André");
  EXPECT_EQ(NameAt(1), "Привет");
  EXPECT_EQ(NameAt(2), "日本");
  EXPECT_EQ(NameAt(3), "Zoë");
  EXPECT_EQ(Decoded(), "\"André\" <a@x>,\"Привет\" <p@x>,\"日本\" <n@x>,\"Zoë\" <z@x>");
}

TEST_F(HeaderMailboxesTest, NameReadAfterASettingsChangeDecodesWithTheSettingsOfItsParse) {
  Settings(1251, 0);
  EXPECT_EQ(Parse("\xC3\xA9\xC3\xB2 <a@x>", 1), S_OK);  // the bytes E9 F2 in the ANSI page
  Settings(1252, 0);
  EXPECT_EQ(NameAt(0), "\xD0\xB9\xD1\x82");  // as windows-1251 text
  EXPECT_EQ(Parse("\xC3\xA9\xC3\xB2 <a@x>", 1), S_OK);
  EXPECT_EQ(NameAt(0), "\xC3\xA9\xC3\xB2");  // as windows-1252 text
}

TEST_F(HeaderMailboxesTest, AddressPutWholeReadsBackAsGivenAndAssemblesInTheAnsiPage) {
  Add("", "\xD0\xB6@x");
  EXPECT_EQ(AddressAt(0), "\xD0\xB6@x");
  EXPECT_EQ(DecodedAt(0), "\xD0\xB6@x");
  EXPECT_EQ(Assemble(), "?@x");
}

TEST_F(HeaderMailboxesTest, AddressOfADecodedPutIsKeptInTheAnsiPage) {
  ASSERT_EQ(l_->put_DecodedMailbox(-1, B("Jo <\xD0\xB6@x>").get()), S_OK);
  EXPECT_EQ(AddressAt(0), "?@x");
  EXPECT_EQ(NameAt(0), "Jo");
}

// ---------------------------------------------------------------- output
TEST_F(HeaderMailboxesTest, DecodedMailboxesJoinsWithABareComma) {
  EXPECT_EQ(Parse("a@x, b@y", 1), S_OK);
  EXPECT_EQ(Decoded(), "a@x,b@y");
}

TEST_F(HeaderMailboxesTest, DecodedMailboxesSkipsEmptyItems) {
  Add("", "");
  Add("", "a@x");
  Add("", "");
  Add("Bo", "b@y");
  Add("", "");
  EXPECT_EQ(Decoded(), "a@x,\"Bo\" <b@y>");
}

TEST_F(HeaderMailboxesTest, DecodedMailboxQuotesTheNameWithoutEscaping) {
  Add("Joe \"Q\" Public", "j@x");
  EXPECT_EQ(DecodedAt(0), "\"Joe \"Q\" Public\" <j@x>");
}

TEST_F(HeaderMailboxesTest, DecodedMailboxWithoutNameIsTheAddress) {
  Add("", "j@x");
  EXPECT_EQ(DecodedAt(0), "j@x");
}

TEST_F(HeaderMailboxesTest, DecodedMailboxWithNameButNoAddressKeepsTheBrackets) {
  Add("Joe", "");
  EXPECT_EQ(DecodedAt(0), "\"Joe\" <>");
}

TEST_F(HeaderMailboxesTest, DecodedMailboxBeyondTheCountIsEmpty) {
  Add("", "a@x");
  Add("", "b@y");
  BSTR held = SysAllocString(OLESTR("untouched"));
  BSTR value = held;
  EXPECT_EQ(l_->get_DecodedMailbox(5, &value), S_OK);
  ASSERT_NE(value, held);  // this get sets its result: "" (the caller still owns `held`)
  EXPECT_EQ(U8(value), "");
  SysFreeString(value);
  SysFreeString(held);
}

TEST_F(HeaderMailboxesTest, NewListAssemblesNamesUnencoded) {
  Add("Café", "c@d");
  Add("", "e@f");
  EXPECT_EQ(Assemble(), "\"Café\" <c@d>,\r\n\te@f");
}

TEST_F(HeaderMailboxesTest, BEncodingWritesEveryNameAsWordsInQuotes) {
  Add("Joe", "j@x");
  Add("", "a@y");
  Add("é", "e@z");
  Settings(65001, 2);
  EXPECT_EQ(Assemble(), "\"=?utf-8?B?Sm9l?=\" <j@x>,\r\n\ta@y,\r\n\t\"=?utf-8?B?w6k=?=\" <e@z>");
}

TEST_F(HeaderMailboxesTest, EncodedMailboxUsesTheListSettingsNotWhatParsingLearned) {
  EXPECT_EQ(Parse("=?utf-8?B?w6k=?= <e@x>", 1), S_OK);
  EXPECT_EQ(EncodedAt(0), "\"é\" <e@x>");
  Settings(28591, 1);
  EXPECT_EQ(EncodedAt(0), "\"=?iso-8859-1?Q?=E9?=\" <e@x>");
  Settings(0, 0);
  EXPECT_EQ(EncodedAt(0), "\"é\" <e@x>");
}

TEST_F(HeaderMailboxesTest, EncodedMailboxBeyondTheCountLeavesTheResult) {
  Add("", "a@x");
  BSTR held = SysAllocString(OLESTR("untouched"));
  BSTR watched = held;
  EXPECT_EQ(l_->get_EncodedMailbox(1, &watched), S_OK);
  EXPECT_EQ(watched, held);
  SysFreeString(held);
}

TEST_F(HeaderMailboxesTest, AssembledListParsesBackToTheSameMailboxes) {
  Add("Ann", "a@x");
  Add("Zoë", "z@y");
  Settings(65001, 3);
  std::string wire = Assemble();
  ComPtr<IEMSHeaderMailboxes> again = Create<IEMSHeaderMailboxes>(CLSID_EMSHeaderMailboxes);
  // Names in angle-bracket mailboxes do not split, so parse each line.
  for (std::string_view piece : {std::string_view(wire).substr(0, wire.find(",\r\n\t")),
                                 std::string_view(wire).substr(wire.find(",\r\n\t") + 4)}) {
    ASSERT_EQ(again->put_EncodedMailbox(-1, B(piece).get()), S_OK);
  }
  Bstr decoded;
  ASSERT_EQ(again->get_DecodedMailboxes(decoded.put()), S_OK);
  EXPECT_EQ(U8(decoded), "\"Ann\" <a@x>,\"Zoë\" <z@y>");
}

// ---------------------------------------------------------------- stored mailboxes
TEST_F(HeaderMailboxesTest, MailboxDataAppendsWithMinusOneAndOverwritesByIndex) {
  Add("A", "a@x");
  Add("B", "b@x");
  EXPECT_EQ(Count(), 2);
  EXPECT_EQ(l_->put_MailboxData(0, B("C").get(), B("c@x").get()), S_OK);
  EXPECT_EQ(Count(), 2);
  EXPECT_EQ(NameAt(0), "C");
  EXPECT_EQ(AddressAt(0), "c@x");
  EXPECT_EQ(NameAt(1), "B");
}

TEST_F(HeaderMailboxesTest, MailboxDataStoresTextAsGiven) {
  Add("  \"Joe\"  ", " <j@x> ");
  EXPECT_EQ(NameAt(0), "  \"Joe\"  ");
  EXPECT_EQ(AddressAt(0), " <j@x> ");
}

TEST_F(HeaderMailboxesTest, MailboxDataWithNullStringsStoresEmptyText) {
  EXPECT_EQ(l_->put_MailboxData(-1, nullptr, nullptr), S_OK);
  ASSERT_EQ(Count(), 1);
  EXPECT_EQ(NameAt(0), "");
  EXPECT_EQ(AddressAt(0), "");
}

TEST_F(HeaderMailboxesTest, MailboxDataRejectsOtherIndexes) {
  Add("A", "a@x");
  EXPECT_EQ(l_->put_MailboxData(1, B("B").get(), B("b@x").get()), E_INVALIDARG);
  EXPECT_EQ(l_->put_MailboxData(-2, B("B").get(), B("b@x").get()), E_INVALIDARG);
  EXPECT_EQ(l_->put_MailboxData(LONG(0x7FFFFFFF), B("B").get(), B("b@x").get()), E_INVALIDARG);
  EXPECT_EQ(Count(), 1);
  EXPECT_EQ(NameAt(0), "A");
}

TEST_F(HeaderMailboxesTest, DecodedMailboxPutSplitsWithoutDecoding) {
  Settings(65001, 2);
  ASSERT_EQ(l_->put_DecodedMailbox(-1, B("=?utf-8?B?w6k=?= <e@x>").get()), S_OK);
  EXPECT_EQ(NameAt(0), "=?utf-8?B?w6k=?=");
  ASSERT_EQ(l_->put_DecodedMailbox(0, B("\"Ann, B\" <a@y>").get()), S_OK);
  EXPECT_EQ(Count(), 1);
  EXPECT_EQ(NameAt(0), "Ann, B");
  EXPECT_EQ(AddressAt(0), "a@y");
}

TEST_F(HeaderMailboxesTest, EncodedMailboxPutDecodesAndOverwrites) {
  Add("Old", "o@x");
  ASSERT_EQ(l_->put_EncodedMailbox(0, B("=?iso-8859-1?Q?Andr=E9?= <a@x>").get()), S_OK);
  EXPECT_EQ(Count(), 1);
  EXPECT_EQ(NameAt(0), "André");
  EXPECT_EQ(AddressAt(0), "a@x");
}

TEST_F(HeaderMailboxesTest, PutsWithANullStringStoreAnEmptyMailbox) {
  ASSERT_EQ(l_->put_EncodedMailbox(-1, nullptr), S_OK);
  ASSERT_EQ(l_->put_DecodedMailbox(-1, nullptr), S_OK);
  EXPECT_EQ(Count(), 2);
  EXPECT_EQ(Decoded(), "");
}

TEST_F(HeaderMailboxesTest, MailboxPutsRejectIndexesOutOfRange) {
  Add("A", "a@x");
  EXPECT_EQ(l_->put_DecodedMailbox(1, B("b@y").get()), E_INVALIDARG);
  EXPECT_EQ(l_->put_DecodedMailbox(-5, B("b@y").get()), E_INVALIDARG);
  EXPECT_EQ(l_->put_EncodedMailbox(3, B("b@y").get()), E_INVALIDARG);
  EXPECT_EQ(l_->put_EncodedMailbox(-2, B("b@y").get()), E_INVALIDARG);
  EXPECT_EQ(Count(), 1);
  EXPECT_EQ(AddressAt(0), "a@x");
}

TEST_F(HeaderMailboxesTest, GetsBeyondTheCountLeaveTheResultUntouched) {
  Add("A", "a@x");
  Add("B", "b@x");
  BSTR held = SysAllocString(OLESTR("untouched"));
  BSTR watched = held;
  EXPECT_EQ(l_->get_MailboxName(5, &watched), S_OK);
  EXPECT_EQ(watched, held);
  EXPECT_EQ(l_->get_MailboxAddress(2, &watched), S_OK);
  EXPECT_EQ(watched, held);
  EXPECT_EQ(l_->get_EncodedMailbox(2, &watched), S_OK);
  EXPECT_EQ(watched, held);
  SysFreeString(held);
}

TEST_F(HeaderMailboxesTest, GetsWithNegativeIndexesGiveEInvalidArg) {
  Add("A", "a@x");
  BSTR held = SysAllocString(OLESTR("untouched"));
  BSTR watched = held;
  EXPECT_EQ(l_->get_MailboxName(-1, &watched), E_INVALIDARG);
  EXPECT_EQ(l_->get_MailboxAddress(-1, &watched), E_INVALIDARG);
  EXPECT_EQ(l_->get_DecodedMailbox(-1, &watched), E_INVALIDARG);
  EXPECT_EQ(l_->get_EncodedMailbox(-2, &watched), E_INVALIDARG);
  EXPECT_EQ(watched, held);
  SysFreeString(held);
}

TEST_F(HeaderMailboxesTest, RemoveMailboxMovesLaterOnesUp) {
  Add("A", "a@x");
  Add("B", "b@x");
  Add("C", "c@x");
  EXPECT_EQ(l_->RemoveMailbox(1), S_OK);
  ASSERT_EQ(Count(), 2);
  EXPECT_EQ(NameAt(0), "A");
  EXPECT_EQ(NameAt(1), "C");
  EXPECT_EQ(AddressAt(1), "c@x");
}

TEST_F(HeaderMailboxesTest, RemoveMailboxAtTheCountDoesNothing) {
  Add("A", "a@x");
  EXPECT_EQ(l_->RemoveMailbox(1), S_OK);
  EXPECT_EQ(Count(), 1);
}

TEST_F(HeaderMailboxesTest, RemoveMailboxWithANegativeIndexGivesEInvalidArg) {
  Add("A", "a@x");
  EXPECT_EQ(l_->RemoveMailbox(-1), E_INVALIDARG);
  EXPECT_EQ(Count(), 1);
}

TEST_F(HeaderMailboxesTest, RemoveAllEmptiesTheList) {
  Add("A", "a@x");
  Add("B", "b@x");
  EXPECT_EQ(l_->RemoveAll(), S_OK);
  EXPECT_EQ(Count(), 0);
  EXPECT_EQ(Assemble(), "");
}

// ---------------------------------------------------------------- library entry points
TEST_F(HeaderMailboxesTest, NarrowEntryPointsRunTheSameCode) {
  ComPtr<HeaderMailboxes> list;
  ASSERT_EQ(MakeObject(&list), S_OK);
  EXPECT_EQ(list->ParseAnsi("a@x, =?utf-8?Q?Zo=C3=AB?= z@y", true), S_OK);
  ASSERT_EQ(list->count(), 2u);
  EXPECT_EQ(U8(list->addressAt(0)), "a@x");
  EXPECT_EQ(U8(list->addressAt(1)), "=?utf-8?Q?Zo=C3=AB?= z@y");  // a bare address: no name to decode
  std::string wire;
  EXPECT_EQ(list->AssembleAnsi(&wire), S_OK);
  EXPECT_EQ(wire, "a@x,\r\n\t=?utf-8?Q?Zo=C3=AB?= z@y");
  WString decoded;
  list->AppendDecoded(&decoded);
  EXPECT_EQ(U8(decoded), "a@x,=?utf-8?Q?Zo=C3=AB?= z@y");
  EXPECT_EQ(list->SetMailboxData(7, W("x"), W("y")), E_INVALIDARG);
}

// The field hands its narrow text to ParseAnsi. Where the ANSI page keeps
// every byte, that splits the bytes themselves, and must give what the
// interface parse of the widened text gives.
TEST_F(HeaderMailboxesTest, NarrowParseGivesWhatTheWideParseGives) {
  const std::string_view atoms[] = {"a",
                                    "@",
                                    ",",
                                    ";",
                                    "\"",
                                    "<",
                                    ">",
                                    "\\",
                                    " ",
                                    "\t",
                                    "\r\n",
                                    "\xE9",
                                    "\x81",
                                    std::string_view("\0", 1),
                                    "=?utf-8?Q?Zo=C3=AB?=",
                                    "=?koi8-r?B?8NLJ18XU?="};
  uint32_t seed = 12345;
  auto next = [&seed] {
    seed = seed * 1103515245u + 12345u;
    return seed >> 16;
  };
  ComPtr<HeaderMailboxes> narrow;
  ComPtr<HeaderMailboxes> wide;
  ASSERT_EQ(MakeObject(&narrow), S_OK);
  ASSERT_EQ(MakeObject(&wide), S_OK);
  for (int round = 0; round < 2000; ++round) {
    std::string text;
    for (uint32_t n = next() % 24; n > 0; --n) text.append(atoms[next() % std::size(atoms)]);
    ASSERT_EQ(narrow->ParseAnsi(text, true), S_OK);
    ASSERT_EQ(wide->Parse(AnsiToWide(text), true), S_OK);
    ASSERT_EQ(narrow->count(), wide->count()) << text;
    for (size_t i = 0; i < narrow->count(); ++i) {
      EXPECT_EQ(narrow->nameAt(i), wide->nameAt(i)) << text;
      EXPECT_EQ(narrow->addressAt(i), wide->addressAt(i)) << text;
    }
    std::string narrowWire, wideWire;
    EXPECT_EQ(narrow->AssembleAnsi(&narrowWire), S_OK);
    EXPECT_EQ(wide->AssembleAnsi(&wideWire), S_OK);
    EXPECT_EQ(narrowWire, wideWire) << text;
  }
}

// ---------------------------------------------------------------- late binding
TEST_F(HeaderMailboxesTest, LateBoundParseMailboxesAndCount) {
  EXPECT_EQ(Invoke(l_.get(), "ParseMailboxes", DISPATCH_METHOD, {"a@x, b@y", 1}), S_OK);
  VARIANT result;
  VariantInit(&result);
  EXPECT_EQ(Invoke(l_.get(), "Count", DISPATCH_PROPERTYGET, {}, &result), S_OK);
  ASSERT_EQ(result.vt, VT_I4);
  EXPECT_EQ(result.lVal, 2);
}

TEST_F(HeaderMailboxesTest, LateBoundMailboxDataTakesTheAddressAsTheValue) {
  EXPECT_EQ(Invoke(l_.get(), "MailboxData", DISPATCH_PROPERTYPUT, {-1, "Joe", "j@x"}), S_OK);
  EXPECT_EQ(NameAt(0), "Joe");
  EXPECT_EQ(AddressAt(0), "j@x");
  VARIANT result;
  VariantInit(&result);
  EXPECT_EQ(Invoke(l_.get(), "DecodedMailbox", DISPATCH_PROPERTYGET, {0}, &result), S_OK);
  ASSERT_EQ(result.vt, VT_BSTR);
  EXPECT_EQ(U8(result.bstrVal), "\"Joe\" <j@x>");
  VariantClear(&result);
}

// ---------------------------------------------------------------- large input
double SecondsToParse(IEMSHeaderMailboxes* list, const std::string& text, LONG encoded) {
  Bstr wide = B(text);
  auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(list->ParseMailboxes(wide.get(), encoded), S_OK);
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

TEST_F(HeaderMailboxesTest, MegabyteOfAddressesParsesInLinearTime) {
  std::string text;
  while (text.size() < (1u << 20)) text += "user" + std::to_string(text.size()) + "@example.com, ";
  double seconds = SecondsToParse(l_.get(), text, 1);
  EXPECT_GT(Count(), 30000);
  EXPECT_LT(seconds, 10.0);  // generous: linear work takes a small fraction of this
  Bstr wire;
  EXPECT_EQ(l_->AssembleMailboxes(wire.put()), S_OK);
  Bstr decoded;
  EXPECT_EQ(l_->get_DecodedMailboxes(decoded.put()), S_OK);
}

TEST_F(HeaderMailboxesTest, MegabyteThatNeverSplitsParsesInLinearTime) {
  std::string text;
  while (text.size() < (1u << 20)) text += "\"=?utf-8?Q?Zo=C3=AB?=\" <z@y>, ";
  double seconds = SecondsToParse(l_.get(), text, 1);
  EXPECT_EQ(Count(), 1);
  EXPECT_LT(seconds, 10.0);
}

}  // namespace
}  // namespace pv::test
