#include "src/mime/part_encoder.h"

#include <string>

#include "src/data/data_access.h"
#include "src/data/data_object.h"
#include "src/mime/transfer_codecs.h"
#include "src/platform/codepage.h"
#include "src/com/creators.h"

namespace pv {

HRESULT CreateEMSMimePartEncoder(IUnknown* outer, REFIID riid, void** ppv) {
  return CreateInstance<PartEncoder>(outer, riid, ppv);
}

// The name is used by uuencode only, as the file name of the "begin" line,
// in the ANSI code page; a missing one is written as an empty name. On
// failure the part is left as it was.
HRESULT PartEncoder::DoEncodePart(IEMSMimePart* pPart, BSTR bszName) {
  if (pPart == nullptr) return E_POINTER;
  LONG code = kTransferNone;
  if (FAILED(pPart->get_DefaultEncoding(&code))) return E_FAIL;
  ComPtr<IEMSDataObject> body;
  if (FAILED(pPart->get_BodyObject(body.put())) || !body) return E_FAIL;
  if (code < kTransferNone || code > kTransferUuencode) return E_FAIL;
  DataBytes bytes;
  if (FAILED(ReadDataBytes(body.get(), &bytes))) return E_FAIL;
  const std::string_view in = bytes.Span();

  const int share = (code == kTransferNone || code == kTransferAutomatic) ? SevenBitShare(in) : 100;
  const LONG chosen = code == kTransferAutomatic ? ChooseTransferEncoding(share) : code;
  ComPtr<IEMSDataObject> encoded;
  if (chosen == kTransferNone) {
    ComPtr<DataObject> copy;
    HRESULT hr = MakeObject(&copy);
    if (FAILED(hr)) return hr;
    hr = copy->CopyFrom(body.get());
    if (FAILED(hr)) return hr;
    encoded = ComPtr<IEMSDataObject>(copy.get());
  } else {
    std::string text;
    if (!EncodeTransferBody(static_cast<TransferEncoding>(chosen), in, WideToAnsi(View(bszName)), &text)) {
      return E_FAIL;
    }
    if (FAILED(MakeDataObject(std::move(text), &encoded))) return E_FAIL;
  }

  HRESULT hr = pPart->put_BodyObject(encoded.get());
  if (FAILED(hr)) return hr;
  Bstr fieldName(WidenAscii("Content-Transfer-Encoding"));
  ComPtr<IEMSMessageParameter> field;
  if (SUCCEEDED(pPart->CreateHeader(fieldName.get(), field.put())) && field) {
    Bstr value(WidenAscii(TransferEncodingFieldValue(code, share)));
    field->put_RawData(value.get());
  }
  return S_OK;  // even when the field could not be written
}

}  // namespace pv
