#include "src/data/data_access.h"

#include <algorithm>

#include "src/data/data_object.h"

namespace pv {

std::string_view DataBytes::Span() const {
  size_t total = size();
  size_t begin = std::min<size_t>(position, total);
  size_t end = std::min<size_t>(static_cast<size_t>(position) + length, total);
  return std::string_view(reinterpret_cast<const char*>(data()) + begin, end - begin);
}

HRESULT ReadDataBytes(IEMSDataObject* object, DataBytes* out) {
  if (object == nullptr) return E_POINTER;
  *out = DataBytes();
  if (ComPtr<DataObject> own = ImplOf<DataObject>(object)) {
    if (!own->store() || !own->store()->isByteArray()) return E_FAIL;
    out->store = own->store();
    out->position = own->position();
    out->length = own->length();
    out->dataSize = own->dataSize();
    out->fromOwnObject = true;
    return S_OK;
  }
  VARIANT data;
  VariantInit(&data);
  HRESULT hr = object->get_Data(&data);
  if (FAILED(hr) || data.vt != (VT_ARRAY | VT_UI1) || data.parray == nullptr) {
    VariantClear(&data);
    return E_FAIL;
  }
  std::shared_ptr<const ByteStore> store;
  hr = ByteStore::FromArray(data.parray, &store);
  VariantClear(&data);
  if (FAILED(hr)) return E_FAIL;
  out->store = std::move(store);
  out->dataSize = out->store->elementCount();
  object->get_Position(&out->position);
  object->get_Length(&out->length);
  return S_OK;
}

HRESULT MakeDataObject(std::string bytes, ComPtr<IEMSDataObject>* out) {
  ComPtr<DataObject> object;
  HRESULT hr = MakeObject(&object);
  if (FAILED(hr)) return hr;
  object->SetStore(ByteStore::FromBytes(std::move(bytes)));
  *out = ComPtr<IEMSDataObject>(object.get());
  return S_OK;
}

HRESULT CloneDataSpan(IEMSDataObject* source, ULONG position, ULONG length, ComPtr<IEMSDataObject>* out) {
  if (source == nullptr) return E_POINTER;
  HRESULT hr = source->Clone(out->put());
  if (FAILED(hr)) return hr;
  if (!*out) return E_FAIL;
  (*out)->put_Position(position);
  (*out)->put_Length(length);
  return S_OK;
}

}  // namespace pv
