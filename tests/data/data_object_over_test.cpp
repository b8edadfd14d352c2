// The zero-copy entry: a data object over a host's bytes.
#include <cstring>
#include <string>

#include "parcelvane/parcelvane.h"
#include "src/data/data_object.h"
#include "tests/test_util.h"

namespace pv::test {
namespace {

// Counts the calls of the release callback and checks that the bytes were
// still intact when it ran.
struct HostBuffer {
  explicit HostBuffer(std::string text) : bytes(std::move(text)), expected(bytes) {}
  std::string bytes;
  std::string expected;
  int releases = 0;
  bool intactAtRelease = false;

  static void Release(void* context) {
    auto* self = static_cast<HostBuffer*>(context);
    ++self->releases;
    self->intactAtRelease = self->bytes == self->expected;
  }

  ComPtr<IEMSDataObject> Over() {
    ComPtr<IEMSDataObject> data;
    EXPECT_EQ(PvCreateDataObjectOver(bytes.data(), static_cast<ULONG>(bytes.size()), &HostBuffer::Release, this,
                                     data.put()),
              S_OK);
    return data;
  }
};

ULONG SizeOf(IEMSDataObject* data) {
  ULONG v = 0;
  EXPECT_EQ(data->get_DataSize(&v), S_OK);
  return v;
}

TEST(DataObjectOver, ReadsTheHostBytesWithoutACopy) {
  HostBuffer host("hello, world");
  auto data = host.Over();
  ASSERT_TRUE(data);
  EXPECT_EQ(SizeOf(data.get()), 12u);
  EXPECT_EQ(AllBytes(data.get()), "hello, world");
  EXPECT_EQ(SpanBytes(data.get()), "hello, world");
  auto impl = ImplOf<DataObject>(data.get());
  ASSERT_TRUE(impl);
  EXPECT_EQ(static_cast<const void*>(impl->store()->bytes()), static_cast<const void*>(host.bytes.data()));
  VARIANT v;
  VariantInit(&v);
  ASSERT_EQ(data->get_Data(&v), S_OK);
  EXPECT_EQ(v.vt, VT_ARRAY | VT_UI1);
  EXPECT_EQ(BytesOf(v), "hello, world");
  VariantClear(&v);
  EXPECT_EQ(host.releases, 0);
  impl = nullptr;
  data = nullptr;
  EXPECT_EQ(host.releases, 1);
  EXPECT_TRUE(host.intactAtRelease);
}

TEST(DataObjectOver, ReleaseWaitsForTheLastClone) {
  HostBuffer host("0123456789");
  auto data = host.Over();
  data->put_Position(2);
  data->put_Length(3);
  ComPtr<IEMSDataObject> clone;
  ASSERT_EQ(data->Clone(clone.put()), S_OK);
  EXPECT_EQ(SpanBytes(clone.get()), "234");
  auto copy = Create<IEMSDataObject>(CLSID_EMSDataObject);
  ASSERT_EQ(copy->CopyFrom(data.get()), S_OK);
  data = nullptr;
  clone = nullptr;
  EXPECT_EQ(host.releases, 0);
  EXPECT_EQ(SpanBytes(copy.get()), "234");
  copy = nullptr;
  EXPECT_EQ(host.releases, 1);
}

TEST(DataObjectOver, AStoreReplacesTheHostBytes) {
  HostBuffer host("abc");
  auto data = host.Over();
  VARIANT v = ByteVariant("xyz!");
  EXPECT_EQ(data->put_Data(v), S_OK);
  VariantClear(&v);
  // Nothing else referred to the host's bytes: they are handed back now.
  EXPECT_EQ(host.releases, 1);
  EXPECT_EQ(AllBytes(data.get()), "xyz!");
  EXPECT_EQ(SizeOf(data.get()), 4u);
  data = nullptr;
  EXPECT_EQ(host.releases, 1);
}

TEST(DataObjectOver, AParsedMessageSharesTheBytesUntilItIsGone) {
  HostBuffer host(
      "Subject: over\r\nMIME-Version: 1.0\r\nContent-Type: multipart/mixed; boundary=b\r\n\r\n"
      "--b\r\nContent-Type: text/plain\r\n\r\nfirst\r\n--b\r\nContent-Type: text/plain\r\n\r\nsecond\r\n--b--\r\n");
  auto message = Create<IEMSMessageParser>(CLSID_EMSMessageParser);
  {
    auto data = host.Over();
    ASSERT_EQ(message->ParseObject(data.get()), S_OK);
  }
  EXPECT_EQ(host.releases, 0);
  Bstr subject;
  ASSERT_EQ(message->get_Subject(subject.put()), S_OK);
  EXPECT_EQ(U8(subject), "over");
  ComPtr<IEMSMimePart> root;
  ASSERT_EQ(message->get_MimePart(root.put()), S_OK);
  ComPtr<IEMSMimeParts> parts;
  ASSERT_EQ(root->get_MimeParts(parts.put()), S_OK);
  ComPtr<IEMSMimePart> second;
  ASSERT_EQ(parts->get_Part(1, second.put()), S_OK);
  ComPtr<IEMSDataObject> body;
  ASSERT_EQ(second->get_BodyObject(body.put()), S_OK);
  EXPECT_EQ(SpanBytes(body.get()), "second");
  // The body is a span of the host's buffer, not a copy.
  auto impl = ImplOf<DataObject>(body.get());
  ASSERT_TRUE(impl);
  EXPECT_EQ(static_cast<const void*>(impl->store()->bytes()), static_cast<const void*>(host.bytes.data()));
  impl = nullptr;
  ComPtr<IEMSDataObject> assembled;
  ASSERT_EQ(message->AssembleObject(assembled.put()), S_OK);
  root = nullptr;
  parts = nullptr;
  second = nullptr;
  message = nullptr;
  EXPECT_EQ(host.releases, 0);  // the body still refers to the bytes
  body = nullptr;
  EXPECT_EQ(host.releases, 1);
  EXPECT_TRUE(host.intactAtRelease);
  EXPECT_NE(SizeOf(assembled.get()), 0u);
}

TEST(DataObjectOver, ANullReleaseIsNeverCalled) {
  static const char kBytes[] = "static bytes";
  ComPtr<IEMSDataObject> data;
  ASSERT_EQ(PvCreateDataObjectOver(kBytes, 6, nullptr, nullptr, data.put()), S_OK);
  EXPECT_EQ(AllBytes(data.get()), "static");
}

TEST(DataObjectOver, AnEmptyBufferIsAnEmptyByteArray) {
  HostBuffer host("");
  ComPtr<IEMSDataObject> data;
  ASSERT_EQ(PvCreateDataObjectOver(nullptr, 0, &HostBuffer::Release, &host, data.put()), S_OK);
  EXPECT_EQ(SizeOf(data.get()), 0u);
  VARIANT v;
  VariantInit(&v);
  ASSERT_EQ(data->get_Data(&v), S_OK);
  EXPECT_EQ(v.vt, VT_ARRAY | VT_UI1);
  EXPECT_EQ(BytesOf(v), "");
  VariantClear(&v);
  data = nullptr;
  EXPECT_EQ(host.releases, 1);
}

TEST(DataObjectOver, StatusesAndNoReleaseOnFailure) {
  HostBuffer host("x");
  EXPECT_EQ(PvCreateDataObjectOver(host.bytes.data(), 1, &HostBuffer::Release, &host, nullptr), E_POINTER);
  ComPtr<IEMSDataObject> data;
  EXPECT_EQ(PvCreateDataObjectOver(nullptr, 5, &HostBuffer::Release, &host, data.put()), E_INVALIDARG);
  EXPECT_FALSE(data);
  EXPECT_EQ(host.releases, 0);
}

TEST(DataObjectOver, BehavesAsACopiedByteArray) {
  // Every read and span operation gives what the same bytes stored with
  // CreateDataArray give.
  HostBuffer host("line one\r\nline two\r\n");
  auto over = host.Over();
  auto copied = DataOf(host.bytes);
  for (ULONG position : {0u, 3u, 19u, 20u, 25u}) {
    for (ULONG length : {0u, 1u, 7u, 100u}) {
      over->put_Position(position);
      copied->put_Position(position);
      over->put_Length(length);
      copied->put_Length(length);
      EXPECT_EQ(SpanBytes(over.get()), SpanBytes(copied.get())) << position << "," << length;
      ULONG a = 0, b = 0;
      over->get_Position(&a);
      copied->get_Position(&b);
      EXPECT_EQ(a, b);
      over->get_Length(&a);
      copied->get_Length(&b);
      EXPECT_EQ(a, b);
    }
  }
}

}  // namespace
}  // namespace pv::test
