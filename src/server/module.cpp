// The module's entry points: class objects by class identifier, the unload
// test, registration, and object creation for hosts without a component
// runtime.
#include "parcelvane/parcelvane.h"
#include "src/data/data_object.h"
#include "src/platform/codepage.h"
#include "src/server/activation.h"
#include "src/server/class_factory.h"
#include "src/com/module_lock.h"
#include "src/server/registration.h"

extern "C" {

PV_API HRESULT STDAPICALLTYPE DllGetClassObject(REFCLSID rclsid, REFIID riid, void** ppv) {
  return pv::GetClassObject(rclsid, riid, ppv);
}

PV_API HRESULT STDAPICALLTYPE DllCanUnloadNow(void) { return pv::ModuleLockCount() == 0 ? S_OK : S_FALSE; }

PV_API HRESULT PvCreateInstance(REFCLSID rclsid, IUnknown* pUnkOuter, REFIID riid, void** ppv) {
  if (ppv == nullptr) return E_POINTER;
  *ppv = nullptr;
  IClassFactory* factory = nullptr;
  HRESULT hr = pv::GetClassObject(rclsid, IID_IClassFactory, reinterpret_cast<void**>(&factory));
  if (FAILED(hr)) return hr;
  hr = factory->CreateInstance(pUnkOuter, riid, ppv);
  factory->Release();
  return hr;
}

PV_API HRESULT STDAPICALLTYPE DllRegisterServer(void) { return pv::RegisterServer(); }

PV_API HRESULT STDAPICALLTYPE DllUnregisterServer(void) { return pv::UnregisterServer(); }

PV_API HRESULT STDAPICALLTYPE DllInstall(BOOL bInstall, const OLECHAR* pszCmdLine) {
  return pv::InstallServer(bInstall, pszCmdLine);
}

PV_API HRESULT PvCLSIDFromProgID(const OLECHAR* progId, CLSID* clsid) {
  if (progId == nullptr || clsid == nullptr) return E_INVALIDARG;
  std::string name;
  if (!pv::ToNarrow(pv::kCodePageUtf8, pv::WStringView(progId), &name)) return CO_E_CLASSSTRING;
  return pv::ClassFromProgId(name, clsid);
}

PV_API HRESULT PvCreateInstanceByProgID(const OLECHAR* progId, IUnknown* pUnkOuter, REFIID riid, void** ppv) {
  if (ppv == nullptr) return E_POINTER;
  *ppv = nullptr;
  CLSID clsid;
  HRESULT hr = PvCLSIDFromProgID(progId, &clsid);
  if (FAILED(hr)) return hr;
  return PvCreateInstance(clsid, pUnkOuter, riid, ppv);
}

PV_API HRESULT PvCreateDataObjectOver(const void* bytes, ULONG size, void (*release)(void* context),
                                      void* context, IEMSDataObject** result) {
  return pv::DataObject::CreateOver(bytes, size, release, context, result);
}

}  // extern "C"
