#include "src/mime/mime_part.h"

#include "src/data/data_access.h"
#include "src/headers/message_parameters.h"
#include "src/mime/mime_part_parse.h"
#include "src/mime/mime_parts.h"
#include "src/platform/codepage.h"
#include "src/com/creators.h"

namespace pv {

HRESULT CreateEMSMimePart(IUnknown* outer, REFIID riid, void** ppv) {
  return CreateInstance<MimePart>(outer, riid, ppv);
}

MimePart::MimePart(IUnknown* outer) : ComObject(outer), defaultCodePage_(static_cast<LONG>(AnsiCodePage())) {}

HRESULT MimePart::FinalConstruct() {
  ComPtr<MessageParameters> headers;
  HRESULT hr = MakeObject(&headers);
  if (FAILED(hr)) return hr;
  headers_.ResetOwn(ComPtr<IEMSMessageParameters>(headers.get()), headers.get());
  return S_OK;
}

IEMSMimeParts* MimePart::parts() {
  if (!parts_) {
    ComPtr<MimeParts> parts;
    if (FAILED(MakeObject(&parts))) throw std::bad_alloc();
    parts_.ResetOwn(ComPtr<IEMSMimeParts>(parts.get()), parts.get());
  }
  return parts_.get();
}

// ---------------------------------------------------------------- parsing
HRESULT MimePart::DoParsePartObject(IEMSDataObject* pObject) {
  if (pObject == nullptr) return E_POINTER;
  body_ = nullptr;
  headers_.get()->RemoveAll();
  if (parts_) parts_->Clear();
  // The attachment flag is left as it is: parsing never clears it.
  DataBytes bytes;
  if (FAILED(ReadDataBytes(pObject, &bytes)) || bytes.data() == nullptr) return E_FAIL;
  PartTreeParser parser(pObject, bytes);
  return parser.ParseRoot(this);
}

HRESULT MimePart::PutBodyObject(IEMSDataObject* pVal) {
  if (pVal == nullptr) {
    body_ = nullptr;
    return S_OK;
  }
  if (pVal != body_.get()) body_ = ComPtr<IEMSDataObject>(pVal);
  return StoreBody(pVal);
}

// Children already in the list stay: newly split children are appended.
HRESULT MimePart::StoreBody(IEMSDataObject* body) {
  // A body whose bytes cannot be reached is still classified; there is
  // just nothing to split.
  DataBytes bytes;
  if (FAILED(ReadDataBytes(body, &bytes))) bytes = DataBytes();
  PartTreeParser parser(body, bytes);
  parser.StoreRootBody(this);
  return S_OK;
}

HRESULT MimePart::GetBodyObject(IEMSDataObject** ppVal) {
  if (body_) {
    body_.CopyTo(ppVal);
    return S_OK;
  }
  std::string text;
  bool hasBody = false;
  HRESULT hr = WriteTo(false, &text, &hasBody);
  if (FAILED(hr)) return hr;
  if (!hasBody) return S_OK;  // the result place is left as it was
  ComPtr<IEMSDataObject> built;
  hr = MakeDataObject(std::move(text), &built);
  if (FAILED(hr)) return hr;
  *ppVal = built.detach();
  return S_OK;
}

HRESULT MimePart::GetHeaders(IEMSMessageParameters** ppVal) {
  headers_.object().CopyTo(ppVal);
  return S_OK;
}

// The part always has a list: a missing one is refused.
HRESULT MimePart::PutHeaders(IEMSMessageParameters* pVal) {
  if (pVal == nullptr) return E_POINTER;
  if (pVal == headers_.get()) return S_OK;
  headers_.Reset(pVal);
  return S_OK;
}

HRESULT MimePart::GetMimeParts(IEMSMimeParts** ppVal) {
  *ppVal = parts();
  (*ppVal)->AddRef();
  return S_OK;
}

HRESULT MimePart::PutMimeParts(IEMSMimeParts* pVal) {
  if (pVal == nullptr) return E_POINTER;
  if (pVal == parts_.get()) return S_OK;
  parts_.Reset(pVal);
  return S_OK;
}

// ---------------------------------------------------------------- plain properties

}  // namespace pv
