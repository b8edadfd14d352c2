#include "src/platform/file.h"

namespace pv {

ReadOnlyFile::~ReadOnlyFile() {
  if (handle_ != -1) ::CloseHandle(reinterpret_cast<HANDLE>(handle_));
}

bool ReadOnlyFile::Open(WStringView path) {
  std::wstring name(path.begin(), path.end());
  HANDLE h = ::CreateFileW(name.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                           FILE_ATTRIBUTE_NORMAL, nullptr);
  if (h == INVALID_HANDLE_VALUE) return false;
  handle_ = reinterpret_cast<intptr_t>(h);
  return true;
}

bool ReadOnlyFile::Size(uint64_t* size) const {
  LARGE_INTEGER li;
  if (!::GetFileSizeEx(reinterpret_cast<HANDLE>(handle_), &li)) return false;
  *size = static_cast<uint64_t>(li.QuadPart);
  return true;
}

size_t ReadOnlyFile::Read(void* buffer, size_t count) {
  size_t done = 0;
  while (done < count) {
    DWORD chunk = static_cast<DWORD>(count - done > 0x40000000 ? 0x40000000 : count - done);
    DWORD got = 0;
    if (!::ReadFile(reinterpret_cast<HANDLE>(handle_), static_cast<char*>(buffer) + done, chunk, &got,
                    nullptr) ||
        got == 0) {
      break;
    }
    done += got;
  }
  return done;
}

}  // namespace pv
