// Transfer codecs on 50 MB bodies: base64 of binary data (76-column lines),
// quoted-printable of mostly-ASCII text with accented letters and line
// breaks, uuencode of binary data (45-byte lines). Throughput is counted in
// input bytes.
#include <benchmark/benchmark.h>

#include <random>
#include <string>
#include <vector>

#include "src/mime/transfer_codecs.h"

namespace pv {
namespace {

constexpr size_t kBodySize = 50u << 20;

const std::string& BinaryBody() {
  static const std::string body = [] {
    std::mt19937_64 rng(42);
    std::string s(kBodySize, '\0');
    for (size_t i = 0; i + 8 <= s.size(); i += 8) {
      uint64_t v = rng();
      for (int k = 0; k < 8; ++k) s[i + k] = static_cast<char>(v >> (8 * k));
    }
    return s;
  }();
  return body;
}

// Text lines of 40 to 100 characters, about one letter in forty accented
// (Latin-1), some trailing blanks, each line ended by CR LF.
const std::string& TextBody() {
  static const std::string body = [] {
    static const char* const kWords[] = {"the",   "message",  "caf\xE9", "r\xE9sum\xE9", "of",   "part",
                                         "to",    "na\xEFve", "and",     "body",         "mail", "header",
                                         "field", "\xE0",     "value",   "with",         "=",    "line"};
    std::mt19937 rng(7);
    std::string s;
    s.reserve(kBodySize + 128);
    size_t lineStart = 0;
    size_t lineLength = 40 + rng() % 60;
    while (s.size() < kBodySize) {
      s += kWords[rng() % (sizeof(kWords) / sizeof(kWords[0]))];
      s += ' ';
      if (s.size() - lineStart >= lineLength) {
        if (rng() % 4 != 0) s.pop_back();
        s += "\r\n";
        lineStart = s.size();
        lineLength = 40 + rng() % 60;
      }
    }
    s.resize(kBodySize);
    return s;
  }();
  return body;
}

template <class Encode>
void BM_Encode(benchmark::State& state, const std::string& body, Encode encode) {
  std::string out;
  for (auto _ : state) {
    bool ok = encode(body, &out);
    benchmark::DoNotOptimize(ok);
    benchmark::DoNotOptimize(out.data());
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(body.size()));
}

template <class Decode>
void BM_Decode(benchmark::State& state, const std::string& encoded, Decode decode) {
  std::vector<char> buffer(encoded.size());
  for (auto _ : state) {
    size_t produced = decode(encoded, buffer.data());
    benchmark::DoNotOptimize(produced);
    benchmark::DoNotOptimize(buffer.data());
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(encoded.size()));
}

void BM_Base64Encode(benchmark::State& state) { BM_Encode(state, BinaryBody(), EncodeBase64); }

void BM_Base64Decode(benchmark::State& state) {
  std::string encoded;
  EncodeBase64(BinaryBody(), &encoded);
  BM_Decode(state, encoded, DecodeBase64);
}

void BM_QuotedPrintableEncode(benchmark::State& state) {
  BM_Encode(state, TextBody(), EncodeQuotedPrintable);
}

void BM_QuotedPrintableDecode(benchmark::State& state) {
  std::string encoded;
  EncodeQuotedPrintable(TextBody(), &encoded);
  BM_Decode(state, encoded, DecodeQuotedPrintable);
}

void BM_UuencodeEncode(benchmark::State& state) {
  BM_Encode(state, BinaryBody(),
            [](std::string_view body, std::string* out) { return EncodeUuencode(body, "body.bin", out); });
}

void BM_UuencodeDecode(benchmark::State& state) {
  std::string encoded;
  EncodeUuencode(BinaryBody(), "body.bin", &encoded);
  BM_Decode(state, encoded, [](std::string_view in, char* out) {
    size_t produced = 0;
    DecodeUuencode(in, out, &produced);
    return produced;
  });
}

// The whole decode as the part decoder runs it: zero-filled work buffer,
// decode, trim.
void BM_Base64DecodeTransferBody(benchmark::State& state) {
  std::string encoded;
  EncodeBase64(BinaryBody(), &encoded);
  std::string out;
  for (auto _ : state) {
    bool ok = DecodeTransferBody(kTransferBase64, encoded, &out);
    benchmark::DoNotOptimize(ok);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(encoded.size()));
}

void BM_SevenBitShare(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(SevenBitShare(TextBody()));
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(TextBody().size()));
}

BENCHMARK(BM_Base64Encode)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Base64Decode)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Base64DecodeTransferBody)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_QuotedPrintableEncode)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_QuotedPrintableDecode)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_UuencodeEncode)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_UuencodeDecode)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_SevenBitShare)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace pv
