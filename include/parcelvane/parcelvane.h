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
// Registration: per machine, or per user after DllInstall(TRUE, "user").
// Off Windows the registry is a text file per scope (see the README).
PV_API HRESULT DllRegisterServer(void);
PV_API HRESULT DllUnregisterServer(void);
#endif
PV_API HRESULT STDAPICALLTYPE DllInstall(BOOL bInstall, const OLECHAR* pszCmdLine);

// Creates an object of one of this module's classes, with the contract of
// the platform's CoCreateInstance (aggregation included), for hosts that
// have no component runtime.
PV_API HRESULT PvCreateInstance(REFCLSID rclsid, IUnknown* pUnkOuter, REFIID riid, void** ppv);

// The class of a program identifier such as "ParcelvaneLib.EMSMessageParser"
// or "ParcelvaneLib.EMSMessageParser.1": the current user's registration
// first, then the machine's (a name whose key has no CLSID of its own
// follows its CurVer), then this module's own classes, which need no
// registration. CO_E_CLASSSTRING for an unknown name; E_INVALIDARG for a
// missing argument.
PV_API HRESULT PvCLSIDFromProgID(const OLECHAR* progId, CLSID* clsid);
// PvCreateInstance for the class of a program identifier.
PV_API HRESULT PvCreateInstanceByProgID(const OLECHAR* progId, IUnknown* pUnkOuter, REFIID riid, void** ppv);

// A data object over `size` bytes that the host owns, without copying them:
// what CreateDataArray gives for a byte array, and every operation behaves
// the same on it (a store replaces the bytes with the object's own copy).
// Clones, parsed parts and bodies share the bytes. `release(context)` is
// called once, on whatever thread drops the last object that refers to the
// bytes; a null `release` means the host keeps the bytes alive longer than
// every object. The host promises the bytes stay unchanged until then.
// E_POINTER for a null `result`, E_INVALIDARG for null `bytes` with a
// nonzero size, E_OUTOFMEMORY; on failure `release` is not called.
PV_API HRESULT PvCreateDataObjectOver(const void* bytes, ULONG size, void (*release)(void* context),
                                      void* context, IEMSDataObject** result);
}

#endif  // PARCELVANE_PARCELVANE_H
