#include "src/server/activation.h"

#include <memory>
#include <string>

#include "src/platform/registry.h"
#include "src/platform/strings.h"
#include "src/server/class_table.h"
#include "src/com/guid_text.h"
#include "src/server/registration.h"

namespace pv {
namespace {

// A program identifier's key in one scope: its own CLSID, or, for a key that
// has none, the CLSID of the version its CurVer names. S_FALSE when the
// scope does not know the name.
HRESULT LookUp(ClassesRoot* root, const std::string& progId, CLSID* clsid) {
  std::string text;
  HRESULT hr = root->GetValue(progId + "\\CLSID", "", &text);
  if (hr == S_FALSE) {
    std::string current;
    hr = root->GetValue(progId + "\\CurVer", "", &current);
    if (hr != S_OK) return hr;
    hr = root->GetValue(current + "\\CLSID", "", &text);
  }
  if (hr != S_OK) return hr;
  return ParseGuidText(text, clsid) ? S_OK : CO_E_CLASSSTRING;
}

bool IsOwnProgId(std::string_view name, const ClassRow& row) {
  std::string independent = std::string(kProgIdPrefix) + "." + row.name;
  return EqualsIgnoreCaseAscii(name, independent) || EqualsIgnoreCaseAscii(name, independent + ".1");
}

}  // namespace

HRESULT ClassFromProgId(std::string_view progId, CLSID* clsid) {
  // A key path cannot hold an empty name or a separator.
  if (progId.empty() || progId.find('\\') != std::string_view::npos) return CO_E_CLASSSTRING;
  const std::string name(progId);
  for (RegistryScope scope : {RegistryScope::kUser, RegistryScope::kMachine}) {
    std::unique_ptr<ClassesRoot> root;
    if (FAILED(OpenClassesRoot(scope, false, &root))) continue;  // an unreadable scope knows nothing
    HRESULT hr = LookUp(root.get(), name, clsid);
    if (hr == S_OK) return S_OK;
  }
  for (const ClassRow* row = ClassTableBegin(); row != ClassTableEnd(); ++row) {
    if (IsOwnProgId(progId, *row)) {
      *clsid = *row->clsid;
      return S_OK;
    }
  }
  return CO_E_CLASSSTRING;
}

}  // namespace pv
