#include "src/headers/header_mailbox.h"

#include "src/headers/mailbox_name.h"
#include "src/headers/mailbox_text.h"
#include "src/platform/codepage.h"
#include "src/com/creators.h"

namespace pv {

HRESULT CreateEMSHeaderMailbox(IUnknown* outer, REFIID riid, void** ppv) {
  return CreateInstance<HeaderMailbox>(outer, riid, ppv);
}

void HeaderMailbox::Clear() {
  name_.clear();
  encodedName_.clear();
  address_.clear();
}

void HeaderMailbox::Split(WStringView text) {
  Clear();
  MailboxParts<OLECHAR> parts = SplitMailbox(text);
  name_ = std::move(parts.name);
  address_ = WideToAnsi(parts.address);
}

HRESULT HeaderMailbox::Parse(std::string_view ansiText) {
  Clear();
  MailboxParts<char> parts = SplitMailbox(ansiText);
  encodedName_ = std::move(parts.name);
  address_ = std::move(parts.address);
  return DecodeMailboxName(encodedName_, &defaultCodePage_, &defaultEncoding_, &name_);
}

HRESULT HeaderMailbox::Assemble(std::string* ansiOut) {
  std::string encoded;
  HRESULT hr = EncodeMailboxName(name_, defaultCodePage_, defaultEncoding_, &encoded);
  if (FAILED(hr)) return hr;
  encodedName_ = std::move(encoded);
  ansiOut->clear();
  AppendMailboxWireForm(encodedName_, address_, ansiOut);
  return S_OK;
}

// ---------------------------------------------------------------- interface
HRESULT HeaderMailbox::DoSplitString(BSTR bszVal) {
  Clear();
  if (bszVal == nullptr) return E_POINTER;
  Split(View(bszVal));
  return S_OK;
}

HRESULT HeaderMailbox::DoParseMailbox(BSTR bszVal) {
  Clear();
  if (bszVal == nullptr) return E_POINTER;
  return Parse(BstrToAnsi(bszVal));
}

HRESULT HeaderMailbox::DoAssembleMailbox(BSTR* pVal) {
  std::string text;
  HRESULT hr = Assemble(&text);
  if (FAILED(hr)) return hr;
  return ReturnBstr(AnsiToWide(text), pVal);
}

HRESULT HeaderMailbox::GetAddress(BSTR* pVal) { return ReturnBstr(AnsiToWide(address_), pVal); }

HRESULT HeaderMailbox::PutAddress(BSTR newVal) {
  address_ = BstrToAnsi(newVal);
  return S_OK;
}

HRESULT HeaderMailbox::GetName(BSTR* pVal) { return ReturnBstr(name_, pVal); }

HRESULT HeaderMailbox::PutName(BSTR newVal) {
  name_.assign(View(newVal));
  return S_OK;
}

}  // namespace pv
