#include "src/headers/message_parameters.h"

#include <limits>

#include "src/data/data_access.h"
#include "src/headers/header_block.h"
#include "src/headers/header_text.h"
#include "src/headers/message_parameter.h"
#include "src/platform/codepage.h"
#include "src/com/creators.h"

namespace pv {

HRESULT CreateEMSMessageParameters(IUnknown* outer, REFIID riid, void** ppv) {
  return CreateInstance<MessageParameters>(outer, riid, ppv);
}

namespace {

constexpr size_t kNotIndexed = NameIndex::kNotFound;

std::string NameKey(BSTR name) { return HeaderNameKey(View(name)); }

void TrimTrailingLineBreaksInPlace(std::string* text) {
  size_t end = text->size();
  while (end > 0 && IsLineBreakChar((*text)[end - 1])) --end;
  text->resize(end);
}

}  // namespace

MessageParameters::MessageParameters(IUnknown* outer)
    : ComObject(outer), defaultCodePage_(static_cast<LONG>(AnsiCodePage())) {}

// ---------------------------------------------------------------- entries and the name index
size_t MessageParameters::IndexedPosition(const std::string& key) const { return index_.Find(key); }

void MessageParameters::Append(FieldRef field, std::string key) {
  fields_.push_back(std::move(field));
  index_.Add(std::move(key), fields_.size() - 1);
}

// The first field of each name wins: later ones are not indexed.
void MessageParameters::RebuildIndex() {
  index_.Clear();
  std::string key;
  for (size_t i = 0; i < fields_.size(); ++i) {
    if (fields_[i] && fields_[i]->NameKey(&key)) index_.Add(key, i);
  }
}

void MessageParameters::Clear() {
  std::vector<FieldRef> released;
  released.swap(fields_);  // the list is empty before any field is released
  index_.Clear();
}

// An indexed entry that Parameter put emptied takes the field in its place.
HRESULT MessageParameters::AddNamed(FieldRef field, std::string key) {
  size_t at = IndexedPosition(key);
  if (at == kNotIndexed) {
    Append(std::move(field), std::move(key));
  } else if (!fields_[at]) {
    fields_[at] = std::move(field);
  } else {
    fields_[at]->Chain(field.get());  // status ignored
  }
  return S_OK;
}

// ---------------------------------------------------------------- parsing
HRESULT MessageParameters::ParseBlock(std::string_view ansiBlock) {
  return ParseBlockSplitting(ansiBlock, std::string_view(), nullptr);
}

// A name belongs to one list only, so chaining within each list is the
// chaining of the whole block.
HRESULT MessageParameters::ParseBlockSplitting(std::string_view ansiBlock, std::string_view asciiPrefix,
                                               MessageParameters* to) {
  return Guard([&] {
    Clear();
    std::string prefix(asciiPrefix);
    for (char& c : prefix) c = ToLowerAscii(c);
    // Repeated names are chained without a refresh each time; each field
    // that received some is brought up to date once at the end.
    std::vector<ComPtr<MessageParameter>> chained;
    for (std::string_view text : SplitHeaderBlock(ansiBlock)) {
      ComPtr<MessageParameter> field;
      if (FAILED(MakeObject(&field))) continue;
      field->SetDefaults(defaultCodePage_, defaultEncoding_);
      if (field->ParseHeaderNarrow(text) != S_OK) continue;  // dropped
      std::string key = HeaderNameKey(field->name());
      MessageParameters* list = to != nullptr && key.compare(0, prefix.size(), prefix) == 0 ? to : this;
      size_t at = list->IndexedPosition(key);
      if (at == kNotIndexed) {
        FieldRef entry;
        entry.ResetOwn(ComPtr<IEMSMessageParameter>(field.get()), field.get());
        list->Append(std::move(entry), std::move(key));
        continue;
      }
      MessageParameter* target = list->fields_[at]->OwnField();
      if (target == nullptr) {
        list->fields_[at]->Chain(field.get());
        continue;
      }
      if (target->AppendChainDeferred(field.get()) == S_OK)
        chained.push_back(ComPtr<MessageParameter>(target));
    }
    for (const ComPtr<MessageParameter>& target : chained) target->FinishChaining();
    return S_OK;
  });
}

HRESULT MessageParameters::DoParseParameters(BSTR bszVal) {
  if (bszVal == nullptr) return E_POINTER;
  return ParseBlock(BstrToAnsi(bszVal));
}

// Reads the data object's span in place: its buffer is not copied and its
// Position and Length are left as they are.
HRESULT MessageParameters::DoParseParametersObject(IEMSDataObject* pVal) {
  if (pVal == nullptr) return E_POINTER;
  DataBytes bytes;
  if (FAILED(ReadDataBytes(pVal, &bytes))) return E_FAIL;
  if (bytes.data() == nullptr) return E_INVALIDARG;
  return ParseBlock(bytes.Span());
}

// ---------------------------------------------------------------- assembly
// Every field ends with exactly one "\r\n"; a field that assembles to
// nothing adds nothing; no empty line follows the block.
HRESULT MessageParameters::AssembleBlock(std::string* out) {
  return Guard([&] {
    out->clear();
    for (const FieldRef& field : fields_) {
      if (!field) continue;
      out->append(field->AssembledText());
      TrimTrailingLineBreaksInPlace(out);
      if (!out->empty()) out->append("\r\n");
    }
    return S_OK;
  });
}

HRESULT MessageParameters::DoAssembleParameters(BSTR* pVal) {
  std::string text;
  HRESULT hr = AssembleBlock(&text);
  if (FAILED(hr)) return hr;
  if (text.empty()) return S_OK;  // the result place is left as it was
  return ReturnBstr(AnsiToWide(text), pVal);
}

HRESULT MessageParameters::DoAssembleParametersObject(IEMSDataObject** ppVal) {
  std::string text;
  HRESULT hr = AssembleBlock(&text);
  if (FAILED(hr)) return hr;
  if (text.empty()) return E_FAIL;
  ComPtr<IEMSDataObject> data;
  if (FAILED(MakeDataObject(std::move(text), &data))) return E_FAIL;
  *ppVal = data.detach();
  return S_OK;
}

// ---------------------------------------------------------------- editing
HRESULT MessageParameters::DoAppendParameters(IEMSMessageParameters* pVal) {
  if (pVal == nullptr) return E_POINTER;
  LONG count = 0;
  pVal->get_ParamCount(&count);
  for (LONG i = 0; i < count; ++i) {
    ComPtr<IEMSMessageParameter> field;
    pVal->get_Parameter(i, field.put());
    if (field) ReplaceParameter(field.get());
  }
  return S_OK;
}

HRESULT MessageParameters::DoClone(IEMSMessageParameters** ppVal) {
  ComPtr<MessageParameters> clone;
  HRESULT hr = MakeObject(&clone);
  if (FAILED(hr)) return hr;
  clone->SetDefaults(defaultCodePage_, defaultEncoding_);
  for (const FieldRef& field : fields_) {
    if (!field) continue;
    ComPtr<IEMSMessageParameter> copy;
    if (SUCCEEDED(field.get()->Clone(copy.put())) && copy) clone->AddParameter(copy.get());
  }
  *ppVal = clone.detach();
  return S_OK;
}

HRESULT MessageParameters::DoCreateParameter(BSTR bszName, IEMSMessageParameter** ppVal) {
  size_t at = IndexedPosition(NameKey(bszName));
  if (at != kNotIndexed && fields_[at]) {
    fields_[at].object().CopyTo(ppVal);
    return S_FALSE;
  }
  ComPtr<MessageParameter> field;
  HRESULT hr = MakeObject(&field);
  if (FAILED(hr)) return hr;
  field->SetDefaults(defaultCodePage_, defaultEncoding_);
  field->put_Name(bszName);
  FieldRef entry;
  entry.ResetOwn(ComPtr<IEMSMessageParameter>(field.get()), field.get());
  hr = AddNamed(std::move(entry), HeaderNameKey(field->name()));
  if (FAILED(hr)) return hr;
  *ppVal = field.detach();
  return S_OK;
}

HRESULT MessageParameters::DoAddParameter(IEMSMessageParameter* pVal) {
  if (pVal == nullptr) return E_POINTER;
  FieldRef field(pVal);
  std::string key;
  if (!field->NameKey(&key)) return E_FAIL;
  return AddNamed(std::move(field), std::move(key));
}

HRESULT MessageParameters::DoReplaceParameter(IEMSMessageParameter* pVal) {
  if (pVal == nullptr) return E_POINTER;
  FieldRef field(pVal);
  std::string key;
  if (!field->NameKey(&key)) return E_FAIL;
  size_t at = IndexedPosition(key);
  if (at == kNotIndexed) {
    Append(std::move(field), std::move(key));
  } else if (fields_[at].get() != pVal) {
    fields_[at] = std::move(field);
  }
  return S_OK;
}

HRESULT MessageParameters::DoFindParameter(BSTR bszName, IEMSMessageParameter** ppVal) {
  size_t at = IndexedPosition(NameKey(bszName));
  if (at != kNotIndexed && fields_[at]) fields_[at].object().CopyTo(ppVal);
  return S_OK;  // nothing is written when the name is absent
}

HRESULT MessageParameters::DoRemoveAll() {
  Clear();
  return S_OK;
}

HRESULT MessageParameters::DoRemoveByName(BSTR bszName) {
  size_t at = IndexedPosition(NameKey(bszName));
  if (at == kNotIndexed) return S_OK;
  FieldRef removed = std::move(fields_[at]);
  fields_.erase(fields_.begin() + static_cast<std::ptrdiff_t>(at));
  RebuildIndex();
  return S_OK;
}

// The name index is left as it is, so it may afterwards point at a field
// of another name.
HRESULT MessageParameters::PutParameter(LONG nIdx, IEMSMessageParameter* pVal) {
  if (nIdx < 0 || static_cast<size_t>(nIdx) >= fields_.size()) return S_OK;
  FieldRef entry(pVal);
  FieldRef released = std::move(fields_[static_cast<size_t>(nIdx)]);
  fields_[static_cast<size_t>(nIdx)] = std::move(entry);
  return S_OK;
}

HRESULT MessageParameters::GetParameter(LONG nIdx, IEMSMessageParameter** ppVal) {
  if (nIdx < 0 || static_cast<size_t>(nIdx) >= fields_.size()) return S_OK;  // nothing written
  fields_[static_cast<size_t>(nIdx)].object().CopyTo(ppVal);
  return S_OK;
}

HRESULT MessageParameters::GetParamCount(LONG* pVal) {
  *pVal = Count();
  return S_OK;
}

// ---------------------------------------------------------------- the library's own entry points
// ---------------------------------------------------------------- as FieldListAccess
FieldRef MessageParameters::Find(std::string_view ansiName) {
  size_t at = IndexedPosition(HeaderNameKey(ansiName));
  return at == kNotIndexed ? FieldRef() : fields_[at];
}

HRESULT MessageParameters::Create(std::string_view ansiName, FieldRef* out) {
  Bstr wide(AnsiToWide(ansiName));
  if (wide.is_null()) return E_OUTOFMEMORY;
  ComPtr<IEMSMessageParameter> field;
  HRESULT hr = CreateParameter(wide.get(), field.put());
  if (FAILED(hr)) return hr;
  if (!field) return E_FAIL;
  out->Reset(std::move(field));
  return hr;
}

HRESULT MessageParameters::BlockText(std::string* out) {
  HRESULT hr = AssembleBlock(out);
  if (FAILED(hr)) return hr;
  // The interface hands the text over as wide text: what comes back from
  // that trip is what is written.
  *out = AnsiRoundTrip(std::move(*out));
  return S_OK;
}

LONG MessageParameters::Count() {
  constexpr LONG kMost = std::numeric_limits<LONG>::max();
  return fields_.size() > static_cast<size_t>(kMost) ? kMost : static_cast<LONG>(fields_.size());
}
}  // namespace pv
