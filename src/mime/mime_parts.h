// EMSMimeParts: the ordered list of child parts that every part owns, and
// the list type of a message's attachments. It holds references, never
// copies, so one part may stand in several lists at once.
#ifndef PARCELVANE_SRC_MIME_MIME_PARTS_H
#define PARCELVANE_SRC_MIME_MIME_PARTS_H

#include <cstddef>
#include <vector>

#include "src/com/com_object.h"

namespace pv {

class MimeParts final : public ComObject<MimeParts, IEMSMimeParts> {
 public:
  explicit MimeParts(IUnknown* outer) : ComObject(outer) {}

  // IEMSMimeParts in plain form: the generated producer calls each of these
  // after its null checks, inside Guard.
  HRESULT DoAddPart(IEMSMimePart* pVal);
  HRESULT DoAppendParts(IEMSMimeParts* pVal);
  HRESULT DoRemovePart(LONG nIdx);
  HRESULT DoRemoveAll();
  HRESULT GetPart(LONG nIdx, IEMSMimePart** ppVal);
  HRESULT PutPart(LONG nIdx, IEMSMimePart* pVal);
  HRESULT GetPartsCount(LONG* pVal);

  // ---------------------------------------------------------------- the library's own entry points
  size_t size() const { return parts_.size(); }
  // The entry at `index` (< size()).
  IEMSMimePart* at(size_t index) const { return parts_[index].get(); }
  void Append(IEMSMimePart* part) { parts_.emplace_back(part); }
  // Empties the list before releasing anything, so that a part released
  // here finds the list already in its final state.
  void Clear();

 private:
  std::vector<ComPtr<IEMSMimePart>> parts_;
};

// The same operations on any parts list: directly on the library's own,
// through the interface on another implementation.
LONG PartsCountOf(IEMSMimeParts* list);
ComPtr<IEMSMimePart> PartOf(IEMSMimeParts* list, LONG index);
HRESULT AppendPart(IEMSMimeParts* list, IEMSMimePart* part);
void RemoveAllParts(IEMSMimeParts* list);

}  // namespace pv

#endif  // PARCELVANE_SRC_MIME_MIME_PARTS_H
