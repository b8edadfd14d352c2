// The identifier of each interface type, for typed QueryInterface calls.
#ifndef PARCELVANE_SRC_COM_IID_OF_H
#define PARCELVANE_SRC_COM_IID_OF_H

#include "parcelvane/identifiers.h"
#include "parcelvane/interfaces.h"

namespace pv {

// The library's interfaces answer from the public list; the base ones below.
template <class T>
struct IidOf {
  static const IID& Get() { return PvInterfaceId<T>::Get(); }
};

#define PV_IID_OF(I)                            \
  template <>                                   \
  struct IidOf<I> {                             \
    static const IID& Get() { return IID_##I; } \
  };
PV_IID_OF(IUnknown)
PV_IID_OF(IDispatch)
PV_IID_OF(IClassFactory)
#undef PV_IID_OF

}  // namespace pv

#endif  // PARCELVANE_SRC_COM_IID_OF_H
