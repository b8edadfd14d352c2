// Data object hot paths: cloning a large buffer and selecting a span (what
// every parser does per part), and filling a buffer from UTF-16 text.
#include <benchmark/benchmark.h>

#include <string>

#include "src/data/data_access.h"
#include "src/data/data_object.h"
#include "src/platform/strings.h"

namespace pv {
namespace {

ComPtr<IEMSDataObject> BufferOf(size_t size) {
  ComPtr<IEMSDataObject> data;
  MakeDataObject(std::string(size, 'x'), &data);
  return data;
}

void BM_CloneAndSpanOn100MB(benchmark::State& state) {
  ComPtr<IEMSDataObject> data = BufferOf(100u << 20);
  ULONG position = 0;
  for (auto _ : state) {
    ComPtr<IEMSDataObject> clone;
    data->Clone(clone.put());
    clone->put_Position(position);
    clone->put_Length(4096);
    benchmark::DoNotOptimize(clone.get());
    position = (position + 4096) % (100u << 20);
  }
}
BENCHMARK(BM_CloneAndSpanOn100MB);

SAFEARRAY* Utf16Array(size_t units) {
  SAFEARRAY* array = SafeArrayCreateVector(VT_UI2, 0, static_cast<ULONG>(units));
  auto* p = static_cast<USHORT*>(array->pvData);
  const char* line =
      "Lorem ipsum dolor sit amet, caf\xE9 cr\xE8me br\xFBl\xE9"
      "e.\r\n";
  size_t n = std::char_traits<char>::length(line);
  for (size_t i = 0; i < units; ++i) p[i] = static_cast<unsigned char>(line[i % n]);
  return array;
}

void BM_CreateDataArrayFromUtf16(benchmark::State& state, UINT codePage) {
  const size_t units = 10u << 20;
  VARIANT v;
  VariantInit(&v);
  v.vt = VT_ARRAY | VT_UI2;
  v.parray = Utf16Array(units);
  ComPtr<IEMSDataObject> data = BufferOf(1);
  for (auto _ : state) {
    HRESULT hr = data->CreateDataArray(v, static_cast<LONG>(codePage));
    benchmark::DoNotOptimize(hr);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(units) * 2);
  VariantClear(&v);
}
BENCHMARK_CAPTURE(BM_CreateDataArrayFromUtf16, ansi_1252, 0)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_CreateDataArrayFromUtf16, utf8, 65001)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace pv
