// The transfer decoders on arbitrary bodies. The first byte chooses the
// codec (base64, quoted-printable, uuencode, or the whole decode by a field
// value); the rest is the body. Each decoder writes into a heap buffer of
// exactly the body's length, so any write past it is caught, and its
// output must equal that of the plain statement of its rules.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>

#include "src/mime/transfer_codecs.h"
#include "tests/mime/transfer_reference.h"

namespace {

void Check(bool condition) {
  if (!condition) std::abort();
}

void DecodeOne(uint8_t selector, std::string_view body) {
  using namespace pv;
  // A buffer of exactly the body's length (one byte for an empty body, so
  // that the pointer is a real allocation).
  std::unique_ptr<char[]> buffer(new char[body.empty() ? 1 : body.size()]);
  switch (selector % 4) {
    case 0: {
      std::string expected = reference::DecodeBase64(body);
      size_t produced = DecodeBase64(body, buffer.get());
      Check(std::string_view(buffer.get(), produced) == expected);
      produced = DecodeBase64Portable(body, buffer.get());
      Check(std::string_view(buffer.get(), produced) == expected);
      break;
    }
    case 1: {
      size_t produced = DecodeQuotedPrintable(body, buffer.get());
      Check(std::string_view(buffer.get(), produced) == reference::DecodeQuotedPrintable(body));
      break;
    }
    case 2: {
      size_t produced = 0;
      bool ok = DecodeUuencode(body, buffer.get(), &produced);
      std::string expected;
      Check(ok == reference::DecodeUuencode(body, &expected));
      if (ok) Check(std::string_view(buffer.get(), produced) == expected);
      break;
    }
    default: {
      // The body's first line is the field value, the rest the body.
      size_t br = body.find('\n');
      std::string_view value = body.substr(0, br);
      std::string_view rest = br == std::string_view::npos ? std::string_view() : body.substr(br + 1);
      TransferEncoding code = TransferEncodingOfField(value);
      WString wide(value.begin(), value.end());
      Check(TransferEncodingOfField(wide) == code);
      std::string out;
      bool ok = DecodeTransferBody(code, rest, &out);
      Check(out.size() <= rest.size());
      if (code == kTransferNone) Check(ok && out == rest);
      if (ok && code != kTransferNone) Check(!out.empty());
      break;
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  DecodeOne(data[0], std::string_view(reinterpret_cast<const char*>(data) + 1, size - 1));
  return 0;
}
