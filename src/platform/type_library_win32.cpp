#include <windows.h>
#include <oleauto.h>

#include <atomic>
#include <string>

#include "parcelvane/identifiers.h"
#include "src/platform/module_file.h"
#include "src/platform/type_library.h"

// The per-user registration calls of oleaut32, which the compiler's
// headers do not declare.
extern "C" {
HRESULT WINAPI RegisterTypeLibForUser(ITypeLib* library, OLECHAR* path, OLECHAR* helpDir);
HRESULT WINAPI UnRegisterTypeLibForUser(REFGUID libid, WORD major, WORD minor, LCID lcid, SYSKIND syskind);
}

namespace pv {
namespace {

std::wstring Wide(const std::string& utf8) {
  if (utf8.empty()) return std::wstring();
  int n = ::MultiByteToWideChar(CP_UTF8, 0, utf8.data(), static_cast<int>(utf8.size()), nullptr, 0);
  std::wstring out(static_cast<size_t>(n), L'\0');
  ::MultiByteToWideChar(CP_UTF8, 0, utf8.data(), static_cast<int>(utf8.size()), &out[0], n);
  return out;
}

HRESULT LoadModuleLibrary(const std::string& modulePath, ITypeLib** library) {
  *library = nullptr;
  std::wstring path = Wide(modulePath);
  if (path.empty()) return E_UNEXPECTED;
  return ::LoadTypeLibEx(path.c_str(), REGKIND_NONE, library);
}

}  // namespace

HRESULT RegisterModuleTypeLibrary(RegistryScope scope, const std::string& modulePath) {
  ITypeLib* library = nullptr;
  HRESULT hr = LoadModuleLibrary(modulePath, &library);
  if (FAILED(hr)) return hr;
  std::wstring path = Wide(modulePath);
  std::wstring folder = path.substr(0, path.find_last_of(L"\\/") + 1);
  if (scope == RegistryScope::kUser) {
    hr = ::RegisterTypeLibForUser(library, &path[0], folder.empty() ? nullptr : &folder[0]);
  } else {
    hr = ::RegisterTypeLib(library, &path[0], folder.empty() ? nullptr : &folder[0]);
  }
  library->Release();
  return hr;
}

HRESULT UnregisterModuleTypeLibrary(RegistryScope scope) {
  if (scope == RegistryScope::kUser) {
    return ::UnRegisterTypeLibForUser(LIBID_PARCELVANELib, PV_LIBRARY_VERSION_MAJOR, PV_LIBRARY_VERSION_MINOR,
                                      0, SYS_WIN64);
  }
  return ::UnRegisterTypeLib(LIBID_PARCELVANELib, PV_LIBRARY_VERSION_MAJOR, PV_LIBRARY_VERSION_MINOR, 0,
                             SYS_WIN64);
}

bool HasModuleTypeLibrary() {
  // 0 not yet known, 1 present, 2 absent (a program that links the library
  // statically carries none).
  static std::atomic<int> known{0};
  int state = known.load();
  if (state == 0) {
    ITypeLib* library = nullptr;
    state = SUCCEEDED(LoadModuleLibrary(ModuleFilePath(), &library)) ? 1 : 2;
    if (library != nullptr) library->Release();
    known.store(state);
  }
  return state == 1;
}

HRESULT ModuleTypeInfo(REFGUID iid, ITypeInfo** out) {
  if (out == nullptr) return E_POINTER;
  *out = nullptr;
  ITypeLib* library = nullptr;
  HRESULT hr = LoadModuleLibrary(ModuleFilePath(), &library);
  if (FAILED(hr)) return hr;
  hr = library->GetTypeInfoOfGuid(iid, out);
  library->Release();
  return hr;
}

}  // namespace pv
