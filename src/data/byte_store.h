// The immutable array behind a data object. Every store replaces the whole
// array, so clones share one store and the copy semantics of the data
// object hold without copying bytes.
#ifndef PARCELVANE_SRC_DATA_BYTE_STORE_H
#define PARCELVANE_SRC_DATA_BYTE_STORE_H

#include <cstdint>
#include <memory>
#include <string>

#include "parcelvane/platform.h"

namespace pv {

class ByteStore {
 public:
  ~ByteStore();
  ByteStore(const ByteStore&) = delete;
  ByteStore& operator=(const ByteStore&) = delete;

  // A byte array (element type 17) holding `bytes`, without copying them.
  static std::shared_ptr<const ByteStore> FromBytes(std::string bytes);

  // A byte array over `size` bytes that the host owns, without copying
  // them: `release(context)` runs once when the last holder of the store is
  // gone (a null `release` is never called). The host keeps the bytes
  // unchanged until then.
  using ReleaseFunction = void (*)(void* context);
  static std::shared_ptr<const ByteStore> Over(const void* bytes, ULONG size, ReleaseFunction release,
                                               void* context);

  // A deep copy of a safe array of any element type and shape. Fails with
  // E_OUTOFMEMORY or E_INVALIDARG (an array without storage).
  static HRESULT FromArray(SAFEARRAY* array, std::shared_ptr<const ByteStore>* out);

  VARTYPE elementType() const { return vt_; }
  // Elements of the first dimension: the data object's DataSize.
  ULONG elementCount() const { return count_; }
  // The raw element storage, all dimensions.
  const uint8_t* bytes() const { return bytes_; }
  size_t byteSize() const { return byteSize_; }
  bool isByteArray() const { return vt_ == VT_UI1; }

  // A new safe array with a copy of the elements.
  HRESULT CopyToArray(SAFEARRAY** out) const;

 private:
  ByteStore() = default;

  VARTYPE vt_ = VT_UI1;
  ULONG count_ = 0;
  LONG lowerBound_ = 0;
  // Plain one-dimensional arrays keep their elements here...
  std::string owned_;
  // ...all others keep a copy of the whole safe array.
  SAFEARRAY* array_ = nullptr;
  const uint8_t* bytes_ = nullptr;
  size_t byteSize_ = 0;
  // Borrowed bytes: handed back to their owner at destruction.
  ReleaseFunction release_ = nullptr;
  void* releaseContext_ = nullptr;
};

}  // namespace pv

#endif  // PARCELVANE_SRC_DATA_BYTE_STORE_H
