// The part decoder and encoder on arbitrary bodies, through the part
// classes. The first byte chooses the direction and the code: decoding by a
// "Content-Transfer-Encoding" value, compared with the plain statements of
// the decoders' rules; or encoding by a DefaultEncoding (valid or not),
// checked against the codecs, the field value written, and the round trip
// back through the decoder wherever the format gives the bytes back.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include "parcelvane/parcelvane.h"
#include "src/data/data_access.h"
#include "src/mime/transfer_codecs.h"
#include "src/platform/codepage.h"
#include "tests/mime/transfer_reference.h"

namespace {

using pv::Bstr;
using pv::ComPtr;

void Check(bool condition, const char* what) {
  if (!condition) {
    std::fprintf(stderr, "part_codec_fuzz: %s\n", what);
    std::abort();
  }
}

std::string Bytes(IEMSDataObject* object) {
  pv::DataBytes bytes;
  if (object == nullptr || FAILED(pv::ReadDataBytes(object, &bytes))) return std::string();
  return std::string(bytes.Span());
}

template <class I>
ComPtr<I> Make(REFCLSID clsid) {
  ComPtr<I> object;
  Check(SUCCEEDED(PvCreateInstance(clsid, nullptr, pv::IidOf<I>::Get(), object.put_void())), "create");
  return object;
}

ComPtr<IEMSMimePart> PartWith(std::string_view body) {
  auto part = Make<IEMSMimePart>(CLSID_EMSMimePart);
  ComPtr<IEMSDataObject> data;
  Check(SUCCEEDED(pv::MakeDataObject(std::string(body), &data)), "data object");
  part->put_BodyObject(data.get());
  return part;
}

std::string FieldValue(IEMSMimePart* part) {
  Bstr name(pv::WidenAscii("Content-Transfer-Encoding"));
  ComPtr<IEMSMessageParameter> field;
  part->FindHeader(name.get(), field.put());
  if (!field) return "(none)";
  Bstr raw;
  field->get_RawData(raw.put());
  return pv::WideToAnsi(raw.view());
}

const char* const kFieldValues[] = {"base64", "quoted-printable", "x-uuencode", "uuencode", "BASE64", "7bit",
                                    "8bit"};

void DecodeOne(uint8_t selector, std::string_view body) {
  const char* value = kFieldValues[selector % 7];
  auto part = PartWith(body);
  Bstr name(pv::WidenAscii("Content-Transfer-Encoding"));
  ComPtr<IEMSMessageParameter> field;
  part->CreateHeader(name.get(), field.put());
  Bstr text(pv::WidenAscii(value));
  field->put_RawData(text.get());

  auto decoder = Make<IEMSMimePartDecoder>(CLSID_EMSMimePartDecoder);
  ComPtr<IEMSDataObject> out;
  HRESULT hr = decoder->DecodePart(part.get(), out.put());
  std::string expected;
  bool ok = true;
  switch (pv::TransferEncodingOfField(std::string_view(value))) {
    case pv::kTransferBase64:
      expected = pv::reference::DecodeBase64(body);
      ok = !expected.empty();
      break;
    case pv::kTransferQuotedPrintable:
      expected = pv::reference::DecodeQuotedPrintable(body);
      ok = !expected.empty();
      break;
    case pv::kTransferUuencode:
      ok = pv::reference::DecodeUuencode(body, &expected) && !expected.empty();
      break;
    default:
      expected = std::string(body);
      break;
  }
  Check((hr == S_OK) == ok, "decode status");
  if (!ok) {
    Check(hr == E_FAIL && !out, "failure writes nothing");
    return;
  }
  Check(Bytes(out.get()) == expected, "decoded bytes");
}

void EncodeOne(uint8_t selector, std::string_view input) {
  const LONG code = static_cast<LONG>(selector % 7) - 1;  // -1 to 5: two codes out of range
  // The first input byte is the name's length for uuencode.
  size_t nameLength = input.empty() ? 0 : static_cast<uint8_t>(input[0]) % 16;
  if (!input.empty()) input.remove_prefix(1);
  nameLength = std::min(nameLength, input.size());
  std::string name(input.substr(0, nameLength));
  std::string_view body = input.substr(nameLength);

  auto part = PartWith(body);
  part->put_DefaultEncoding(code);
  auto encoder = Make<IEMSMimePartEncoder>(CLSID_EMSMimePartEncoder);
  Bstr wideName(pv::AnsiToWide(name));
  HRESULT hr = encoder->EncodePart(part.get(), wideName.get());

  const int share = pv::SevenBitShare(body);
  const LONG chosen = code == pv::kTransferAutomatic ? pv::ChooseTransferEncoding(share) : code;
  std::string expected;
  bool ok = code >= 0 && code <= 4 &&
            pv::EncodeTransferBody(static_cast<pv::TransferEncoding>(chosen), body,
                                   pv::WideToAnsi(wideName.view()), &expected);
  Check((hr == S_OK) == ok, "encode status");
  ComPtr<IEMSDataObject> encoded;
  part->get_BodyObject(encoded.put());
  if (!ok) {
    Check(hr == E_FAIL, "encode failure is E_FAIL");
    Check(Bytes(encoded.get()) == body && FieldValue(part.get()) == "(none)", "failure leaves the part");
    return;
  }
  Check(Bytes(encoded.get()) == expected, "encoded bytes");
  Check(FieldValue(part.get()) == pv::TransferEncodingFieldValue(code, share), "field value");

  // Back through the decoder.
  // A name holding a line break adds lines of its own to the uuencoded text.
  bool holds = chosen != pv::kTransferUuencode || (pv::reference::UuencodeRoundTripHolds(body) &&
                                                   name.find_first_of("\r\n") == std::string::npos);
  if (!holds) return;
  auto decoder = Make<IEMSMimePartDecoder>(CLSID_EMSMimePartDecoder);
  ComPtr<IEMSDataObject> decoded;
  hr = decoder->DecodePart(part.get(), decoded.put());
  if (chosen == pv::kTransferUuencode && body.empty()) {
    Check(hr == E_FAIL, "an empty uuencoded body decodes to nothing");
    return;
  }
  Check(hr == S_OK && Bytes(decoded.get()) == body, "round trip");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  std::string_view rest(reinterpret_cast<const char*>(data) + 1, size - 1);
  if (data[0] & 0x80) {
    EncodeOne(data[0] & 0x7F, rest);
  } else {
    DecodeOne(data[0], rest);
  }
  return 0;
}
