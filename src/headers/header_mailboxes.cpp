#include "src/headers/header_mailboxes.h"

#include "src/headers/mailbox_text.h"
#include "src/platform/codepage.h"
#include "src/com/creators.h"

namespace pv {

HRESULT CreateEMSHeaderMailboxes(IUnknown* outer, REFIID riid, void** ppv) {
  return CreateInstance<HeaderMailboxes>(outer, riid, ppv);
}

HRESULT HeaderMailboxes::FinalConstruct() { return MakeObject(&working_); }

HeaderMailboxes::Slot HeaderMailboxes::SlotOf(LONG index) const {
  if (index < 0) return Slot::kNegative;
  return static_cast<size_t>(index) < names_.size() ? Slot::kStored : Slot::kPastTheEnd;
}

bool HeaderMailboxes::CanStoreAt(LONG index) const {
  return index == kAppend || SlotOf(index) == Slot::kStored;
}

// ---------------------------------------------------------------- parsing
HRESULT HeaderMailboxes::Parse(WStringView text, bool encoded) {
  names_.clear();
  addresses_.clear();
  for (WStringView piece : SplitMailboxList(text)) {
    HRESULT hr = encoded ? SetEncodedMailbox(kAppend, piece) : SetDecodedMailbox(kAppend, piece);
    if (FAILED(hr)) return hr;
  }
  return S_OK;
}

HRESULT HeaderMailboxes::ParseAnsi(std::string_view ansiText, bool encoded) {
  return Parse(AnsiToWide(ansiText), encoded);
}

HRESULT HeaderMailboxes::SetMailboxData(LONG index, WStringView name, WStringView address) {
  if (!CanStoreAt(index)) return E_INVALIDARG;
  if (index == kAppend) {
    names_.emplace_back(name);
    addresses_.emplace_back(address);
    return S_OK;
  }
  names_[static_cast<size_t>(index)].assign(name);
  addresses_[static_cast<size_t>(index)].assign(address);
  return S_OK;
}

// The split needs no settings: none are copied in.
HRESULT HeaderMailboxes::SetDecodedMailbox(LONG index, WStringView text) {
  if (!CanStoreAt(index)) return E_INVALIDARG;
  working_->Split(text);
  return SetMailboxData(index, working_->name(), AnsiToWide(working_->address()));
}

// What the parse learns about the name's page and encoding stays in the
// working mailbox; the list's own settings do not change.
HRESULT HeaderMailboxes::SetEncodedMailbox(LONG index, WStringView text) {
  if (!CanStoreAt(index)) return E_INVALIDARG;
  working_->SetDefaultCodePage(defaultCodePage_);
  working_->SetDefaultEncoding(defaultEncoding_);
  HRESULT hr = working_->Parse(WideToAnsi(text));
  if (FAILED(hr)) return hr;
  return SetMailboxData(index, working_->name(), AnsiToWide(working_->address()));
}

// ---------------------------------------------------------------- output
void HeaderMailboxes::AppendDecodedMailbox(size_t i, WString* out) const {
  const WString& name = names_[i];
  const WString& address = addresses_[i];
  if (name.empty()) {
    out->append(address);
    return;
  }
  out->push_back(OLECHAR('"'));
  out->append(name);
  out->append(OLESTR("\" <"));
  out->append(address);
  out->push_back(OLECHAR('>'));
}

void HeaderMailboxes::AppendDecoded(WString* out) const {
  WString item;
  for (size_t i = 0; i < names_.size(); ++i) {
    item.clear();
    AppendDecodedMailbox(i, &item);
    if (item.empty()) continue;  // an empty item adds no comma
    if (!out->empty()) out->push_back(OLECHAR(','));
    out->append(item);
  }
}

HRESULT HeaderMailboxes::AppendEncodedMailbox(size_t i, std::string* ansiOut) {
  working_->SetDefaultCodePage(defaultCodePage_);
  working_->SetDefaultEncoding(defaultEncoding_);
  working_->SetName(names_[i]);
  working_->SetAddress(WideToAnsi(addresses_[i]));
  std::string mailbox;
  HRESULT hr = working_->Assemble(&mailbox);
  if (FAILED(hr)) return hr;
  ansiOut->append(mailbox);
  return S_OK;
}

HRESULT HeaderMailboxes::AssembleAnsi(std::string* ansiOut) {
  ansiOut->clear();
  for (size_t i = 0; i < names_.size(); ++i) {
    if (i > 0) ansiOut->append(",\r\n\t");
    HRESULT hr = AppendEncodedMailbox(i, ansiOut);
    if (FAILED(hr)) return hr;
  }
  return S_OK;
}

HRESULT HeaderMailboxes::Assemble(WString* out) {
  std::string text;
  HRESULT hr = AssembleAnsi(&text);
  if (FAILED(hr)) return hr;
  *out = AnsiToWide(text);
  return S_OK;
}

// ---------------------------------------------------------------- interface
HRESULT HeaderMailboxes::DoParseMailboxes(BSTR bszVal, LONG bEncoded) {
  names_.clear();
  addresses_.clear();
  if (bszVal == nullptr) return E_POINTER;
  return Parse(View(bszVal), bEncoded != 0);
}

HRESULT HeaderMailboxes::DoAssembleMailboxes(BSTR* pVal) {
  WString text;
  HRESULT hr = Assemble(&text);
  if (FAILED(hr)) return hr;
  return ReturnBstr(text, pVal);
}

HRESULT HeaderMailboxes::DoRemoveAll() {
  names_.clear();
  addresses_.clear();
  return S_OK;
}

HRESULT HeaderMailboxes::DoRemoveMailbox(LONG nIdx) {
  Slot slot = SlotOf(nIdx);
  if (slot == Slot::kNegative) return E_INVALIDARG;
  if (slot == Slot::kPastTheEnd) return S_OK;
  names_.erase(names_.begin() + nIdx);
  addresses_.erase(addresses_.begin() + nIdx);
  return S_OK;
}

HRESULT HeaderMailboxes::GetCount(LONG* pVal) {
  *pVal = static_cast<LONG>(names_.size());
  return S_OK;
}

HRESULT HeaderMailboxes::GetMailboxName(LONG nIdx, BSTR* pVal) {
  Slot slot = SlotOf(nIdx);
  if (slot == Slot::kNegative) return E_INVALIDARG;
  if (slot == Slot::kPastTheEnd) return S_OK;
  return ReturnBstr(names_[static_cast<size_t>(nIdx)], pVal);
}

HRESULT HeaderMailboxes::GetMailboxAddress(LONG nIdx, BSTR* pVal) {
  Slot slot = SlotOf(nIdx);
  if (slot == Slot::kNegative) return E_INVALIDARG;
  if (slot == Slot::kPastTheEnd) return S_OK;
  return ReturnBstr(addresses_[static_cast<size_t>(nIdx)], pVal);
}

HRESULT HeaderMailboxes::PutMailboxData(LONG nIdx, BSTR bszName, BSTR bszAddress) {
  return SetMailboxData(nIdx, View(bszName), View(bszAddress));
}

HRESULT HeaderMailboxes::PutDecodedMailbox(LONG nIdx, BSTR newVal) {
  return SetDecodedMailbox(nIdx, View(newVal));
}

HRESULT HeaderMailboxes::GetDecodedMailbox(LONG nIdx, BSTR* pVal) {
  Slot slot = SlotOf(nIdx);
  if (slot == Slot::kNegative) return E_INVALIDARG;
  WString text;  // out of range: "" (this get sets its result)
  if (slot == Slot::kStored) AppendDecodedMailbox(static_cast<size_t>(nIdx), &text);
  return ReturnBstr(text, pVal);
}

HRESULT HeaderMailboxes::GetDecodedMailboxes(BSTR* pVal) {
  WString text;
  AppendDecoded(&text);
  return ReturnBstr(text, pVal);
}

HRESULT HeaderMailboxes::GetEncodedMailbox(LONG nIdx, BSTR* pVal) {
  Slot slot = SlotOf(nIdx);
  if (slot == Slot::kNegative) return E_INVALIDARG;
  if (slot == Slot::kPastTheEnd) return S_OK;
  std::string text;
  HRESULT hr = AppendEncodedMailbox(static_cast<size_t>(nIdx), &text);
  if (FAILED(hr)) return hr;
  return ReturnBstr(AnsiToWide(text), pVal);
}

HRESULT HeaderMailboxes::PutEncodedMailbox(LONG nIdx, BSTR newVal) {
  return SetEncodedMailbox(nIdx, View(newVal));
}

}  // namespace pv
