// Encoders refuse bodies whose encoding would not fit the 32-bit signed
// range. The bodies are large mappings of zero pages that the encoders must
// not need to read: the size is known before any byte is encoded.
#include <sys/mman.h>

#include <string>
#include <string_view>

#include "tests/mime/codec_test_util.h"

namespace pv::test {
namespace {

class HugeBody {
 public:
  explicit HugeBody(size_t size) : size_(size) {
    void* p = mmap(nullptr, size, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    data_ = p == MAP_FAILED ? nullptr : static_cast<const char*>(p);
  }
  HugeBody(const HugeBody&) = delete;
  HugeBody& operator=(const HugeBody&) = delete;
  ~HugeBody() {
    if (data_ != nullptr) munmap(const_cast<char*>(data_), size_);
  }
  bool ok() const { return data_ != nullptr; }
  std::string_view view() const { return std::string_view(data_, size_); }

 private:
  const char* data_ = nullptr;
  size_t size_;
};

// 0x60000000 bytes: about 2.2e9 characters in base64 and in uuencode.
constexpr size_t kTooLargeToEncode = 0x60000000;

TEST(EncodedSizeLimit, Base64BeyondTheSignedRangeFails) {
  HugeBody body(kTooLargeToEncode);
  ASSERT_TRUE(body.ok());
  std::string out = "untouched";
  EXPECT_FALSE(EncodeBase64(body.view(), &out));
  EXPECT_EQ(out, "untouched");
}

TEST(EncodedSizeLimit, UuencodeBeyondTheSignedRangeFails) {
  HugeBody body(kTooLargeToEncode);
  ASSERT_TRUE(body.ok());
  std::string out = "untouched";
  EXPECT_FALSE(EncodeUuencode(body.view(), "big.bin", &out));
  EXPECT_EQ(out, "untouched");
}

TEST(EncodedSizeLimit, QuotedPrintableOfABodyBeyondTheSignedRangeFails) {
  // Every byte gives at least one character.
  HugeBody body(0x80000000u);
  ASSERT_TRUE(body.ok());
  std::string out = "untouched";
  EXPECT_FALSE(EncodeQuotedPrintable(body.view(), &out));
  EXPECT_EQ(out, "untouched");
}

}  // namespace
}  // namespace pv::test
