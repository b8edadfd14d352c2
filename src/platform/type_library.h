// The type library embedded in the module (resource TYPELIB 1 of the
// Windows library): its registration with the platform's own service, and
// the description of each interface for late-bound hosts. Off Windows there
// is no embedded library: registration writes the same keys itself.
#ifndef PARCELVANE_SRC_PLATFORM_TYPE_LIBRARY_H
#define PARCELVANE_SRC_PLATFORM_TYPE_LIBRARY_H

#include <string>

#include "parcelvane/platform.h"
#include "src/platform/registry.h"

namespace pv {

// Registers the library in `modulePath` for the machine or the current
// user. S_FALSE where the platform has no such service.
HRESULT RegisterModuleTypeLibrary(RegistryScope scope, const std::string& modulePath);
// Removes that registration. S_FALSE where the platform has no such service.
HRESULT UnregisterModuleTypeLibrary(RegistryScope scope);

// Whether the module carries a type library that ModuleTypeInfo can read.
bool HasModuleTypeLibrary();
// The description of the interface `iid` (a new reference).
HRESULT ModuleTypeInfo(REFGUID iid, ITypeInfo** out);

}  // namespace pv

#endif  // PARCELVANE_SRC_PLATFORM_TYPE_LIBRARY_H
