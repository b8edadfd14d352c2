#include "src/data/byte_store.h"

#include <cstring>
#include <new>

namespace pv {
namespace {

bool IsPlainElementType(VARTYPE vt) {
  switch (vt) {
    case VT_BSTR:
    case VT_UNKNOWN:
    case VT_DISPATCH:
    case VT_VARIANT:
    case VT_RECORD:
      return false;
    default:
      return true;
  }
}

}  // namespace

ByteStore::~ByteStore() {
  if (array_ != nullptr) SafeArrayDestroy(array_);
  if (release_ != nullptr) release_(releaseContext_);
}

std::shared_ptr<const ByteStore> ByteStore::Over(const void* bytes, ULONG size, ReleaseFunction release,
                                                 void* context) {
  std::shared_ptr<ByteStore> store(new (std::nothrow) ByteStore());
  if (store == nullptr) return nullptr;
  store->vt_ = VT_UI1;
  store->count_ = size;
  store->bytes_ = static_cast<const uint8_t*>(bytes);
  store->byteSize_ = size;
  store->release_ = release;
  store->releaseContext_ = context;
  return store;
}

std::shared_ptr<const ByteStore> ByteStore::FromBytes(std::string bytes) {
  std::shared_ptr<ByteStore> store(new ByteStore());
  store->vt_ = VT_UI1;
  store->owned_ = std::move(bytes);
  store->count_ = static_cast<ULONG>(store->owned_.size());
  store->bytes_ = reinterpret_cast<const uint8_t*>(store->owned_.data());
  store->byteSize_ = store->owned_.size();
  return store;
}

HRESULT ByteStore::FromArray(SAFEARRAY* array, std::shared_ptr<const ByteStore>* out) {
  if (array == nullptr || array->cDims == 0) return E_INVALIDARG;
  VARTYPE vt = VT_EMPTY;
  if (FAILED(SafeArrayGetVartype(array, &vt))) vt = VT_UI1;
  LONG lower = 0;
  LONG upper = -1;
  if (FAILED(SafeArrayGetLBound(array, 1, &lower)) || FAILED(SafeArrayGetUBound(array, 1, &upper))) {
    return E_INVALIDARG;
  }
  std::shared_ptr<ByteStore> store(new (std::nothrow) ByteStore());
  if (store == nullptr) return E_OUTOFMEMORY;
  store->vt_ = vt;
  store->lowerBound_ = lower;
  store->count_ = static_cast<ULONG>(static_cast<int64_t>(upper) - lower + 1);

  if (array->cDims == 1 && IsPlainElementType(vt)) {
    size_t size = static_cast<size_t>(store->count_) * array->cbElements;
    if (size != 0 && array->pvData == nullptr) return E_INVALIDARG;
    store->owned_.assign(static_cast<const char*>(array->pvData), size);
    store->bytes_ = reinterpret_cast<const uint8_t*>(store->owned_.data());
    store->byteSize_ = size;
  } else {
    HRESULT hr = SafeArrayCopy(array, &store->array_);
    if (FAILED(hr)) return hr;
    size_t total = array->cbElements;
    for (USHORT d = 0; d < array->cDims; ++d) total *= array->rgsabound[d].cElements;
    store->bytes_ = static_cast<const uint8_t*>(store->array_->pvData);
    store->byteSize_ = total;
  }
  *out = std::move(store);
  return S_OK;
}

HRESULT ByteStore::CopyToArray(SAFEARRAY** out) const {
  *out = nullptr;
  if (array_ != nullptr) return SafeArrayCopy(array_, out);
  SAFEARRAY* copy = SafeArrayCreateVector(vt_, lowerBound_, count_);
  if (copy == nullptr) return E_OUTOFMEMORY;
  if (byteSize_ != 0) std::memcpy(copy->pvData, bytes_, byteSize_);
  *out = copy;
  return S_OK;
}

}  // namespace pv
