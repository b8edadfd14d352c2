// The transfer-encoding codes and field values, the 7-bit share behind the
// automatic choice, and the dispatch from a code to its codec.
#include <cstdint>
#include <cstring>

#include "src/mime/transfer_codecs.h"

namespace pv {
namespace {

template <class Char>
bool EqualsIgnoringCase(std::basic_string_view<Char> value, std::string_view lowerName) {
  if (value.size() != lowerName.size()) return false;
  for (size_t i = 0; i < value.size(); ++i) {
    auto c = static_cast<uint32_t>(value[i]);
    if (c >= 'A' && c <= 'Z') c += 'a' - 'A';
    if (c != static_cast<unsigned char>(lowerName[i])) return false;
  }
  return true;
}

template <class Char>
TransferEncoding EncodingOfField(std::basic_string_view<Char> value) {
  if (EqualsIgnoringCase(value, "base64")) return kTransferBase64;
  if (EqualsIgnoringCase(value, "quoted-printable")) return kTransferQuotedPrintable;
  if (EqualsIgnoringCase(value, "uuencode") || EqualsIgnoringCase(value, "x-uuencode"))
    return kTransferUuencode;
  return kTransferNone;
}

// Bytes of 128 and above among `n` bytes, eight at a time: the high bit of
// each byte is moved to the bottom of its lane and the lanes are summed.
size_t CountHighBytes(const unsigned char* p, size_t n) {
  constexpr uint64_t kLowBits = 0x0101010101010101ull;
  // 31 words per batch keep the sum of all eight lanes (at most 8 x 31)
  // inside the top byte that the multiplication gathers it in.
  constexpr size_t kBatch = 8 * 31;
  size_t count = 0;
  size_t i = 0;
  for (; n - i >= kBatch; i += kBatch) {
    uint64_t lanes = 0;
    for (size_t w = 0; w < kBatch; w += 8) {
      uint64_t word;
      std::memcpy(&word, p + i + w, 8);
      lanes += (word >> 7) & kLowBits;
    }
    count += static_cast<size_t>((lanes * kLowBits) >> 56);
  }
  for (; i < n; ++i) count += p[i] >> 7;
  return count;
}

}  // namespace

TransferEncoding TransferEncodingOfField(std::string_view value) { return EncodingOfField(value); }

TransferEncoding TransferEncodingOfField(WStringView value) { return EncodingOfField(value); }

int SevenBitShare(std::string_view body) {
  if (body.empty()) return 100;
  size_t high = CountHighBytes(reinterpret_cast<const unsigned char*>(body.data()), body.size());
  uint64_t low = body.size() - high;
  return static_cast<int>(low * 100 / body.size());
}

TransferEncoding ChooseTransferEncoding(int sevenBitShare) {
  if (sevenBitShare < 60) return kTransferBase64;
  if (sevenBitShare < 100) return kTransferQuotedPrintable;
  return kTransferNone;
}

std::string_view TransferEncodingFieldValue(LONG code, int sevenBitShare) {
  if (code == kTransferAutomatic) code = ChooseTransferEncoding(sevenBitShare);
  switch (code) {
    case kTransferNone:
      return sevenBitShare == 100 ? "7bit" : "8bit";
    case kTransferQuotedPrintable:
      return "quoted-printable";
    case kTransferBase64:
      return "base64";
    case kTransferUuencode:
      return "x-uuencode";
    default:
      return std::string_view();
  }
}

bool DecodeTransferBody(TransferEncoding code, std::string_view body, std::string* out) {
  if (code != kTransferBase64 && code != kTransferQuotedPrintable && code != kTransferUuencode) {
    out->assign(body.data(), body.size());
    return true;
  }
  // The work buffer has exactly the body's length: no decoder produces more.
  out->assign(body.size(), '\0');
  size_t produced = 0;
  if (code == kTransferBase64) {
    produced = DecodeBase64(body, &(*out)[0]);
  } else if (code == kTransferQuotedPrintable) {
    produced = DecodeQuotedPrintable(body, &(*out)[0]);
  } else if (!DecodeUuencode(body, &(*out)[0], &produced)) {
    produced = 0;
  }
  out->resize(produced);
  return produced != 0;
}

bool EncodeTransferBody(TransferEncoding code, std::string_view body, std::string_view name,
                        std::string* out) {
  switch (code) {
    case kTransferNone:
      out->assign(body.data(), body.size());
      return true;
    case kTransferQuotedPrintable:
      return EncodeQuotedPrintable(body, out);
    case kTransferBase64:
      return EncodeBase64(body, out);
    case kTransferUuencode:
      return EncodeUuencode(body, name, out);
    default:
      return false;
  }
}

}  // namespace pv
