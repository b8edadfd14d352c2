// The message object: parse, walk and decode the team's corpus of real
// messages (when the shared folder is present), a 100 MB message with its
// peak memory, and the uuencode scan of a 50 MB plain body full of "begin"
// words that are not blocks.
//
// Peak memory is the process's peak resident set (VmHWM), reset before the
// measured step through /proc/self/clear_refs; "peak_over_input" is that
// peak less the resident set before the step, divided by the input size.
#include <benchmark/benchmark.h>
#include <dirent.h>

#include <cstdio>
#include <cstring>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "parcelvane/parcelvane.h"
#include "src/data/data_access.h"
#include "src/platform/strings.h"
#include "src/com/class_instance.h"

namespace pv {
namespace {

// ---------------------------------------------------------------- resident memory
long StatusKb(const char* key) {
  std::ifstream status("/proc/self/status");
  std::string line;
  size_t keyLength = std::strlen(key);
  while (std::getline(status, line)) {
    if (line.compare(0, keyLength, key) == 0) return std::atol(line.c_str() + keyLength);
  }
  return -1;
}

void ResetPeak() {
  if (std::FILE* f = std::fopen("/proc/self/clear_refs", "w")) {
    std::fputs("5", f);
    std::fclose(f);
  }
}

// ---------------------------------------------------------------- messages
ComPtr<IEMSMessageParser> NewMessage() {
  ComPtr<IEMSMessageParser> message;
  CreateClassInstance(CLSID_EMSMessageParser, &message);
  return message;
}

std::vector<std::string> CorpusMessages() {
  std::vector<std::string> messages;
  std::string dir = std::string(PARCELVANE_SHARED_DIR) + "/corpus";
  DIR* d = opendir(dir.c_str());
  if (d == nullptr) return messages;
  while (dirent* entry = readdir(d)) {
    std::string name = entry->d_name;
    if (name.size() < 4 || name.compare(name.size() - 4, 4, ".eml") != 0) continue;
    std::ifstream in(dir + "/" + name, std::ios::binary);
    std::ostringstream bytes;
    bytes << in.rdbuf();
    messages.push_back(bytes.str());
  }
  closedir(d);
  return messages;
}

// Reads what a mail reader shows: subject, sender, text and HTML bodies,
// and every attachment decoded. Returns the number of decoded bytes.
size_t Walk(IEMSMessageParser* message) {
  size_t decoded = 0;
  Bstr text;
  message->get_Subject(text.put());
  message->get_SenderEmail(text.put());
  message->get_TextBody(text.put());
  decoded += text.view().size();
  text.reset();
  message->get_HTMLBody(text.put());
  decoded += text.view().size();
  ComPtr<IEMSMimeParts> parts;
  message->get_AttachParts(parts.put());
  LONG count = 0;
  if (parts) parts->get_PartsCount(&count);
  for (LONG i = 0; i < count; ++i) {
    ComPtr<IEMSMimePart> part;
    parts->get_Part(i, part.put());
    ComPtr<IEMSDataObject> data;
    if (part) part->get_DecodedBinary(data.put());
    ULONG length = 0;
    if (data) data->get_Length(&length);
    decoded += length;
  }
  return decoded;
}

void BM_MessageCorpusParseWalkDecode(benchmark::State& state) {
  std::vector<std::string> messages = CorpusMessages();
  if (messages.empty()) {
    state.SkipWithError("no shared corpus");
    return;
  }
  std::vector<ComPtr<IEMSDataObject>> data(messages.size());
  size_t total = 0;
  for (size_t i = 0; i < messages.size(); ++i) {
    MakeDataObject(messages[i], &data[i]);
    total += messages[i].size();
  }
  long before = StatusKb("VmRSS:");
  ResetPeak();
  size_t decoded = 0;
  for (auto _ : state) {
    for (const ComPtr<IEMSDataObject>& object : data) {
      ComPtr<IEMSMessageParser> message = NewMessage();
      message->ParseObject(object.get());
      decoded += Walk(message.get());
    }
  }
  benchmark::DoNotOptimize(decoded);
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(total));
  state.counters["messages"] = static_cast<double>(messages.size());
  state.counters["peak_rss_MB"] = static_cast<double>(StatusKb("VmHWM:")) / 1024.0;
  state.counters["peak_over_start_MB"] = static_cast<double>(StatusKb("VmHWM:") - before) / 1024.0;
}
BENCHMARK(BM_MessageCorpusParseWalkDecode)->Unit(benchmark::kMillisecond);

// ---------------------------------------------------------------- one large message
std::string Base64Lines(size_t size) {
  static const char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string out;
  out.reserve(size + size / 38);
  uint32_t state = 1;
  while (out.size() < size) {
    for (int i = 0; i < 76; ++i) {
      state = state * 1103515245u + 12345u;
      out += kAlphabet[(state >> 16) & 63];
    }
    out += "\r\n";
  }
  return out;
}

// A multipart/mixed message: a text part, an HTML part and one large base64
// attachment, about `size` bytes in all.
std::string LargeMimeMessage(size_t size) {
  std::string m =
      "From: Sender <sender@example.com>\r\nTo: rcpt@example.com\r\nSubject: large\r\n"
      "MIME-Version: 1.0\r\nContent-Type: multipart/mixed; boundary=\"b1\"\r\n\r\n"
      "--b1\r\nContent-Type: text/plain; charset=us-ascii\r\n\r\nSee the attachment.\r\n"
      "--b1\r\nContent-Type: text/html; charset=us-ascii\r\n\r\n<p>See the attachment.</p>\r\n"
      "--b1\r\nContent-Type: application/octet-stream\r\nContent-Transfer-Encoding: base64\r\n"
      "Content-Disposition: attachment; filename=\"big.bin\"\r\n\r\n";
  m += Base64Lines(size);
  m += "--b1--\r\n";
  return m;
}

std::string LargePlainMessage(size_t size) {
  std::string m = "From: sender@example.com\r\nSubject: plain\r\n\r\n";
  while (m.size() < size) m += "A line of plain text in a long message, with nothing special in it.\r\n";
  return m;
}

// Times the parse and a walk of the result; the peak is taken over the
// parse alone (the walk's text results are new strings of their own).
void ParseLarge(benchmark::State& state, std::string bytes) {
  size_t size = bytes.size();
  ComPtr<IEMSDataObject> data;
  MakeDataObject(std::move(bytes), &data);
  double overhead = 0;
  double peak = 0;
  for (auto _ : state) {
    ComPtr<IEMSMessageParser> message = NewMessage();
    long before = StatusKb("VmRSS:");
    ResetPeak();
    message->ParseObject(data.get());
    long after = StatusKb("VmHWM:");
    overhead = static_cast<double>(after - before) * 1024.0 / static_cast<double>(size);
    peak = static_cast<double>(after) / 1024.0;
    benchmark::DoNotOptimize(Walk(message.get()));
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(size));
  state.counters["input_MB"] = static_cast<double>(size) / (1024.0 * 1024.0);
  state.counters["peak_rss_MB"] = peak;
  state.counters["parse_peak_over_input"] = overhead;
}

void BM_MessageParse100MBMime(benchmark::State& state) { ParseLarge(state, LargeMimeMessage(100u << 20)); }
BENCHMARK(BM_MessageParse100MBMime)->Unit(benchmark::kMillisecond)->Iterations(3);

void BM_MessageParse100MBPlain(benchmark::State& state) { ParseLarge(state, LargePlainMessage(100u << 20)); }
BENCHMARK(BM_MessageParse100MBPlain)->Unit(benchmark::kMillisecond)->Iterations(3);

// The whole 100 MB message assembled back, and its peak over the parsed state.
void BM_MessageAssemble100MBMime(benchmark::State& state) {
  std::string bytes = LargeMimeMessage(100u << 20);
  size_t size = bytes.size();
  ComPtr<IEMSDataObject> data;
  MakeDataObject(std::move(bytes), &data);
  ComPtr<IEMSMessageParser> message = NewMessage();
  message->ParseObject(data.get());
  double overhead = 0;
  for (auto _ : state) {
    long before = StatusKb("VmRSS:");
    ResetPeak();
    ComPtr<IEMSDataObject> out;
    message->AssembleObject(out.put());
    overhead = static_cast<double>(StatusKb("VmHWM:") - before) * 1024.0 / static_cast<double>(size);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(size));
  state.counters["peak_over_input"] = overhead;
}
BENCHMARK(BM_MessageAssemble100MBMime)->Unit(benchmark::kMillisecond)->Iterations(3);

// ---------------------------------------------------------------- the uuencode scan
// 50 MB of plain text holding 10,000 "begin" words that are not blocks
// (modes with a 7, words like "beginning", blocks without an end marker
// only at the very end): the parse scans it once.
std::string PlainWithFalseBegins(size_t size, int begins) {
  std::string m = "Subject: uu\r\n\r\n";
  const char* kFalse[] = {"begin 755 notes.txt\r\n", "the beginning of a line\r\n", "begin 647 x\r\n",
                          "beginx7y nothing\r\n"};
  size_t every = size / static_cast<size_t>(begins);
  int placed = 0;
  while (m.size() < size) {
    size_t next = m.size() + every;
    while (m.size() < next) m += "The quick brown fox jumps over the lazy dog, but not by a big bit.\r\n";
    if (placed < begins) m += kFalse[placed++ % 4];
  }
  return m;
}

void BM_MessageUuencodeScan50MB(benchmark::State& state) {
  std::string bytes = PlainWithFalseBegins(50u << 20, 10000);
  size_t size = bytes.size();
  ComPtr<IEMSDataObject> data;
  MakeDataObject(std::move(bytes), &data);
  for (auto _ : state) {
    ComPtr<IEMSMessageParser> message = NewMessage();
    HRESULT hr = message->ParseObject(data.get());
    benchmark::DoNotOptimize(hr);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(size));
}
BENCHMARK(BM_MessageUuencodeScan50MB)->Unit(benchmark::kMillisecond);

// The same size with 1,000 real blocks: the conversion, one assembly and a
// second parse.
void BM_MessageUuencodeConvert50MB(benchmark::State& state) {
  std::string m = "Subject: uu\r\n\r\nIntro text.\r\n";
  const std::string line = "M" + std::string(60, '0') + "\r\n";
  int blocks = 0;
  while (m.size() < (50u << 20)) {
    m += "Text before block " + std::to_string(blocks) + ".\r\n";
    m += "begin 644 file" + std::to_string(blocks++) + ".bin\r\n";
    for (int i = 0; i < 800; ++i) m += line;
    m += "`\r\nend\r\n";
  }
  size_t size = m.size();
  ComPtr<IEMSDataObject> data;
  MakeDataObject(std::move(m), &data);
  for (auto _ : state) {
    ComPtr<IEMSMessageParser> message = NewMessage();
    HRESULT hr = message->ParseObject(data.get());
    benchmark::DoNotOptimize(hr);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(size));
  state.counters["blocks"] = blocks;
}
BENCHMARK(BM_MessageUuencodeConvert50MB)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace pv
