#include "src/message/message_parser.h"

#include "src/message/message_parser_util.h"
#include "src/platform/codepage.h"
#include "src/com/class_instance.h"
#include "src/com/creators.h"

namespace pv {

HRESULT CreateEMSMessageParser(IUnknown* outer, REFIID riid, void** ppv) {
  return CreateInstance<MessageParser>(outer, riid, ppv);
}

MessageParser::MessageParser(IUnknown* outer)
    : ComObject(outer),
      defaultCodePage_(static_cast<LONG>(AnsiCodePage())),
      textCodePage_(defaultCodePage_),
      htmlCodePage_(defaultCodePage_) {}

HRESULT MessageParser::FinalConstruct() {
  ComPtr<IEMSMessageParameters> headers;
  HRESULT hr = CreateClassInstance(CLSID_EMSMessageParameters, &headers);
  if (SUCCEEDED(hr)) headers_.Reset(std::move(headers));
  if (FAILED(hr)) return hr;
  return InitNew();
}

// ---------------------------------------------------------------- reset
// The default code page and the attachment header encoding keep their
// values, and the content (header list, plain body, root part) stays: a
// message that is reset but not parsed again still assembles as before.
HRESULT MessageParser::DoInitNew() {
  textCodePage_ = defaultCodePage_;
  htmlCodePage_ = defaultCodePage_;
  defaultEncoding_ = kTransferAutomatic;
  textEncoding_ = kTransferAutomatic;
  htmlEncoding_ = kTransferAutomatic;
  attachEncoding_ = kTransferBase64;
  headers_.get()->put_DefaultCodePage(defaultCodePage_);
  headers_.get()->put_DefaultEncoding(defaultEncoding_);
  stored_ = nullptr;
  parsed_ = 0;
  return S_OK;
}

HRESULT MessageParser::DoIsMimeMessage() { return root_ && !plainBody_ ? S_OK : E_FAIL; }

// ---------------------------------------------------------------- stored message and body
HRESULT MessageParser::GetSize(ULONG* pVal) {
  if (!stored_) return E_FAIL;
  return stored_->get_DataSize(pVal);
}

HRESULT MessageParser::PutStoredMessageObject(IEMSDataObject* pVal) {
  InitNew();
  stored_ = ComPtr<IEMSDataObject>(pVal);
  return S_OK;
}

HRESULT MessageParser::GetStoredMessageObject(IEMSDataObject** ppVal) {
  stored_.CopyTo(ppVal);
  return S_OK;
}

HRESULT MessageParser::PutBodyObject(IEMSDataObject* pVal) {
  plainBody_ = nullptr;
  if (pVal == nullptr) return S_OK;
  if (root_) {
    root_.get()->put_DefaultCodePage(defaultCodePage_);
    root_.get()->put_DefaultEncoding(defaultEncoding_);
    root_.get()->put_BodyObject(pVal);
    return S_OK;
  }
  plainBody_ = ComPtr<IEMSDataObject>(pVal);
  return S_OK;
}

// Without a plain body the root part's getter builds a multipart body from
// its children; without either nothing is written.
HRESULT MessageParser::GetBodyObject(IEMSDataObject** ppVal) {
  if (plainBody_) {
    plainBody_.CopyTo(ppVal);
    return S_OK;
  }
  if (root_) return root_.get()->get_BodyObject(ppVal);
  return S_OK;
}

// ---------------------------------------------------------------- header lists
HRESULT MessageParser::PutHeaders(IEMSMessageParameters* pVal) {
  if (pVal == nullptr) {
    headers_.get()->RemoveAll();  // the same list object stays
    return S_OK;
  }
  headers_.Reset(pVal);
  return S_OK;
}

HRESULT MessageParser::GetHeaders(IEMSMessageParameters** ppVal) {
  headers_.object().CopyTo(ppVal);
  return S_OK;
}

HRESULT MessageParser::PutMimeHeaders(IEMSMessageParameters* pVal) {
  if (!root_) return E_FAIL;
  return root_.get()->put_Headers(pVal);
}

HRESULT MessageParser::get_MimeHeaders(IEMSMessageParameters** ppVal) {
  if (!root_) return E_FAIL;
  return root_.get()->get_Headers(ppVal);
}

// A MIME message gives a new list (a clone of its own fields followed by
// the root part's), so changes to it do not reach the message; a plain one
// gives its header list itself.
HRESULT MessageParser::GetAllHeaders(IEMSMessageParameters** ppVal) {
  if (plainBody_) {
    headers_.object().CopyTo(ppVal);
    return S_OK;
  }
  ComPtr<IEMSMessageParameters> all;
  HRESULT hr = headers_.get()->Clone(all.put());
  if (FAILED(hr)) return hr;
  if (!all) return E_FAIL;
  if (root_) {
    ComPtr<IEMSMessageParameters> mime;
    if (SUCCEEDED(root_.get()->get_Headers(mime.put())) && mime) all->AppendParameters(mime.get());
  }
  *ppVal = all.detach();
  return S_OK;
}

HRESULT MessageParser::PutAllHeaders(IEMSMessageParameters* pVal) {
  put_Headers(pVal);
  SplitMimeHeaders();
  return S_OK;
}

// ---------------------------------------------------------------- root part
HRESULT MessageParser::PutMimePart(IEMSMimePart* pVal) {
  root_.Reset(pVal);
  if (pVal != nullptr) plainBody_ = nullptr;
  return S_OK;
}

HRESULT MessageParser::get_MimePart(IEMSMimePart** ppVal) {
  if (!root_) return E_FAIL;
  if (ppVal == nullptr) return S_OK;
  root_.object().CopyTo(ppVal);
  return S_OK;
}

// ---------------------------------------------------------------- code pages and encodings
// Plain stores: a new default code page or encoding reaches the header list
// and the root part only at the next reset, parse or body store.

}  // namespace pv
