// The enumerator a collection hands out for DISPID_NEWENUM, so that
// scripts can walk it (VBScript's For Each, JScript's Enumerator): a
// snapshot of the items taken when the enumerator is made, shared by its
// clones.
#ifndef PARCELVANE_SRC_COM_VARIANT_ENUMERATOR_H
#define PARCELVANE_SRC_COM_VARIANT_ENUMERATOR_H

#include <memory>
#include <vector>

#include "parcelvane/platform.h"

namespace pv {

// Takes ownership of `items` (cleared with VariantClear when the last
// enumerator over them goes) and returns a new enumerator at the start.
HRESULT MakeVariantEnumerator(std::vector<VARIANT> items, IEnumVARIANT** out);

}  // namespace pv

#endif  // PARCELVANE_SRC_COM_VARIANT_ENUMERATOR_H
