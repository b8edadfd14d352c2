// The content-type database on Windows: the registry's classes root.
#include <cwchar>
#include <vector>

#include "src/platform/content_types.h"

namespace pv {
namespace {

WStringView UpToNul(WStringView s) {
  size_t end = s.find(OLECHAR(0));
  return end == WStringView::npos ? s : s.substr(0, end);
}

// A string value (REG_SZ or REG_EXPAND_SZ, read as stored) of a key under
// HKEY_CLASSES_ROOT. A missing key or value, or one of another type, is
// no answer rather than an error.
bool ReadClassesRootString(const WString& keyName, const wchar_t* valueName, WString* out) {
  HKEY key = nullptr;
  if (::RegOpenKeyExW(HKEY_CLASSES_ROOT, keyName.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS) return false;
  bool found = false;
  std::vector<wchar_t> buffer;
  // The value may grow between the size query and the read: ask again then.
  for (int attempt = 0; attempt < 4; ++attempt) {
    DWORD type = 0;
    DWORD bytes = 0;
    if (::RegQueryValueExW(key, valueName, nullptr, &type, nullptr, &bytes) != ERROR_SUCCESS) break;
    if (type != REG_SZ && type != REG_EXPAND_SZ) break;
    buffer.assign(bytes / sizeof(wchar_t) + 1, L'\0');
    LONG status =
        ::RegQueryValueExW(key, valueName, nullptr, &type, reinterpret_cast<BYTE*>(buffer.data()), &bytes);
    if (status == ERROR_MORE_DATA) continue;
    if (status != ERROR_SUCCESS || (type != REG_SZ && type != REG_EXPAND_SZ)) break;
    // The stored text need not end with a terminator; it ends at the first.
    size_t units = bytes / sizeof(wchar_t);
    out->assign(buffer.data(), ::wcsnlen(buffer.data(), units));
    found = true;
    break;
  }
  ::RegCloseKey(key);
  return found;
}

}  // namespace

bool ContentTypeOfExtension(WStringView extension, WString* contentType) {
  extension = UpToNul(extension);
  if (extension.empty()) return false;
  return ReadClassesRootString(WString(extension), L"Content Type", contentType);
}

bool ExtensionOfContentType(WStringView contentType, WString* extension) {
  contentType = UpToNul(contentType);
  if (contentType.empty()) return false;
  return ReadClassesRootString(WString(L"MIME\\Database\\Content Type\\") + WString(contentType),
                               L"Extension", extension);
}

}  // namespace pv
