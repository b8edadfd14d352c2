#include "src/mime/mime_parts.h"

#include <cstdint>

#include "src/com/creators.h"

namespace pv {

HRESULT CreateEMSMimeParts(IUnknown* outer, REFIID riid, void** ppv) {
  return CreateInstance<MimeParts>(outer, riid, ppv);
}

namespace {

bool InRange(LONG index, size_t size) { return index >= 0 && static_cast<size_t>(index) < size; }

// A count as the interface's 32-bit number.
LONG CountOf(size_t size) {
  return size > static_cast<size_t>(INT32_MAX) ? INT32_MAX : static_cast<LONG>(size);
}

}  // namespace

void MimeParts::Clear() {
  std::vector<ComPtr<IEMSMimePart>> released;
  released.swap(parts_);
}

HRESULT MimeParts::DoAddPart(IEMSMimePart* pVal) {
  if (pVal == nullptr) return E_POINTER;
  Append(pVal);
  return S_OK;
}

HRESULT MimeParts::DoAppendParts(IEMSMimeParts* pVal) {
  if (pVal == nullptr) return E_POINTER;
  // The count is read first, so a list appended to itself doubles once.
  LONG count = PartsCountOf(pVal);
  for (LONG i = 0; i < count; ++i) {
    ComPtr<IEMSMimePart> part = PartOf(pVal, i);
    if (part) Append(part.get());
  }
  return S_OK;
}

HRESULT MimeParts::DoRemovePart(LONG nIdx) {
  if (!InRange(nIdx, parts_.size())) return S_OK;
  ComPtr<IEMSMimePart> removed = std::move(parts_[static_cast<size_t>(nIdx)]);
  parts_.erase(parts_.begin() + nIdx);
  return S_OK;
}

HRESULT MimeParts::DoRemoveAll() {
  Clear();
  return S_OK;
}

// A negative index is a range failure here, unlike everywhere else.
HRESULT MimeParts::GetPart(LONG nIdx, IEMSMimePart** ppVal) {
  if (nIdx < 0) return E_INVALIDARG;
  if (static_cast<size_t>(nIdx) >= parts_.size()) return S_OK;  // nothing written
  parts_[static_cast<size_t>(nIdx)].CopyTo(ppVal);
  return S_OK;
}

HRESULT MimeParts::PutPart(LONG nIdx, IEMSMimePart* pVal) {
  if (pVal == nullptr) return E_POINTER;
  if (!InRange(nIdx, parts_.size())) return S_OK;
  ComPtr<IEMSMimePart>& slot = parts_[static_cast<size_t>(nIdx)];
  if (slot.get() == pVal) return S_OK;
  ComPtr<IEMSMimePart> released = std::move(slot);
  slot = ComPtr<IEMSMimePart>(pVal);
  return S_OK;
}

HRESULT MimeParts::GetPartsCount(LONG* pVal) {
  *pVal = CountOf(parts_.size());
  return S_OK;
}

// ---------------------------------------------------------------- any parts list
LONG PartsCountOf(IEMSMimeParts* list) {
  if (ComPtr<MimeParts> own = ImplOf<MimeParts>(list)) {
    return CountOf(own->size());
  }
  LONG count = 0;
  if (list == nullptr || FAILED(list->get_PartsCount(&count)) || count < 0) return 0;
  return count;
}

ComPtr<IEMSMimePart> PartOf(IEMSMimeParts* list, LONG index) {
  if (ComPtr<MimeParts> own = ImplOf<MimeParts>(list)) {
    if (!InRange(index, own->size())) return nullptr;
    return ComPtr<IEMSMimePart>(own->at(static_cast<size_t>(index)));
  }
  ComPtr<IEMSMimePart> part;
  if (list != nullptr) list->get_Part(index, part.put());
  return part;
}

HRESULT AppendPart(IEMSMimeParts* list, IEMSMimePart* part) {
  if (ComPtr<MimeParts> own = ImplOf<MimeParts>(list)) {
    own->Append(part);
    return S_OK;
  }
  return list != nullptr ? list->AddPart(part) : E_POINTER;
}

void RemoveAllParts(IEMSMimeParts* list) {
  if (ComPtr<MimeParts> own = ImplOf<MimeParts>(list)) {
    own->Clear();
    return;
  }
  if (list != nullptr) list->RemoveAll();
}

}  // namespace pv
