// How the library reads and makes data objects: directly for its own
// objects (no copy of the buffer), through the interface for others.
#ifndef PARCELVANE_SRC_DATA_DATA_ACCESS_H
#define PARCELVANE_SRC_DATA_DATA_ACCESS_H

#include <memory>
#include <string>
#include <string_view>

#include "src/data/byte_store.h"
#include "src/com/com_ptr.h"

namespace pv {

// A data object's byte array and span, kept alive by the store reference.
struct DataBytes {
  std::shared_ptr<const ByteStore> store;
  ULONG position = 0;
  ULONG length = 0;
  ULONG dataSize = 0;
  // Whether they were read from the library's own data object, whose store
  // they then share (and whose clone fails only for memory).
  bool fromOwnObject = false;

  const uint8_t* data() const { return store ? store->bytes() : nullptr; }
  size_t size() const { return store ? store->byteSize() : 0; }
  // The span [Position, Position + Length), clipped to the buffer so that a
  // span left outside it by the setters can never be read out of bounds.
  std::string_view Span() const;
};

// Reads a data object's array and span. E_POINTER for a null object,
// E_FAIL when it holds no byte array (element type 17) or its elements
// cannot be reached.
HRESULT ReadDataBytes(IEMSDataObject* object, DataBytes* out);

// A new data object holding `bytes` (its span covers all of them), as
// CreateDataArray with a byte array makes it.
HRESULT MakeDataObject(std::string bytes, ComPtr<IEMSDataObject>* out);

// A clone of `source` whose span is then set by Position put and Length
// put, in that order: how parsers select a range of a shared buffer.
HRESULT CloneDataSpan(IEMSDataObject* source, ULONG position, ULONG length, ComPtr<IEMSDataObject>* out);

}  // namespace pv

#endif  // PARCELVANE_SRC_DATA_DATA_ACCESS_H
