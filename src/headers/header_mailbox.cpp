#include "src/headers/header_mailbox.h"

#include "src/headers/header_charset.h"
#include "src/headers/mailbox_text.h"
#include "src/platform/codepage.h"
#include "src/com/creators.h"

namespace pv {

HRESULT CreateEMSHeaderMailbox(IUnknown* outer, REFIID riid, void** ppv) {
  return CreateInstance<HeaderMailbox>(outer, riid, ppv);
}

namespace {

// Names are encoded as for a From field, whatever field the mailbox is in.
constexpr size_t kFromNameLength = 4;

}  // namespace

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
  if (encodedName_.empty()) return S_OK;
  ComPtr<HeaderCharset> charset;
  HRESULT hr = MakeObject(&charset);
  if (FAILED(hr)) return hr;
  charset->SetDefaultCodePage(defaultCodePage_);
  charset->SetDefaultEncoding(defaultEncoding_);
  hr = charset->Decode(encodedName_, &name_);
  if (FAILED(hr)) return hr;
  // So that the name is written back in the charset and encoding it came in.
  defaultCodePage_ = charset->headerCodePage();
  defaultEncoding_ = charset->defaultEncoding();
  return S_OK;
}

HRESULT HeaderMailbox::Assemble(std::string* ansiOut) {
  if (name_.empty()) {
    encodedName_.clear();
  } else {
    ComPtr<HeaderCharset> charset;
    HRESULT hr = MakeObject(&charset);
    if (FAILED(hr)) return hr;
    charset->SetDefaultCodePage(defaultCodePage_);
    charset->SetDefaultEncoding(defaultEncoding_);
    charset->SetHeaderNameLength(kFromNameLength);
    WString encoded;
    hr = charset->Encode(name_, &encoded);
    if (FAILED(hr)) return hr;
    encodedName_ = WideToAnsi(encoded);
  }
  ansiOut->clear();
  if (encodedName_.empty()) {
    ansiOut->assign(address_);
    return S_OK;
  }
  // Always quoted, and nothing inside is escaped.
  ansiOut->append("\"").append(encodedName_).append("\" <").append(address_).append(">");
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
