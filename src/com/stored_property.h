// A property pair that only stores and reads back a number: the put keeps
// the value as given, the get writes it (E_POINTER for a missing place).
// The frame writes these bodies; classes list their plain properties.
#ifndef PARCELVANE_SRC_COM_STORED_PROPERTY_H
#define PARCELVANE_SRC_COM_STORED_PROPERTY_H

#define PV_STORED_PROPERTY(Class, Name, member) \
  HRESULT Class::put_##Name(LONG newVal) {      \
    member = newVal;                            \
    return S_OK;                                \
  }                                             \
  HRESULT Class::get_##Name(LONG* pVal) {       \
    if (pVal == nullptr) return E_POINTER;      \
    *pVal = member;                             \
    return S_OK;                                \
  }

#endif  // PARCELVANE_SRC_COM_STORED_PROPERTY_H
