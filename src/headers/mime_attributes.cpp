#include "src/headers/mime_attributes.h"

#include "src/headers/message_parameter.h"

#include <array>
#include <iterator>

#include "src/headers/header_text.h"
#include "src/headers/mime_char_class.h"
#include "src/platform/codepage.h"
#include "src/com/creators.h"

namespace pv {

HRESULT CreateEMSMimeAttributes(IUnknown* outer, REFIID riid, void** ppv) {
  return CreateInstance<MimeAttributes>(outer, riid, ppv);
}

namespace {

// What is skipped in front of every parameter: blanks, line breaks and the
// address specials, which steps over the ";" between parameters and the
// folding between lines.
std::array<bool, 256> MakeSkipTable() {
  std::array<bool, 256> skip{};
  for (unsigned char c = 0; c < 128; ++c) {
    skip[c] = HasCharClass(c, kCharWhiteSpace | kCharAddressSpecial | kCharLineBreak);
  }
  return skip;
}

// Built from the character classes, which are constant-initialized.
const std::array<bool, 256> kSkippedBeforeParameter = MakeSkipTable();

bool IsSkippedBeforeParameter(char c) { return kSkippedBeforeParameter[static_cast<unsigned char>(c)]; }

// Whether a parameter written under this name reads back under it: the
// parse skips blanks and specials in front of a name, ends it at the first
// "=" or ";", trims blanks and strips a trailing "*"; a name is a token, and
// one holding control characters (line breaks, zeros) does not keep its
// place among the others. What a parse leaves that is not such a name
// (empty, "x *" after the stars went, control characters) is not written.
bool NameStands(std::string_view name) {
  if (name.empty() || IsSkippedBeforeParameter(name.front())) return false;
  if (IsBlank(name.back()) || name.back() == '*') return false;
  for (char c : name) {
    if (c == '=' || c == ';' || (HasCharClass(static_cast<unsigned char>(c), kCharControl) && c != '\t'))
      return false;
  }
  return true;
}

// A wide name as an attribute holds it: through the ANSI page.
WString KeyOfWideName(WStringView name) { return AnsiToWide(WideToAnsi(name)); }

}  // namespace

// ---------------------------------------------------------------- the map
HRESULT MimeAttributes::ReadKey(IEMSMimeAttribute* attribute, WString* key, MimeAttribute** own) {
  ComPtr<MimeAttribute> impl = ImplOf<MimeAttribute>(attribute);
  if (impl) {
    *key = AnsiToWide(impl->name());
    *own = impl.get();
    return S_OK;
  }
  Bstr name;
  if (FAILED(attribute->get_Name(name.put())) || name.is_null()) return E_FAIL;
  *key = KeyOfWideName(name.view());
  *own = nullptr;
  return S_OK;
}

HRESULT MimeAttributes::Add(IEMSMimeAttribute* attribute) {
  WString key;
  MimeAttribute* own = nullptr;
  HRESULT hr = ReadKey(attribute, &key, &own);
  if (FAILED(hr)) return hr;
  auto place = PlaceOf(key);
  if (place.second) return S_OK;  // the first of a name stays
  entries_.emplace_hint(place.first, std::move(key), Entry{ComPtr<IEMSMimeAttribute>(attribute), own});
  ForgetCursor();
  return S_OK;
}

HRESULT MimeAttributes::Replace(IEMSMimeAttribute* attribute) {
  WString key;
  MimeAttribute* own = nullptr;
  HRESULT hr = ReadKey(attribute, &key, &own);
  if (FAILED(hr)) return hr;
  auto found = entries_.find(key);
  if (found != entries_.end()) found->second = Entry{ComPtr<IEMSMimeAttribute>(attribute), own};
  return S_OK;
}

std::pair<MimeAttributes::Map::iterator, bool> MimeAttributes::PlaceOf(const WString& key) {
  auto place = entries_.lower_bound(key);
  return {place, place != entries_.end() && !entries_.key_comp()(key, place->first)};
}

void MimeAttributes::Clear() {
  entries_.clear();
  ForgetCursor();
}

MimeAttributes::Map::const_iterator MimeAttributes::EntryAt(size_t index) const {
  const size_t size = entries_.size();
  if (!cursorValid_) {
    cursor_ = entries_.begin();
    cursorIndex_ = 0;
    cursorValid_ = true;
  }
  size_t fromCursor = index > cursorIndex_ ? index - cursorIndex_ : cursorIndex_ - index;
  if (index < fromCursor && index <= size - index) {
    cursor_ = entries_.begin();
    cursorIndex_ = 0;
  } else if (size - index < fromCursor) {
    cursor_ = entries_.end();
    cursorIndex_ = size;
  }
  std::advance(cursor_, static_cast<std::ptrdiff_t>(index) - static_cast<std::ptrdiff_t>(cursorIndex_));
  cursorIndex_ = index;
  return cursor_;
}

// ---------------------------------------------------------------- library entry points
HRESULT MimeAttributes::Parse(std::string_view text) {
  Clear();
  size_t i = 0;
  const size_t n = text.size();
  for (;;) {
    while (i < n && IsSkippedBeforeParameter(text[i])) ++i;
    if (i >= n) return S_OK;
    // Quotes are not looked at: a ";" inside a quoted value ends it.
    size_t end = text.find(';', i);
    if (end == std::string_view::npos) end = n;
    AttributeText parts = SplitAttributeText(text.substr(i, end - i));
    i = end;
    // A parameter whose name is already in the list would be dropped: it
    // is not made at all. Text without "=" gives an attribute with an
    // empty name.
    WString key = AnsiToWide(parts.name);
    auto place = PlaceOf(key);
    if (place.second) continue;
    ComPtr<MimeAttribute> attribute;
    HRESULT hr = MakeObject(&attribute);
    if (FAILED(hr)) return hr;
    if (attribute->ParseSplit(parts) == E_OUTOFMEMORY) return E_OUTOFMEMORY;
    MimeAttribute* own = attribute.get();
    entries_.emplace_hint(place.first, std::move(key), Entry{ComPtr<IEMSMimeAttribute>(own), own});
    ForgetCursor();
  }
}

HRESULT MimeAttributes::ParseText(std::string_view ansiText) {
  std::string scratch;
  return Parse(AnsiRoundTrip(ansiText, &scratch));
}

std::string MimeAttributes::AssembledText() {
  std::string text;
  if (FAILED(AppendAssembled(&text))) return std::string();
  return AnsiRoundTrip(std::move(text));
}

HRESULT MimeAttributes::AppendAssembled(std::string* ansiOut) {
  std::string text;
  for (const auto& [key, entry] : entries_) {
    text.clear();
    if (entry.own != nullptr) {
      if (!NameStands(entry.own->name())) continue;
      HRESULT hr = entry.own->AppendAssembled(&text);
      if (hr == E_OUTOFMEMORY) return hr;
    } else {
      Bstr name;
      Bstr assembled;
      if (FAILED(entry.object->get_Name(name.put())) || !NameStands(WideToAnsi(name.view()))) continue;
      if (SUCCEEDED(entry.object->AssembleAttribute(assembled.put()))) text = WideToAnsi(assembled.view());
    }
    if (text.empty()) continue;
    ansiOut->append(";\r\n\t").append(text);
  }
  return S_OK;
}

ComPtr<IEMSMimeAttribute> MimeAttributes::Find(std::string_view ansiName) const {
  auto found = entries_.find(AnsiToWide(ansiName));
  return found == entries_.end() ? nullptr : found->second.object;
}

MimeAttribute* MimeAttributes::FindOwn(std::string_view ansiName) const {
  auto found = entries_.find(AnsiToWide(ansiName));
  return found == entries_.end() ? nullptr : found->second.own;
}

HRESULT MimeAttributes::Create(std::string_view ansiName, ComPtr<IEMSMimeAttribute>* out) {
  WString key = AnsiToWide(ansiName);
  auto place = PlaceOf(key);
  if (place.second) {
    *out = place.first->second.object;
    return S_FALSE;
  }
  ComPtr<MimeAttribute> attribute;
  HRESULT hr = MakeObject(&attribute);
  if (FAILED(hr)) return hr;
  attribute->SetName(ansiName);
  MimeAttribute* own = attribute.get();
  *out = ComPtr<IEMSMimeAttribute>(own);
  entries_.emplace_hint(place.first, std::move(key), Entry{*out, own});
  ForgetCursor();
  return S_OK;
}

void MimeAttributes::Remove(std::string_view ansiName) {
  if (entries_.erase(AnsiToWide(ansiName)) != 0) ForgetCursor();
}

// ---------------------------------------------------------------- interface
HRESULT MimeAttributes::DoParseAttributes(BSTR bszVal) {
  if (bszVal == nullptr) return E_POINTER;
  return Parse(BstrToAnsi(bszVal));
}

HRESULT MimeAttributes::DoAssembleAttributes(BSTR* pVal) {
  std::string text;
  HRESULT hr = AppendAssembled(&text);
  if (FAILED(hr)) return hr;
  if (text.empty()) return S_OK;  // the caller's string stays as it was
  return ReturnBstr(AnsiToWide(text), pVal);
}

HRESULT MimeAttributes::DoAppendAttributes(IEMSMimeAttributes* pVal) {
  if (pVal == nullptr) return E_POINTER;
  // Only names this list already has are taken over, as shared objects.
  AttributeListRef list(pVal);
  if (MimeAttributes* other = list->OwnList()) {
    for (const auto& [key, entry] : other->entries_) Replace(entry.object.get());
    return S_OK;
  }
  LONG count = 0;
  if (FAILED(pVal->get_AttributesCount(&count))) return S_OK;
  for (LONG i = 0; i < count; ++i) {
    ComPtr<IEMSMimeAttribute> attribute;
    if (SUCCEEDED(pVal->get_Attribute(i, attribute.put())) && attribute) Replace(attribute.get());
  }
  return S_OK;
}

HRESULT MimeAttributes::DoCreateAttribute(BSTR bszName, IEMSMimeAttribute** ppVal) {
  if (bszName == nullptr) return E_POINTER;
  ComPtr<IEMSMimeAttribute> attribute;
  HRESULT hr = Create(BstrToAnsi(bszName), &attribute);
  if (FAILED(hr)) return hr;
  *ppVal = attribute.detach();
  return hr;
}

HRESULT MimeAttributes::DoAddAttribute(IEMSMimeAttribute* pVal) {
  if (pVal == nullptr) return E_POINTER;
  return Add(pVal);
}

HRESULT MimeAttributes::DoReplaceAttribute(IEMSMimeAttribute* pVal) {
  if (pVal == nullptr) return E_POINTER;
  return Replace(pVal);
}

HRESULT MimeAttributes::DoFindAttribute(BSTR bszName, IEMSMimeAttribute** ppVal) {
  if (bszName == nullptr) return E_POINTER;
  ComPtr<IEMSMimeAttribute> found = Find(BstrToAnsi(bszName));
  if (!found) return S_FALSE;  // the caller's pointer stays as it was
  *ppVal = found.detach();
  return S_OK;
}

HRESULT MimeAttributes::DoRemoveAttribute(BSTR bszName) {
  if (bszName == nullptr) return E_POINTER;
  Remove(BstrToAnsi(bszName));
  return S_OK;
}

HRESULT MimeAttributes::DoRemoveAll() {
  Clear();
  return S_OK;
}

HRESULT MimeAttributes::DoClone(IEMSMimeAttributes** ppVal) {
  ComPtr<MimeAttributes> clone;
  HRESULT hr = MakeObject(&clone);
  if (FAILED(hr)) return hr;
  for (const auto& [key, entry] : entries_) {
    ComPtr<IEMSMimeAttribute> copy;
    hr = entry.object->Clone(copy.put());
    if (FAILED(hr)) return hr;
    if (!copy) continue;
    hr = clone->Add(copy.get());
    if (hr == E_OUTOFMEMORY) return hr;
  }
  *ppVal = clone.detach();
  return S_OK;
}

HRESULT MimeAttributes::GetAttribute(LONG nIdx, IEMSMimeAttribute** ppVal) {
  // Negative indexes are out of range too: the caller's pointer stays.
  if (nIdx < 0 || static_cast<size_t>(nIdx) >= entries_.size()) return S_OK;
  EntryAt(static_cast<size_t>(nIdx))->second.object.CopyTo(ppVal);
  return S_OK;
}

HRESULT MimeAttributes::GetAttributesCount(LONG* pVal) {
  *pVal = static_cast<LONG>(entries_.size());
  return S_OK;
}

}  // namespace pv
