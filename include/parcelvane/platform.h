// Platform types of the component object model.
//
// On Windows they come from the SDK. Everywhere else this header declares
// the same names, in the global namespace, with the same layout, and
// libparcelvane supplies the functions (strings, variants, safe arrays).
#ifndef PARCELVANE_PLATFORM_H
#define PARCELVANE_PLATFORM_H

#ifdef _WIN32

#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>
#include <ole2.h>
#include <oleauto.h>
#include <unknwn.h>

#define PV_OLECHAR_IS_WCHAR 1

#else  // !_WIN32

#include <cstddef>
#include <cstdint>

// ---------------------------------------------------------------- scalars
typedef int32_t HRESULT;
typedef int32_t LONG;
typedef uint32_t ULONG;
typedef int32_t BOOL;
typedef int32_t SCODE;
typedef int32_t INT;
typedef uint32_t UINT;
typedef int16_t SHORT;
typedef uint16_t USHORT;
typedef uint16_t WORD;
typedef uint32_t DWORD;
typedef uint8_t BYTE;
typedef char CHAR;
typedef int64_t LONGLONG;
typedef uint64_t ULONGLONG;
typedef uint16_t VARTYPE;
typedef int16_t VARIANT_BOOL;
typedef LONG DISPID;
typedef DWORD LCID;
typedef double DATE;

typedef char16_t OLECHAR;
typedef OLECHAR* LPOLESTR;
typedef const OLECHAR* LPCOLESTR;
typedef OLECHAR* BSTR;

#define OLESTR(str) u##str

#define STDMETHODCALLTYPE
#define STDAPICALLTYPE
#define STDMETHODIMP HRESULT STDMETHODCALLTYPE
#define STDMETHODIMP_(type) type STDMETHODCALLTYPE

#ifndef TRUE
#define TRUE 1
#endif
#ifndef FALSE
#define FALSE 0
#endif
#define VARIANT_TRUE ((VARIANT_BOOL)-1)
#define VARIANT_FALSE ((VARIANT_BOOL)0)

// ---------------------------------------------------------------- statuses
#define PV_HR(x) ((HRESULT)(int32_t)(uint32_t)(x))
#define S_OK PV_HR(0x00000000u)
#define S_FALSE PV_HR(0x00000001u)
#define E_NOTIMPL PV_HR(0x80004001u)
#define E_NOINTERFACE PV_HR(0x80004002u)
#define E_POINTER PV_HR(0x80004003u)
#define E_ABORT PV_HR(0x80004004u)
#define E_FAIL PV_HR(0x80004005u)
#define E_UNEXPECTED PV_HR(0x8000FFFFu)
#define E_ACCESSDENIED PV_HR(0x80070005u)
#define E_HANDLE PV_HR(0x80070006u)
#define E_OUTOFMEMORY PV_HR(0x8007000Eu)
#define E_INVALIDARG PV_HR(0x80070057u)
#define CLASS_E_NOAGGREGATION PV_HR(0x80040110u)
#define CLASS_E_CLASSNOTAVAILABLE PV_HR(0x80040111u)
#define SELFREG_E_TYPELIB PV_HR(0x80040200u)
#define SELFREG_E_CLASS PV_HR(0x80040201u)
#define DISP_E_UNKNOWNINTERFACE PV_HR(0x80020001u)
#define DISP_E_MEMBERNOTFOUND PV_HR(0x80020003u)
#define DISP_E_PARAMNOTFOUND PV_HR(0x80020004u)
#define DISP_E_TYPEMISMATCH PV_HR(0x80020005u)
#define DISP_E_UNKNOWNNAME PV_HR(0x80020006u)
#define DISP_E_NONAMEDARGS PV_HR(0x80020007u)
#define DISP_E_BADVARTYPE PV_HR(0x80020008u)
#define DISP_E_EXCEPTION PV_HR(0x80020009u)
#define DISP_E_OVERFLOW PV_HR(0x8002000Au)
#define DISP_E_BADINDEX PV_HR(0x8002000Bu)
#define DISP_E_UNKNOWNLCID PV_HR(0x8002000Cu)
#define DISP_E_ARRAYISLOCKED PV_HR(0x8002000Du)
#define DISP_E_BADPARAMCOUNT PV_HR(0x8002000Eu)
#define DISP_E_PARAMNOTOPTIONAL PV_HR(0x8002000Fu)
#define DISP_E_BADCALLEE PV_HR(0x80020010u)
#define DISP_E_NOTACOLLECTION PV_HR(0x80020011u)
#define DISP_E_DIVBYZERO PV_HR(0x80020012u)
#define DISP_E_BUFFERTOOSMALL PV_HR(0x80020013u)
#define TYPE_E_ELEMENTNOTFOUND PV_HR(0x8002802Bu)
#define CO_E_CLASSSTRING PV_HR(0x800401F3u)

#define SUCCEEDED(hr) (((HRESULT)(hr)) >= 0)
#define FAILED(hr) (((HRESULT)(hr)) < 0)

// ---------------------------------------------------------------- identifiers
struct GUID {
  uint32_t Data1;
  uint16_t Data2;
  uint16_t Data3;
  uint8_t Data4[8];
};
typedef GUID IID;
typedef GUID CLSID;
typedef const IID& REFIID;
typedef const CLSID& REFCLSID;
typedef const GUID& REFGUID;

inline bool IsEqualGUID(REFGUID a, REFGUID b) {
  const unsigned char* pa = reinterpret_cast<const unsigned char*>(&a);
  const unsigned char* pb = reinterpret_cast<const unsigned char*>(&b);
  for (int i = 0; i < 16; ++i) {
    if (pa[i] != pb[i]) return false;
  }
  return true;
}
inline bool IsEqualIID(REFIID a, REFIID b) { return IsEqualGUID(a, b); }
inline bool IsEqualCLSID(REFCLSID a, REFCLSID b) { return IsEqualGUID(a, b); }
inline bool operator==(REFGUID a, REFGUID b) { return IsEqualGUID(a, b); }
inline bool operator!=(REFGUID a, REFGUID b) { return !IsEqualGUID(a, b); }

// ---------------------------------------------------------------- locales, dispatch ids
#define LOCALE_SYSTEM_DEFAULT ((LCID)0x0800)
#define LOCALE_USER_DEFAULT ((LCID)0x0400)
#define DISPID_UNKNOWN ((DISPID)-1)
#define DISPID_VALUE ((DISPID)0)
#define DISPID_PROPERTYPUT ((DISPID)-3)
#define DISPID_NEWENUM ((DISPID)-4)

#define DISPATCH_METHOD 0x1
#define DISPATCH_PROPERTYGET 0x2
#define DISPATCH_PROPERTYPUT 0x4
#define DISPATCH_PROPERTYPUTREF 0x8

// ---------------------------------------------------------------- variant types
enum VARENUM {
  VT_EMPTY = 0,
  VT_NULL = 1,
  VT_I2 = 2,
  VT_I4 = 3,
  VT_R4 = 4,
  VT_R8 = 5,
  VT_CY = 6,
  VT_DATE = 7,
  VT_BSTR = 8,
  VT_DISPATCH = 9,
  VT_ERROR = 10,
  VT_BOOL = 11,
  VT_VARIANT = 12,
  VT_UNKNOWN = 13,
  VT_DECIMAL = 14,
  VT_I1 = 16,
  VT_UI1 = 17,
  VT_UI2 = 18,
  VT_UI4 = 19,
  VT_I8 = 20,
  VT_UI8 = 21,
  VT_INT = 22,
  VT_UINT = 23,
  VT_VOID = 24,
  VT_HRESULT = 25,
  VT_PTR = 26,
  VT_SAFEARRAY = 27,
  VT_CARRAY = 28,
  VT_USERDEFINED = 29,
  VT_LPSTR = 30,
  VT_LPWSTR = 31,
  VT_RECORD = 36,
  VT_VECTOR = 0x1000,
  VT_ARRAY = 0x2000,
  VT_BYREF = 0x4000,
  VT_RESERVED = 0x8000,
  VT_ILLEGAL = 0xffff,
  VT_ILLEGALMASKED = 0x0fff,
  VT_TYPEMASK = 0x0fff
};

// safe array feature flags
#define FADF_AUTO 0x0001
#define FADF_STATIC 0x0002
#define FADF_EMBEDDED 0x0004
#define FADF_FIXEDSIZE 0x0010
#define FADF_RECORD 0x0020
#define FADF_HAVEIID 0x0040
#define FADF_HAVEVARTYPE 0x0080
#define FADF_BSTR 0x0100
#define FADF_UNKNOWN 0x0200
#define FADF_DISPATCH 0x0400
#define FADF_VARIANT 0x0800

struct IUnknown;
struct IDispatch;
struct ITypeInfo;

struct SAFEARRAYBOUND {
  ULONG cElements;
  LONG lLbound;
};
typedef SAFEARRAYBOUND* LPSAFEARRAYBOUND;

struct SAFEARRAY {
  USHORT cDims;
  USHORT fFeatures;
  ULONG cbElements;
  ULONG cLocks;
  void* pvData;
  SAFEARRAYBOUND rgsabound[1];
};
typedef SAFEARRAY* LPSAFEARRAY;

struct CY {
  LONGLONG int64;
};

struct DECIMAL {
  USHORT wReserved;
  BYTE scale;
  BYTE sign;
  ULONG Hi32;
  ULONGLONG Lo64;
};

struct VARIANT;
typedef VARIANT VARIANTARG;

#if defined(__GNUC__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wpedantic"
#endif
struct VARIANT {
  union {
    struct {
      VARTYPE vt;
      WORD wReserved1;
      WORD wReserved2;
      WORD wReserved3;
      union {
        LONGLONG llVal;
        LONG lVal;
        BYTE bVal;
        SHORT iVal;
        float fltVal;
        double dblVal;
        VARIANT_BOOL boolVal;
        SCODE scode;
        CY cyVal;
        DATE date;
        BSTR bstrVal;
        IUnknown* punkVal;
        IDispatch* pdispVal;
        SAFEARRAY* parray;
        BYTE* pbVal;
        SHORT* piVal;
        LONG* plVal;
        LONGLONG* pllVal;
        float* pfltVal;
        double* pdblVal;
        VARIANT_BOOL* pboolVal;
        SCODE* pscode;
        CY* pcyVal;
        DATE* pdate;
        BSTR* pbstrVal;
        IUnknown** ppunkVal;
        IDispatch** ppdispVal;
        SAFEARRAY** pparray;
        VARIANT* pvarVal;
        void* byref;
        CHAR cVal;
        USHORT uiVal;
        ULONG ulVal;
        ULONGLONG ullVal;
        INT intVal;
        UINT uintVal;
        DECIMAL* pdecVal;
        CHAR* pcVal;
        USHORT* puiVal;
        ULONG* pulVal;
        ULONGLONG* pullVal;
        INT* pintVal;
        UINT* puintVal;
        struct {
          void* pvRecord;
          void* pRecInfo;
        } brecVal;
      };
    };
    DECIMAL decVal;
  };
};
#if defined(__GNUC__)
#pragma GCC diagnostic pop
#endif

#define V_VT(X) ((X)->vt)
#define V_ISBYREF(X) (V_VT(X) & VT_BYREF)
#define V_ISARRAY(X) (V_VT(X) & VT_ARRAY)
#define V_UNION(X, Y) ((X)->Y)
#define V_I1(X) V_UNION(X, cVal)
#define V_UI1(X) V_UNION(X, bVal)
#define V_I2(X) V_UNION(X, iVal)
#define V_UI2(X) V_UNION(X, uiVal)
#define V_I4(X) V_UNION(X, lVal)
#define V_UI4(X) V_UNION(X, ulVal)
#define V_I8(X) V_UNION(X, llVal)
#define V_UI8(X) V_UNION(X, ullVal)
#define V_INT(X) V_UNION(X, intVal)
#define V_UINT(X) V_UNION(X, uintVal)
#define V_R4(X) V_UNION(X, fltVal)
#define V_R8(X) V_UNION(X, dblVal)
#define V_BOOL(X) V_UNION(X, boolVal)
#define V_ERROR(X) V_UNION(X, scode)
#define V_BSTR(X) V_UNION(X, bstrVal)
#define V_BSTRREF(X) V_UNION(X, pbstrVal)
#define V_UNKNOWN(X) V_UNION(X, punkVal)
#define V_DISPATCH(X) V_UNION(X, pdispVal)
#define V_ARRAY(X) V_UNION(X, parray)
#define V_ARRAYREF(X) V_UNION(X, pparray)
#define V_BYREF(X) V_UNION(X, byref)
#define V_VARIANTREF(X) V_UNION(X, pvarVal)
#define V_I4REF(X) V_UNION(X, plVal)

// ---------------------------------------------------------------- dispatch structures
struct DISPPARAMS {
  VARIANTARG* rgvarg;
  DISPID* rgdispidNamedArgs;
  UINT cArgs;
  UINT cNamedArgs;
};

struct EXCEPINFO {
  WORD wCode;
  WORD wReserved;
  BSTR bstrSource;
  BSTR bstrDescription;
  BSTR bstrHelpFile;
  DWORD dwHelpContext;
  void* pvReserved;
  HRESULT(STDMETHODCALLTYPE* pfnDeferredFillIn)(EXCEPINFO*);
  SCODE scode;
};

// ---------------------------------------------------------------- base interfaces
#if defined(__GNUC__)
#define PV_PLATFORM_API __attribute__((visibility("default")))
#else
#define PV_PLATFORM_API
#endif

extern "C" {
PV_PLATFORM_API extern const IID IID_NULL;
PV_PLATFORM_API extern const IID IID_IUnknown;
PV_PLATFORM_API extern const IID IID_IDispatch;
PV_PLATFORM_API extern const IID IID_IClassFactory;
PV_PLATFORM_API extern const IID IID_IEnumVARIANT;
}

struct IUnknown {
  virtual HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppvObject) = 0;
  virtual ULONG STDMETHODCALLTYPE AddRef() = 0;
  virtual ULONG STDMETHODCALLTYPE Release() = 0;
};
typedef IUnknown* LPUNKNOWN;

struct IDispatch : public IUnknown {
  virtual HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* pctinfo) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT iTInfo, LCID lcid, ITypeInfo** ppTInfo) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID riid, LPOLESTR* rgszNames, UINT cNames, LCID lcid,
                                                  DISPID* rgDispId) = 0;
  virtual HRESULT STDMETHODCALLTYPE Invoke(DISPID dispIdMember, REFIID riid, LCID lcid, WORD wFlags,
                                           DISPPARAMS* pDispParams, VARIANT* pVarResult,
                                           EXCEPINFO* pExcepInfo, UINT* puArgErr) = 0;
};
typedef IDispatch* LPDISPATCH;

struct IClassFactory : public IUnknown {
  virtual HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* pUnkOuter, REFIID riid, void** ppvObject) = 0;
  virtual HRESULT STDMETHODCALLTYPE LockServer(BOOL fLock) = 0;
};

// The enumerator that a collection hands out for DISPID_NEWENUM.
struct IEnumVARIANT : public IUnknown {
  virtual HRESULT STDMETHODCALLTYPE Next(ULONG celt, VARIANT* rgVar, ULONG* pCeltFetched) = 0;
  virtual HRESULT STDMETHODCALLTYPE Skip(ULONG celt) = 0;
  virtual HRESULT STDMETHODCALLTYPE Reset() = 0;
  virtual HRESULT STDMETHODCALLTYPE Clone(IEnumVARIANT** ppEnum) = 0;
};

// ---------------------------------------------------------------- functions
// The string, variant and safe-array functions with the platform's contracts.

extern "C" {
PV_PLATFORM_API BSTR SysAllocString(const OLECHAR* psz);
PV_PLATFORM_API BSTR SysAllocStringLen(const OLECHAR* strIn, UINT ui);
PV_PLATFORM_API BSTR SysAllocStringByteLen(const char* psz, UINT len);
PV_PLATFORM_API INT SysReAllocString(BSTR* pbstr, const OLECHAR* psz);
PV_PLATFORM_API INT SysReAllocStringLen(BSTR* pbstr, const OLECHAR* psz, UINT len);
PV_PLATFORM_API void SysFreeString(BSTR bstrString);
PV_PLATFORM_API UINT SysStringLen(BSTR pbstr);
PV_PLATFORM_API UINT SysStringByteLen(BSTR bstr);

PV_PLATFORM_API void VariantInit(VARIANTARG* pvarg);
PV_PLATFORM_API HRESULT VariantClear(VARIANTARG* pvarg);
PV_PLATFORM_API HRESULT VariantCopy(VARIANTARG* pvargDest, const VARIANTARG* pvargSrc);

PV_PLATFORM_API SAFEARRAY* SafeArrayCreate(VARTYPE vt, UINT cDims, SAFEARRAYBOUND* rgsabound);
PV_PLATFORM_API SAFEARRAY* SafeArrayCreateVector(VARTYPE vt, LONG lLbound, ULONG cElements);
PV_PLATFORM_API HRESULT SafeArrayDestroy(SAFEARRAY* psa);
PV_PLATFORM_API HRESULT SafeArrayLock(SAFEARRAY* psa);
PV_PLATFORM_API HRESULT SafeArrayUnlock(SAFEARRAY* psa);
PV_PLATFORM_API HRESULT SafeArrayAccessData(SAFEARRAY* psa, void** ppvData);
PV_PLATFORM_API HRESULT SafeArrayUnaccessData(SAFEARRAY* psa);
PV_PLATFORM_API HRESULT SafeArrayGetLBound(SAFEARRAY* psa, UINT nDim, LONG* plLbound);
PV_PLATFORM_API HRESULT SafeArrayGetUBound(SAFEARRAY* psa, UINT nDim, LONG* plUbound);
PV_PLATFORM_API UINT SafeArrayGetDim(SAFEARRAY* psa);
PV_PLATFORM_API UINT SafeArrayGetElemsize(SAFEARRAY* psa);
PV_PLATFORM_API HRESULT SafeArrayGetVartype(SAFEARRAY* psa, VARTYPE* pvt);
PV_PLATFORM_API HRESULT SafeArrayCopy(SAFEARRAY* psa, SAFEARRAY** ppsaOut);
PV_PLATFORM_API HRESULT SafeArrayPtrOfIndex(SAFEARRAY* psa, LONG* rgIndices, void** ppvData);
PV_PLATFORM_API HRESULT SafeArrayGetElement(SAFEARRAY* psa, LONG* rgIndices, void* pv);
PV_PLATFORM_API HRESULT SafeArrayPutElement(SAFEARRAY* psa, LONG* rgIndices, void* pv);
}

#endif  // _WIN32

#endif  // PARCELVANE_PLATFORM_H
