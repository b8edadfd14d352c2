// Module lifetime: the lock count that tells a host when it may unload us.
#ifndef PARCELVANE_SRC_SERVER_MODULE_H
#define PARCELVANE_SRC_SERVER_MODULE_H

#include "parcelvane/platform.h"

namespace pv {

void ModuleLock();
void ModuleUnlock();
LONG ModuleLockCount();

}  // namespace pv

#endif  // PARCELVANE_SRC_SERVER_MODULE_H
