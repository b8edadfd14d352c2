// The classes root in the system registry: HKEY_CLASSES_ROOT per machine,
// HKEY_CURRENT_USER\Software\Classes per user. Each change takes effect at
// once, as the registry has no transactions here.
#include <windows.h>

#include <string>

#include "src/platform/registry.h"

namespace pv {
namespace {

std::wstring Wide(std::string_view utf8) {
  if (utf8.empty()) return std::wstring();
  int n = ::MultiByteToWideChar(CP_UTF8, 0, utf8.data(), static_cast<int>(utf8.size()), nullptr, 0);
  std::wstring out(static_cast<size_t>(n), L'\0');
  ::MultiByteToWideChar(CP_UTF8, 0, utf8.data(), static_cast<int>(utf8.size()), &out[0], n);
  return out;
}

std::string Utf8(const std::wstring& wide) {
  if (wide.empty()) return std::string();
  int n = ::WideCharToMultiByte(CP_UTF8, 0, wide.data(), static_cast<int>(wide.size()), nullptr, 0, nullptr,
                                nullptr);
  std::string out(static_cast<size_t>(n), '\0');
  ::WideCharToMultiByte(CP_UTF8, 0, wide.data(), static_cast<int>(wide.size()), &out[0], n, nullptr, nullptr);
  return out;
}

HRESULT FromError(LONG error) { return error == ERROR_SUCCESS ? S_OK : HRESULT_FROM_WIN32(error); }

class SystemClassesRoot final : public ClassesRoot {
 public:
  explicit SystemClassesRoot(HKEY root) : root_(root) {}
  ~SystemClassesRoot() override {
    if (root_ != HKEY_CLASSES_ROOT) ::RegCloseKey(root_);
  }

  HRESULT CreateKey(std::string_view key) override {
    HKEY h = nullptr;
    LONG error = ::RegCreateKeyExW(root_, Wide(key).c_str(), 0, nullptr, 0, KEY_WRITE, nullptr, &h, nullptr);
    if (error == ERROR_SUCCESS) ::RegCloseKey(h);
    return FromError(error);
  }
  HRESULT SetValue(std::string_view key, std::string_view name, std::string_view value) override {
    if (value.find_first_of(std::string_view("\r\n\0", 3)) != std::string_view::npos) return E_INVALIDARG;
    HKEY h = nullptr;
    LONG error = ::RegCreateKeyExW(root_, Wide(key).c_str(), 0, nullptr, 0, KEY_WRITE, nullptr, &h, nullptr);
    if (error != ERROR_SUCCESS) return FromError(error);
    std::wstring text = Wide(value);
    std::wstring valueName = Wide(name);
    error = ::RegSetValueExW(h, valueName.empty() ? nullptr : valueName.c_str(), 0, REG_SZ,
                             reinterpret_cast<const BYTE*>(text.c_str()),
                             static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t)));
    ::RegCloseKey(h);
    return FromError(error);
  }
  HRESULT GetValue(std::string_view key, std::string_view name, std::string* value) override {
    std::wstring valueName = Wide(name);
    DWORD type = 0;
    DWORD bytes = 0;
    LONG error = ::RegGetValueW(root_, Wide(key).c_str(), valueName.empty() ? nullptr : valueName.c_str(),
                                RRF_RT_REG_SZ, &type, nullptr, &bytes);
    if (error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND) return S_FALSE;
    if (error != ERROR_SUCCESS) return FromError(error);
    std::wstring text(bytes / sizeof(wchar_t) + 1, L'\0');
    error = ::RegGetValueW(root_, Wide(key).c_str(), valueName.empty() ? nullptr : valueName.c_str(),
                           RRF_RT_REG_SZ, &type, &text[0], &bytes);
    if (error != ERROR_SUCCESS) return FromError(error);
    text.resize(wcsnlen(text.c_str(), text.size()));
    *value = Utf8(text);
    return S_OK;
  }
  HRESULT DeleteTree(std::string_view key) override {
    LONG error = ::RegDeleteTreeW(root_, Wide(key).c_str());
    if (error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND) return S_OK;
    if (error != ERROR_SUCCESS) return FromError(error);
    // RegDeleteTree empties the key; the key itself goes too.
    error = ::RegDeleteKeyW(root_, Wide(key).c_str());
    return error == ERROR_FILE_NOT_FOUND ? S_OK : FromError(error);
  }
  HRESULT DeleteKeyIfLeaf(std::string_view key) override {
    LONG error = ::RegDeleteKeyW(root_, Wide(key).c_str());
    if (error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND || error == ERROR_ACCESS_DENIED) {
      return S_OK;  // absent, or it still has subkeys
    }
    return FromError(error);
  }
  HRESULT Commit() override { return S_OK; }

 private:
  HKEY root_;
};

}  // namespace

HRESULT OpenClassesRoot(RegistryScope scope, bool write, std::unique_ptr<ClassesRoot>* out) {
  out->reset();
  HKEY root = HKEY_CLASSES_ROOT;
  if (scope == RegistryScope::kUser) {
    REGSAM access = write ? KEY_ALL_ACCESS : KEY_READ;
    LONG error = ::RegCreateKeyExW(HKEY_CURRENT_USER, L"Software\\Classes", 0, nullptr, 0, access, nullptr,
                                   &root, nullptr);
    if (error != ERROR_SUCCESS) return FromError(error);
  }
  *out = std::make_unique<SystemClassesRoot>(root);
  return S_OK;
}

}  // namespace pv
