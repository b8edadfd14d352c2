// Making an object of one of the module's public classes by its class
// identifier, through the class table, as the object model would. Objects
// use it for the sub-objects that belong to other classes, so that they
// depend on those classes' public interfaces only.
#ifndef PARCELVANE_SRC_SERVER_CLASS_INSTANCE_H
#define PARCELVANE_SRC_SERVER_CLASS_INSTANCE_H

#include "src/platform/com_ptr.h"
#include "src/server/class_table.h"

namespace pv {

// A new standalone object of the class, asked for interface I.
// CLASS_E_CLASSNOTAVAILABLE while the class has no creator; otherwise the
// creator's status.
template <class I>
HRESULT CreateClassInstance(REFCLSID clsid, ComPtr<I>* out) {
  *out = nullptr;
  const ClassRow* row = FindCreatableClass(clsid);
  if (row == nullptr) return CLASS_E_CLASSNOTAVAILABLE;
  HRESULT hr = row->create(nullptr, IidOf<I>::Get(), out->put_void());
  if (SUCCEEDED(hr) && !*out) return E_UNEXPECTED;
  return hr;
}

}  // namespace pv

#endif  // PARCELVANE_SRC_SERVER_CLASS_INSTANCE_H
