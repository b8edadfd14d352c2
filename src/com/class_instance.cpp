#include "src/com/class_instance.h"

#include "parcelvane/identifiers.h"
#include "src/com/creators.h"

namespace pv {

CreatorFn CreatorOf(REFCLSID clsid) {
#define PV_CREATOR_OF(C, impl, itf, script, scriptName, guid) \
  if (IsEqualCLSID(clsid, CLSID_##C)) return &Create##C;
  PV_CLASSES(PV_CREATOR_OF)
#undef PV_CREATOR_OF
  return nullptr;
}

}  // namespace pv
