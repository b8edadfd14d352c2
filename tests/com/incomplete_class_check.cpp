// Compiled by the test "producer_check" and expected to fail: a class on
// the frame that has neither a plain implementation nor a hand-written
// body for an operation (here RemoveAll), or (with PV_CHECK_BOTH) both.
#include "src/com/com_object.h"

namespace pv {

class Incomplete final : public ComObject<Incomplete, IEMSMimeParts> {
 public:
  explicit Incomplete(IUnknown* outer) : ComObject(outer) {}
  HRESULT DoAddPart(IEMSMimePart*) { return S_OK; }
  HRESULT DoAppendParts(IEMSMimeParts*) { return S_OK; }
  HRESULT DoRemovePart(LONG) { return S_OK; }
#ifdef PV_CHECK_BOTH
  HRESULT DoRemoveAll() { return S_OK; }
  HRESULT STDMETHODCALLTYPE RemoveAll() override { return S_OK; }
#endif
  HRESULT GetPart(LONG, IEMSMimePart**) { return S_OK; }
  HRESULT PutPart(LONG, IEMSMimePart*) { return S_OK; }
  HRESULT GetPartsCount(LONG*) { return S_OK; }
};

HRESULT MakeIncomplete(ComPtr<Incomplete>* out) { return MakeObject(out); }

}  // namespace pv
