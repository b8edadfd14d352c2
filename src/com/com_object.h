// The base of every class of the library: one dual interface (plus any
// further interfaces), reference counting through the controlling unknown
// (so that every class can be aggregated), and late binding from the
// interface's description.
//
//   class DataObject final : public ComObject<DataObject, IEMSDataObject> {
//    public:
//     explicit DataObject(IUnknown* outer) : ComObject(outer) {}
//     ... the interface's operations ...
//   };
#ifndef PARCELVANE_SRC_COM_COM_OBJECT_H
#define PARCELVANE_SRC_COM_COM_OBJECT_H

#include <exception>
#include <new>
#include <type_traits>

#include "src/com/com_ptr.h"
#include "src/platform/type_library.h"
#include "src/com/dispatch.h"
#include "src/com/object_core.h"

// Declares, inside a class, the override of every operation of an
// interface: PV_MEMBERS_IEMSDataObject(PV_OVERRIDE_MEMBER)
#define PV_OVERRIDE_MEMBER(kind, name, params, optional) \
  HRESULT STDMETHODCALLTYPE PV_MEMBER_NAME_##kind(name) params override;

namespace pv {

template <class Derived, class Primary, class... Extra>
class ComObject : public Primary, public Extra..., public ObjectCore {
 public:
  using PrimaryInterface = Primary;

  explicit ComObject(IUnknown* outer) : ObjectCore(outer) {}

  // IUnknown of every interface: through the controlling unknown.
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppv) override {
    return ControllingUnknown()->QueryInterface(riid, ppv);
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return ControllingUnknown()->AddRef(); }
  ULONG STDMETHODCALLTYPE Release() override { return ControllingUnknown()->Release(); }

  // IDispatch of the primary interface. Its description comes from the
  // module's type library where it carries one (the Windows library).
  HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* pctinfo) override {
    if (pctinfo == nullptr) return E_POINTER;
    *pctinfo = HasModuleTypeLibrary() ? 1 : 0;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, LCID, ITypeInfo** ppTInfo) override {
    if (ppTInfo == nullptr) return E_POINTER;
    *ppTInfo = nullptr;
    if (index != 0 || !HasModuleTypeLibrary()) return DISP_E_BADINDEX;
    return ModuleTypeInfo(IidOf<Primary>::Get(), ppTInfo);
  }
  HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID, DISPID* ids) override {
    return DispatchTableOf<Primary>().IdsOfNames(names, count, ids);
  }
  HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID riid, LCID, WORD flags, DISPPARAMS* params,
                                   VARIANT* result, EXCEPINFO* excep, UINT* argErr) override {
    try {
      return DispatchTableOf<Primary>().Invoke(static_cast<Primary*>(this), id, riid, flags, params, result,
                                               excep, argErr);
    } catch (const std::bad_alloc&) {
      return E_OUTOFMEMORY;
    }
  }

 protected:
  IUnknown* InterfaceFor(REFIID riid) override {
    if (IsEqualIID(riid, IidOf<Primary>::Get()) || IsEqualIID(riid, IID_IDispatch)) {
      return static_cast<Primary*>(this);
    }
    IUnknown* found = nullptr;
    ((found == nullptr && IsEqualIID(riid, IidOf<Extra>::Get()) ? (found = static_cast<Extra*>(this))
                                                                : found),
     ...);
    return found;
  }
};

// Runs an operation's body, turning exhausted memory into E_OUTOFMEMORY so
// that no failure escapes an interface call in any other way.
template <class F>
HRESULT Guard(F&& body) noexcept {
  try {
    return body();
  } catch (const std::bad_alloc&) {
    return E_OUTOFMEMORY;
  } catch (...) {
    return E_UNEXPECTED;
  }
}

// Makes a standalone object of class T for the library's own use, with its
// construction step run.
template <class T>
HRESULT MakeObject(ComPtr<T>* out) {
  *out = nullptr;
  T* object = new (std::nothrow) T(nullptr);
  if (object == nullptr) return E_OUTOFMEMORY;
  object->InnerUnknown()->AddRef();
  HRESULT hr = Guard([&] { return object->FinalConstruct(); });
  if (FAILED(hr)) {
    object->InnerUnknown()->Release();
    return hr;
  }
  *out = ComPtr<T>::Adopt(object);
  return S_OK;
}

// The class-object creator of class T: standalone when `outer` is null,
// otherwise the inner object of an aggregate, handed out as its own unknown.
template <class T>
HRESULT CreateInstance(IUnknown* outer, REFIID riid, void** ppv) {
  if (ppv == nullptr) return E_POINTER;
  *ppv = nullptr;
  if (outer != nullptr && !IsEqualIID(riid, IID_IUnknown)) return CLASS_E_NOAGGREGATION;
  T* object = new (std::nothrow) T(outer);
  if (object == nullptr) return E_OUTOFMEMORY;
  IUnknown* inner = object->InnerUnknown();
  inner->AddRef();
  HRESULT hr = Guard([&] { return object->FinalConstruct(); });
  if (SUCCEEDED(hr)) hr = inner->QueryInterface(riid, ppv);
  inner->Release();
  return hr;
}

// The library's own object behind an interface pointer (with a new
// reference), or null for an object of another implementation.
template <class T>
ComPtr<T> ImplOf(IUnknown* p) {
  if (p == nullptr) return nullptr;
  void* core = nullptr;
  if (FAILED(p->QueryInterface(kIidObjectCore, &core)) || core == nullptr) return nullptr;
  return ComPtr<T>(dynamic_cast<T*>(static_cast<ObjectCore*>(core)));
}

}  // namespace pv

#endif  // PARCELVANE_SRC_COM_COM_OBJECT_H
