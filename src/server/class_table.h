// The module's class table: one row per creatable class, in registration
// order, made from the class list of the public identifiers header.
#ifndef PARCELVANE_SRC_SERVER_CLASS_TABLE_H
#define PARCELVANE_SRC_SERVER_CLASS_TABLE_H

#include <cstddef>

#include "parcelvane/platform.h"
#include "src/com/class_instance.h"

namespace pv {

struct ClassRow {
  const char* name;            // "EMSDataObject"
  const char* implementation;  // "CComEMSDataObject"
  const char* interfaceName;   // "IEMSDataObject"
  const IID* iid;              // default interface
  const CLSID* clsid;
  int registrationScript;  // resource number of the class's registration script
  // The class whose name the registration script's versioned program
  // identifier carries (another class's for one row; see the class list).
  const char* scriptProgIdClass;
  CreatorFn create;
};

const ClassRow* ClassTableBegin();
const ClassRow* ClassTableEnd();
size_t ClassTableSize();

// The first row for this class identifier that has a creator, or null.
const ClassRow* FindCreatableClass(REFCLSID clsid);

}  // namespace pv

#endif  // PARCELVANE_SRC_SERVER_CLASS_TABLE_H
