// The transfer encoders on arbitrary bodies. The first byte chooses the
// codec (base64, quoted-printable, uuencode, or the 7-bit share and the
// automatic choice); the rest is the body. Each encoder's output must equal
// that of the plain statement of its rules, and decoding it must give the
// body back wherever the format allows (see UuencodeRoundTripHolds).
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "src/mime/transfer_codecs.h"
#include "tests/mime/transfer_reference.h"

namespace {

void Check(bool condition) {
  if (!condition) std::abort();
}

std::string Decoded(pv::TransferEncoding code, std::string_view encoded) {
  std::string out;
  Check(pv::DecodeTransferBody(code, encoded, &out));
  return out;
}

void EncodeOne(uint8_t selector, std::string_view body) {
  using namespace pv;
  std::string out;
  switch (selector % 4) {
    case 0: {
      bool ok = EncodeBase64(body, &out);
      Check(ok == !body.empty());
      if (!ok) break;
      Check(out == reference::EncodeBase64(body));
      Check(Decoded(kTransferBase64, out) == body);
      break;
    }
    case 1: {
      bool ok = EncodeQuotedPrintable(body, &out);
      Check(ok == !body.empty());
      if (!ok) break;
      Check(out == reference::EncodeQuotedPrintable(body));
      Check(Decoded(kTransferQuotedPrintable, out) == body);
      break;
    }
    case 2: {
      Check(EncodeUuencode(body, "fuzz.bin", &out));
      Check(out == reference::EncodeUuencode(body, "fuzz.bin"));
      if (reference::UuencodeRoundTripHolds(body)) {
        std::string decoded;
        Check(reference::DecodeUuencode(out, &decoded));
        std::string fast;
        // An empty body decodes to nothing, which the whole decode reports
        // as a failure.
        Check(DecodeTransferBody(kTransferUuencode, out, &fast) == !body.empty());
        Check(fast == body && decoded == body);
      }
      break;
    }
    default: {
      size_t low = 0;
      for (char c : body) low += static_cast<unsigned char>(c) < 128;
      int share = SevenBitShare(body);
      Check(share == (body.empty() ? 100 : static_cast<int>(low * 100 / body.size())));
      TransferEncoding chosen = ChooseTransferEncoding(share);
      Check(TransferEncodingFieldValue(kTransferAutomatic, share) ==
            TransferEncodingFieldValue(chosen, share));
      Check(EncodeTransferBody(chosen, body, "", &out) == (chosen == kTransferNone || !body.empty()));
      break;
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  EncodeOne(data[0], std::string_view(reinterpret_cast<const char*>(data) + 1, size - 1));
  return 0;
}
