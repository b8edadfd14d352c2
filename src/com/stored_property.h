// A property that only stores a value and reads it back, named once in its
// class: PV_STORED_PROPERTY(LONG, DefaultCodePage, defaultCodePage_)
// declares GetDefaultCodePage and PutDefaultCodePage, the plain get and
// put, on that member. The generated producer adds what every operation
// has: E_POINTER for a missing result place of the get, and Guard.
#ifndef PARCELVANE_SRC_COM_STORED_PROPERTY_H
#define PARCELVANE_SRC_COM_STORED_PROPERTY_H

#define PV_STORED_PROPERTY(Type, Name, member) \
  HRESULT Get##Name(Type* pVal) {              \
    *pVal = member;                            \
    return S_OK;                               \
  }                                            \
  HRESULT Put##Name(Type newVal) {             \
    member = newVal;                           \
    return S_OK;                               \
  }

#endif  // PARCELVANE_SRC_COM_STORED_PROPERTY_H
