// EMSMimePartEncoder: transfer-encodes the body of one part in place, by
// the part's DefaultEncoding, and records the encoding in the part's
// "Content-Transfer-Encoding" field. No state of its own; the codecs are
// those of transfer_codecs.h.
#ifndef PARCELVANE_SRC_MIME_PART_ENCODER_H
#define PARCELVANE_SRC_MIME_PART_ENCODER_H

#include "src/com/com_object.h"

namespace pv {

class PartEncoder final : public ComObject<PartEncoder, IEMSMimePartEncoder> {
 public:
  explicit PartEncoder(IUnknown* outer) : ComObject(outer) {}

  // IEMSMimePartEncoder in plain form: the generated producer calls each of these
  // after its null checks, inside Guard.
  HRESULT DoEncodePart(IEMSMimePart* pPart, BSTR bszName);
};

}  // namespace pv

#endif  // PARCELVANE_SRC_MIME_PART_ENCODER_H
