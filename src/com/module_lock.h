// Module lifetime: the lock count that tells a host when it may unload us.
// Every object and every locked class object holds one.
#ifndef PARCELVANE_SRC_COM_MODULE_LOCK_H
#define PARCELVANE_SRC_COM_MODULE_LOCK_H

#include "parcelvane/platform.h"

namespace pv {

void ModuleLock();
void ModuleUnlock();
LONG ModuleLockCount();

}  // namespace pv

#endif  // PARCELVANE_SRC_COM_MODULE_LOCK_H
