// Registration of the module: the application identifier, a class script
// per class-table row (program identifiers, class key, in-process server,
// type library reference) and the type library, per machine or per user.
#ifndef PARCELVANE_SRC_SERVER_REGISTRATION_H
#define PARCELVANE_SRC_SERVER_REGISTRATION_H

#include <string>

#include "parcelvane/platform.h"
#include "src/platform/registry.h"

namespace pv {

HRESULT RegisterServer();    // DllRegisterServer
HRESULT UnregisterServer();  // DllUnregisterServer
// DllInstall: "user" (in any case, and nothing more) switches this module to
// per-user registration for the rest of its life.
HRESULT InstallServer(BOOL install, const OLECHAR* commandLine);

// Where registration goes now: per user once DllInstall was told "user".
RegistryScope RegistrationScope();

// The prefix of every program identifier: "ParcelvaneLib".
extern const char kProgIdPrefix[];

}  // namespace pv

#endif  // PARCELVANE_SRC_SERVER_REGISTRATION_H
