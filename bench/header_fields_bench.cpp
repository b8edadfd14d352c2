// Header-block parsing and assembly at sizes that would show quadratic
// work: one 5 MB field folded over many lines, 100,000 short fields of
// distinct names, and 100,000 occurrences of one name chained into a
// single field. Counters give the cost per field and per byte.
#include <benchmark/benchmark.h>

#include <string>

#include "src/data/data_access.h"
#include "src/headers/message_parameters.h"

namespace pv {
namespace {

std::string LongFoldedField(size_t size) {
  std::string block = "X-Long: ";
  while (block.size() < size) block += "word word word word word word word word word word word word\r\n ";
  block += "end\r\n";
  return block;
}

std::string ManyShortFields(int count, bool oneName) {
  std::string block;
  for (int i = 0; i < count; ++i) {
    block += oneName ? "Received: " : "X-Field-" + std::to_string(i) + ": ";
    block += "value " + std::to_string(i) + "\r\n";
  }
  return block;
}

void ParseBlock(benchmark::State& state, const std::string& block, int fields) {
  ComPtr<IEMSDataObject> data;
  MakeDataObject(block, &data);
  ComPtr<MessageParameters> list;
  MakeObject(&list);
  for (auto _ : state) {
    HRESULT hr = list->ParseParametersObject(data.get());
    benchmark::DoNotOptimize(hr);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(block.size()));
  state.counters["per_field"] =
      benchmark::Counter(static_cast<double>(fields),
                         benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void AssembleBlock(benchmark::State& state, const std::string& block, int fields) {
  ComPtr<IEMSDataObject> data;
  MakeDataObject(block, &data);
  ComPtr<MessageParameters> list;
  MakeObject(&list);
  list->ParseParametersObject(data.get());
  for (auto _ : state) {
    ComPtr<IEMSDataObject> out;
    HRESULT hr = list->AssembleParametersObject(out.put());
    benchmark::DoNotOptimize(hr);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(block.size()));
  state.counters["per_field"] =
      benchmark::Counter(static_cast<double>(fields),
                         benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void BM_ParseOneFoldedField5MB(benchmark::State& state) { ParseBlock(state, LongFoldedField(5u << 20), 1); }
BENCHMARK(BM_ParseOneFoldedField5MB)->Unit(benchmark::kMillisecond);

void BM_ParseShortFields(benchmark::State& state) {
  int count = static_cast<int>(state.range(0));
  ParseBlock(state, ManyShortFields(count, false), count);
}
BENCHMARK(BM_ParseShortFields)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);

void BM_ParseChainedFields(benchmark::State& state) {
  int count = static_cast<int>(state.range(0));
  ParseBlock(state, ManyShortFields(count, true), count);
}
BENCHMARK(BM_ParseChainedFields)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);

void BM_AssembleShortFields100k(benchmark::State& state) {
  AssembleBlock(state, ManyShortFields(100000, false), 100000);
}
BENCHMARK(BM_AssembleShortFields100k)->Unit(benchmark::kMillisecond);

void BM_AssembleOneFoldedField5MB(benchmark::State& state) {
  AssembleBlock(state, LongFoldedField(5u << 20), 1);
}
BENCHMARK(BM_AssembleOneFoldedField5MB)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace pv
