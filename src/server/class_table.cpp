#include "src/server/class_table.h"

#include "parcelvane/identifiers.h"
#include "src/com/creators.h"

namespace pv {
namespace {

#define PV_CLASS_ROW(C, impl, itf, script, scriptName, guid) \
  {#C, #impl, #itf, &IID_##itf, &CLSID_##C, script, #scriptName, &Create##C},
const ClassRow kRows[] = {PV_CLASSES(PV_CLASS_ROW)};
#undef PV_CLASS_ROW

}  // namespace

const ClassRow* ClassTableBegin() { return kRows; }
const ClassRow* ClassTableEnd() { return kRows + ClassTableSize(); }
size_t ClassTableSize() { return sizeof kRows / sizeof kRows[0]; }

const ClassRow* FindCreatableClass(REFCLSID clsid) {
  for (const ClassRow& row : kRows) {
    if (row.create != nullptr && IsEqualCLSID(*row.clsid, clsid)) return &row;
  }
  return nullptr;
}

}  // namespace pv
