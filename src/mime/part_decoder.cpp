#include "src/mime/part_decoder.h"

#include <string>

#include "src/data/data_access.h"
#include "src/data/data_object.h"
#include "src/mime/transfer_codecs.h"
#include "src/com/creators.h"

namespace pv {

HRESULT CreateEMSMimePartDecoder(IUnknown* outer, REFIID riid, void** ppv) {
  return CreateInstance<PartDecoder>(outer, riid, ppv);
}

namespace {

// The code named by the part's "Content-Transfer-Encoding" field, compared
// whole: no field, or one without a value, means no decoding.
TransferEncoding EncodingOfPart(IEMSMimePart* part) {
  ComPtr<IEMSMessageParameters> headers;
  if (FAILED(part->get_Headers(headers.put())) || !headers) return kTransferNone;
  Bstr name(WidenAscii("Content-Transfer-Encoding"));
  ComPtr<IEMSMessageParameter> field;
  if (FAILED(headers->FindParameter(name.get(), field.put())) || !field) return kTransferNone;
  Bstr value;
  if (FAILED(field->get_UnfoldedData(value.put()))) return kTransferNone;
  return TransferEncodingOfField(value.view());
}

// Runs one decoder into `work`, which has room for the whole input.
bool Decode(TransferEncoding code, std::string_view in, char* work, size_t* produced) {
  switch (code) {
    case kTransferBase64:
      *produced = DecodeBase64(in, work);
      return true;
    case kTransferQuotedPrintable:
      *produced = DecodeQuotedPrintable(in, work);
      return true;
    default:
      return DecodeUuencode(in, work, produced);
  }
}

}  // namespace

HRESULT PartDecoder::DoDecodePart(IEMSMimePart* pPart, IEMSDataObject** ppVal) {
  if (pPart == nullptr) return E_POINTER;
  ComPtr<DataObject> output;
  HRESULT hr = MakeObject(&output);
  if (FAILED(hr)) return hr;
  const TransferEncoding code = EncodingOfPart(pPart);
  ComPtr<IEMSDataObject> body;
  if (FAILED(pPart->get_BodyObject(body.put())) || !body) return E_FAIL;

  if (code == kTransferNone) {
    // The body as it stands, whatever it holds.
    hr = output->CopyFrom(body.get());
    if (FAILED(hr)) return hr;
    *ppVal = output.detach();
    return S_OK;
  }
  DataBytes bytes;
  if (FAILED(ReadDataBytes(body.get(), &bytes)) || bytes.data() == nullptr) return E_FAIL;
  // The work buffer is exactly the body's Length (no decoder writes more);
  // the result holds the produced bytes only, so nothing the decoders left
  // behind the decoded count can reach a host.
  std::string work(bytes.length, '\0');
  std::string_view in = bytes.Span();
  if (in.size() > work.size()) in = in.substr(0, work.size());
  size_t produced = 0;
  if (!Decode(code, in, work.data(), &produced) || produced == 0) return E_FAIL;
  work.resize(produced);
  output->SetStore(ByteStore::FromBytes(std::move(work)));
  *ppVal = output.detach();
  return S_OK;
}

}  // namespace pv
