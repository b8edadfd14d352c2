// Header text encoding hot paths: decoding a typical encoded Subject and a
// megabyte of B and Q words, encoding the same text back, and the code-page
// conversions of the pages mail uses most.
#include <benchmark/benchmark.h>

#include <string>

#include "src/headers/header_charset.h"
#include "src/platform/codepage.h"

namespace pv {
namespace {

constexpr char kTypicalSubject[] =
    "=?UTF-8?B?UmU6IEdyw7zDn2UgYXVzIEvDtmxuIOKAkyBkaWUgUmVjaG51bmcgZsO8ciBNw6Ry?=\r\n"
    " =?UTF-8?Q?z_ist_da_=F0=9F=98=80?=";

WString Utf8ToWide(std::string_view utf8) {
  WString wide;
  ToWide(kCodePageUtf8, utf8, &wide);
  return wide;
}

// About a megabyte of mixed Latin, CJK and emoji text, as UTF-16.
WString MegabyteOfText() {
  WString piece = Utf8ToWide(
      "Gr\xC3\xBC\xC3\x9F"
      "e aus K\xC3\xB6ln, caf\xC3\xA9 cr\xC3\xA8me \xE4\xB8\xAD\xE6\x96\x87 \xF0\x9F\x98\x80 ");
  WString text;
  while (text.size() * sizeof(OLECHAR) < (1u << 20)) text += piece;
  return text;
}

// The text as one run of encoded words, unfolded as a header field does.
std::string EncodedRun(LONG encoding) {
  ComPtr<HeaderCharset> cs;
  MakeObject(&cs);
  cs->SetHeaderCodePage(kCodePageUtf8);
  cs->SetDefaultEncoding(encoding);
  WString encoded;
  cs->Encode(MegabyteOfText(), &encoded);
  std::string narrow;
  for (OLECHAR c : encoded) {
    if (c != u'\r' && c != u'\n') narrow.push_back(static_cast<char>(c));
  }
  return narrow;
}

void BM_DecodeTypicalSubject(benchmark::State& state) {
  ComPtr<HeaderCharset> cs;
  MakeObject(&cs);
  WString out;
  for (auto _ : state) {
    cs->Decode(kTypicalSubject, &out);
    benchmark::DoNotOptimize(out.data());
  }
}
BENCHMARK(BM_DecodeTypicalSubject);

void BM_DecodeTypicalSubjectThroughTheInterface(benchmark::State& state) {
  ComPtr<HeaderCharset> cs;
  MakeObject(&cs);
  Bstr in(AnsiToWide(kTypicalSubject));
  for (auto _ : state) {
    Bstr out;
    cs->ParseHeader(in.get(), out.put());
    benchmark::DoNotOptimize(out.get());
  }
}
BENCHMARK(BM_DecodeTypicalSubjectThroughTheInterface);

void BM_DecodeMegabyte(benchmark::State& state, LONG encoding) {
  std::string words = EncodedRun(encoding);
  ComPtr<HeaderCharset> cs;
  MakeObject(&cs);
  WString out;
  for (auto _ : state) {
    cs->Decode(words, &out);
    benchmark::DoNotOptimize(out.data());
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(words.size()));
}
BENCHMARK_CAPTURE(BM_DecodeMegabyte, b_words, kHeaderEncodingB)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_DecodeMegabyte, q_words, kHeaderEncodingQ)->Unit(benchmark::kMillisecond);

void BM_EncodeTypicalSubject(benchmark::State& state, LONG encoding) {
  ComPtr<HeaderCharset> cs;
  MakeObject(&cs);
  WString subject = Utf8ToWide(
      "Re: Gr\xC3\xBC\xC3\x9F"
      "e aus K\xC3\xB6ln \xE2\x80\x93 die Rechnung f\xC3\xBCr M\xC3\xA4rz ist da \xF0\x9F\x98\x80");
  WString out;
  for (auto _ : state) {
    cs->SetHeaderCodePage(kCodePageUtf8);
    cs->SetDefaultEncoding(encoding);
    cs->SetHeaderNameLength(7);
    cs->Encode(subject, &out);
    benchmark::DoNotOptimize(out.data());
  }
}
BENCHMARK_CAPTURE(BM_EncodeTypicalSubject, b, kHeaderEncodingB);
BENCHMARK_CAPTURE(BM_EncodeTypicalSubject, q, kHeaderEncodingQ);
BENCHMARK_CAPTURE(BM_EncodeTypicalSubject, automatic, kHeaderEncodingAuto);

void BM_EncodeMegabyte(benchmark::State& state, LONG codePage, LONG encoding) {
  WString text = MegabyteOfText();
  ComPtr<HeaderCharset> cs;
  MakeObject(&cs);
  WString out;
  for (auto _ : state) {
    cs->SetHeaderCodePage(codePage);
    cs->SetDefaultEncoding(encoding);
    cs->Encode(text, &out);
    benchmark::DoNotOptimize(out.data());
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(text.size() * 2));
}
BENCHMARK_CAPTURE(BM_EncodeMegabyte, utf8_b, 65001, kHeaderEncodingB)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_EncodeMegabyte, utf8_q, 65001, kHeaderEncodingQ)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_EncodeMegabyte, gb2312_b, 936, kHeaderEncodingB)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_EncodeMegabyte, iso2022jp_b, 50220, kHeaderEncodingB)->Unit(benchmark::kMillisecond);

// ---------------------------------------------------------------- conversions
void BM_ToWide(benchmark::State& state, UINT codePage) {
  std::string bytes;
  ToNarrow(codePage, MegabyteOfText(), &bytes);
  WString out;
  for (auto _ : state) {
    ToWide(codePage, bytes, &out);
    benchmark::DoNotOptimize(out.data());
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(bytes.size()));
}

void BM_ToNarrow(benchmark::State& state, UINT codePage) {
  WString text = MegabyteOfText();
  std::string out;
  for (auto _ : state) {
    ToNarrow(codePage, text, &out);
    benchmark::DoNotOptimize(out.data());
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(text.size() * 2));
}

#define PV_CONVERSION_BENCH(name, page)                                    \
  BENCHMARK_CAPTURE(BM_ToWide, name, page)->Unit(benchmark::kMillisecond); \
  BENCHMARK_CAPTURE(BM_ToNarrow, name, page)->Unit(benchmark::kMillisecond);
PV_CONVERSION_BENCH(utf8, 65001)
PV_CONVERSION_BENCH(windows1252, 1252)
PV_CONVERSION_BENCH(iso8859_1, 28591)
PV_CONVERSION_BENCH(iso8859_2, 28592)
PV_CONVERSION_BENCH(windows1251, 1251)
PV_CONVERSION_BENCH(koi8r, 20866)
PV_CONVERSION_BENCH(shift_jis, 932)
PV_CONVERSION_BENCH(gb2312, 936)
PV_CONVERSION_BENCH(big5, 950)
PV_CONVERSION_BENCH(ks_c_5601, 949)
PV_CONVERSION_BENCH(iso2022jp, 50220)
PV_CONVERSION_BENCH(euc_jp, 51932)
#undef PV_CONVERSION_BENCH

}  // namespace
}  // namespace pv
