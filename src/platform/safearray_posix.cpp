// One- and many-dimensional safe arrays off Windows, with the platform's
// contracts: bounds stored last dimension first, a lock count that blocks
// destruction, the element type kept in front of the descriptor, and deep
// copies of strings, interfaces and variants.
#include <cstdlib>
#include <cstring>
#include <new>

#include "parcelvane/platform.h"

namespace {

// The element type lives in the four bytes in front of the descriptor; the
// block starts 16 bytes before it so the descriptor stays well aligned.
constexpr size_t kHeader = 16;

size_t DescriptorSize(UINT dims) { return sizeof(SAFEARRAY) + (dims - 1) * sizeof(SAFEARRAYBOUND); }

VARTYPE* VartypeSlot(SAFEARRAY* psa) {
  return reinterpret_cast<VARTYPE*>(reinterpret_cast<char*>(psa) - sizeof(uint32_t));
}

ULONG ElementSize(VARTYPE vt) {
  switch (vt) {
    case VT_I1:
    case VT_UI1:
      return 1;
    case VT_I2:
    case VT_UI2:
    case VT_BOOL:
      return 2;
    case VT_I4:
    case VT_UI4:
    case VT_INT:
    case VT_UINT:
    case VT_R4:
    case VT_ERROR:
      return 4;
    case VT_I8:
    case VT_UI8:
    case VT_R8:
    case VT_CY:
    case VT_DATE:
      return 8;
    case VT_BSTR:
    case VT_UNKNOWN:
    case VT_DISPATCH:
      return sizeof(void*);
    case VT_DECIMAL:
      return sizeof(DECIMAL);
    case VT_VARIANT:
      return sizeof(VARIANT);
    default:
      return 0;
  }
}

USHORT FeaturesFor(VARTYPE vt) {
  switch (vt) {
    case VT_BSTR:
      return FADF_BSTR;
    case VT_UNKNOWN:
      return FADF_UNKNOWN;
    case VT_DISPATCH:
      return FADF_DISPATCH;
    case VT_VARIANT:
      return FADF_VARIANT;
    default:
      return 0;
  }
}

// Number of elements over all dimensions, or false when it overflows.
bool CountElements(const SAFEARRAY* psa, size_t* count) {
  size_t n = 1;
  for (USHORT d = 0; d < psa->cDims; ++d) {
    size_t e = psa->rgsabound[d].cElements;
    if (e != 0 && n > SIZE_MAX / e) return false;
    n *= e;
  }
  *count = n;
  return true;
}

SAFEARRAY* AllocateDescriptor(UINT dims) {
  char* block = static_cast<char*>(std::calloc(1, kHeader + DescriptorSize(dims)));
  if (block == nullptr) return nullptr;
  return reinterpret_cast<SAFEARRAY*>(block + kHeader);
}

void FreeDescriptor(SAFEARRAY* psa) { std::free(reinterpret_cast<char*>(psa) - kHeader); }

void ReleaseElements(SAFEARRAY* psa, size_t count) {
  if (psa->pvData == nullptr) return;
  if (psa->fFeatures & FADF_BSTR) {
    BSTR* items = static_cast<BSTR*>(psa->pvData);
    for (size_t i = 0; i < count; ++i) SysFreeString(items[i]);
  } else if (psa->fFeatures & (FADF_UNKNOWN | FADF_DISPATCH)) {
    IUnknown** items = static_cast<IUnknown**>(psa->pvData);
    for (size_t i = 0; i < count; ++i) {
      if (items[i] != nullptr) items[i]->Release();
    }
  } else if (psa->fFeatures & FADF_VARIANT) {
    VARIANT* items = static_cast<VARIANT*>(psa->pvData);
    for (size_t i = 0; i < count; ++i) VariantClear(&items[i]);
  }
}

HRESULT CopyElements(SAFEARRAY* from, SAFEARRAY* to, size_t count) {
  if (from->fFeatures & FADF_BSTR) {
    BSTR* src = static_cast<BSTR*>(from->pvData);
    BSTR* dst = static_cast<BSTR*>(to->pvData);
    for (size_t i = 0; i < count; ++i) {
      if (src[i] == nullptr) continue;
      dst[i] = SysAllocStringByteLen(reinterpret_cast<const char*>(src[i]), SysStringByteLen(src[i]));
      if (dst[i] == nullptr) return E_OUTOFMEMORY;
    }
    return S_OK;
  }
  if (from->fFeatures & (FADF_UNKNOWN | FADF_DISPATCH)) {
    IUnknown** src = static_cast<IUnknown**>(from->pvData);
    IUnknown** dst = static_cast<IUnknown**>(to->pvData);
    for (size_t i = 0; i < count; ++i) {
      dst[i] = src[i];
      if (dst[i] != nullptr) dst[i]->AddRef();
    }
    return S_OK;
  }
  if (from->fFeatures & FADF_VARIANT) {
    VARIANT* src = static_cast<VARIANT*>(from->pvData);
    VARIANT* dst = static_cast<VARIANT*>(to->pvData);
    for (size_t i = 0; i < count; ++i) {
      HRESULT hr = VariantCopy(&dst[i], &src[i]);
      if (FAILED(hr)) return hr;
    }
    return S_OK;
  }
  std::memcpy(to->pvData, from->pvData, count * from->cbElements);
  return S_OK;
}

// Offset of an element from the indexes given (first dimension first).
HRESULT ElementOffset(SAFEARRAY* psa, const LONG* indices, size_t* offset) {
  size_t flat = 0;
  for (UINT i = 0; i < psa->cDims; ++i) {
    // Bounds are stored last dimension first.
    const SAFEARRAYBOUND& b = psa->rgsabound[psa->cDims - 1 - i];
    int64_t rel = static_cast<int64_t>(indices[i]) - b.lLbound;
    if (rel < 0 || rel >= static_cast<int64_t>(b.cElements)) return DISP_E_BADINDEX;
    flat = flat * b.cElements + static_cast<size_t>(rel);
  }
  *offset = flat * psa->cbElements;
  return S_OK;
}

}  // namespace

extern "C" {

SAFEARRAY* SafeArrayCreate(VARTYPE vt, UINT cDims, SAFEARRAYBOUND* rgsabound) {
  if (cDims == 0 || cDims > 0xFFFF || rgsabound == nullptr) return nullptr;
  ULONG size = ElementSize(vt);
  if (size == 0) return nullptr;
  SAFEARRAY* psa = AllocateDescriptor(cDims);
  if (psa == nullptr) return nullptr;
  psa->cDims = static_cast<USHORT>(cDims);
  psa->fFeatures = static_cast<USHORT>(FADF_HAVEVARTYPE | FeaturesFor(vt));
  psa->cbElements = size;
  *VartypeSlot(psa) = vt;
  for (UINT d = 0; d < cDims; ++d) psa->rgsabound[cDims - 1 - d] = rgsabound[d];
  size_t count = 0;
  if (!CountElements(psa, &count) || (count != 0 && count > SIZE_MAX / size)) {
    FreeDescriptor(psa);
    return nullptr;
  }
  // Zeroed storage: null strings, null interfaces, empty variants.
  psa->pvData = std::calloc(count == 0 ? 1 : count, size);
  if (psa->pvData == nullptr) {
    FreeDescriptor(psa);
    return nullptr;
  }
  return psa;
}

SAFEARRAY* SafeArrayCreateVector(VARTYPE vt, LONG lLbound, ULONG cElements) {
  SAFEARRAYBOUND bound{cElements, lLbound};
  return SafeArrayCreate(vt, 1, &bound);
}

HRESULT SafeArrayDestroy(SAFEARRAY* psa) {
  if (psa == nullptr) return S_OK;
  if (psa->cLocks > 0) return DISP_E_ARRAYISLOCKED;
  size_t count = 0;
  CountElements(psa, &count);
  ReleaseElements(psa, count);
  std::free(psa->pvData);
  FreeDescriptor(psa);
  return S_OK;
}

HRESULT SafeArrayLock(SAFEARRAY* psa) {
  if (psa == nullptr) return E_INVALIDARG;
  if (psa->cLocks >= 0xFFFF) return E_UNEXPECTED;
  ++psa->cLocks;
  return S_OK;
}

HRESULT SafeArrayUnlock(SAFEARRAY* psa) {
  if (psa == nullptr) return E_INVALIDARG;
  if (psa->cLocks == 0) return E_UNEXPECTED;
  --psa->cLocks;
  return S_OK;
}

HRESULT SafeArrayAccessData(SAFEARRAY* psa, void** ppvData) {
  if (psa == nullptr || ppvData == nullptr) return E_INVALIDARG;
  HRESULT hr = SafeArrayLock(psa);
  if (FAILED(hr)) {
    *ppvData = nullptr;
    return hr;
  }
  *ppvData = psa->pvData;
  return S_OK;
}

HRESULT SafeArrayUnaccessData(SAFEARRAY* psa) { return SafeArrayUnlock(psa); }

HRESULT SafeArrayGetLBound(SAFEARRAY* psa, UINT nDim, LONG* plLbound) {
  if (psa == nullptr || plLbound == nullptr) return E_INVALIDARG;
  if (nDim == 0 || nDim > psa->cDims) return DISP_E_BADINDEX;
  *plLbound = psa->rgsabound[psa->cDims - nDim].lLbound;
  return S_OK;
}

HRESULT SafeArrayGetUBound(SAFEARRAY* psa, UINT nDim, LONG* plUbound) {
  if (psa == nullptr || plUbound == nullptr) return E_INVALIDARG;
  if (nDim == 0 || nDim > psa->cDims) return DISP_E_BADINDEX;
  const SAFEARRAYBOUND& b = psa->rgsabound[psa->cDims - nDim];
  *plUbound = static_cast<LONG>(static_cast<int64_t>(b.lLbound) + static_cast<int64_t>(b.cElements) - 1);
  return S_OK;
}

UINT SafeArrayGetDim(SAFEARRAY* psa) { return psa == nullptr ? 0 : psa->cDims; }

UINT SafeArrayGetElemsize(SAFEARRAY* psa) { return psa == nullptr ? 0 : psa->cbElements; }

HRESULT SafeArrayGetVartype(SAFEARRAY* psa, VARTYPE* pvt) {
  if (psa == nullptr || pvt == nullptr) return E_INVALIDARG;
  if (psa->fFeatures & FADF_HAVEVARTYPE) {
    *pvt = *VartypeSlot(psa);
  } else if (psa->fFeatures & FADF_BSTR) {
    *pvt = VT_BSTR;
  } else if (psa->fFeatures & FADF_UNKNOWN) {
    *pvt = VT_UNKNOWN;
  } else if (psa->fFeatures & FADF_DISPATCH) {
    *pvt = VT_DISPATCH;
  } else if (psa->fFeatures & FADF_VARIANT) {
    *pvt = VT_VARIANT;
  } else {
    return E_INVALIDARG;
  }
  return S_OK;
}

HRESULT SafeArrayCopy(SAFEARRAY* psa, SAFEARRAY** ppsaOut) {
  if (ppsaOut == nullptr) return E_INVALIDARG;
  *ppsaOut = nullptr;
  if (psa == nullptr) return S_OK;
  if (psa->cDims == 0) return E_INVALIDARG;
  size_t count = 0;
  if (!CountElements(psa, &count) || (count != 0 && count > SIZE_MAX / psa->cbElements)) {
    return E_OUTOFMEMORY;
  }
  SAFEARRAY* copy = AllocateDescriptor(psa->cDims);
  if (copy == nullptr) return E_OUTOFMEMORY;
  std::memcpy(copy, psa, DescriptorSize(psa->cDims));
  *VartypeSlot(copy) = *VartypeSlot(psa);
  copy->cLocks = 0;
  // A copy owns its storage whatever the source's storage flags said.
  copy->fFeatures = static_cast<USHORT>(psa->fFeatures & ~(FADF_AUTO | FADF_STATIC | FADF_EMBEDDED));
  copy->pvData = std::calloc(count == 0 ? 1 : count, psa->cbElements);
  if (copy->pvData == nullptr) {
    FreeDescriptor(copy);
    return E_OUTOFMEMORY;
  }
  if (count != 0 && psa->pvData != nullptr) {
    HRESULT hr = CopyElements(psa, copy, count);
    if (FAILED(hr)) {
      SafeArrayDestroy(copy);
      return hr;
    }
  }
  *ppsaOut = copy;
  return S_OK;
}

HRESULT SafeArrayPtrOfIndex(SAFEARRAY* psa, LONG* rgIndices, void** ppvData) {
  if (psa == nullptr || rgIndices == nullptr || ppvData == nullptr) return E_INVALIDARG;
  size_t offset = 0;
  HRESULT hr = ElementOffset(psa, rgIndices, &offset);
  if (FAILED(hr)) return hr;
  *ppvData = static_cast<char*>(psa->pvData) + offset;
  return S_OK;
}

HRESULT SafeArrayGetElement(SAFEARRAY* psa, LONG* rgIndices, void* pv) {
  if (psa == nullptr || rgIndices == nullptr || pv == nullptr) return E_INVALIDARG;
  void* item = nullptr;
  HRESULT hr = SafeArrayPtrOfIndex(psa, rgIndices, &item);
  if (FAILED(hr)) return hr;
  if (psa->fFeatures & FADF_BSTR) {
    BSTR src = *static_cast<BSTR*>(item);
    BSTR copy = nullptr;
    if (src != nullptr) {
      copy = SysAllocStringByteLen(reinterpret_cast<const char*>(src), SysStringByteLen(src));
      if (copy == nullptr) return E_OUTOFMEMORY;
    }
    *static_cast<BSTR*>(pv) = copy;
  } else if (psa->fFeatures & (FADF_UNKNOWN | FADF_DISPATCH)) {
    IUnknown* src = *static_cast<IUnknown**>(item);
    if (src != nullptr) src->AddRef();
    *static_cast<IUnknown**>(pv) = src;
  } else if (psa->fFeatures & FADF_VARIANT) {
    VARIANT* out = static_cast<VARIANT*>(pv);
    VariantInit(out);
    return VariantCopy(out, static_cast<VARIANT*>(item));
  } else {
    std::memcpy(pv, item, psa->cbElements);
  }
  return S_OK;
}

HRESULT SafeArrayPutElement(SAFEARRAY* psa, LONG* rgIndices, void* pv) {
  if (psa == nullptr || rgIndices == nullptr) return E_INVALIDARG;
  void* item = nullptr;
  HRESULT hr = SafeArrayPtrOfIndex(psa, rgIndices, &item);
  if (FAILED(hr)) return hr;
  if (psa->fFeatures & FADF_BSTR) {
    BSTR src = static_cast<BSTR>(pv);
    BSTR copy = nullptr;
    if (src != nullptr) {
      copy = SysAllocStringByteLen(reinterpret_cast<const char*>(src), SysStringByteLen(src));
      if (copy == nullptr) return E_OUTOFMEMORY;
    }
    SysFreeString(*static_cast<BSTR*>(item));
    *static_cast<BSTR*>(item) = copy;
  } else if (psa->fFeatures & (FADF_UNKNOWN | FADF_DISPATCH)) {
    IUnknown* src = static_cast<IUnknown*>(pv);
    if (src != nullptr) src->AddRef();
    IUnknown* old = *static_cast<IUnknown**>(item);
    *static_cast<IUnknown**>(item) = src;
    if (old != nullptr) old->Release();
  } else if (psa->fFeatures & FADF_VARIANT) {
    return VariantCopy(static_cast<VARIANT*>(item), static_cast<VARIANT*>(pv));
  } else {
    if (pv == nullptr) return E_INVALIDARG;
    std::memcpy(item, pv, psa->cbElements);
  }
  return S_OK;
}

}  // extern "C"
