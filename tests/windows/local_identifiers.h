// The identifiers as constants of the program itself (kIID_..., kCLSID_...),
// made from the lists of the public header: a program that must not link
// the module (linking would load it before the test and keep it loaded)
// takes them from here.
#ifndef PARCELVANE_TESTS_WINDOWS_LOCAL_IDENTIFIERS_H
#define PARCELVANE_TESTS_WINDOWS_LOCAL_IDENTIFIERS_H

#include <parcelvane/parcelvane.h>

#define LOCAL_IID(I, guid) const IID kIID_##I = PV_GUID_VALUE(guid);
PV_INTERFACE_IDS(LOCAL_IID)
#undef LOCAL_IID
#define LOCAL_CLSID(C, impl, itf, script, scriptName, guid) const CLSID kCLSID_##C = PV_GUID_VALUE(guid);
PV_CLASSES(LOCAL_CLSID)
#undef LOCAL_CLSID

#endif  // PARCELVANE_TESTS_WINDOWS_LOCAL_IDENTIFIERS_H
