// EMSMimeAttribute: parsing one parameter, the two forms of its value kept
// in step, extended values, folding, cloning, statuses and late binding.
#include "src/headers/mime_attribute.h"

#include "tests/test_util.h"

namespace pv::test {
namespace {

class MimeAttributeTest : public ::testing::Test {
 protected:
  ComPtr<IEMSMimeAttribute> a_ = Create<IEMSMimeAttribute>(CLSID_EMSMimeAttribute);

  HRESULT Parse(std::string_view utf8) { return a_->ParseAttribute(B(utf8).get()); }
  std::string Read(HRESULT (STDMETHODCALLTYPE IEMSMimeAttribute::*getter)(BSTR*)) {
    Bstr value;
    EXPECT_EQ((a_.get()->*getter)(value.put()), S_OK);
    EXPECT_FALSE(value.is_null());
    return U8(value);
  }
  std::string Name() { return Read(&IEMSMimeAttribute::get_Name); }
  std::string Raw() { return Read(&IEMSMimeAttribute::get_RawValue); }
  std::string Decoded() { return Read(&IEMSMimeAttribute::get_DecodedValue); }
  std::string Assemble() { return Read(&IEMSMimeAttribute::AssembleAttribute); }
  LONG CodePage() {
    LONG value = 12345;
    EXPECT_EQ(a_->get_CodePage(&value), S_OK);
    return value;
  }
  LONG Encoding() {
    LONG value = 12345;
    EXPECT_EQ(a_->get_Encoding(&value), S_OK);
    return value;
  }
  bool Extended() { return ImplOf<MimeAttribute>(a_.get())->extended(); }
  void SetRaw(std::string_view utf8) { ASSERT_EQ(a_->put_RawValue(B(utf8).get()), S_OK); }
  void SetDecoded(std::string_view utf8) { ASSERT_EQ(a_->put_DecodedValue(B(utf8).get()), S_OK); }
  void SetDecodedWide(WStringView text) { ASSERT_EQ(a_->put_DecodedValue(Bstr(text).get()), S_OK); }
};

bool AnsiIs1252() { return std::getenv("PARCELVANE_ACP") == nullptr; }

// ---------------------------------------------------------------- state
TEST_F(MimeAttributeTest, NewAttributeIsEmptyWithUtf8AndAutomaticEncoding) {
  EXPECT_EQ(Name(), "");
  EXPECT_EQ(Raw(), "");
  EXPECT_EQ(Decoded(), "");
  EXPECT_EQ(CodePage(), 65001);
  EXPECT_EQ(Encoding(), 3);
  EXPECT_FALSE(Extended());
}

TEST_F(MimeAttributeTest, CodePageAndEncodingAreStoredAsGiven) {
  EXPECT_EQ(a_->put_CodePage(-7), S_OK);
  EXPECT_EQ(a_->put_Encoding(42), S_OK);
  EXPECT_EQ(CodePage(), -7);
  EXPECT_EQ(Encoding(), 42);
}

TEST_F(MimeAttributeTest, SettingNameCodePageOrEncodingConvertsNothing) {
  SetRaw("=?utf-8?B?w6k=?=");
  EXPECT_EQ(a_->put_Name(B("other").get()), S_OK);
  EXPECT_EQ(a_->put_CodePage(28591), S_OK);
  EXPECT_EQ(a_->put_Encoding(1), S_OK);
  EXPECT_EQ(Name(), "other");
  EXPECT_EQ(Raw(), "=?utf-8?B?w6k=?=");
  EXPECT_EQ(Decoded(), "é");
}

TEST_F(MimeAttributeTest, NameHoldsAnsiText) {
  ASSERT_EQ(a_->put_Name(B("café").get()), S_OK);
  EXPECT_EQ(Name(), "café");
}

TEST_F(MimeAttributeTest, NullOutPointersGiveEPointer) {
  LONG* noLong = nullptr;
  EXPECT_EQ(a_->AssembleAttribute(nullptr), E_POINTER);
  EXPECT_EQ(a_->Clone(nullptr), E_POINTER);
  EXPECT_EQ(a_->get_Name(nullptr), E_POINTER);
  EXPECT_EQ(a_->get_RawValue(nullptr), E_POINTER);
  EXPECT_EQ(a_->get_DecodedValue(nullptr), E_POINTER);
  EXPECT_EQ(a_->get_CodePage(noLong), E_POINTER);
  EXPECT_EQ(a_->get_Encoding(noLong), E_POINTER);
}

TEST_F(MimeAttributeTest, NullStringsReadAsEmpty) {
  SetRaw("x");
  ASSERT_EQ(a_->put_Name(B("n").get()), S_OK);
  EXPECT_EQ(a_->put_Name(nullptr), S_OK);
  EXPECT_EQ(Name(), "");
  EXPECT_EQ(a_->put_RawValue(nullptr), S_OK);
  EXPECT_EQ(Raw(), "");
  EXPECT_EQ(Decoded(), "");
  SetDecoded("y");
  EXPECT_EQ(a_->put_DecodedValue(nullptr), S_OK);
  EXPECT_EQ(Decoded(), "");
  EXPECT_EQ(Raw(), "");
}

// ---------------------------------------------------------------- ParseAttribute
TEST_F(MimeAttributeTest, ParseTrimsNameAndQuotedValue) {
  EXPECT_EQ(Parse("charset = \"iso-8859-1\""), S_OK);
  EXPECT_EQ(Name(), "charset");
  EXPECT_EQ(Raw(), "iso-8859-1");
  EXPECT_EQ(Decoded(), "iso-8859-1");
}

TEST_F(MimeAttributeTest, ParseTrimsTabsAroundNameAndValue) {
  EXPECT_EQ(Parse("\t format\t=\t flowed \t"), S_OK);
  EXPECT_EQ(Name(), "format");
  EXPECT_EQ(Raw(), "flowed");
}

TEST_F(MimeAttributeTest, ParseKeepsBackslashEscapedQuotes) {
  EXPECT_EQ(Parse("title=\"say \\\"hi\\\" now\""), S_OK);
  EXPECT_EQ(Raw(), "say \\\"hi\\\" now");
  EXPECT_EQ(Decoded(), "say \\\"hi\\\" now");
}

TEST_F(MimeAttributeTest, ParseDropsAnOpeningQuoteThatIsNeverClosed) {
  EXPECT_EQ(Parse("title=\"open ended"), S_OK);
  EXPECT_EQ(Raw(), "open ended");
}

TEST_F(MimeAttributeTest, ParseKeepsAQuoteThatOnlyCloses) {
  EXPECT_EQ(Parse("title=closed\""), S_OK);
  EXPECT_EQ(Raw(), "closed\"");
}

TEST_F(MimeAttributeTest, ParseOfAnEmptyQuotedValueGivesAnEmptyValue) {
  EXPECT_EQ(Parse("title=\"\""), S_OK);
  EXPECT_EQ(Raw(), "");
  EXPECT_EQ(Decoded(), "");
}

TEST_F(MimeAttributeTest, ParseOfAValueThatIsOneQuoteGivesAnEmptyValue) {
  EXPECT_EQ(Parse("title=\""), S_OK);
  EXPECT_EQ(Name(), "title");
  EXPECT_EQ(Raw(), "");
  EXPECT_EQ(Decoded(), "");
}

TEST_F(MimeAttributeTest, ParseOfAnEmptyNameGivesAnEmptyName) {
  EXPECT_EQ(Parse("=value"), S_OK);
  EXPECT_EQ(Name(), "");
  EXPECT_EQ(Raw(), "value");
  EXPECT_EQ(Decoded(), "value");
}

TEST_F(MimeAttributeTest, ParseSplitsAtTheFirstEquals) {
  EXPECT_EQ(Parse("a=b=c"), S_OK);
  EXPECT_EQ(Name(), "a");
  EXPECT_EQ(Raw(), "b=c");
}

TEST_F(MimeAttributeTest, ParseWithoutEqualsFailsAndKeepsTheOtherFields) {
  EXPECT_EQ(Parse("name=\"value\""), S_OK);
  EXPECT_EQ(Parse("novalue"), E_FAIL);
  EXPECT_EQ(Raw(), "");
  EXPECT_EQ(Name(), "name");
  EXPECT_EQ(Decoded(), "value");
}

TEST_F(MimeAttributeTest, ParseOfANullStringFailsAsEmptyText) {
  SetRaw("kept?");
  EXPECT_EQ(a_->ParseAttribute(nullptr), E_FAIL);
  EXPECT_EQ(Raw(), "");
}

TEST_F(MimeAttributeTest, ParseDecodesEncodedWordsAndLearnsTheirPageAndLetter) {
  EXPECT_EQ(Parse("filename=\"=?utf-8?B?w6kuZG9j?=\""), S_OK);
  EXPECT_EQ(Name(), "filename");
  EXPECT_EQ(Raw(), "=?utf-8?B?w6kuZG9j?=");
  EXPECT_EQ(Decoded(), "é.doc");
  EXPECT_EQ(CodePage(), 65001);
  EXPECT_EQ(Encoding(), 2);
}

TEST_F(MimeAttributeTest, ParseLearnsTheLastWordOfSeveral) {
  EXPECT_EQ(Parse("name==?utf-8?B?w6k=?= =?iso-8859-1?Q?=E8?="), S_OK);
  EXPECT_EQ(Decoded(), "éè");
  EXPECT_EQ(CodePage(), 28591);
  EXPECT_EQ(Encoding(), 1);
}

TEST_F(MimeAttributeTest, PlainValueKeepsTheCodePageAndTakesTheCharsetObjectsEncoding) {
  ASSERT_EQ(a_->put_CodePage(28592), S_OK);
  EXPECT_EQ(Parse("charset=us-ascii"), S_OK);
  EXPECT_EQ(CodePage(), 28592);
  // Without a word, Encoding becomes what the charset object held: B on a
  // new attribute.
  EXPECT_EQ(Encoding(), 2);
}

TEST_F(MimeAttributeTest, PlainValueIsConvertedWithTheCodePage) {
  ASSERT_EQ(a_->put_CodePage(65001), S_OK);
  if (!AnsiIs1252()) GTEST_SKIP() << "PARCELVANE_ACP is set";
  // The bytes of UTF-8 "é" as windows-1252 text are "Ã©".
  EXPECT_EQ(Parse("title=cafÃ©"), S_OK);
  EXPECT_EQ(Decoded(), "café");
}

TEST_F(MimeAttributeTest, WordOfAnUnknownCharsetLeavesTheCodePage) {
  ASSERT_EQ(a_->put_CodePage(28591), S_OK);
  EXPECT_EQ(Parse("x==?x-unknown?Q?a?="), S_OK);
  EXPECT_EQ(Decoded(), "a");
  EXPECT_EQ(CodePage(), 28591);
  EXPECT_EQ(Encoding(), 1);
}

TEST_F(MimeAttributeTest, RawValueIsUnfoldedBeforeDecoding) {
  SetRaw("one\r\n two\r\n\t three\r\n");
  EXPECT_EQ(Raw(), "one\r\n two\r\n\t three\r\n");
  EXPECT_EQ(Decoded(), "one two three ");
}

TEST_F(MimeAttributeTest, FoldedEncodedWordsDecodeAsOne) {
  SetRaw("=?utf-8?Q?caf=C3=A9?=\r\n =?utf-8?Q?_cr=C3=A8me?=");
  EXPECT_EQ(Decoded(), "café crème");
}

// ---------------------------------------------------------------- extended values
TEST_F(MimeAttributeTest, ExtendedValueIsPercentDecodedInItsCharset) {
  EXPECT_EQ(Parse("title*=us-ascii'en'This%20is%20%2A%2A%2Afun%2A%2A%2A"), S_OK);
  EXPECT_EQ(Name(), "title");
  EXPECT_TRUE(Extended());
  EXPECT_EQ(Decoded(), "This is ***fun***");
  EXPECT_EQ(CodePage(), 20127);
}

TEST_F(MimeAttributeTest, ExtendedValueJoinsEscapedBytesIntoCharacters) {
  EXPECT_EQ(Parse("filename*=utf-8''%C3%A9t%C3%A9.txt"), S_OK);
  EXPECT_EQ(Decoded(), "été.txt");
  EXPECT_EQ(CodePage(), 65001);
}

TEST_F(MimeAttributeTest, ExtendedValueAcceptsLowerCaseHexDigits) {
  EXPECT_EQ(Parse("filename*=iso-8859-1''caf%e9"), S_OK);
  EXPECT_EQ(Decoded(), "café");
  EXPECT_EQ(CodePage(), 28591);
}

TEST_F(MimeAttributeTest, ExtendedValueInSeveralCharsets) {
  EXPECT_EQ(Parse("t*=koi8-r''%F0%D2%C9%D7%C5%D4"), S_OK);
  EXPECT_EQ(Decoded(), "Привет");
  EXPECT_EQ(Parse("t*=shift_jis''%93%FA%96%7B"), S_OK);
  EXPECT_EQ(Decoded(), "日本");
  EXPECT_EQ(Parse("t*=iso-8859-2''%B1"), S_OK);
  EXPECT_EQ(Decoded(), "ą");
}

TEST_F(MimeAttributeTest, DoublePercentGivesOnePercent) {
  EXPECT_EQ(Parse("p*=utf-8''100%%25"), S_OK);
  EXPECT_EQ(Decoded(), "100%25");
}

TEST_F(MimeAttributeTest, PercentWithoutTwoHexDigitsIsText) {
  EXPECT_EQ(Parse("p*=utf-8''50%zz%4%"), S_OK);
  EXPECT_EQ(Decoded(), "50%zz%4%");
}

TEST_F(MimeAttributeTest, PercentUAndFourHexDigitsIsOneUtf16Unit) {
  EXPECT_EQ(Parse("p*=utf-8''caf%u00E9%u20ac"), S_OK);
  EXPECT_EQ(Decoded(), "café€");
}

TEST_F(MimeAttributeTest, PercentUWithoutFourHexDigitsIsText) {
  EXPECT_EQ(Parse("p*=utf-8''%u12%U00E9"), S_OK);
  EXPECT_EQ(Decoded(), "%u12%U00E9");
}

TEST_F(MimeAttributeTest, EscapedBytesOfAnUnknownCharsetAreReadAsAnsiText) {
  EXPECT_EQ(Parse("p*=x-unknown''caf%E9"), S_OK);
  EXPECT_EQ(CodePage(), -1);
  if (!AnsiIs1252()) GTEST_SKIP() << "PARCELVANE_ACP is set";
  EXPECT_EQ(Decoded(), "café");
}

TEST_F(MimeAttributeTest, ExtendedValueWithoutTwoApostrophesKeepsTheTextBeforeTheFirst) {
  ASSERT_EQ(a_->put_CodePage(28591), S_OK);
  EXPECT_EQ(Parse("p*=abc%41"), S_OK);
  EXPECT_EQ(Decoded(), "abcA");
  EXPECT_EQ(Parse("p*=x%E9'y"), S_OK);
  EXPECT_EQ(Decoded(), "xé");
  EXPECT_EQ(Parse("p*=one'two'three'four"), S_OK);
  EXPECT_EQ(Decoded(), "one");
  EXPECT_EQ(CodePage(), 28591);
}

TEST_F(MimeAttributeTest, ExtendedValueThatIsOneApostropheDecodesToNothing) {
  EXPECT_EQ(Parse("p*='"), S_OK);
  EXPECT_EQ(Raw(), "'");
  EXPECT_EQ(Decoded(), "");
}

TEST_F(MimeAttributeTest, ExtendedValueWithAnEmptyCharsetGivesAnUnknownPage) {
  EXPECT_EQ(Parse("p*=''a%41"), S_OK);
  EXPECT_EQ(Decoded(), "aA");
  EXPECT_EQ(CodePage(), -1);
}

TEST_F(MimeAttributeTest, ExtendedDecodingLeavesTheEncodingAsItIs) {
  ASSERT_EQ(a_->put_Encoding(1), S_OK);
  EXPECT_EQ(Parse("p*=utf-8''%C3%A9"), S_OK);
  EXPECT_EQ(Encoding(), 1);
}

TEST_F(MimeAttributeTest, ExtendedValueIsUnfoldedFirst) {
  EXPECT_EQ(Parse("p*=utf-8''a%20\r\n\tb"), S_OK);
  EXPECT_EQ(Decoded(), "a  b");
}

TEST_F(MimeAttributeTest, EveryTrailingStarIsRemoved) {
  EXPECT_EQ(Parse("title** =utf-8''x"), S_OK);
  EXPECT_EQ(Name(), "title");
  EXPECT_TRUE(Extended());
}

TEST_F(MimeAttributeTest, ContinuationSectionsStayParametersOfTheirOwn) {
  EXPECT_EQ(Parse("title*0*=us-ascii'en'part%20one"), S_OK);
  EXPECT_EQ(Name(), "title*0");
  EXPECT_TRUE(Extended());
  EXPECT_EQ(Decoded(), "part one");
}

TEST_F(MimeAttributeTest, ExtendedFlagIsNeverCleared) {
  EXPECT_EQ(Parse("a*=utf-8''x"), S_OK);
  EXPECT_EQ(Parse("b=us-ascii'en'%41%42"), S_OK);
  EXPECT_TRUE(Extended());
  EXPECT_EQ(Name(), "b");
  EXPECT_EQ(Decoded(), "AB");
  SetRaw("=?utf-8?B?w6k=?=");
  EXPECT_EQ(Decoded(), "=?utf-8?B?w6k=?=");
}

TEST_F(MimeAttributeTest, StarsInsideTheNameDoNotMakeItExtended) {
  EXPECT_EQ(Parse("a*b=x%41"), S_OK);
  EXPECT_EQ(Name(), "a*b");
  EXPECT_FALSE(Extended());
  EXPECT_EQ(Decoded(), "x%41");
}

// ---------------------------------------------------------------- encoding
TEST_F(MimeAttributeTest, AsciiDecodedValueIsTheRawValue) {
  ASSERT_EQ(a_->put_Name(B("format").get()), S_OK);
  SetDecoded("flowed");
  EXPECT_EQ(Raw(), "flowed");
  EXPECT_EQ(Assemble(), "format=\"flowed\"");
}

TEST_F(MimeAttributeTest, NonAsciiDecodedValueBecomesEncodedWords) {
  ASSERT_EQ(a_->put_Name(B("name").get()), S_OK);
  SetDecoded("café");
  // 65001 by default; three of four characters are ASCII: Q.
  EXPECT_EQ(Raw(), "=?utf-8?Q?caf=C3=A9?=");
  EXPECT_EQ(Assemble(), "name=\"=?utf-8?Q?caf=C3=A9?=\"");
  EXPECT_EQ(Encoding(), 3);  // the choice is the charset object's, not the attribute's
}

TEST_F(MimeAttributeTest, EncodingUsesTheAttributesCodePageAndEncoding) {
  ASSERT_EQ(a_->put_CodePage(28591), S_OK);
  ASSERT_EQ(a_->put_Encoding(2), S_OK);
  SetDecoded("é");
  EXPECT_EQ(Raw(), "=?iso-8859-1?B?6Q==?=");
}

TEST_F(MimeAttributeTest, ValueOf128CountsAsPlain) {
  WString text(1, OLECHAR(0x80));
  SetDecodedWide(text);
  // Written unencoded: the value converted to the ANSI page as it stands.
  EXPECT_EQ(ImplOf<MimeAttribute>(a_.get())->rawValue(), WideToAnsi(text));
}

TEST_F(MimeAttributeTest, ValueOf129IsEncoded) {
  SetDecodedWide(WString(1, OLECHAR(0x81)));
  EXPECT_EQ(Raw(), "=?utf-8?B?woE=?=");
}

TEST_F(MimeAttributeTest, PageOfTheLastDecodedWordCarriesOverIntoEncoding) {
  EXPECT_EQ(Parse("name=\"=?iso-8859-1?Q?caf=E9?=\""), S_OK);
  ASSERT_EQ(a_->put_CodePage(65001), S_OK);
  SetDecoded("thé");
  EXPECT_EQ(Raw(), "=?iso-8859-1?Q?th=E9?=");
}

TEST_F(MimeAttributeTest, PlainDecodedValueEndsTheCarryOver) {
  EXPECT_EQ(Parse("name=\"=?iso-8859-1?Q?caf=E9?=\""), S_OK);
  SetRaw("plain");
  ASSERT_EQ(a_->put_CodePage(65001), S_OK);
  ASSERT_EQ(a_->put_Encoding(2), S_OK);
  SetDecoded("thé");
  EXPECT_EQ(Raw(), "=?utf-8?B?dGjDqQ==?=");
}

TEST_F(MimeAttributeTest, ExtendedValueIsWrittenBackAsEncodedWordsUnderThePlainName) {
  EXPECT_EQ(Parse("title*=utf-8''%C3%A9t%C3%A9"), S_OK);
  // One character of three is ASCII: B.
  EXPECT_EQ(Assemble(), "title=\"=?utf-8?B?w6l0w6k=?=\"");
  EXPECT_EQ(Raw(), "=?utf-8?B?w6l0w6k=?=");
}

TEST_F(MimeAttributeTest, AssembleReencodesTheDecodedValue) {
  ASSERT_EQ(a_->put_Name(B("n").get()), S_OK);
  SetRaw("one\r\n two");
  EXPECT_EQ(Assemble(), "n=\"one two\"");
  EXPECT_EQ(Raw(), "one two");
}

TEST_F(MimeAttributeTest, AssembleOfANewAttributeIsAnEmptyPair) { EXPECT_EQ(Assemble(), "=\"\""); }

TEST_F(MimeAttributeTest, LongValueIsFoldedInFrontOfABlank) {
  ASSERT_EQ(a_->put_Name(B("n").get()), S_OK);
  std::string value = std::string(70, 'a') + " " + std::string(10, 'b');
  SetDecoded(value);
  EXPECT_EQ(Raw(), std::string(70, 'a') + "\r\n " + std::string(10, 'b'));
}

TEST_F(MimeAttributeTest, FirstLineLimitDependsOnTheNameLength) {
  std::string value = std::string(50, 'a') + " " + std::string(20, 'b');
  ASSERT_EQ(a_->put_Name(B("n").get()), S_OK);
  SetDecoded(value);
  EXPECT_EQ(Raw(), value);  // 71 columns: within 78 - (1 + 4)
  ASSERT_EQ(a_->put_Name(B("parametername").get()), S_OK);
  SetDecoded(value);
  EXPECT_EQ(Raw(), std::string(50, 'a') + "\r\n " + std::string(20, 'b'));  // beyond 78 - (13 + 4)
}

TEST_F(MimeAttributeTest, LongValueWithoutBlanksIsNeverCut) {
  std::string value(300, 'x');
  SetDecoded(value);
  EXPECT_EQ(Raw(), value);
}

TEST_F(MimeAttributeTest, LongNonAsciiValueBecomesSeveralFoldedWords) {
  ASSERT_EQ(a_->put_Name(B("filename").get()), S_OK);
  ASSERT_EQ(a_->put_Encoding(2), S_OK);
  std::string value;
  for (int i = 0; i < 40; ++i) value += "é";
  SetDecoded(value);
  // 80 bytes of UTF-8: 50 in the first word (budget 81 - 10), 30 in the
  // next (budget 78 - 10). Words hold no blank, so folding adds no cut.
  std::string first;
  std::string second;
  for (int i = 0; i < 8; ++i) first += "w6nDqcOp";
  first += "w6k=";
  for (int i = 0; i < 5; ++i) second += "w6nDqcOp";
  EXPECT_EQ(Raw(), "=?utf-8?B?" + first + "?=\r\n =?utf-8?B?" + second + "?=");
}

// ---------------------------------------------------------------- two forms in step
TEST_F(MimeAttributeTest, RawValuePutDecodes) {
  SetRaw("=?utf-8?Q?na=C3=AFve?=");
  EXPECT_EQ(Decoded(), "naïve");
  EXPECT_EQ(CodePage(), 65001);
  EXPECT_EQ(Encoding(), 1);
}

TEST_F(MimeAttributeTest, DecodedValuePutEncodes) {
  SetDecoded("naïve");
  EXPECT_EQ(Raw(), "=?utf-8?Q?na=C3=AFve?=");
  EXPECT_EQ(Decoded(), "naïve");
}

TEST_F(MimeAttributeTest, EmptyRawValueDecodesToNothingAndKeepsTheSettings) {
  ASSERT_EQ(a_->put_CodePage(1250), S_OK);
  SetRaw("");
  EXPECT_EQ(Decoded(), "");
  EXPECT_EQ(CodePage(), 1250);
  EXPECT_EQ(Encoding(), 3);
}

// ---------------------------------------------------------------- Clone
TEST_F(MimeAttributeTest, CloneCopiesNameAndRawValueAndDecodesAfresh) {
  ASSERT_EQ(a_->put_CodePage(28591), S_OK);
  ASSERT_EQ(a_->put_Encoding(1), S_OK);
  EXPECT_EQ(Parse("title=plain"), S_OK);
  ComPtr<IEMSMimeAttribute> clone;
  ASSERT_EQ(a_->Clone(clone.put()), S_OK);
  ASSERT_TRUE(clone);
  EXPECT_NE(clone.get(), a_.get());
  a_ = clone;
  EXPECT_EQ(Name(), "title");
  EXPECT_EQ(Raw(), "plain");
  EXPECT_EQ(Decoded(), "plain");
  EXPECT_EQ(CodePage(), 65001);
  EXPECT_EQ(Encoding(), 2);  // from its own new charset object
}

TEST_F(MimeAttributeTest, CloneDoesNotCopyTheExtendedFlag) {
  EXPECT_EQ(Parse("title*=us-ascii'en'a%20b"), S_OK);
  ComPtr<IEMSMimeAttribute> clone;
  ASSERT_EQ(a_->Clone(clone.put()), S_OK);
  a_ = clone;
  EXPECT_FALSE(Extended());
  EXPECT_EQ(Decoded(), "us-ascii'en'a%20b");
}

TEST_F(MimeAttributeTest, CloneIsIndependentOfTheOriginal) {
  EXPECT_EQ(Parse("a=1"), S_OK);
  ComPtr<IEMSMimeAttribute> clone;
  ASSERT_EQ(a_->Clone(clone.put()), S_OK);
  SetRaw("2");
  Bstr raw;
  ASSERT_EQ(clone->get_RawValue(raw.put()), S_OK);
  EXPECT_EQ(U8(raw), "1");
}

// ---------------------------------------------------------------- library entry points
TEST_F(MimeAttributeTest, NarrowEntryPointsRunTheSameConversions) {
  ComPtr<MimeAttribute> attribute;
  ASSERT_EQ(MakeObject(&attribute), S_OK);
  EXPECT_EQ(attribute->Parse("name=\"=?utf-8?B?w6kuZG9j?=\""), S_OK);
  EXPECT_EQ(attribute->name(), "name");
  EXPECT_EQ(U8(attribute->decodedValue()), "é.doc");
  std::string out = "prefix;";
  EXPECT_EQ(attribute->AppendAssembled(&out), S_OK);
  EXPECT_EQ(out, "prefix;name=\"=?utf-8?B?w6kuZG9j?=\"");
  EXPECT_EQ(attribute->Parse("none"), E_FAIL);
  EXPECT_EQ(attribute->rawValue(), "");
}

TEST(SplitAttributeText, CutsWithoutDecoding) {
  AttributeText parts = SplitAttributeText(" title**\t= \"a \\\"b\\\"\" ");
  EXPECT_TRUE(parts.hasEquals);
  EXPECT_EQ(parts.name, "title");
  EXPECT_TRUE(parts.extended);
  EXPECT_EQ(parts.value, "a \\\"b\\\"");
  EXPECT_FALSE(SplitAttributeText("plain").hasEquals);
}

TEST(PercentDecode, PlainTextIsAnsiAndEscapesFollowTheCodePage) {
  WString out;
  PercentDecode("%C3%A9-%41%%", 65001, &out);
  EXPECT_EQ(U8(out), "é-A%");
  PercentDecode("", 65001, &out);
  EXPECT_EQ(U8(out), "");
  PercentDecode("%", 65001, &out);
  EXPECT_EQ(U8(out), "%");
}

TEST(PercentDecode, InvalidUtf8BytesBecomeReplacementCharacters) {
  WString out;
  PercentDecode("a%FFb", 65001, &out);
  EXPECT_EQ(U8(out), std::string("a") + "\xEF\xBF\xBD" + "b");
}

// ---------------------------------------------------------------- late binding
TEST_F(MimeAttributeTest, LateBoundNamePutAndGet) {
  EXPECT_EQ(Invoke(a_.get(), "Name", DISPATCH_PROPERTYPUT, {"charset"}), S_OK);
  VARIANT result;
  VariantInit(&result);
  EXPECT_EQ(Invoke(a_.get(), "name", DISPATCH_PROPERTYGET, {}, &result), S_OK);
  ASSERT_EQ(result.vt, VT_BSTR);
  EXPECT_EQ(U8(result.bstrVal), "charset");
  VariantClear(&result);
}

TEST_F(MimeAttributeTest, LateBoundParseAttributeGivesItsStatus) {
  EXPECT_EQ(Invoke(a_.get(), "ParseAttribute", DISPATCH_METHOD, {"format=flowed"}), S_OK);
  EXPECT_EQ(Raw(), "flowed");
  EXPECT_EQ(Invoke(a_.get(), "ParseAttribute", DISPATCH_METHOD, {"novalue"}), E_FAIL);
}

TEST_F(MimeAttributeTest, LateBoundAssembleAttributeReturnsTheText) {
  ASSERT_EQ(Parse("a=b"), S_OK);
  VARIANT result;
  VariantInit(&result);
  EXPECT_EQ(Invoke(a_.get(), "AssembleAttribute", DISPATCH_METHOD, {}, &result), S_OK);
  ASSERT_EQ(result.vt, VT_BSTR);
  EXPECT_EQ(U8(result.bstrVal), "a=\"b\"");
  VariantClear(&result);
}

}  // namespace
}  // namespace pv::test

namespace pv::test {
namespace {

// A parsed value is decoded when something first reads the decoding's
// results. Each test runs the same events on two attributes, one read
// right after the parse, and expects the same state from both.
struct AttributeState {
  std::string decoded;
  LONG codePage = 0;
  LONG encoding = 0;
};

AttributeState StateOf(IEMSMimeAttribute* attribute) {
  AttributeState state;
  Bstr decoded;
  EXPECT_EQ(attribute->get_DecodedValue(decoded.put()), S_OK);
  state.decoded = U8(decoded);
  EXPECT_EQ(attribute->get_CodePage(&state.codePage), S_OK);
  EXPECT_EQ(attribute->get_Encoding(&state.encoding), S_OK);
  return state;
}

void ExpectSameState(IEMSMimeAttribute* a, IEMSMimeAttribute* b, const char* what) {
  AttributeState x = StateOf(a);
  AttributeState y = StateOf(b);
  EXPECT_EQ(x.decoded, y.decoded) << what;
  EXPECT_EQ(x.codePage, y.codePage) << what;
  EXPECT_EQ(x.encoding, y.encoding) << what;
}

TEST(MimeAttributeOnDemand, AParsedEncodedWordSetsThePageWhenRead) {
  auto attribute = Create<IEMSMimeAttribute>(CLSID_EMSMimeAttribute);
  ASSERT_EQ(attribute->ParseAttribute(B("name==?koi8-r?B?9M/S?=").get()), S_OK);
  AttributeState state = StateOf(attribute.get());
  EXPECT_EQ(state.decoded, "\xD0\xA2\xD0\xBE\xD1\x80");
  EXPECT_EQ(state.codePage, 20866);
  EXPECT_EQ(state.encoding, 2);  // B
}

TEST(MimeAttributeOnDemand, APageSetAfterTheParseDoesNotChangeItsDecode) {
  for (const char* text : {"a=caf\xC3\xA9", "a==?utf-8?Q?caf=C3=A9?=", "a*=iso-8859-2''%E9t%E9"}) {
    auto early = Create<IEMSMimeAttribute>(CLSID_EMSMimeAttribute);
    auto late = Create<IEMSMimeAttribute>(CLSID_EMSMimeAttribute);
    ASSERT_EQ(early->ParseAttribute(B(text).get()), S_OK);
    StateOf(early.get());
    ASSERT_EQ(late->ParseAttribute(B(text).get()), S_OK);
    for (IEMSMimeAttribute* a : {early.get(), late.get()}) {
      ASSERT_EQ(a->put_CodePage(1251), S_OK);
      ASSERT_EQ(a->put_Encoding(1), S_OK);
    }
    ExpectSameState(early.get(), late.get(), text);
  }
}

TEST(MimeAttributeOnDemand, ASecondParseStartsFromThePageTheFirstLeft) {
  auto early = Create<IEMSMimeAttribute>(CLSID_EMSMimeAttribute);
  auto late = Create<IEMSMimeAttribute>(CLSID_EMSMimeAttribute);
  ASSERT_EQ(early->ParseAttribute(B("x==?koi8-r?B?9M/S?=").get()), S_OK);
  StateOf(early.get());
  ASSERT_EQ(late->ParseAttribute(B("x==?koi8-r?B?9M/S?=").get()), S_OK);
  Bstr second = B("x=\xD0\x96 text");
  ASSERT_EQ(early->ParseAttribute(second.get()), S_OK);
  ASSERT_EQ(late->ParseAttribute(second.get()), S_OK);
  ExpectSameState(early.get(), late.get(), "second parse");
  // And the raw value set afterwards decodes from that page too.
  Bstr raw = B("plain \xC3\xA9");
  ASSERT_EQ(early->put_RawValue(raw.get()), S_OK);
  ASSERT_EQ(late->put_RawValue(raw.get()), S_OK);
  ExpectSameState(early.get(), late.get(), "raw value put");
}

TEST(MimeAttributeOnDemand, AssemblyOfAParsedListWritesTheDecodedValues) {
  auto list = Create<IEMSMimeAttributes>(CLSID_EMSMimeAttributes);
  Bstr text = B("; name==?utf-8?B?w6k=?=; filename*=utf-8''%C3%A9.txt; boundary=\"b1\"");
  ASSERT_EQ(list->ParseAttributes(text.get()), S_OK);
  Bstr assembled;
  ASSERT_EQ(list->AssembleAttributes(assembled.put()), S_OK);
  auto read = Create<IEMSMimeAttributes>(CLSID_EMSMimeAttributes);
  ASSERT_EQ(read->ParseAttributes(assembled.get()), S_OK);
  for (const char* name : {"name", "filename", "boundary"}) {
    ComPtr<IEMSMimeAttribute> a, b;
    ASSERT_EQ(list->FindAttribute(B(name).get(), a.put()), S_OK) << name;
    ASSERT_EQ(read->FindAttribute(B(name).get(), b.put()), S_OK) << name;
    Bstr x, y;
    a->get_DecodedValue(x.put());
    b->get_DecodedValue(y.put());
    EXPECT_EQ(U8(x), U8(y)) << name;
  }
}

}  // namespace
}  // namespace pv::test
