// The creator of each class of the class list, as the class table and
// class objects call it: outer null for a standalone object, or the outer
// unknown (with riid IID_IUnknown) for an aggregated one. Each class
// defines its own next to its implementation.
#ifndef PARCELVANE_SRC_COM_CREATORS_H
#define PARCELVANE_SRC_COM_CREATORS_H

#include "parcelvane/identifiers.h"
#include "parcelvane/platform.h"

namespace pv {

#define PV_DECLARE_CREATOR(C, impl, itf, script, scriptName, guid) \
  HRESULT Create##C(IUnknown* outer, REFIID riid, void** ppv);
PV_CLASSES(PV_DECLARE_CREATOR)
#undef PV_DECLARE_CREATOR

}  // namespace pv

#endif  // PARCELVANE_SRC_COM_CREATORS_H
