// EMSMimeParts: the ordered list of child parts that every part owns, and
// the list type of a message's attachments. It holds references, never
// copies, so one part may stand in several lists at once.
#ifndef PARCELVANE_SRC_MIME_MIME_PARTS_H
#define PARCELVANE_SRC_MIME_MIME_PARTS_H

#include <algorithm>
#include <cstddef>
#include <vector>

#include "src/com/com_object.h"
#include "src/mime/part_access.h"

namespace pv {

class MimeParts final : public ComObject<MimeParts, IEMSMimeParts>, public PartListAccess {
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
  const PartRef& entry(size_t index) const { return parts_[index]; }

  // ---------------------------------------------------------------- as PartListAccess
  LONG Count() override;
  PartRef At(LONG index) override;
  HRESULT Append(IEMSMimePart* part) override;
  HRESULT AppendOwn(MimePart* part) override;
  // Empties the list before releasing anything, so that a part released
  // here finds the list already in its final state.
  void Clear() override;
  // Exact for a list that is empty, geometric for one that grows, so that
  // lists appended to again and again stay linear.
  void Reserve(size_t more) override {
    if (parts_.size() + more > parts_.capacity())
      parts_.reserve(std::max(parts_.size() + more, 2 * parts_.capacity()));
  }

 private:
  std::vector<PartRef> parts_;
};

}  // namespace pv

#endif  // PARCELVANE_SRC_MIME_MIME_PARTS_H
