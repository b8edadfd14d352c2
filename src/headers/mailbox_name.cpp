#include "src/headers/mailbox_name.h"

#include "src/headers/header_charset.h"
#include "src/platform/codepage.h"
#include "src/com/creators.h"

namespace pv {
namespace {

constexpr size_t kFromNameLength = 4;

}  // namespace

HRESULT DecodeMailboxName(std::string_view encoded, LONG* codePage, LONG* encoding, WString* name) {
  name->clear();
  if (encoded.empty()) return S_OK;
  ComPtr<HeaderCharset> charset;
  HRESULT hr = MakeObject(&charset);
  if (FAILED(hr)) return hr;
  charset->SetDefaultCodePage(*codePage);
  charset->SetDefaultEncoding(*encoding);
  hr = charset->Decode(encoded, name);
  if (FAILED(hr)) return hr;
  *codePage = charset->headerCodePage();
  *encoding = charset->defaultEncoding();
  return S_OK;
}

HRESULT EncodeMailboxName(WStringView name, LONG codePage, LONG encoding, std::string* encoded) {
  encoded->clear();
  if (name.empty()) return S_OK;
  ComPtr<HeaderCharset> charset;
  HRESULT hr = MakeObject(&charset);
  if (FAILED(hr)) return hr;
  charset->SetDefaultCodePage(codePage);
  charset->SetDefaultEncoding(encoding);
  charset->SetHeaderNameLength(kFromNameLength);
  WString wide;
  hr = charset->Encode(name, &wide);
  if (FAILED(hr)) return hr;
  *encoded = WideToAnsi(wide);
  return S_OK;
}

void AppendMailboxWireForm(std::string_view encodedName, std::string_view address, std::string* out) {
  if (encodedName.empty()) {
    out->append(address);
    return;
  }
  out->append("\"").append(encodedName).append("\" <").append(address).append(">");
}

}  // namespace pv
