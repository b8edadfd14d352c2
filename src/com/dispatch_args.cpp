#include "src/com/dispatch_args.h"

#include <cstdio>

namespace pv::dispatch {
namespace {

// Decimal text to an integer, allowing surrounding blanks and a sign.
HRESULT ParseDecimal(WStringView text, int64_t* out) {
  size_t i = 0;
  while (i < text.size() && (text[i] == ' ' || text[i] == '\t')) ++i;
  bool negative = false;
  if (i < text.size() && (text[i] == '-' || text[i] == '+')) negative = text[i++] == '-';
  size_t digits = 0;
  int64_t value = 0;
  for (; i < text.size() && text[i] >= '0' && text[i] <= '9'; ++i, ++digits) {
    if (value > (INT64_MAX - 9) / 10) return DISP_E_OVERFLOW;
    value = value * 10 + (text[i] - '0');
  }
  while (i < text.size() && (text[i] == ' ' || text[i] == '\t')) ++i;
  if (digits == 0 || i != text.size()) return DISP_E_TYPEMISMATCH;
  *out = negative ? -value : value;
  return S_OK;
}

HRESULT FromDouble(double d, int64_t* out) {
  if (!std::isfinite(d) || d < -9.2e18 || d > 9.2e18) return DISP_E_OVERFLOW;
  *out = static_cast<int64_t>(std::nearbyint(d));  // the default mode rounds half to even
  return S_OK;
}

}  // namespace

VARIANT Dereference(const VARIANT& v) {
  VARIANT r = v;
  if (!(v.vt & VT_BYREF)) return r;
  VARTYPE base = static_cast<VARTYPE>(v.vt & ~VT_BYREF);
  if (v.byref == nullptr) {
    VariantInit(&r);
    return r;
  }
  if (base == VT_VARIANT) return Dereference(*v.pvarVal);
  r.vt = base;
  if (base & VT_ARRAY) {
    r.parray = *v.pparray;
    return r;
  }
  switch (base) {
    case VT_I1:
    case VT_UI1:
      r.bVal = *v.pbVal;
      break;
    case VT_I2:
    case VT_UI2:
    case VT_BOOL:
      r.iVal = *v.piVal;
      break;
    case VT_I4:
    case VT_UI4:
    case VT_INT:
    case VT_UINT:
    case VT_ERROR:
      r.lVal = *v.plVal;
      break;
    case VT_R4:
      r.fltVal = *v.pfltVal;
      break;
    case VT_I8:
    case VT_UI8:
    case VT_R8:
    case VT_DATE:
    case VT_CY:
      std::memcpy(&r.llVal, v.byref, sizeof r.llVal);
      break;
    case VT_BSTR:
      r.bstrVal = *v.pbstrVal;
      break;
    case VT_DISPATCH:
    case VT_UNKNOWN:
      r.punkVal = *v.ppunkVal;
      break;
    default:
      r.vt = v.vt;  // left by reference: no conversion will accept it
      break;
  }
  return r;
}

HRESULT ToInt64(const VARIANT& v, int64_t* out) {
  switch (v.vt) {
    case VT_EMPTY:
      *out = 0;
      return S_OK;
    case VT_I1:
      *out = static_cast<signed char>(v.cVal);
      return S_OK;
    case VT_UI1:
      *out = v.bVal;
      return S_OK;
    case VT_I2:
      *out = v.iVal;
      return S_OK;
    case VT_UI2:
      *out = v.uiVal;
      return S_OK;
    case VT_BOOL:
      *out = v.boolVal ? -1 : 0;
      return S_OK;
    case VT_I4:
    case VT_INT:
      *out = v.lVal;
      return S_OK;
    case VT_UI4:
    case VT_UINT:
      *out = v.ulVal;
      return S_OK;
    case VT_I8:
      *out = v.llVal;
      return S_OK;
    case VT_UI8:
      if (v.ullVal > static_cast<ULONGLONG>(INT64_MAX)) return DISP_E_OVERFLOW;
      *out = static_cast<int64_t>(v.ullVal);
      return S_OK;
    case VT_R4:
      return FromDouble(v.fltVal, out);
    case VT_R8:
      return FromDouble(v.dblVal, out);
    case VT_BSTR:
      return ParseDecimal(View(v.bstrVal), out);
    default:
      return DISP_E_TYPEMISMATCH;
  }
}

HRESULT In<BSTR>::From(const VARIANT* v) {
  if (v == nullptr) {
    owned = Bstr(WidenAscii("0"));
    return owned.is_null() ? E_OUTOFMEMORY : S_OK;
  }
  VARIANT d = Dereference(*v);
  switch (d.vt) {
    case VT_BSTR:
      borrowed = d.bstrVal;
      return S_OK;
    case VT_NULL:
      borrowed = nullptr;  // the missing string
      return S_OK;
    case VT_EMPTY:
      owned = Bstr(WStringView());
      return owned.is_null() ? E_OUTOFMEMORY : S_OK;
    case VT_BOOL:
      owned = Bstr(WidenAscii(d.boolVal ? "True" : "False"));
      return owned.is_null() ? E_OUTOFMEMORY : S_OK;
    case VT_R4:
    case VT_R8: {
      char text[32];
      std::snprintf(text, sizeof text, "%.15g", d.vt == VT_R4 ? static_cast<double>(d.fltVal) : d.dblVal);
      owned = Bstr(WidenAscii(text));
      return owned.is_null() ? E_OUTOFMEMORY : S_OK;
    }
    default: {
      int64_t n = 0;
      HRESULT hr = ToInt64(d, &n);
      if (FAILED(hr)) return DISP_E_TYPEMISMATCH;
      owned = Bstr(WidenAscii(std::to_string(n)));
      return owned.is_null() ? E_OUTOFMEMORY : S_OK;
    }
  }
}

HRESULT QueryFromVariant(const VARIANT& v, REFIID iid, void** out) {
  *out = nullptr;
  switch (v.vt) {
    case VT_EMPTY:
    case VT_NULL:
      return S_OK;
    case VT_DISPATCH:
    case VT_UNKNOWN:
      if (v.punkVal == nullptr) return S_OK;
      return SUCCEEDED(v.punkVal->QueryInterface(iid, out)) ? S_OK : DISP_E_TYPEMISMATCH;
    default:
      return DISP_E_TYPEMISMATCH;
  }
}

}  // namespace pv::dispatch
