// Identifiers of the type library, its interfaces and its classes, defined
// from the lists in the public header.
#include "parcelvane/identifiers.h"

extern "C" {
const GUID LIBID_PARCELVANELib = PV_GUID_VALUE(PV_LIBRARY_GUID);
#define PV_DEFINE_IID(I, guid) const IID IID_##I = PV_GUID_VALUE(guid);
PV_INTERFACE_IDS(PV_DEFINE_IID)
#undef PV_DEFINE_IID
#define PV_DEFINE_CLSID(C, impl, itf, script, scriptName, guid) const CLSID CLSID_##C = PV_GUID_VALUE(guid);
PV_CLASSES(PV_DEFINE_CLSID)
#undef PV_DEFINE_CLSID
}
