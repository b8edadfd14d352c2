// Class objects: one per class-table row, made on first request and kept
// for the module's life.
#ifndef PARCELVANE_SRC_SERVER_CLASS_FACTORY_H
#define PARCELVANE_SRC_SERVER_CLASS_FACTORY_H

#include "parcelvane/platform.h"

namespace pv {

// DllGetClassObject: the class object of `rclsid`, asked for `riid`.
HRESULT GetClassObject(REFCLSID rclsid, REFIID riid, void** ppv);

}  // namespace pv

#endif  // PARCELVANE_SRC_SERVER_CLASS_FACTORY_H
