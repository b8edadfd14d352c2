// Locale-aware comparison of parameter names: ordered parameter lists
// compare names on every insert and lookup.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <string>
#include <vector>

#include "src/platform/collation.h"
#include "src/platform/strings.h"

namespace pv {
namespace {

std::vector<WString> ParameterNames() {
  std::vector<WString> names;
  for (const char* name : {"charset",    "Charset",       "boundary",      "name",
                           "filename",   "format",        "delsp",         "type",
                           "start",      "name*",         "filename*0*",   "filename*1*",
                           "x-mac-type", "x-mac-creator", "creation-date", "modification-date",
                           "size",       "micalg",        "protocol",      "report-type"}) {
    names.push_back(WidenAscii(name));
  }
  return names;
}

void BM_CompareParameterNames(benchmark::State& state) {
  std::vector<WString> names = ParameterNames();
  size_t i = 0;
  for (auto _ : state) {
    const WString& a = names[i % names.size()];
    const WString& b = names[(i * 7 + 3) % names.size()];
    benchmark::DoNotOptimize(CompareLocale(a, b));
    ++i;
  }
}
BENCHMARK(BM_CompareParameterNames);

// The worst common case: names equal but for case, decided at the last level.
void BM_CompareNamesDifferingInCase(benchmark::State& state) {
  WString a = WidenAscii("content-disposition-filename");
  WString b = WidenAscii("Content-Disposition-Filename");
  for (auto _ : state) benchmark::DoNotOptimize(CompareLocale(a, b));
}
BENCHMARK(BM_CompareNamesDifferingInCase);

void BM_CompareEqualNames(benchmark::State& state) {
  WString a = WidenAscii("filename*0*");
  WString b = a;
  for (auto _ : state) benchmark::DoNotOptimize(CompareLocale(a, b));
}
BENCHMARK(BM_CompareEqualNames);

// Sorting a parameter list the size of a busy Content-Type field.
void BM_SortParameterList(benchmark::State& state) {
  std::vector<WString> names = ParameterNames();
  for (auto _ : state) {
    std::vector<WString> list = names;
    std::sort(list.begin(), list.end(),
              [](const WString& a, const WString& b) { return CompareLocale(a, b) < 0; });
    benchmark::DoNotOptimize(list.data());
  }
}
BENCHMARK(BM_SortParameterList);

// The code-unit comparison, for scale.
void BM_CompareCodeUnitsForScale(benchmark::State& state) {
  std::vector<WString> names = ParameterNames();
  size_t i = 0;
  for (auto _ : state) {
    const WString& a = names[i % names.size()];
    const WString& b = names[(i * 7 + 3) % names.size()];
    benchmark::DoNotOptimize(a.compare(b));
    ++i;
  }
}
BENCHMARK(BM_CompareCodeUnitsForScale);

}  // namespace
}  // namespace pv
