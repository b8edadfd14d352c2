#include "src/headers/header_mailboxes.h"

#include <new>

#include "src/headers/mailbox_name.h"
#include "src/headers/mailbox_text.h"
#include "src/platform/codepage.h"
#include "src/com/creators.h"

namespace pv {

HRESULT CreateEMSHeaderMailboxes(IUnknown* outer, REFIID riid, void** ppv) {
  return CreateInstance<HeaderMailboxes>(outer, riid, ppv);
}

HeaderMailboxes::Slot HeaderMailboxes::SlotOf(LONG index) const {
  if (index < 0) return Slot::kNegative;
  return static_cast<size_t>(index) < entries_.size() ? Slot::kStored : Slot::kPastTheEnd;
}

bool HeaderMailboxes::CanStoreAt(LONG index) const {
  return index == kAppend || SlotOf(index) == Slot::kStored;
}

void HeaderMailboxes::StoreAt(LONG index, Entry entry) {
  if (index == kAppend) {
    entries_.push_back(std::move(entry));
  } else {
    entries_[static_cast<size_t>(index)] = std::move(entry);
  }
}

// ---------------------------------------------------------------- entries
HeaderMailboxes::Entry HeaderMailboxes::EncodedEntry(std::string_view wire) const {
  MailboxParts<char> parts = SplitMailbox(wire);
  Entry entry;
  entry.encodedName = std::move(parts.name);
  entry.nameCodePage = defaultCodePage_;
  entry.nameEncoding = defaultEncoding_;
  entry.address = std::move(parts.address);
  return entry;
}

// What decoding learns about the name's page and encoding is not kept: the
// list writes every name with its own settings.
const WString& HeaderMailboxes::NameOf(Entry& entry) {
  if (!entry.encodedName.empty()) {
    LONG codePage = entry.nameCodePage;
    LONG encoding = entry.nameEncoding;
    if (FAILED(DecodeMailboxName(entry.encodedName, &codePage, &encoding, &entry.name)))
      throw std::bad_alloc();
    std::string().swap(entry.encodedName);
  }
  return entry.name;
}

WString HeaderMailboxes::WideAddressOf(const Entry& entry) {
  if (const WString* given = std::get_if<WString>(&entry.address)) return *given;
  return AnsiToWide(std::get<std::string>(entry.address));
}

// The bytes the wide address gives in the ANSI page.
std::string HeaderMailboxes::AnsiAddressOf(const Entry& entry) {
  if (const WString* given = std::get_if<WString>(&entry.address)) return WideToAnsi(*given);
  return AnsiRoundTrip(std::get<std::string>(entry.address));
}

// ---------------------------------------------------------------- parsing
HRESULT HeaderMailboxes::Parse(WStringView text, bool encoded) {
  entries_.clear();
  for (WStringView piece : SplitMailboxList(text)) {
    HRESULT hr = encoded ? SetEncodedMailbox(kAppend, piece) : SetDecodedMailbox(kAppend, piece);
    if (FAILED(hr)) return hr;
  }
  return S_OK;
}

HRESULT HeaderMailboxes::ParseAnsi(std::string_view ansiText, bool encoded) {
  if (!encoded || !AnsiKeepsEveryByte()) return Parse(AnsiToWide(ansiText), encoded);
  entries_.clear();
  for (std::string_view piece : SplitMailboxList(ansiText)) entries_.push_back(EncodedEntry(piece));
  return S_OK;
}

HRESULT HeaderMailboxes::SetMailboxData(LONG index, WStringView name, WStringView address) {
  if (!CanStoreAt(index)) return E_INVALIDARG;
  Entry entry;
  entry.name.assign(name);
  entry.address = WString(address);
  StoreAt(index, std::move(entry));
  return S_OK;
}

// The split needs no settings and decodes nothing.
HRESULT HeaderMailboxes::SetDecodedMailbox(LONG index, WStringView text) {
  if (!CanStoreAt(index)) return E_INVALIDARG;
  MailboxParts<OLECHAR> parts = SplitMailbox(text);
  Entry entry;
  entry.name = std::move(parts.name);
  entry.address = WideToAnsi(parts.address);
  StoreAt(index, std::move(entry));
  return S_OK;
}

HRESULT HeaderMailboxes::SetEncodedMailbox(LONG index, WStringView text) {
  if (!CanStoreAt(index)) return E_INVALIDARG;
  StoreAt(index, EncodedEntry(WideToAnsi(text)));
  return S_OK;
}

// ---------------------------------------------------------------- output
void HeaderMailboxes::AppendDecodedMailbox(size_t i, WString* out) {
  const WString& name = NameOf(entries_[i]);
  WString address = WideAddressOf(entries_[i]);
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

void HeaderMailboxes::AppendDecoded(WString* out) {
  WString item;
  for (size_t i = 0; i < entries_.size(); ++i) {
    item.clear();
    AppendDecodedMailbox(i, &item);
    if (item.empty()) continue;  // an empty item adds no comma
    if (!out->empty()) out->push_back(OLECHAR(','));
    out->append(item);
  }
}

HRESULT HeaderMailboxes::AppendEncodedMailbox(size_t i, std::string* ansiOut) {
  std::string encodedName;
  HRESULT hr = EncodeMailboxName(NameOf(entries_[i]), defaultCodePage_, defaultEncoding_, &encodedName);
  if (FAILED(hr)) return hr;
  AppendMailboxWireForm(encodedName, AnsiAddressOf(entries_[i]), ansiOut);
  return S_OK;
}

HRESULT HeaderMailboxes::AssembleAnsi(std::string* ansiOut) {
  ansiOut->clear();
  for (size_t i = 0; i < entries_.size(); ++i) {
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
  entries_.clear();
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
  entries_.clear();
  return S_OK;
}

HRESULT HeaderMailboxes::DoRemoveMailbox(LONG nIdx) {
  Slot slot = SlotOf(nIdx);
  if (slot == Slot::kNegative) return E_INVALIDARG;
  if (slot == Slot::kPastTheEnd) return S_OK;
  entries_.erase(entries_.begin() + nIdx);
  return S_OK;
}

HRESULT HeaderMailboxes::GetCount(LONG* pVal) {
  *pVal = static_cast<LONG>(entries_.size());
  return S_OK;
}

HRESULT HeaderMailboxes::GetMailboxName(LONG nIdx, BSTR* pVal) {
  Slot slot = SlotOf(nIdx);
  if (slot == Slot::kNegative) return E_INVALIDARG;
  if (slot == Slot::kPastTheEnd) return S_OK;
  return ReturnBstr(NameOf(entries_[static_cast<size_t>(nIdx)]), pVal);
}

HRESULT HeaderMailboxes::GetMailboxAddress(LONG nIdx, BSTR* pVal) {
  Slot slot = SlotOf(nIdx);
  if (slot == Slot::kNegative) return E_INVALIDARG;
  if (slot == Slot::kPastTheEnd) return S_OK;
  return ReturnBstr(WideAddressOf(entries_[static_cast<size_t>(nIdx)]), pVal);
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
