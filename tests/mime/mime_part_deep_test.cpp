// A message nested 100,000 multipart levels deep, parsed, assembled,
// searched and released on a thread with a 256 KiB stack: nothing may
// recurse once per level.
#include <pthread.h>

#include <chrono>
#include <string>
#include <vector>

#include "tests/mime/mime_part_test_util.h"

namespace pv::test {
namespace {

constexpr size_t kLevels = 100000;
constexpr size_t kStackSize = 256 * 1024;

std::string LevelBoundary(size_t level) {
  std::string digits = std::to_string(level);
  return "b" + std::string(6 - digits.size(), '0') + digits;
}

// The message, and what assembling its parse must give back: the field
// written folded, and the line break that parsing takes from the last child
// of each level put back once, at the innermost one.
struct DeepMessage {
  std::string text;
  std::string assembled;
};

DeepMessage MakeDeepMessage() {
  DeepMessage m;
  for (size_t level = 0; level < kLevels; ++level) {
    const std::string b = LevelBoundary(level);
    m.text += "Content-Type: multipart/mixed; boundary=\"" + b + "\"\r\n\r\n--" + b + "\r\n";
    m.assembled += "Content-Type: multipart/mixed;\r\n\tboundary=\"" + b + "\"\r\n\r\n--" + b + "\r\n";
  }
  m.text += "Content-Type: text/plain\r\n\r\nleaf";
  m.assembled += "Content-Type: text/plain\r\n\r\nleaf\r\n";
  for (size_t level = kLevels; level-- > 0;) {
    m.text += "\r\n--" + LevelBoundary(level) + "--";
    m.assembled += "--" + LevelBoundary(level) + "--\r\n";
  }
  return m;
}

struct Outcome {
  HRESULT parsed = E_UNEXPECTED;
  size_t depth = 0;
  std::string leafBody;
  bool assembledAsExpected = false;
  HRESULT bySubtype = E_UNEXPECTED;
  bool foundTheLeaf = false;
  HRESULT parent = E_UNEXPECTED;
  bool parentIsTheLastLevel = false;
  HRESULT byType = E_UNEXPECTED;
  std::string decodedLeaf;
  double seconds = 0;
};

struct Job {
  const DeepMessage* message;
  Outcome outcome;
};

// Everything runs here, on the small stack, releases included.
void RunOnSmallStack(Job* job) {
  const auto start = std::chrono::steady_clock::now();
  Outcome& out = job->outcome;
  {
    ComPtr<IEMSMimePart> root;
    PvCreateInstance(CLSID_EMSMimePart, nullptr, IID_IEMSMimePart, root.put_void());
    ComPtr<IEMSDataObject> data;
    PvCreateInstance(CLSID_EMSDataObject, nullptr, IID_IEMSDataObject, data.put_void());
    VARIANT v = ByteVariant(job->message->text);
    data->put_Data(v);
    VariantClear(&v);
    out.parsed = root->ParsePartObject(data.get());

    // Walk down the only children, one level at a time.
    ComPtr<IEMSMimePart> part = root;
    ComPtr<IEMSMimePart> parent;
    for (;;) {
      ComPtr<IEMSMimeParts> parts;
      part->get_MimeParts(parts.put());
      LONG count = 0;
      parts->get_PartsCount(&count);
      if (count != 1) break;
      parent = part;
      ComPtr<IEMSMimePart> child;
      parts->get_Part(0, child.put());
      part = child;
      ++out.depth;
    }
    ComPtr<IEMSMimePart> leaf = part;
    ComPtr<IEMSDataObject> body;
    leaf->get_BodyObject(body.put());
    if (body) out.leafBody = SpanBytes(body.get());

    ComPtr<IEMSDataObject> assembled;
    root->AssemblePartObject(assembled.put());
    out.assembledAsExpected = assembled && SpanBytes(assembled.get()) == job->message->assembled;

    ComPtr<IEMSMimePart> found;
    out.bySubtype = root->FindPartBySubType(18, found.put());
    out.foundTheLeaf = found.get() == leaf.get();
    ComPtr<IEMSMimePart> leafParent;
    out.parent = root->FindParentPart(leaf.get(), leafParent.put());
    out.parentIsTheLastLevel = leafParent.get() == parent.get();
    ComPtr<IEMSMimePart> byType;
    out.byType = root->FindPart(B("text/plain").get(), -1, byType.put());

    ComPtr<IEMSDataObject> decoded;
    if (SUCCEEDED(leaf->get_DecodedBinary(decoded.put())) && decoded)
      out.decodedLeaf = SpanBytes(decoded.get());
  }
  out.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

void* ThreadMain(void* job) {
  RunOnSmallStack(static_cast<Job*>(job));
  return nullptr;
}

TEST(DeepNesting, HundredThousandLevelsOnASmallStack) {
  const DeepMessage message = MakeDeepMessage();
  Job job{&message, {}};
  pthread_attr_t attributes;
  ASSERT_EQ(pthread_attr_init(&attributes), 0);
  ASSERT_EQ(pthread_attr_setstacksize(&attributes, kStackSize), 0);
  pthread_t thread;
  ASSERT_EQ(pthread_create(&thread, &attributes, &ThreadMain, &job), 0);
  ASSERT_EQ(pthread_join(thread, nullptr), 0);
  pthread_attr_destroy(&attributes);

  const Outcome& out = job.outcome;
  EXPECT_EQ(out.parsed, S_OK);
  EXPECT_EQ(out.depth, kLevels);
  EXPECT_EQ(out.leafBody, "leaf");
  EXPECT_TRUE(out.assembledAsExpected);
  EXPECT_EQ(out.bySubtype, S_OK);
  EXPECT_TRUE(out.foundTheLeaf);
  EXPECT_EQ(out.parent, S_OK);
  EXPECT_TRUE(out.parentIsTheLastLevel);
  EXPECT_EQ(out.byType, S_OK);
  EXPECT_EQ(out.decodedLeaf, "leaf");
  RecordProperty("seconds", std::to_string(out.seconds));
}

}  // namespace
}  // namespace pv::test
