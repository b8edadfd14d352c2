#include "src/data/data_object.h"

#include <algorithm>

#include "src/data/data_access.h"
#include "src/platform/codepage.h"
#include "src/platform/file.h"
#include "src/com/creators.h"

namespace pv {

HRESULT CreateEMSDataObject(IUnknown* outer, REFIID riid, void** ppv) {
  return CreateInstance<DataObject>(outer, riid, ppv);
}

HRESULT DataObject::CreateOver(const void* bytes, ULONG size, ByteStore::ReleaseFunction release,
                               void* context, IEMSDataObject** result) {
  if (result == nullptr) return E_POINTER;
  *result = nullptr;
  if (bytes == nullptr && size != 0) return E_INVALIDARG;
  ComPtr<DataObject> object;
  HRESULT hr = MakeObject(&object);
  if (FAILED(hr)) return hr;
  std::shared_ptr<const ByteStore> store;
  try {
    store = ByteStore::Over(bytes, size, release, context);
  } catch (const std::bad_alloc&) {
  }
  if (store == nullptr) return E_OUTOFMEMORY;
  object->SetStore(std::move(store));
  *result = object.detach();
  return S_OK;
}

void DataObject::SetStore(std::shared_ptr<const ByteStore> store) {
  store_ = std::move(store);
  dataSize_ = store_ ? store_->elementCount() : 0;
  position_ = 0;
  length_ = dataSize_;
}

// Wrap-around arithmetic is intended: on an empty buffer the position
// becomes 0xFFFFFFFF.
void DataObject::SetPosition(ULONG position) { position_ = position < dataSize_ ? position : dataSize_ - 1; }

void DataObject::SetLength(ULONG length) {
  ULONG end = position_ + length;  // wraps to 32 bits
  length_ = end > dataSize_ ? dataSize_ - position_ : length;
}

HRESULT DataObject::DoClone(IEMSDataObject** ppVal) {
  ComPtr<DataObject> clone;
  HRESULT hr = MakeObject(&clone);
  if (FAILED(hr)) return hr;
  // Data put with this array (a fresh object has none: the put fails and
  // is ignored), then Position put and Length put.
  if (store_) clone->SetStore(store_);
  clone->SetPosition(position_);
  clone->SetLength(length_);
  *ppVal = clone.detach();
  return S_OK;
}

HRESULT DataObject::DoCopyFrom(IEMSDataObject* pData) {
  if (pData == nullptr) return E_POINTER;
  ComPtr<DataObject> source = ImplOf<DataObject>(pData);
  if (source.get() == this) return S_OK;
  if (source) {
    if (source->store_) SetStore(source->store_);
    SetPosition(source->position_);
    SetLength(source->length_);
    return S_OK;
  }
  // Another implementation: through its interface.
  VARIANT data;
  VariantInit(&data);
  pData->get_Data(&data);
  put_Data(data);
  VariantClear(&data);
  ULONG value = 0;
  pData->get_Position(&value);
  SetPosition(value);
  value = 0;
  pData->get_Length(&value);
  SetLength(value);
  return S_OK;
}

HRESULT DataObject::DoCreateDataArray(VARIANT vData, LONG nCodePage) {
  if (!(vData.vt & VT_ARRAY)) return E_INVALIDARG;
  // A by-reference flag stays in the element type: such arrays match
  // neither accepted type.
  VARTYPE element = static_cast<VARTYPE>(vData.vt & ~VT_ARRAY);
  if (element == VT_UI1) {
    put_Data(vData);
    return S_OK;
  }
  if (element == VT_UI2) return CreateFromUtf16(vData.parray, nCodePage);
  return E_FAIL;
}

HRESULT DataObject::CreateFromUtf16(SAFEARRAY* array, LONG codePage) {
  if (array == nullptr) return E_INVALIDARG;
  if (array->pvData == nullptr) return E_FAIL;
  LONG lower = 0;
  LONG upper = -1;
  if (FAILED(SafeArrayGetLBound(array, 1, &lower)) || FAILED(SafeArrayGetUBound(array, 1, &upper))) {
    return E_INVALIDARG;
  }
  int64_t count = static_cast<int64_t>(upper) - lower + 1;
  if (count <= 0) return E_FAIL;
  if (count > INT32_MAX) return E_OUTOFMEMORY;
  const auto* units = static_cast<const OLECHAR*>(array->pvData);
  UINT page = static_cast<UINT>(codePage);
  int size = WideToMultiByte(page, units, static_cast<int>(count), nullptr, 0);
  if (size == 0) return E_FAIL;
  std::string bytes(static_cast<size_t>(size), '\0');
  if (WideToMultiByte(page, units, static_cast<int>(count), bytes.data(), size) != size) return E_OUTOFMEMORY;
  SetStore(ByteStore::FromBytes(std::move(bytes)));
  return S_OK;
}

HRESULT DataObject::CreateEmptyData(ULONG nSize) {
  if (nSize == 0) return E_INVALIDARG;
  // Exhausted memory is reported as E_INVALIDARG here, as the interface says.
  HRESULT hr = Guard([&] {
    SetStore(ByteStore::FromBytes(std::string(nSize, '\0')));
    return S_OK;
  });
  return FAILED(hr) ? E_INVALIDARG : hr;
}

HRESULT DataObject::CreateDataFromFile(BSTR bszFileName) {
  if (bszFileName == nullptr) return E_INVALIDARG;
  HRESULT hr = Guard([&] {
    ReadOnlyFile file;
    if (!file.Open(View(bszFileName))) return E_FAIL;
    uint64_t size = 0;
    if (!file.Size(&size)) return E_FAIL;
    // The length is taken as 32 bits: a multiple of 4 GiB reads as empty.
    auto length = static_cast<uint32_t>(size);
    if (length == 0) return E_FAIL;
    std::string bytes(length, '\0');
    if (file.Read(bytes.data(), length) != length) return E_FAIL;
    SetStore(ByteStore::FromBytes(std::move(bytes)));
    return S_OK;
  });
  // Exhausted memory is reported as E_INVALIDARG here, as the interface says.
  return hr == E_OUTOFMEMORY ? E_INVALIDARG : hr;
}

HRESULT DataObject::DoExtractBlockAsData(IEMSDataObject** ppVal) {
  if (!store_) return E_FAIL;
  // Only what lies inside the buffer is copied, whatever span the setters
  // left behind.
  size_t begin = std::min<size_t>(position_, store_->byteSize());
  size_t end = std::min<size_t>(static_cast<size_t>(position_) + length_, store_->byteSize());
  std::string bytes(reinterpret_cast<const char*>(store_->bytes()) + begin, end - begin);
  ComPtr<DataObject> block;
  HRESULT hr = MakeObject(&block);
  if (FAILED(hr)) return hr;
  block->SetStore(ByteStore::FromBytes(std::move(bytes)));
  *ppVal = block.detach();
  return S_OK;
}

HRESULT DataObject::GetData(VARIANT* pVal) {
  HRESULT hr = VariantClear(pVal);
  if (FAILED(hr)) return hr;
  if (!store_) return S_OK;
  SAFEARRAY* copy = nullptr;
  HRESULT copied = store_->CopyToArray(&copy);
  if (FAILED(copied)) return copied;
  pVal->vt = static_cast<VARTYPE>(VT_ARRAY | store_->elementType());
  pVal->parray = copy;
  return S_OK;
}

HRESULT DataObject::PutData(VARIANT newVal) {
  if (!(newVal.vt & VT_ARRAY)) return E_INVALIDARG;
  SAFEARRAY* array = (newVal.vt & VT_BYREF) ? (newVal.pparray ? *newVal.pparray : nullptr) : newVal.parray;
  std::shared_ptr<const ByteStore> store;
  HRESULT hr = ByteStore::FromArray(array, &store);
  if (FAILED(hr)) return hr;
  SetStore(std::move(store));
  return S_OK;
}

HRESULT DataObject::GetDataSize(ULONG* pVal) {
  *pVal = dataSize_;
  return S_OK;
}

HRESULT DataObject::GetPosition(ULONG* pVal) {
  *pVal = position_;
  return S_OK;
}

HRESULT DataObject::PutPosition(ULONG newVal) {
  SetPosition(newVal);
  return S_OK;
}

HRESULT DataObject::GetLength(ULONG* pVal) {
  *pVal = length_;
  return S_OK;
}

HRESULT DataObject::PutLength(ULONG newVal) {
  SetLength(newVal);
  return S_OK;
}

}  // namespace pv
