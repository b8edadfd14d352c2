// Helpers for the transfer codec tests: run a decoder into a buffer of the
// input's length (followed by guard bytes that must stay untouched), run an
// encoder, and make repeatable random bodies.
#ifndef PARCELVANE_TESTS_MIME_CODEC_TEST_UTIL_H
#define PARCELVANE_TESTS_MIME_CODEC_TEST_UTIL_H

#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "src/mime/transfer_codecs.h"

namespace pv::test {

constexpr size_t kGuardBytes = 16;
constexpr char kGuard = '\x5A';

inline void ExpectGuardIntact(const std::vector<char>& buffer, size_t inputSize) {
  for (size_t i = inputSize; i < buffer.size(); ++i) {
    ASSERT_EQ(buffer[i], kGuard) << "decoder wrote past the input's length at " << i;
  }
}

inline std::string Base64DecodedBy(size_t (*decode)(std::string_view, char*), std::string_view in) {
  std::vector<char> buffer(in.size() + kGuardBytes, kGuard);
  size_t produced = decode(in, buffer.data());
  EXPECT_LE(produced, in.size());
  ExpectGuardIntact(buffer, in.size());
  return std::string(buffer.data(), produced);
}

// Both the decoder as it runs on this processor and its portable path,
// which must agree.
inline std::string Base64Decoded(std::string_view in) {
  std::string decoded = Base64DecodedBy(DecodeBase64, in);
  EXPECT_EQ(Base64DecodedBy(DecodeBase64Portable, in), decoded) << "the portable path differs";
  return decoded;
}

inline std::string QuotedPrintableDecoded(std::string_view in) {
  std::vector<char> buffer(in.size() + kGuardBytes, kGuard);
  size_t produced = DecodeQuotedPrintable(in, buffer.data());
  EXPECT_LE(produced, in.size());
  ExpectGuardIntact(buffer, in.size());
  return std::string(buffer.data(), produced);
}

// False when the decode fails; *out then stays empty.
inline bool UuDecoded(std::string_view in, std::string* out) {
  std::vector<char> buffer(in.size() + kGuardBytes, kGuard);
  size_t produced = 12345;
  bool ok = DecodeUuencode(in, buffer.data(), &produced);
  ExpectGuardIntact(buffer, in.size());
  out->clear();
  if (!ok) return false;
  EXPECT_LE(produced, in.size());
  out->assign(buffer.data(), produced);
  return true;
}

inline std::string Base64Encoded(std::string_view body) {
  std::string out;
  EXPECT_TRUE(EncodeBase64(body, &out));
  return out;
}

inline std::string QuotedPrintableEncoded(std::string_view body) {
  std::string out;
  EXPECT_TRUE(EncodeQuotedPrintable(body, &out));
  return out;
}

inline std::string Uuencoded(std::string_view body, std::string_view name = "f") {
  std::string out;
  EXPECT_TRUE(EncodeUuencode(body, name, &out));
  return out;
}

// `size` bytes drawn from `alphabet` (all 256 byte values when empty).
inline std::string RandomBytes(std::mt19937& rng, size_t size, std::string_view alphabet = {}) {
  std::string s(size, '\0');
  if (alphabet.empty()) {
    std::uniform_int_distribution<int> byte(0, 255);
    for (char& c : s) c = static_cast<char>(byte(rng));
  } else {
    std::uniform_int_distribution<size_t> pick(0, alphabet.size() - 1);
    for (char& c : s) c = alphabet[pick(rng)];
  }
  return s;
}

}  // namespace pv::test

#endif  // PARCELVANE_TESTS_MIME_CODEC_TEST_UTIL_H
