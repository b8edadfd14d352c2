#include <windows.h>

#include <string>

#include "src/platform/module_file.h"

namespace pv {

std::string ModuleFilePath() {
  HMODULE self = nullptr;
  if (!::GetModuleHandleExW(
          GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
          reinterpret_cast<LPCWSTR>(&ModuleFilePath), &self)) {
    return {};
  }
  std::wstring path(MAX_PATH, L'\0');
  for (;;) {
    DWORD n = ::GetModuleFileNameW(self, &path[0], static_cast<DWORD>(path.size()));
    if (n == 0) return {};
    if (n < path.size()) {
      path.resize(n);
      break;
    }
    path.resize(path.size() * 2);
  }
  int bytes = ::WideCharToMultiByte(CP_UTF8, 0, path.data(), static_cast<int>(path.size()), nullptr, 0,
                                    nullptr, nullptr);
  std::string out(static_cast<size_t>(bytes), '\0');
  ::WideCharToMultiByte(CP_UTF8, 0, path.data(), static_cast<int>(path.size()), &out[0], bytes, nullptr,
                        nullptr);
  return out;
}

}  // namespace pv
