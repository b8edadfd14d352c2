// Making an object of one of the module's public classes by its class
// identifier. Objects use it for the sub-objects that belong to other
// classes, so that they depend on those classes' public interfaces only.
#ifndef PARCELVANE_SRC_COM_CLASS_INSTANCE_H
#define PARCELVANE_SRC_COM_CLASS_INSTANCE_H

#include "src/com/com_ptr.h"
#include "src/com/iid_of.h"

namespace pv {

// Makes an object of a class, standalone (outer null) or as the inner
// object of an aggregate (outer given, riid IID_IUnknown).
using CreatorFn = HRESULT (*)(IUnknown* outer, REFIID riid, void** ppv);

// The creator of a class of the class list, or null.
CreatorFn CreatorOf(REFCLSID clsid);

// A new standalone object of the class, asked for interface I.
// CLASS_E_CLASSNOTAVAILABLE for a class that is not ours; otherwise the
// creator's status.
template <class I>
HRESULT CreateClassInstance(REFCLSID clsid, ComPtr<I>* out) {
  *out = nullptr;
  CreatorFn create = CreatorOf(clsid);
  if (create == nullptr) return CLASS_E_CLASSNOTAVAILABLE;
  HRESULT hr = create(nullptr, IidOf<I>::Get(), out->put_void());
  if (SUCCEEDED(hr) && !*out) return E_UNEXPECTED;
  return hr;
}

}  // namespace pv

#endif  // PARCELVANE_SRC_COM_CLASS_INSTANCE_H
