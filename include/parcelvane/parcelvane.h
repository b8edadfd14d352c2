// parcelvane: reading, editing and writing Internet mail messages.
//
// The one header a host includes. It brings the platform types, every
// interface, every identifier and the module's entry points.
#ifndef PARCELVANE_PARCELVANE_H
#define PARCELVANE_PARCELVANE_H

#include "parcelvane/export.h"
#include "parcelvane/identifiers.h"
#include "parcelvane/interfaces.h"
#include "parcelvane/platform.h"

extern "C" {
#if !defined(_WIN32)
// Module entry points of the component server (declared by the SDK on Windows).
PV_API HRESULT DllGetClassObject(REFCLSID rclsid, REFIID riid, void** ppv);
PV_API HRESULT DllCanUnloadNow(void);
#endif

// Creates an object of one of this module's classes, with the contract of
// the platform's CoCreateInstance (aggregation included), for hosts that
// have no component runtime.
PV_API HRESULT PvCreateInstance(REFCLSID rclsid, IUnknown* pUnkOuter, REFIID riid, void** ppv);
}

#endif  // PARCELVANE_PARCELVANE_H
