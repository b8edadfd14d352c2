// Random sequences of data-object operations: stores, span setters in any
// order, clones, copies and extracts. Every read must stay inside the
// buffer whatever span the setters leave behind.
#include <cstddef>
#include <cstdint>
#include <string>

#include "src/data/data_access.h"
#include "src/data/data_object.h"

namespace {

class Reader {
 public:
  Reader(const uint8_t* data, size_t size) : p_(data), end_(data + size) {}
  bool done() const { return p_ >= end_; }
  uint8_t Byte() { return done() ? 0 : *p_++; }
  uint32_t Word() {
    uint32_t v = 0;
    for (int i = 0; i < 4; ++i) v = (v << 8) | Byte();
    return v;
  }
  // A small number most of the time, any 32-bit value sometimes.
  uint32_t Number() { return (Byte() & 1) ? Word() : Byte(); }

 private:
  const uint8_t* p_;
  const uint8_t* end_;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace pv;
  Reader in(data, size);
  ComPtr<IEMSDataObject> objects[4];
  for (auto& o : objects) {
    ComPtr<DataObject> made;
    if (FAILED(MakeObject(&made))) return 0;
    o = ComPtr<IEMSDataObject>(made.get());
  }
  while (!in.done()) {
    uint8_t op = in.Byte();
    IEMSDataObject* a = objects[op & 3].get();
    IEMSDataObject* b = objects[(op >> 2) & 3].get();
    switch ((op >> 4) % 9) {
      case 0: {
        std::string bytes(in.Byte(), '\0');
        for (char& c : bytes) c = static_cast<char>(in.Byte());
        ComPtr<IEMSDataObject> fresh;
        MakeDataObject(bytes, &fresh);
        a->CopyFrom(fresh.get());
        break;
      }
      case 1:
        a->put_Position(in.Number());
        break;
      case 2:
        a->put_Length(in.Number());
        break;
      case 3: {
        ComPtr<IEMSDataObject> clone;
        if (SUCCEEDED(a->Clone(clone.put()))) objects[(op >> 2) & 3] = clone;
        break;
      }
      case 4:
        a->CopyFrom(b);
        break;
      case 5: {
        ComPtr<IEMSDataObject> block;
        if (SUCCEEDED(a->ExtractBlockAsData(block.put()))) {
          DataBytes view;
          ReadDataBytes(block.get(), &view);
        }
        break;
      }
      case 6: {
        DataBytes view;
        if (SUCCEEDED(ReadDataBytes(a, &view))) {
          std::string_view span = view.Span();
          volatile char sink = span.empty() ? 0 : span[span.size() - 1];
          (void)sink;
        }
        break;
      }
      case 7:
        a->CreateEmptyData(in.Byte());
        break;
      default: {
        VARIANT v;
        VariantInit(&v);
        a->get_Data(&v);
        VariantClear(&v);
        break;
      }
    }
  }
  return 0;
}
