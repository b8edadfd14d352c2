#include "tests/test_util.h"

namespace pv::test {
namespace {

TEST(SafeArray, VectorHasBoundsElementSizeAndType) {
  SAFEARRAY* a = SafeArrayCreateVector(VT_UI1, 5, 3);
  ASSERT_NE(a, nullptr);
  EXPECT_EQ(SafeArrayGetDim(a), 1u);
  EXPECT_EQ(SafeArrayGetElemsize(a), 1u);
  LONG lower = 0, upper = 0;
  EXPECT_EQ(SafeArrayGetLBound(a, 1, &lower), S_OK);
  EXPECT_EQ(SafeArrayGetUBound(a, 1, &upper), S_OK);
  EXPECT_EQ(lower, 5);
  EXPECT_EQ(upper, 7);
  VARTYPE vt = VT_EMPTY;
  EXPECT_EQ(SafeArrayGetVartype(a, &vt), S_OK);
  EXPECT_EQ(vt, VT_UI1);
  EXPECT_EQ(SafeArrayDestroy(a), S_OK);
}

TEST(SafeArray, ElementSizesFollowTheType) {
  struct Case {
    VARTYPE vt;
    UINT size;
  } cases[] = {{VT_I1, 1},
               {VT_UI2, 2},
               {VT_I4, 4},
               {VT_R8, 8},
               {VT_BSTR, sizeof(void*)},
               {VT_VARIANT, sizeof(VARIANT)},
               {VT_UNKNOWN, sizeof(void*)}};
  for (const Case& c : cases) {
    SAFEARRAY* a = SafeArrayCreateVector(c.vt, 0, 2);
    ASSERT_NE(a, nullptr);
    EXPECT_EQ(SafeArrayGetElemsize(a), c.size) << c.vt;
    SafeArrayDestroy(a);
  }
}

TEST(SafeArray, UnsupportedElementTypeGivesNull) {
  EXPECT_EQ(SafeArrayCreateVector(VT_EMPTY, 0, 1), nullptr);
}

TEST(SafeArray, VariantIsTwentyFourBytes) { EXPECT_EQ(sizeof(VARIANT), 24u); }

TEST(SafeArray, AccessLocksAndLockedArrayCannotBeDestroyed) {
  SAFEARRAY* a = SafeArrayCreateVector(VT_UI1, 0, 4);
  void* data = nullptr;
  EXPECT_EQ(SafeArrayAccessData(a, &data), S_OK);
  EXPECT_EQ(data, a->pvData);
  EXPECT_EQ(a->cLocks, 1u);
  EXPECT_EQ(SafeArrayDestroy(a), DISP_E_ARRAYISLOCKED);
  EXPECT_EQ(SafeArrayUnaccessData(a), S_OK);
  EXPECT_EQ(SafeArrayUnaccessData(a), E_UNEXPECTED);
  EXPECT_EQ(SafeArrayDestroy(a), S_OK);
}

TEST(SafeArray, MultiDimensionalBoundsAreReportedFirstDimensionFirst) {
  SAFEARRAYBOUND bounds[2] = {{2, 1}, {3, 10}};
  SAFEARRAY* a = SafeArrayCreate(VT_I4, 2, bounds);
  LONG lower = 0, upper = 0;
  SafeArrayGetLBound(a, 1, &lower);
  SafeArrayGetUBound(a, 1, &upper);
  EXPECT_EQ(lower, 1);
  EXPECT_EQ(upper, 2);
  SafeArrayGetLBound(a, 2, &lower);
  SafeArrayGetUBound(a, 2, &upper);
  EXPECT_EQ(lower, 10);
  EXPECT_EQ(upper, 12);
  EXPECT_EQ(SafeArrayGetLBound(a, 3, &lower), DISP_E_BADINDEX);
  LONG idx[2] = {2, 12};
  LONG value = 42;
  EXPECT_EQ(SafeArrayPutElement(a, idx, &value), S_OK);
  LONG back = 0;
  EXPECT_EQ(SafeArrayGetElement(a, idx, &back), S_OK);
  EXPECT_EQ(back, 42);
  LONG outside[2] = {3, 10};
  EXPECT_EQ(SafeArrayGetElement(a, outside, &back), DISP_E_BADINDEX);
  SafeArrayDestroy(a);
}

TEST(SafeArray, CopyIsDeepForStrings) {
  SAFEARRAY* a = SafeArrayCreateVector(VT_BSTR, 0, 2);
  LONG i = 0;
  BSTR s = SysAllocString(OLESTR("one"));
  EXPECT_EQ(SafeArrayPutElement(a, &i, s), S_OK);
  SysFreeString(s);
  SAFEARRAY* copy = nullptr;
  EXPECT_EQ(SafeArrayCopy(a, &copy), S_OK);
  BSTR original = static_cast<BSTR*>(a->pvData)[0];
  BSTR copied = static_cast<BSTR*>(copy->pvData)[0];
  EXPECT_NE(original, copied);
  EXPECT_EQ(WStringView(copied), WStringView(OLESTR("one")));
  EXPECT_EQ(static_cast<BSTR*>(copy->pvData)[1], nullptr);
  SafeArrayDestroy(a);
  EXPECT_EQ(WStringView(copied), WStringView(OLESTR("one")));
  SafeArrayDestroy(copy);
}

TEST(SafeArray, CopyOfNullIsNull) {
  SAFEARRAY* copy = reinterpret_cast<SAFEARRAY*>(1);
  EXPECT_EQ(SafeArrayCopy(nullptr, &copy), S_OK);
  EXPECT_EQ(copy, nullptr);
}

TEST(SafeArray, CopyKeepsTypeBoundsAndBytes) {
  SAFEARRAY* a = SafeArrayCreateVector(VT_UI2, 3, 2);
  static_cast<USHORT*>(a->pvData)[1] = 0x1234;
  SAFEARRAY* copy = nullptr;
  ASSERT_EQ(SafeArrayCopy(a, &copy), S_OK);
  VARTYPE vt = VT_EMPTY;
  SafeArrayGetVartype(copy, &vt);
  EXPECT_EQ(vt, VT_UI2);
  LONG lower = 0;
  SafeArrayGetLBound(copy, 1, &lower);
  EXPECT_EQ(lower, 3);
  EXPECT_EQ(static_cast<USHORT*>(copy->pvData)[1], 0x1234);
  SafeArrayDestroy(a);
  SafeArrayDestroy(copy);
}

TEST(SafeArray, NullArgumentsAreRejected) {
  EXPECT_EQ(SafeArrayDestroy(nullptr), S_OK);
  EXPECT_EQ(SafeArrayGetDim(nullptr), 0u);
  LONG bound = 0;
  EXPECT_EQ(SafeArrayGetLBound(nullptr, 1, &bound), E_INVALIDARG);
  void* data = nullptr;
  EXPECT_EQ(SafeArrayAccessData(nullptr, &data), E_INVALIDARG);
  VARTYPE vt;
  EXPECT_EQ(SafeArrayGetVartype(nullptr, &vt), E_INVALIDARG);
}

TEST(SafeArray, EmptyVectorHasNoElements) {
  SAFEARRAY* a = SafeArrayCreateVector(VT_UI1, 0, 0);
  ASSERT_NE(a, nullptr);
  LONG upper = 0;
  SafeArrayGetUBound(a, 1, &upper);
  EXPECT_EQ(upper, -1);
  SafeArrayDestroy(a);
}

}  // namespace
}  // namespace pv::test
