// Variants off Windows: initialisation, clearing and deep copies of
// strings, interfaces and arrays; by-reference values are copied as the
// reference they are.
#include <cstring>

#include "parcelvane/platform.h"

namespace {

bool IsPlainType(VARTYPE base) {
  switch (base) {
    case VT_EMPTY:
    case VT_NULL:
    case VT_I2:
    case VT_I4:
    case VT_R4:
    case VT_R8:
    case VT_CY:
    case VT_DATE:
    case VT_BSTR:
    case VT_DISPATCH:
    case VT_ERROR:
    case VT_BOOL:
    case VT_UNKNOWN:
    case VT_DECIMAL:
    case VT_I1:
    case VT_UI1:
    case VT_UI2:
    case VT_UI4:
    case VT_I8:
    case VT_UI8:
    case VT_INT:
    case VT_UINT:
    case VT_RECORD:
      return true;
    default:
      return false;
  }
}

// Whether a variant may carry this type tag at all.
bool IsValidVariantType(VARTYPE vt) {
  if (vt & (VT_VECTOR | VT_RESERVED)) return false;
  VARTYPE base = vt & VT_TYPEMASK;
  if (vt & VT_BYREF) return base == VT_VARIANT || IsPlainType(base);
  if (vt & VT_ARRAY) return base == VT_VARIANT || (IsPlainType(base) && base != VT_EMPTY && base != VT_NULL);
  return IsPlainType(base);
}

}  // namespace

extern "C" {

void VariantInit(VARIANTARG* pvarg) {
  if (pvarg == nullptr) return;
  pvarg->vt = VT_EMPTY;
  pvarg->wReserved1 = pvarg->wReserved2 = pvarg->wReserved3 = 0;
}

HRESULT VariantClear(VARIANTARG* pvarg) {
  if (pvarg == nullptr) return E_INVALIDARG;
  if (!IsValidVariantType(pvarg->vt)) return DISP_E_BADVARTYPE;
  if (!(pvarg->vt & VT_BYREF)) {
    if (pvarg->vt & VT_ARRAY) {
      HRESULT hr = SafeArrayDestroy(pvarg->parray);
      if (FAILED(hr)) return hr;
    } else {
      switch (pvarg->vt) {
        case VT_BSTR:
          SysFreeString(pvarg->bstrVal);
          break;
        case VT_DISPATCH:
        case VT_UNKNOWN:
          if (pvarg->punkVal != nullptr) pvarg->punkVal->Release();
          break;
        case VT_RECORD:
          return DISP_E_BADVARTYPE;
        default:
          break;
      }
    }
  }
  pvarg->vt = VT_EMPTY;
  return S_OK;
}

HRESULT VariantCopy(VARIANTARG* pvargDest, const VARIANTARG* pvargSrc) {
  if (pvargDest == nullptr || pvargSrc == nullptr) return E_INVALIDARG;
  if (pvargDest == pvargSrc) return S_OK;
  if (!IsValidVariantType(pvargSrc->vt)) return DISP_E_BADVARTYPE;
  if ((pvargSrc->vt & ~VT_BYREF) == VT_RECORD) return DISP_E_BADVARTYPE;
  HRESULT hr = VariantClear(pvargDest);
  if (FAILED(hr)) return hr;

  VARIANT copy;
  std::memcpy(&copy, pvargSrc, sizeof copy);
  if (!(pvargSrc->vt & VT_BYREF)) {
    if (pvargSrc->vt & VT_ARRAY) {
      hr = SafeArrayCopy(pvargSrc->parray, &copy.parray);
      if (FAILED(hr)) return hr;
    } else if (pvargSrc->vt == VT_BSTR && pvargSrc->bstrVal != nullptr) {
      copy.bstrVal = SysAllocStringByteLen(reinterpret_cast<const char*>(pvargSrc->bstrVal),
                                           SysStringByteLen(pvargSrc->bstrVal));
      if (copy.bstrVal == nullptr) return E_OUTOFMEMORY;
    } else if ((pvargSrc->vt == VT_DISPATCH || pvargSrc->vt == VT_UNKNOWN) && pvargSrc->punkVal != nullptr) {
      pvargSrc->punkVal->AddRef();
    }
  }
  std::memcpy(pvargDest, &copy, sizeof copy);
  return S_OK;
}

}  // extern "C"
