// The part tree: parse a 50 MB message with 1,000 base64 attachments
// (throughput, and whether every body shares the parsed buffer), assemble
// it, decode every attachment, search it; and parse, assemble and search a
// message nested 100,000 levels deep.
#include <benchmark/benchmark.h>

#include <random>
#include <string>
#include <vector>

#include "parcelvane/parcelvane.h"
#include "src/data/data_access.h"
#include "src/data/data_object.h"
#include "src/mime/mime_part.h"
#include "src/mime/transfer_codecs.h"
#include "src/com/class_instance.h"

namespace pv {
namespace {

constexpr int kAttachments = 1000;
constexpr size_t kAttachmentBytes = 38000;  // about 50 KB once in base64

// multipart/mixed: a text part, then the attachments.
const std::string& LargeMessage() {
  static const std::string message = [] {
    std::mt19937 random(1);
    std::uniform_int_distribution<int> byte(0, 255);
    std::string raw(kAttachmentBytes, '\0');
    std::string text =
        "From: a@example.com\r\nContent-Type: multipart/mixed; "
        "boundary=\"----=_NextPart_000_0000_01D00000.00000000\"\r\n"
        "\r\nThis is a multi-part message in MIME "
        "format.\r\n\r\n------=_NextPart_000_0000_01D00000.00000000\r\n"
        "Content-Type: text/plain; charset=\"us-ascii\"\r\n\r\nSee the attachments.\r\n";
    std::string encoded;
    for (int i = 0; i < kAttachments; ++i) {
      for (char& c : raw) c = static_cast<char>(byte(random));
      EncodeBase64(raw, &encoded);
      const std::string name = "file" + std::to_string(i) + ".bin";
      text +=
          "\r\n------=_NextPart_000_0000_01D00000.00000000\r\nContent-Type: application/octet-stream; "
          "name=\"" +
          name + "\"\r\nContent-Transfer-Encoding: base64\r\nContent-Disposition: attachment; filename=\"" +
          name + "\"\r\n\r\n" + encoded + "\r\n";
    }
    text += "\r\n------=_NextPart_000_0000_01D00000.00000000--\r\n";
    return text;
  }();
  return message;
}

std::string LevelBoundary(size_t level) {
  std::string digits = std::to_string(level);
  return "b" + std::string(6 - digits.size(), '0') + digits;
}

const std::string& DeepMessage() {
  static const std::string message = [] {
    constexpr size_t kLevels = 100000;
    std::string text;
    for (size_t level = 0; level < kLevels; ++level) {
      const std::string b = LevelBoundary(level);
      text += "Content-Type: multipart/mixed; boundary=\"" + b + "\"\r\n\r\n--" + b + "\r\n";
    }
    text += "Content-Type: text/plain\r\n\r\nleaf";
    for (size_t level = kLevels; level-- > 0;) text += "\r\n--" + LevelBoundary(level) + "--";
    return text;
  }();
  return message;
}

ComPtr<IEMSDataObject> DataOf(const std::string& bytes) {
  ComPtr<IEMSDataObject> data;
  MakeDataObject(bytes, &data);
  return data;
}

ComPtr<IEMSMimePart> NewPart() {
  ComPtr<IEMSMimePart> part;
  CreateClassInstance(CLSID_EMSMimePart, &part);
  return part;
}

ComPtr<IEMSMimePart> Parsed(IEMSDataObject* data) {
  ComPtr<IEMSMimePart> part = NewPart();
  part->ParsePartObject(data);
  return part;
}

std::vector<ComPtr<IEMSMimePart>> Children(IEMSMimePart* part) {
  std::vector<ComPtr<IEMSMimePart>> children;
  ComPtr<IEMSMimeParts> parts;
  part->get_MimeParts(parts.put());
  LONG count = 0;
  parts->get_PartsCount(&count);
  for (LONG i = 0; i < count; ++i) {
    ComPtr<IEMSMimePart> child;
    parts->get_Part(i, child.put());
    children.push_back(child);
  }
  return children;
}

// 1 when every child's body is a span of the parsed buffer itself.
double SharesTheBuffer(IEMSDataObject* data, IEMSMimePart* root) {
  const ByteStore* store = ImplOf<DataObject>(data)->store().get();
  for (const ComPtr<IEMSMimePart>& child : Children(root)) {
    IEMSDataObject* body = ImplOf<MimePart>(child.get())->body();
    ComPtr<DataObject> own = ImplOf<DataObject>(body);
    if (!own || own->store().get() != store) return 0;
  }
  return 1;
}

void BM_PartParseLargeMessage(benchmark::State& state) {
  ComPtr<IEMSDataObject> data = DataOf(LargeMessage());
  for (auto _ : state) {
    ComPtr<IEMSMimePart> part = NewPart();
    benchmark::DoNotOptimize(part->ParsePartObject(data.get()));
  }
  ComPtr<IEMSMimePart> part = Parsed(data.get());
  state.counters["parts"] = static_cast<double>(Children(part.get()).size());
  state.counters["shares_buffer"] = SharesTheBuffer(data.get(), part.get());
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) *
                          static_cast<int64_t>(LargeMessage().size()));
}
BENCHMARK(BM_PartParseLargeMessage)->Unit(benchmark::kMillisecond);

void BM_PartAssembleLargeMessage(benchmark::State& state) {
  ComPtr<IEMSDataObject> data = DataOf(LargeMessage());
  ComPtr<IEMSMimePart> part = Parsed(data.get());
  for (auto _ : state) {
    ComPtr<IEMSDataObject> out;
    benchmark::DoNotOptimize(part->AssemblePartObject(out.put()));
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) *
                          static_cast<int64_t>(LargeMessage().size()));
}
BENCHMARK(BM_PartAssembleLargeMessage)->Unit(benchmark::kMillisecond);

void BM_PartDecodeEveryAttachment(benchmark::State& state) {
  ComPtr<IEMSDataObject> data = DataOf(LargeMessage());
  ComPtr<IEMSMimePart> part = Parsed(data.get());
  std::vector<ComPtr<IEMSMimePart>> children = Children(part.get());
  size_t decoded = 0;
  for (auto _ : state) {
    for (const ComPtr<IEMSMimePart>& child : children) {
      ComPtr<IEMSDataObject> out;
      child->get_DecodedBinary(out.put());
      ULONG length = 0;
      if (out) out->get_Length(&length);
      decoded += length;
    }
  }
  state.counters["attachments"] = static_cast<double>(children.size() - 1);
  state.SetBytesProcessed(static_cast<int64_t>(decoded));
}
BENCHMARK(BM_PartDecodeEveryAttachment)->Unit(benchmark::kMillisecond);

void BM_PartSearchLargeMessage(benchmark::State& state) {
  ComPtr<IEMSDataObject> data = DataOf(LargeMessage());
  ComPtr<IEMSMimePart> part = Parsed(data.get());
  std::vector<ComPtr<IEMSMimePart>> children = Children(part.get());
  for (auto _ : state) {
    ComPtr<IEMSMimePart> found;
    benchmark::DoNotOptimize(part->FindParentPart(children.back().get(), found.put()));
    benchmark::DoNotOptimize(part->FindPartBySubType(8, found.put()));
  }
}
BENCHMARK(BM_PartSearchLargeMessage)->Unit(benchmark::kMicrosecond);

void BM_PartParseDeepNest(benchmark::State& state) {
  ComPtr<IEMSDataObject> data = DataOf(DeepMessage());
  for (auto _ : state) {
    ComPtr<IEMSMimePart> part = NewPart();
    benchmark::DoNotOptimize(part->ParsePartObject(data.get()));
  }
  state.counters["levels"] = 100000;
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) *
                          static_cast<int64_t>(DeepMessage().size()));
}
BENCHMARK(BM_PartParseDeepNest)->Unit(benchmark::kMillisecond);

void BM_PartAssembleAndSearchDeepNest(benchmark::State& state) {
  ComPtr<IEMSDataObject> data = DataOf(DeepMessage());
  ComPtr<IEMSMimePart> part = Parsed(data.get());
  for (auto _ : state) {
    ComPtr<IEMSDataObject> out;
    benchmark::DoNotOptimize(part->AssemblePartObject(out.put()));
    ComPtr<IEMSMimePart> found;
    benchmark::DoNotOptimize(part->FindPartBySubType(18, found.put()));
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) *
                          static_cast<int64_t>(DeepMessage().size()));
}
BENCHMARK(BM_PartAssembleAndSearchDeepNest)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace pv
