#include "tests/test_util.h"

namespace pv::test {
namespace {

// Counts references, to watch variants AddRef and Release.
class Counted : public IUnknown {
 public:
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void** ppv) override {
    *ppv = nullptr;
    return E_NOINTERFACE;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return ++refs; }
  ULONG STDMETHODCALLTYPE Release() override { return --refs; }
  ULONG refs = 1;
};

TEST(Variant, InitMakesEmpty) {
  VARIANT v;
  v.vt = VT_I4;
  VariantInit(&v);
  EXPECT_EQ(v.vt, VT_EMPTY);
}

TEST(Variant, ClearFreesStringAndEmpties) {
  VARIANT v;
  VariantInit(&v);
  v.vt = VT_BSTR;
  v.bstrVal = SysAllocString(OLESTR("x"));
  EXPECT_EQ(VariantClear(&v), S_OK);
  EXPECT_EQ(v.vt, VT_EMPTY);
}

TEST(Variant, ClearReleasesInterface) {
  Counted c;
  VARIANT v;
  VariantInit(&v);
  v.vt = VT_UNKNOWN;
  v.punkVal = &c;
  c.AddRef();
  EXPECT_EQ(VariantClear(&v), S_OK);
  EXPECT_EQ(c.refs, 1u);
}

TEST(Variant, ClearDestroysArray) {
  VARIANT v = ByteVariant("abc");
  EXPECT_EQ(VariantClear(&v), S_OK);
  EXPECT_EQ(v.vt, VT_EMPTY);
}

TEST(Variant, ClearOfLockedArrayFails) {
  VARIANT v = ByteVariant("abc");
  SafeArrayLock(v.parray);
  EXPECT_EQ(VariantClear(&v), DISP_E_ARRAYISLOCKED);
  SafeArrayUnlock(v.parray);
  EXPECT_EQ(VariantClear(&v), S_OK);
}

TEST(Variant, ClearRejectsAnInvalidType) {
  VARIANT v;
  VariantInit(&v);
  v.vt = 0x00FF;
  EXPECT_EQ(VariantClear(&v), DISP_E_BADVARTYPE);
}

TEST(Variant, ClearLeavesByReferenceTargetsAlone) {
  BSTR s = SysAllocString(OLESTR("kept"));
  VARIANT v;
  VariantInit(&v);
  v.vt = VT_BSTR | VT_BYREF;
  v.pbstrVal = &s;
  EXPECT_EQ(VariantClear(&v), S_OK);
  EXPECT_EQ(WStringView(s), WStringView(OLESTR("kept")));
  SysFreeString(s);
}

TEST(Variant, CopyDuplicatesString) {
  VARIANT a, b;
  VariantInit(&a);
  VariantInit(&b);
  a.vt = VT_BSTR;
  a.bstrVal = SysAllocString(OLESTR("text"));
  EXPECT_EQ(VariantCopy(&b, &a), S_OK);
  EXPECT_EQ(b.vt, VT_BSTR);
  EXPECT_NE(b.bstrVal, a.bstrVal);
  EXPECT_EQ(WStringView(b.bstrVal), WStringView(OLESTR("text")));
  VariantClear(&a);
  VariantClear(&b);
}

TEST(Variant, CopyAddsReferenceToInterface) {
  Counted c;
  VARIANT a, b;
  VariantInit(&a);
  VariantInit(&b);
  a.vt = VT_UNKNOWN;
  a.punkVal = &c;
  EXPECT_EQ(VariantCopy(&b, &a), S_OK);
  EXPECT_EQ(c.refs, 2u);
  VariantClear(&b);
  EXPECT_EQ(c.refs, 1u);
}

TEST(Variant, CopyDuplicatesArray) {
  VARIANT a = ByteVariant("xyz");
  VARIANT b;
  VariantInit(&b);
  EXPECT_EQ(VariantCopy(&b, &a), S_OK);
  EXPECT_NE(b.parray, a.parray);
  EXPECT_EQ(BytesOf(b), "xyz");
  VariantClear(&a);
  EXPECT_EQ(BytesOf(b), "xyz");
  VariantClear(&b);
}

TEST(Variant, CopyClearsTheDestinationFirst) {
  VARIANT a, b;
  VariantInit(&a);
  a.vt = VT_I4;
  a.lVal = 7;
  b = ByteVariant("old");
  EXPECT_EQ(VariantCopy(&b, &a), S_OK);
  EXPECT_EQ(b.vt, VT_I4);
  EXPECT_EQ(b.lVal, 7);
}

TEST(Variant, CopyOfByReferenceIsShallow) {
  LONG n = 5;
  VARIANT a, b;
  VariantInit(&a);
  VariantInit(&b);
  a.vt = VT_I4 | VT_BYREF;
  a.plVal = &n;
  EXPECT_EQ(VariantCopy(&b, &a), S_OK);
  EXPECT_EQ(b.plVal, &n);
}

TEST(Variant, CopyRejectsAnInvalidSource) {
  VARIANT a, b;
  VariantInit(&a);
  VariantInit(&b);
  a.vt = VT_VECTOR | VT_I4;
  EXPECT_EQ(VariantCopy(&b, &a), DISP_E_BADVARTYPE);
}

}  // namespace
}  // namespace pv::test
