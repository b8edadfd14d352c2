#include "src/platform/type_library.h"

namespace pv {

HRESULT RegisterModuleTypeLibrary(RegistryScope, const std::string&) { return S_FALSE; }
HRESULT UnregisterModuleTypeLibrary(RegistryScope) { return S_FALSE; }
bool HasModuleTypeLibrary() { return false; }

HRESULT ModuleTypeInfo(REFGUID, ITypeInfo** out) {
  if (out != nullptr) *out = nullptr;
  return E_NOTIMPL;
}

}  // namespace pv
