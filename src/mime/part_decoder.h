// EMSMimePartDecoder: the decoded bytes of one part's body, by the part's
// "Content-Transfer-Encoding" field. No state of its own; the codecs are
// those of transfer_codecs.h.
#ifndef PARCELVANE_SRC_MIME_PART_DECODER_H
#define PARCELVANE_SRC_MIME_PART_DECODER_H

#include "src/com/com_object.h"

namespace pv {

class PartDecoder final : public ComObject<PartDecoder, IEMSMimePartDecoder> {
 public:
  explicit PartDecoder(IUnknown* outer) : ComObject(outer) {}

  // IEMSMimePartDecoder in plain form: the generated producer calls each of these
  // after its null checks, inside Guard.
  HRESULT DoDecodePart(IEMSMimePart* pPart, IEMSDataObject** ppVal);
};

}  // namespace pv

#endif  // PARCELVANE_SRC_MIME_PART_DECODER_H
