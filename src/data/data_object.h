// EMSDataObject: the byte buffer through which every object exchanges
// message bytes. One immutable array and a span on it (Position, Length).
// Clones share the array, so cloning a large message is O(1).
#ifndef PARCELVANE_SRC_DATA_DATA_OBJECT_H
#define PARCELVANE_SRC_DATA_DATA_OBJECT_H

#include <memory>

#include "src/data/byte_store.h"
#include "src/com/com_object.h"

namespace pv {

class DataObject final : public ComObject<DataObject, IEMSDataObject> {
 public:
  explicit DataObject(IUnknown* outer) : ComObject(outer) {}

  // IEMSDataObject in plain form: the generated producer calls each of these
  // after its null checks, inside Guard.
  HRESULT DoClone(IEMSDataObject** ppVal);
  HRESULT DoCopyFrom(IEMSDataObject* pData);
  HRESULT DoCreateDataArray(VARIANT vData, LONG nCodePage);
  HRESULT DoExtractBlockAsData(IEMSDataObject** ppVal);
  HRESULT GetData(VARIANT* pVal);
  HRESULT PutData(VARIANT newVal);
  HRESULT GetDataSize(ULONG* pVal);
  HRESULT GetPosition(ULONG* pVal);
  HRESULT PutPosition(ULONG newVal);
  HRESULT GetLength(ULONG* pVal);
  HRESULT PutLength(ULONG newVal);
  // Hand-written: exhausted memory is reported as E_INVALIDARG, not E_OUTOFMEMORY.
  HRESULT STDMETHODCALLTYPE CreateEmptyData(ULONG nSize) override;
  // Hand-written: exhausted memory is reported as E_INVALIDARG, not E_OUTOFMEMORY.
  HRESULT STDMETHODCALLTYPE CreateDataFromFile(BSTR bszFileName) override;

  // The library's own access, without the copies the interface makes.
  const std::shared_ptr<const ByteStore>& store() const { return store_; }
  ULONG position() const { return position_; }
  ULONG length() const { return length_; }
  ULONG dataSize() const { return dataSize_; }
  // A new data object over a host's bytes, without a copy (the module's
  // zero-copy entry). On failure nothing refers to the bytes and `release`
  // is not called.
  static HRESULT CreateOver(const void* bytes, ULONG size, ByteStore::ReleaseFunction release, void* context,
                            IEMSDataObject** result);
  // Storing an array: the span covers all of it.
  void SetStore(std::shared_ptr<const ByteStore> store);
  // The span setters, with the interface's clamping.
  void SetPosition(ULONG position);
  void SetLength(ULONG length);

 private:
  HRESULT CreateFromUtf16(SAFEARRAY* array, LONG codePage);

  std::shared_ptr<const ByteStore> store_;
  ULONG dataSize_ = 0;
  ULONG position_ = 0;
  ULONG length_ = 0;
};

}  // namespace pv

#endif  // PARCELVANE_SRC_DATA_DATA_OBJECT_H
