// EMSHeaderCharset: its state, property operations, name and page lookups,
// statuses, late binding and the library's own entry points.
#include "src/headers/header_charset.h"

#include "tests/test_util.h"

namespace pv::test {
namespace {

class HeaderCharsetTest : public ::testing::Test {
 protected:
  ComPtr<IEMSHeaderCharset> cs_ = Create<IEMSHeaderCharset>(CLSID_EMSHeaderCharset);

  LONG Get(HRESULT (STDMETHODCALLTYPE IEMSHeaderCharset::*getter)(LONG*)) {
    LONG value = 12345;
    EXPECT_EQ((cs_.get()->*getter)(&value), S_OK);
    return value;
  }
  LONG HeaderCodePage() { return Get(&IEMSHeaderCharset::get_HeaderCodePage); }
  LONG DefaultCodePage() { return Get(&IEMSHeaderCharset::get_DefaultCodePage); }
  LONG DefaultEncoding() { return Get(&IEMSHeaderCharset::get_DefaultEncoding); }
  LONG Reserve() { return ImplOf<HeaderCharset>(cs_.get())->headerNameReserve(); }

  LONG CodePageOf(const char* name) {
    LONG page = 12345;
    EXPECT_EQ(cs_->CharsetToCodePage(B(name).get(), &page), S_OK);
    return page;
  }
  std::string CharsetOf(LONG page) {
    Bstr name;
    EXPECT_EQ(cs_->CodePageToCharset(page, name.put()), S_OK);
    EXPECT_FALSE(name.is_null());
    return U8(name);
  }
};

// ---------------------------------------------------------------- state
TEST_F(HeaderCharsetTest, NewObjectHasTheDocumentedDefaults) {
  EXPECT_EQ(DefaultEncoding(), 2);
  EXPECT_EQ(DefaultCodePage(), static_cast<LONG>(AnsiCodePage()));
  EXPECT_EQ(HeaderCodePage(), DefaultCodePage());
  EXPECT_EQ(ImplOf<HeaderCharset>(cs_.get())->storedHeaderCodePage(), -1);
  EXPECT_EQ(Reserve(), 0);
}

TEST_F(HeaderCharsetTest, NewObjectUsesTheMeasuredAnsiPage) {
  if (std::getenv("PARCELVANE_ACP") != nullptr) GTEST_SKIP() << "PARCELVANE_ACP is set";
  EXPECT_EQ(DefaultCodePage(), 1252);
}

TEST_F(HeaderCharsetTest, HeaderCodePageMinusOneReadsAsDefaultCodePage) {
  EXPECT_EQ(cs_->put_HeaderCodePage(65001), S_OK);
  EXPECT_EQ(cs_->put_HeaderCodePage(-1), S_OK);
  EXPECT_EQ(HeaderCodePage(), DefaultCodePage());
  EXPECT_EQ(cs_->put_DefaultCodePage(28592), S_OK);
  EXPECT_EQ(HeaderCodePage(), 28592);
}

TEST_F(HeaderCharsetTest, HeaderCodePageMinusTwoReadsAsMinusTwo) {
  EXPECT_EQ(cs_->put_HeaderCodePage(-2), S_OK);
  EXPECT_EQ(HeaderCodePage(), -2);
}

TEST_F(HeaderCharsetTest, HeaderCodePageIsStoredAsGiven) {
  EXPECT_EQ(cs_->put_HeaderCodePage(0), S_OK);
  EXPECT_EQ(HeaderCodePage(), 0);
  EXPECT_EQ(cs_->put_HeaderCodePage(12345), S_OK);
  EXPECT_EQ(HeaderCodePage(), 12345);
}

TEST_F(HeaderCharsetTest, DefaultCodePageIsStoredWithoutCheck) {
  EXPECT_EQ(cs_->put_DefaultCodePage(-7), S_OK);
  EXPECT_EQ(DefaultCodePage(), -7);
  EXPECT_EQ(cs_->put_DefaultCodePage(99999), S_OK);
  EXPECT_EQ(DefaultCodePage(), 99999);
}

TEST_F(HeaderCharsetTest, DefaultEncodingIsStoredWithoutCheck) {
  for (LONG value : {0, 1, 3, 5, -1, 1000}) {
    EXPECT_EQ(cs_->put_DefaultEncoding(value), S_OK);
    EXPECT_EQ(DefaultEncoding(), value);
  }
}

TEST_F(HeaderCharsetTest, HeaderNameSetsTheReserveToItsLengthPlusFour) {
  EXPECT_EQ(cs_->put_HeaderName(B("Subject").get()), S_OK);
  EXPECT_EQ(Reserve(), 11);
  EXPECT_EQ(cs_->put_HeaderName(B("").get()), S_OK);
  EXPECT_EQ(Reserve(), 4);
}

TEST_F(HeaderCharsetTest, NullHeaderNameLeavesTheReserveAsItWas) {
  EXPECT_EQ(cs_->put_HeaderName(B("Subject").get()), S_OK);
  EXPECT_EQ(cs_->put_HeaderName(nullptr), S_OK);
  EXPECT_EQ(Reserve(), 11);
}

TEST_F(HeaderCharsetTest, HeaderNameCountsUtf16Units) {
  EXPECT_EQ(cs_->put_HeaderName(B("X-\xC3\xA9t\xC3\xA9-\xF0\x9F\x98\x80").get()), S_OK);
  EXPECT_EQ(Reserve(), 8 + 4);  // the emoji is two units
}

// ---------------------------------------------------------------- lookups
TEST_F(HeaderCharsetTest, CharsetToCodePageAnswersTheInternetEncoding) {
  EXPECT_EQ(CodePageOf("utf-8"), 65001);
  EXPECT_EQ(CodePageOf("ISO-8859-1"), 28591);
  EXPECT_EQ(CodePageOf("us-ascii"), 20127);
  EXPECT_EQ(CodePageOf("Shift_JIS"), 932);
  EXPECT_EQ(CodePageOf("iso-2022-jp"), 50220);
  EXPECT_EQ(CodePageOf("gbk"), 936);
}

TEST_F(HeaderCharsetTest, CharsetToCodePageOfAnUnknownNameIsMinusOne) {
  EXPECT_EQ(CodePageOf("x-unknown"), -1);
  EXPECT_EQ(CodePageOf("cp1252"), -1);
  EXPECT_EQ(CodePageOf("utf8"), -1);
}

TEST_F(HeaderCharsetTest, CharsetToCodePageKnowsTheNamesOfTheMimeDatabase) {
  EXPECT_EQ(CodePageOf("euc-kr"), 949);
  EXPECT_EQ(CodePageOf("csEUCKR"), 949);
  EXPECT_EQ(CodePageOf("latin1"), 28591);
  EXPECT_EQ(CodePageOf("windows-874"), 874);
}

TEST_F(HeaderCharsetTest, CharsetToCodePageOfAnEmptyNameIsMinusOne) {
  EXPECT_EQ(CodePageOf(""), -1);
  LONG page = 12345;
  EXPECT_EQ(cs_->CharsetToCodePage(nullptr, &page), S_OK);
  EXPECT_EQ(page, -1);
}

TEST_F(HeaderCharsetTest, CodePageToCharsetAnswersTheHeaderName) {
  EXPECT_EQ(CharsetOf(1252), "windows-1252");
  EXPECT_EQ(CharsetOf(932), "iso-2022-jp");
  EXPECT_EQ(CharsetOf(949), "ks_c_5601-1987");
  EXPECT_EQ(CharsetOf(20127), "us-ascii");
  EXPECT_EQ(CharsetOf(65001), "utf-8");
  EXPECT_EQ(CharsetOf(28605), "iso-8859-15");
}

TEST_F(HeaderCharsetTest, CodePageToCharsetOfAnUnknownPageIsEmpty) {
  EXPECT_EQ(CharsetOf(99999), "");
  EXPECT_EQ(CharsetOf(0), "");
  EXPECT_EQ(CharsetOf(-1), "");
}

TEST_F(HeaderCharsetTest, LookupsLeaveTheStateAlone) {
  CodePageOf("utf-8");
  CharsetOf(932);
  EXPECT_EQ(HeaderCodePage(), DefaultCodePage());
  EXPECT_EQ(DefaultEncoding(), 2);
}

// ---------------------------------------------------------------- statuses
TEST_F(HeaderCharsetTest, MissingResultPlacesGiveEPointer) {
  Bstr in = B("x");
  EXPECT_EQ(cs_->ParseHeader(in.get(), nullptr), E_POINTER);
  EXPECT_EQ(cs_->AssembleHeader(in.get(), nullptr), E_POINTER);
  EXPECT_EQ(cs_->CharsetToCodePage(in.get(), nullptr), E_POINTER);
  EXPECT_EQ(cs_->CodePageToCharset(1252, nullptr), E_POINTER);
  EXPECT_EQ(cs_->get_HeaderCodePage(nullptr), E_POINTER);
  EXPECT_EQ(cs_->get_DefaultCodePage(nullptr), E_POINTER);
  EXPECT_EQ(cs_->get_DefaultEncoding(nullptr), E_POINTER);
}

TEST_F(HeaderCharsetTest, MissingInputTextGivesEPointerAndWritesNothing) {
  BSTR out = reinterpret_cast<BSTR>(0x1);
  EXPECT_EQ(cs_->ParseHeader(nullptr, &out), E_POINTER);
  EXPECT_EQ(out, reinterpret_cast<BSTR>(0x1));
  EXPECT_EQ(cs_->AssembleHeader(nullptr, &out), E_POINTER);
  EXPECT_EQ(out, reinterpret_cast<BSTR>(0x1));
}

TEST_F(HeaderCharsetTest, ParseHeaderWithMissingTextChangesNoState) {
  cs_->put_HeaderCodePage(65001);
  BSTR out = nullptr;
  EXPECT_EQ(cs_->ParseHeader(nullptr, &out), E_POINTER);
  EXPECT_EQ(HeaderCodePage(), 65001);
}

TEST_F(HeaderCharsetTest, AssembleHeaderWithMissingTextMakesNoChoice) {
  cs_->put_DefaultEncoding(3);
  BSTR out = nullptr;
  EXPECT_EQ(cs_->AssembleHeader(nullptr, &out), E_POINTER);
  EXPECT_EQ(DefaultEncoding(), 3);
}

// ---------------------------------------------------------------- late binding
TEST_F(HeaderCharsetTest, OperationsHaveTheirDispatchIdentifiers) {
  ComPtr<IDispatch> dispatch;
  ASSERT_EQ(cs_.As(&dispatch), S_OK);
  EXPECT_EQ(IdOf(dispatch.get(), "ParseHeader"), 0x60020000);
  EXPECT_EQ(IdOf(dispatch.get(), "AssembleHeader"), 0x60020001);
  EXPECT_EQ(IdOf(dispatch.get(), "CharsetToCodePage"), 0x60020002);
  EXPECT_EQ(IdOf(dispatch.get(), "CodePageToCharset"), 0x60020003);
  EXPECT_EQ(IdOf(dispatch.get(), "HeaderName"), 0x60020004);
  EXPECT_EQ(IdOf(dispatch.get(), "HeaderCodePage"), 0x60020005);
  EXPECT_EQ(IdOf(dispatch.get(), "DefaultCodePage"), 0x60020007);
  EXPECT_EQ(IdOf(dispatch.get(), "DefaultEncoding"), 0x60020009);
}

TEST_F(HeaderCharsetTest, LateBoundCallsReachEveryOperation) {
  ComPtr<IDispatch> dispatch;
  ASSERT_EQ(cs_.As(&dispatch), S_OK);
  IDispatch* d = dispatch.get();
  VARIANT result;
  VariantInit(&result);

  EXPECT_EQ(Invoke(d, "DefaultEncoding", DISPATCH_PROPERTYPUT, {1}), S_OK);
  EXPECT_EQ(Invoke(d, "DefaultCodePage", DISPATCH_PROPERTYPUT, {28591}), S_OK);
  EXPECT_EQ(Invoke(d, "HeaderName", DISPATCH_PROPERTYPUT, {"Subject"}), S_OK);
  EXPECT_EQ(Reserve(), 11);

  ASSERT_EQ(Invoke(d, "AssembleHeader", DISPATCH_METHOD, {"caf\xC3\xA9"}, &result), S_OK);
  ASSERT_EQ(result.vt, VT_BSTR);
  EXPECT_EQ(U8(result.bstrVal), "=?iso-8859-1?Q?caf=E9?=");
  VariantClear(&result);

  ASSERT_EQ(Invoke(d, "ParseHeader", DISPATCH_METHOD, {"=?utf-8?B?w6k=?="}, &result), S_OK);
  ASSERT_EQ(result.vt, VT_BSTR);
  EXPECT_EQ(U8(result.bstrVal), "\xC3\xA9");
  VariantClear(&result);

  ASSERT_EQ(Invoke(d, "HeaderCodePage", DISPATCH_PROPERTYGET, {}, &result), S_OK);
  EXPECT_EQ(result.vt, VT_I4);
  EXPECT_EQ(result.lVal, 65001);
  ASSERT_EQ(Invoke(d, "DefaultEncoding", DISPATCH_PROPERTYGET, {}, &result), S_OK);
  EXPECT_EQ(result.lVal, 2);
  ASSERT_EQ(Invoke(d, "DefaultCodePage", DISPATCH_PROPERTYGET, {}, &result), S_OK);
  EXPECT_EQ(result.lVal, 28591);

  EXPECT_EQ(Invoke(d, "HeaderCodePage", DISPATCH_PROPERTYPUT, {-2}), S_OK);
  ASSERT_EQ(Invoke(d, "HeaderCodePage", DISPATCH_PROPERTYGET, {}, &result), S_OK);
  EXPECT_EQ(result.lVal, -2);

  ASSERT_EQ(Invoke(d, "CharsetToCodePage", DISPATCH_METHOD, {"KOI8-R"}, &result), S_OK);
  EXPECT_EQ(result.vt, VT_I4);
  EXPECT_EQ(result.lVal, 20866);

  ASSERT_EQ(Invoke(d, "CodePageToCharset", DISPATCH_METHOD, {949}, &result), S_OK);
  ASSERT_EQ(result.vt, VT_BSTR);
  EXPECT_EQ(U8(result.bstrVal), "ks_c_5601-1987");
  VariantClear(&result);
}

TEST_F(HeaderCharsetTest, LateBoundNamesIgnoreCase) {
  ComPtr<IDispatch> dispatch;
  ASSERT_EQ(cs_.As(&dispatch), S_OK);
  VARIANT result;
  VariantInit(&result);
  ASSERT_EQ(Invoke(dispatch.get(), "charsettocodepage", DISPATCH_METHOD, {"big5"}, &result), S_OK);
  EXPECT_EQ(result.lVal, 950);
}

// ---------------------------------------------------------------- the library's own entry points
TEST(HeaderCharsetLibrary, ObjectsMadeForTheLibraryStartLikePublicOnes) {
  ComPtr<HeaderCharset> cs;
  ASSERT_EQ(MakeObject(&cs), S_OK);
  EXPECT_EQ(cs->defaultEncoding(), kHeaderEncodingB);
  EXPECT_EQ(cs->storedHeaderCodePage(), kCodePageUnset);
  EXPECT_EQ(cs->defaultCodePage(), static_cast<LONG>(AnsiCodePage()));
  EXPECT_EQ(cs->headerNameReserve(), 0);
}

TEST(HeaderCharsetLibrary, DecodeReadsNarrowTextWithoutConversion) {
  ComPtr<HeaderCharset> cs;
  ASSERT_EQ(MakeObject(&cs), S_OK);
  WString out = W("stale");
  EXPECT_EQ(cs->Decode("=?utf-8?Q?=C3=A9?= \xC3\xA9", &out), S_OK);
  EXPECT_EQ(U8(out), "\xC3\xA9 \xC3\xA9");  // the bytes after the word are that word's UTF-8
  EXPECT_EQ(cs->storedHeaderCodePage(), 65001);
  EXPECT_EQ(cs->defaultEncoding(), kHeaderEncodingQ);
}

TEST(HeaderCharsetLibrary, EncodeTakesWideText) {
  ComPtr<HeaderCharset> cs;
  ASSERT_EQ(MakeObject(&cs), S_OK);
  cs->SetHeaderCodePage(65001);
  cs->SetDefaultEncoding(kHeaderEncodingQ);
  WString out = W("stale");
  EXPECT_EQ(cs->Encode(W("\xE2\x82\xAC 5"), &out), S_OK);
  EXPECT_EQ(U8(out), "=?utf-8?Q?=E2=82=AC_5?=");
}

TEST(HeaderCharsetLibrary, SettersMatchTheProperties) {
  ComPtr<HeaderCharset> cs;
  ASSERT_EQ(MakeObject(&cs), S_OK);
  cs->SetDefaultCodePage(1251);
  cs->SetDefaultEncoding(3);
  cs->SetHeaderNameLength(7);
  LONG value = 0;
  cs->get_HeaderCodePage(&value);
  EXPECT_EQ(value, 1251);
  cs->get_DefaultEncoding(&value);
  EXPECT_EQ(value, 3);
  EXPECT_EQ(cs->headerNameReserve(), 11);
  cs->SetHeaderCodePage(-2);
  EXPECT_EQ(cs->headerCodePage(), -2);
}

TEST(HeaderCharsetLibrary, HugeHeaderNameLengthSaturatesTheReserve) {
  ComPtr<HeaderCharset> cs;
  ASSERT_EQ(MakeObject(&cs), S_OK);
  cs->SetHeaderNameLength(static_cast<size_t>(1) << 40);
  EXPECT_EQ(cs->headerNameReserve(), 0x7FFFFFFF);
  WString out = W("stale");
  EXPECT_EQ(cs->Encode(W("Hello"), &out), S_OK);
  EXPECT_EQ(out, WString());  // no room for a single character
}

TEST(HeaderCharsetLibrary, CreatableThroughTheClassTable) {
  ComPtr<IUnknown> unknown;
  ASSERT_EQ(PvCreateInstance(CLSID_EMSHeaderCharset, nullptr, IID_IUnknown, unknown.put_void()), S_OK);
  ComPtr<IEMSHeaderCharset> cs;
  EXPECT_EQ(unknown.As(&cs), S_OK);
  EXPECT_TRUE(ImplOf<HeaderCharset>(cs.get()));
}

}  // namespace
}  // namespace pv::test
