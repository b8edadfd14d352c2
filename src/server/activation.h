// Activation by program identifier: the registry of the current user, then
// the machine's, as the platform's classes root merges them; then the
// module's own classes, which need no registration to be found.
#ifndef PARCELVANE_SRC_SERVER_ACTIVATION_H
#define PARCELVANE_SRC_SERVER_ACTIVATION_H

#include <string_view>

#include "parcelvane/platform.h"

namespace pv {

// The class of a program identifier (UTF-8). CO_E_CLASSSTRING for a name
// that nothing registers.
HRESULT ClassFromProgId(std::string_view progId, CLSID* clsid);

}  // namespace pv

#endif  // PARCELVANE_SRC_SERVER_ACTIVATION_H
