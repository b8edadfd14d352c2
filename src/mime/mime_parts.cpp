#include "src/mime/mime_parts.h"

#include <cstdint>

#include "src/com/creators.h"
#include "src/mime/mime_part.h"

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
  std::vector<PartRef> released;
  released.swap(parts_);
}

HRESULT MimeParts::AppendOwn(MimePart* part) {
  PartRef entry;
  entry.ResetOwn(ComPtr<IEMSMimePart>(part), part);
  parts_.push_back(std::move(entry));
  return S_OK;
}

LONG MimeParts::Count() { return CountOf(parts_.size()); }

PartRef MimeParts::At(LONG index) {
  if (!InRange(index, parts_.size())) return PartRef();
  return parts_[static_cast<size_t>(index)];
}

HRESULT MimeParts::Append(IEMSMimePart* part) {
  parts_.emplace_back(part);
  return S_OK;
}

HRESULT MimeParts::DoAddPart(IEMSMimePart* pVal) {
  if (pVal == nullptr) return E_POINTER;
  return Append(pVal);
}

HRESULT MimeParts::DoAppendParts(IEMSMimeParts* pVal) {
  if (pVal == nullptr) return E_POINTER;
  // The count is read first, so a list appended to itself doubles once.
  PartListRef list(pVal);
  LONG count = list->Count();
  for (LONG i = 0; i < count; ++i) {
    PartRef part = list->At(i);
    if (part) parts_.push_back(std::move(part));
  }
  return S_OK;
}

HRESULT MimeParts::DoRemovePart(LONG nIdx) {
  if (!InRange(nIdx, parts_.size())) return S_OK;
  PartRef removed = std::move(parts_[static_cast<size_t>(nIdx)]);
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
  parts_[static_cast<size_t>(nIdx)].object().CopyTo(ppVal);
  return S_OK;
}

HRESULT MimeParts::PutPart(LONG nIdx, IEMSMimePart* pVal) {
  if (pVal == nullptr) return E_POINTER;
  if (!InRange(nIdx, parts_.size())) return S_OK;
  PartRef& slot = parts_[static_cast<size_t>(nIdx)];
  if (slot.get() == pVal) return S_OK;
  PartRef entry(pVal);
  PartRef released = std::move(slot);
  slot = std::move(entry);
  return S_OK;
}

HRESULT MimeParts::GetPartsCount(LONG* pVal) {
  *pVal = CountOf(parts_.size());
  return S_OK;
}

}  // namespace pv
