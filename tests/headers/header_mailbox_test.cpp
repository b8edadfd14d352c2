// EMSHeaderMailbox: splitting with and without decoding, what the decoding
// learns, the wire form, statuses and late binding.
#include "src/headers/header_mailbox.h"

#include "tests/test_util.h"

namespace pv::test {
namespace {

class HeaderMailboxTest : public ::testing::Test {
 protected:
  ComPtr<IEMSHeaderMailbox> m_ = Create<IEMSHeaderMailbox>(CLSID_EMSHeaderMailbox);

  HRESULT Parse(std::string_view utf8) { return m_->ParseMailbox(B(utf8).get()); }
  HRESULT Split(std::string_view utf8) { return m_->SplitString(B(utf8).get()); }
  std::string Read(HRESULT (STDMETHODCALLTYPE IEMSHeaderMailbox::*getter)(BSTR*)) {
    Bstr value;
    EXPECT_EQ((m_.get()->*getter)(value.put()), S_OK);
    EXPECT_FALSE(value.is_null());
    return U8(value);
  }
  std::string Name() { return Read(&IEMSHeaderMailbox::get_Name); }
  std::string Address() { return Read(&IEMSHeaderMailbox::get_Address); }
  std::string Assemble() { return Read(&IEMSHeaderMailbox::AssembleMailbox); }
  LONG CodePage() {
    LONG value = 12345;
    EXPECT_EQ(m_->get_DefaultCodePage(&value), S_OK);
    return value;
  }
  LONG Encoding() {
    LONG value = 12345;
    EXPECT_EQ(m_->get_DefaultEncoding(&value), S_OK);
    return value;
  }
  void Set(std::string_view name, std::string_view address) {
    ASSERT_EQ(m_->put_Name(B(name).get()), S_OK);
    ASSERT_EQ(m_->put_Address(B(address).get()), S_OK);
  }
  void Settings(LONG codePage, LONG encoding) {
    ASSERT_EQ(m_->put_DefaultCodePage(codePage), S_OK);
    ASSERT_EQ(m_->put_DefaultEncoding(encoding), S_OK);
  }
};

bool AnsiIs1252() { return std::getenv("PARCELVANE_ACP") == nullptr; }

std::string Repeat(std::string_view text, int times) {
  std::string out;
  for (int i = 0; i < times; ++i) out += text;
  return out;
}

// ---------------------------------------------------------------- state
TEST_F(HeaderMailboxTest, NewMailboxIsEmptyWithAnsiPageAndNoEncoding) {
  EXPECT_EQ(Name(), "");
  EXPECT_EQ(Address(), "");
  EXPECT_EQ(CodePage(), 0);
  EXPECT_EQ(Encoding(), 0);
  EXPECT_EQ(Assemble(), "");
}

TEST_F(HeaderMailboxTest, PropertiesAreStoredAsGiven) {
  Set("Zoë", "z@x");
  Settings(-3, 9);
  EXPECT_EQ(Name(), "Zoë");
  EXPECT_EQ(Address(), "z@x");
  EXPECT_EQ(CodePage(), -3);
  EXPECT_EQ(Encoding(), 9);
}

TEST_F(HeaderMailboxTest, NullOutPointersGiveEPointer) {
  LONG* noLong = nullptr;
  EXPECT_EQ(m_->AssembleMailbox(nullptr), E_POINTER);
  EXPECT_EQ(m_->get_Address(nullptr), E_POINTER);
  EXPECT_EQ(m_->get_Name(nullptr), E_POINTER);
  EXPECT_EQ(m_->get_DefaultCodePage(noLong), E_POINTER);
  EXPECT_EQ(m_->get_DefaultEncoding(noLong), E_POINTER);
}

TEST_F(HeaderMailboxTest, NullPutsReadAsEmpty) {
  Set("n", "a@b");
  EXPECT_EQ(m_->put_Name(nullptr), S_OK);
  EXPECT_EQ(m_->put_Address(nullptr), S_OK);
  EXPECT_EQ(Name(), "");
  EXPECT_EQ(Address(), "");
}

TEST_F(HeaderMailboxTest, SplitsOfANullStringEmptyTheFieldsAndGiveEPointer) {
  ASSERT_EQ(Parse("Joe <j@x>"), S_OK);
  EXPECT_EQ(m_->ParseMailbox(nullptr), E_POINTER);
  EXPECT_EQ(Name(), "");
  EXPECT_EQ(Address(), "");
  ASSERT_EQ(Split("Joe <j@x>"), S_OK);
  EXPECT_EQ(m_->SplitString(nullptr), E_POINTER);
  EXPECT_EQ(Name(), "");
  EXPECT_EQ(Address(), "");
}

TEST_F(HeaderMailboxTest, SplitsOfAnEmptyStringGiveAnEmptyMailbox) {
  ASSERT_EQ(Parse("Joe <j@x>"), S_OK);
  EXPECT_EQ(Parse(""), S_OK);
  EXPECT_EQ(Name(), "");
  EXPECT_EQ(Address(), "");
  EXPECT_EQ(Assemble(), "");
}

// ---------------------------------------------------------------- ParseMailbox
TEST_F(HeaderMailboxTest, NameAndAddressInAngleBrackets) {
  EXPECT_EQ(Parse("Joe Bloggs <j@x>"), S_OK);
  EXPECT_EQ(Name(), "Joe Bloggs");
  EXPECT_EQ(Address(), "j@x");
}

TEST_F(HeaderMailboxTest, QuotedNameKeepsItsComma) {
  EXPECT_EQ(Parse("\"Bloggs, Joe\" <j@x>"), S_OK);
  EXPECT_EQ(Name(), "Bloggs, Joe");
  EXPECT_EQ(Address(), "j@x");
}

TEST_F(HeaderMailboxTest, BareAddressGoesToAddressAndAssemblesAlone) {
  EXPECT_EQ(Parse("j@x"), S_OK);
  EXPECT_EQ(Name(), "");
  EXPECT_EQ(Address(), "j@x");
  EXPECT_EQ(Assemble(), "j@x");
}

TEST_F(HeaderMailboxTest, NameWithoutAddressAssemblesWithEmptyBrackets) {
  EXPECT_EQ(Parse("Joe"), S_OK);
  EXPECT_EQ(Name(), "Joe");
  EXPECT_EQ(Address(), "");
  EXPECT_EQ(Assemble(), "\"Joe\" <>");
}

TEST_F(HeaderMailboxTest, EncodedWordNameIsDecodedAndWrittenBackAsItCame) {
  EXPECT_EQ(Parse("=?utf-8?B?w6k=?= <e@x>"), S_OK);
  EXPECT_EQ(Name(), "é");
  EXPECT_EQ(Address(), "e@x");
  EXPECT_EQ(CodePage(), 65001);
  EXPECT_EQ(Encoding(), 2);
  EXPECT_EQ(Assemble(), "\"=?utf-8?B?w6k=?=\" <e@x>");
}

TEST_F(HeaderMailboxTest, QuotedEncodedWordNameIsDecodedToo) {
  EXPECT_EQ(Parse("\"=?iso-8859-1?Q?Andr=E9?=\" <a@x>"), S_OK);
  EXPECT_EQ(Name(), "André");
  EXPECT_EQ(CodePage(), 28591);
  EXPECT_EQ(Encoding(), 1);
  EXPECT_EQ(Assemble(), "\"=?iso-8859-1?Q?Andr=E9?=\" <a@x>");
}

TEST_F(HeaderMailboxTest, NamesInSeveralCharsetsDecodeAndRoundTrip) {
  struct Case {
    const char* wire;
    const char* name;
    LONG codePage;
  } cases[] = {
      {"=?koi8-r?B?8NLJ18XU?=", "Привет", 20866},
      {"=?iso-8859-2?Q?=B1?=", "ą", 28592},
      {"=?windows-1251?B?z/Do4uXy?=", "Привет", 1251},
      {"=?utf-8?B?5pel5pys?=", "日本", 65001},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.wire);
    Settings(0, 0);
    ASSERT_EQ(Parse(std::string(c.wire) + " <p@x>"), S_OK);
    EXPECT_EQ(Name(), c.name);
    EXPECT_EQ(CodePage(), c.codePage);
    // Written back in the page the name came in, and read back the same.
    std::string assembled = Assemble();
    ComPtr<IEMSHeaderMailbox> again = Create<IEMSHeaderMailbox>(CLSID_EMSHeaderMailbox);
    ASSERT_EQ(again->ParseMailbox(B(assembled).get()), S_OK);
    Bstr name;
    ASSERT_EQ(again->get_Name(name.put()), S_OK);
    EXPECT_EQ(U8(name), c.name);
  }
}

TEST_F(HeaderMailboxTest, ShiftJisNameIsWrittenBackUnderThePagesHeaderName) {
  ASSERT_EQ(Parse("=?shift_jis?B?k/qWew==?= <p@x>"), S_OK);
  EXPECT_EQ(Name(), "日本");
  EXPECT_EQ(CodePage(), 932);
  // Page 932's header charset name is "iso-2022-jp"; the bytes stay those
  // of page 932.
  EXPECT_EQ(Assemble(), "\"=?iso-2022-jp?B?k/qWew==?=\" <p@x>");
}

TEST_F(HeaderMailboxTest, PlainNameLeavesCodePageAndEncodingAsTheyWere) {
  Settings(28591, 1);
  EXPECT_EQ(Parse("Joe <j@x>"), S_OK);
  EXPECT_EQ(CodePage(), 28591);
  EXPECT_EQ(Encoding(), 1);
}

TEST_F(HeaderMailboxTest, PlainNameIsReadInTheDefaultCodePage) {
  if (!AnsiIs1252()) GTEST_SKIP() << "PARCELVANE_ACP is set";
  Settings(65001, 0);
  // The bytes of UTF-8 "é" as windows-1252 text are "Ã©".
  EXPECT_EQ(Parse("JosÃ© <j@x>"), S_OK);
  EXPECT_EQ(Name(), "José");
}

TEST_F(HeaderMailboxTest, MailboxWithoutANameDecodesNothing) {
  Settings(1250, 2);
  EXPECT_EQ(Parse("<j@x>"), S_OK);
  EXPECT_EQ(Name(), "");
  EXPECT_EQ(CodePage(), 1250);
  EXPECT_EQ(Encoding(), 2);
}

TEST_F(HeaderMailboxTest, WordOfAnUnknownCharsetKeepsTheMailboxPage) {
  Settings(1250, 0);
  EXPECT_EQ(Parse("=?x-unknown?Q?Joe?= <j@x>"), S_OK);
  EXPECT_EQ(Name(), "Joe");
  EXPECT_EQ(CodePage(), 1250);
  EXPECT_EQ(Encoding(), 1);
}

TEST_F(HeaderMailboxTest, UnclosedAngleBracketRunsToTheEnd) {
  EXPECT_EQ(Parse("<a@b"), S_OK);
  EXPECT_EQ(Address(), "a@b");
  EXPECT_EQ(Name(), "");
}

TEST_F(HeaderMailboxTest, CommentsAreNotRecognised) {
  EXPECT_EQ(Parse("a@b (Joe)"), S_OK);
  EXPECT_EQ(Address(), "a@b (Joe)");
  EXPECT_EQ(Name(), "");
}

TEST_F(HeaderMailboxTest, TextAfterTheClosingBracketIsIgnored) {
  EXPECT_EQ(Parse("Joe <j@x> trailing, more"), S_OK);
  EXPECT_EQ(Name(), "Joe");
  EXPECT_EQ(Address(), "j@x");
}

TEST_F(HeaderMailboxTest, QuotedStringsAreJoinedAndBackslashesKept) {
  EXPECT_EQ(Parse("\"Joe \\\"Q\\\"\" \"Public\" <j@x>"), S_OK);
  EXPECT_EQ(Name(), "Joe \\\"Q\\\"Public");
  // Written back in quotes with nothing escaped.
  EXPECT_EQ(Assemble(), "\"Joe \\\"Q\\\"Public\" <j@x>");
}

TEST_F(HeaderMailboxTest, LineBreaksAndBlanksAreTrimmed) {
  EXPECT_EQ(Parse(" \t Joe\r\n Bloggs \r\n<\r\n j@x\t>"), S_OK);
  EXPECT_EQ(Name(), "Joe Bloggs");
  EXPECT_EQ(Address(), "j@x");
}

TEST_F(HeaderMailboxTest, NameHoldingAnAtWithoutAddressBecomesTheAddress) {
  EXPECT_EQ(Parse("Joe at j@x"), S_OK);
  EXPECT_EQ(Name(), "");
  EXPECT_EQ(Address(), "Joe at j@x");
}

// ---------------------------------------------------------------- SplitString
TEST_F(HeaderMailboxTest, SplitStringDoesNotDecode) {
  Settings(1250, 0);
  EXPECT_EQ(Split("=?utf-8?B?w6k=?= <e@x>"), S_OK);
  EXPECT_EQ(Name(), "=?utf-8?B?w6k=?=");
  EXPECT_EQ(Address(), "e@x");
  EXPECT_EQ(CodePage(), 1250);
  EXPECT_EQ(Encoding(), 0);
}

TEST_F(HeaderMailboxTest, SplitStringKeepsWideCharactersOfTheName) {
  EXPECT_EQ(Split("\"Παύλος\" <p@x>"), S_OK);
  EXPECT_EQ(Name(), "Παύλος");
}

TEST_F(HeaderMailboxTest, SplitStringSkipsLeadingCharactersWhoseLowByteIsABlank) {
  WString text = WString(1, OLECHAR(0x0120)) + WString(1, OLECHAR(0x0109)) + W("Joe <j@x>");
  EXPECT_EQ(m_->SplitString(Bstr(text).get()), S_OK);
  EXPECT_EQ(Name(), "Joe");
}

TEST_F(HeaderMailboxTest, SplitStringKeepsSuchCharactersInsideTheName) {
  WString text = W("Jo") + WString(1, OLECHAR(0x0120)) + W("e <j@x>");
  EXPECT_EQ(m_->SplitString(Bstr(text).get()), S_OK);
  Bstr name;
  ASSERT_EQ(m_->get_Name(name.put()), S_OK);
  EXPECT_EQ(WString(name.view()), text.substr(0, 4));
}

// ---------------------------------------------------------------- AssembleMailbox
TEST_F(HeaderMailboxTest, NewMailboxWritesItsNameUnencoded) {
  Set("Café", "c@d");
  EXPECT_EQ(Assemble(), "\"Café\" <c@d>");
}

TEST_F(HeaderMailboxTest, NameOutsideTheAnsiPageIsLostWithoutEncoding) {
  if (!AnsiIs1252()) GTEST_SKIP() << "PARCELVANE_ACP is set";
  Set("Привет", "p@x");
  EXPECT_EQ(Assemble(), "\"??????\" <p@x>");
}

TEST_F(HeaderMailboxTest, NameIsEncodedWithTheMailboxSettings) {
  Set("Привет", "p@x");
  Settings(65001, 2);
  EXPECT_EQ(Assemble(), "\"=?utf-8?B?0J/RgNC40LLQtdGC?=\" <p@x>");
  Settings(20866, 2);
  EXPECT_EQ(Assemble(), "\"=?koi8-r?B?8NLJ18XU?=\" <p@x>");
}

TEST_F(HeaderMailboxTest, AutomaticEncodingChoosesPerCallAndKeepsTheSetting) {
  Set("André", "a@x");
  Settings(28591, 3);
  EXPECT_EQ(Assemble(), "\"=?iso-8859-1?Q?Andr=E9?=\" <a@x>");
  EXPECT_EQ(Encoding(), 3);
}

TEST_F(HeaderMailboxTest, EncodedNameIsShortenedForAFromField) {
  Set(Repeat("é", 30), "a@b");
  Settings(65001, 2);
  // The first word's budget is 81 - (4 + 4) - 10: 44 bytes; then 78 - 10.
  std::string first = Repeat("w6nDqcOp", 7) + "w6k=";
  std::string second = "w6nDqcOpw6nDqcOpw6nDqQ==";
  EXPECT_EQ(Assemble(), "\"=?utf-8?B?" + first + "?=\r\n =?utf-8?B?" + second + "?=\" <a@b>");
}

TEST_F(HeaderMailboxTest, EmptyNameAssemblesTheAddressAlone) {
  EXPECT_EQ(Parse("Joe <j@x>"), S_OK);
  ASSERT_EQ(m_->put_Name(B("").get()), S_OK);
  EXPECT_EQ(Assemble(), "j@x");
}

TEST_F(HeaderMailboxTest, EncodingThatWritesNothingAssemblesTheAddressAlone) {
  Set("Joe", "j@x");
  Settings(65001, 5);
  EXPECT_EQ(Assemble(), "j@x");
}

TEST_F(HeaderMailboxTest, EmptyAddressWithoutNameAssemblesToNothing) {
  Set("", "");
  EXPECT_EQ(Assemble(), "");
}

// ---------------------------------------------------------------- library entry points
TEST_F(HeaderMailboxTest, NarrowEntryPointsRunTheSameCode) {
  ComPtr<HeaderMailbox> mailbox;
  ASSERT_EQ(MakeObject(&mailbox), S_OK);
  EXPECT_EQ(mailbox->Parse("=?utf-8?Q?Jos=C3=A9?= <j@x>"), S_OK);
  EXPECT_EQ(U8(mailbox->name()), "José");
  EXPECT_EQ(mailbox->address(), "j@x");
  EXPECT_EQ(mailbox->encodedName(), "=?utf-8?Q?Jos=C3=A9?=");
  std::string out;
  EXPECT_EQ(mailbox->Assemble(&out), S_OK);
  EXPECT_EQ(out, "\"=?utf-8?Q?Jos=C3=A9?=\" <j@x>");
  mailbox->Split(W("\"A, B\" <a@b>"));
  EXPECT_EQ(U8(mailbox->name()), "A, B");
}

// ---------------------------------------------------------------- late binding
TEST_F(HeaderMailboxTest, LateBoundAddressPutAndGet) {
  EXPECT_EQ(Invoke(m_.get(), "Address", DISPATCH_PROPERTYPUT, {"j@x"}), S_OK);
  VARIANT result;
  VariantInit(&result);
  EXPECT_EQ(Invoke(m_.get(), "address", DISPATCH_PROPERTYGET, {}, &result), S_OK);
  ASSERT_EQ(result.vt, VT_BSTR);
  EXPECT_EQ(U8(result.bstrVal), "j@x");
  VariantClear(&result);
}

TEST_F(HeaderMailboxTest, LateBoundParseMailboxDecodes) {
  EXPECT_EQ(Invoke(m_.get(), "ParseMailbox", DISPATCH_METHOD, {"=?utf-8?B?w6k=?= <e@x>"}), S_OK);
  EXPECT_EQ(Name(), "é");
  VARIANT result;
  VariantInit(&result);
  EXPECT_EQ(Invoke(m_.get(), "DefaultEncoding", DISPATCH_PROPERTYGET, {}, &result), S_OK);
  ASSERT_EQ(result.vt, VT_I4);
  EXPECT_EQ(result.lVal, 2);
}

}  // namespace
}  // namespace pv::test
