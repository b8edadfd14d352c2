// The rule that gives each operation of a dual interface its dispatch
// identifier: the first identifier plus the operation's position, except
// that the second operation of a property pair takes the first one's.
// Header-only, so that the type library generator follows the same rule.
#ifndef PARCELVANE_SRC_COM_DISPATCH_IDS_H
#define PARCELVANE_SRC_COM_DISPATCH_IDS_H

#include <cstddef>
#include <cstring>

#include "parcelvane/platform.h"

namespace pv {

constexpr DISPID kFirstDispatchId = 0x60020000;

// `names` and `isProperty` describe the operations in slot order.
inline void AssignDispatchIds(size_t count, const char* const* names, const bool* isProperty, DISPID* ids) {
  for (size_t i = 0; i < count; ++i) {
    ids[i] = kFirstDispatchId + static_cast<DISPID>(i);
    if (!isProperty[i]) continue;
    for (size_t j = 0; j < i; ++j) {
      if (isProperty[j] && std::strcmp(names[j], names[i]) == 0) {
        ids[i] = ids[j];
        break;
      }
    }
  }
}

}  // namespace pv

#endif  // PARCELVANE_SRC_COM_DISPATCH_IDS_H
