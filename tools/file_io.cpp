#include "tools/file_io.h"

#include <cerrno>
#include <chrono>
#include <cstring>
#include <fstream>
#include <system_error>

#include "tools/exit_codes.h"

#ifdef _WIN32
#include <fcntl.h>
#include <io.h>
#include <sys/stat.h>
#include <windows.h>
#else
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace pvtool {
namespace {

std::string Describe(const fs::path& path) { return PathToUtf8(path); }

std::string ErrnoText(int error) { return std::generic_category().message(error); }

// ---------------------------------------------------------------- platform
#ifdef _WIN32
using Handle = int;

Handle CreateExclusive(const fs::path& path) {
  return _wopen(path.c_str(), _O_CREAT | _O_EXCL | _O_WRONLY | _O_BINARY, _S_IREAD | _S_IWRITE);
}
bool WriteAll(Handle h, std::string_view bytes) {
  while (!bytes.empty()) {
    const unsigned chunk = bytes.size() > (1u << 30) ? (1u << 30) : static_cast<unsigned>(bytes.size());
    const int written = _write(h, bytes.data(), chunk);
    if (written <= 0) return false;
    bytes.remove_prefix(static_cast<size_t>(written));
  }
  return true;
}
bool SyncAndClose(Handle h) {
  const bool synced = _commit(h) == 0;
  return (_close(h) == 0) && synced;
}
// 0 on success, EEXIST when the target exists and `replace` is off.
int MoveInto(const fs::path& from, const fs::path& to, bool replace) {
  DWORD flags = MOVEFILE_WRITE_THROUGH;
  if (replace) flags |= MOVEFILE_REPLACE_EXISTING;
  if (MoveFileExW(from.c_str(), to.c_str(), flags)) return 0;
  const DWORD error = GetLastError();
  if (error == ERROR_ALREADY_EXISTS || error == ERROR_FILE_EXISTS) return EEXIST;
  return EIO;
}
#else
using Handle = int;

Handle CreateExclusive(const fs::path& path) {
  return open(path.c_str(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, 0666);
}
bool WriteAll(Handle h, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written = write(h, bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return false;
    bytes.remove_prefix(static_cast<size_t>(written));
  }
  return true;
}
bool SyncAndClose(Handle h) {
  const bool synced = fsync(h) == 0 || errno == EINVAL;  // EINVAL: a file that cannot be synced
  return (close(h) == 0) && synced;
}
int MoveInto(const fs::path& from, const fs::path& to, bool replace) {
  if (replace) return rename(from.c_str(), to.c_str()) == 0 ? 0 : errno;
  // A hard link never replaces an existing name, so the check and the
  // creation are one step.
  if (link(from.c_str(), to.c_str()) == 0) {
    unlink(from.c_str());
    return 0;
  }
  const int error = errno;
  if (error == EEXIST) return EEXIST;
  if (error != EPERM && error != ENOTSUP && error != EXDEV && error != EMLINK) return error;
  // A file system without hard links: check, then rename.
  struct stat st;
  if (lstat(to.c_str(), &st) == 0) return EEXIST;
  return rename(from.c_str(), to.c_str()) == 0 ? 0 : errno;
}
#endif

// A fresh temporary file beside `target`, created exclusively.
fs::path CreateTemporary(const fs::path& target, Handle* handle) {
  static unsigned counter = 0;
  const auto stamp =
      static_cast<unsigned long long>(std::chrono::steady_clock::now().time_since_epoch().count());
  const fs::path dir = target.has_parent_path() ? target.parent_path() : fs::path(".");
  for (int attempt = 0; attempt < 100; ++attempt) {
    const std::string name =
        ".parcelvane-" + std::to_string(stamp % 1000000007ULL) + "-" + std::to_string(++counter) + ".tmp";
    fs::path candidate = dir / name;
    *handle = CreateExclusive(candidate);
    if (*handle >= 0) return candidate;
    if (errno != EEXIST) {
      throw ToolError(kExitWriteFailed, "cannot write " + Describe(target) + ": " + ErrnoText(errno));
    }
  }
  throw ToolError(kExitWriteFailed, "cannot write " + Describe(target) + ": no free temporary name");
}

void RemoveQuietly(const fs::path& path) {
  std::error_code ignored;
  fs::remove(path, ignored);
}

}  // namespace

fs::path PathFromUtf8(std::string_view utf8) { return fs::u8path(utf8.begin(), utf8.end()); }

std::string PathToUtf8(const fs::path& path) {
  const auto text = path.u8string();
  return std::string(text.begin(), text.end());
}

std::string ReadWholeFile(const fs::path& path) {
  std::error_code error;
  if (fs::is_directory(path, error)) {
    throw ToolError(kExitUnreadable, Describe(path) + ": is a directory");
  }
  std::ifstream in(path, std::ios::binary);
  if (!in) throw ToolError(kExitUnreadable, Describe(path) + ": cannot open: " + ErrnoText(errno));
  std::string bytes;
  char buffer[1 << 16];
  while (in.read(buffer, sizeof buffer) || in.gcount() > 0) {
    bytes.append(buffer, static_cast<size_t>(in.gcount()));
  }
  if (in.bad()) throw ToolError(kExitUnreadable, Describe(path) + ": read error");
  return bytes;
}

std::string ReadInput(const std::string& name) {
  if (name != "-") return ReadWholeFile(PathFromUtf8(name));
  SetBinaryStdin();
  std::string bytes;
  char buffer[1 << 16];
  size_t got;
  while ((got = std::fread(buffer, 1, sizeof buffer, stdin)) > 0) bytes.append(buffer, got);
  if (std::ferror(stdin)) throw ToolError(kExitUnreadable, "standard input: read error");
  return bytes;
}

namespace {

InputBytes OwnedInput(std::string bytes) {
  auto owned = std::make_shared<const std::string>(std::move(bytes));
  std::string_view view = *owned;
  return {std::move(owned), view};
}

#ifdef _WIN32
// A read-only view of a whole file, or nullptr when the file is empty or
// cannot be mapped (the caller then reads it).
std::shared_ptr<const void> MapWholeFile(const fs::path& path, size_t* size) {
  HANDLE file = CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_DELETE, nullptr,
                            OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == INVALID_HANDLE_VALUE) return nullptr;
  LARGE_INTEGER length;
  std::shared_ptr<const void> view;
  if (GetFileSizeEx(file, &length) && length.QuadPart > 0 && length.QuadPart <= 0xFFFFFFFFll) {
    HANDLE mapping = CreateFileMappingW(file, nullptr, PAGE_READONLY, 0, 0, nullptr);
    if (mapping != nullptr) {
      void* address = MapViewOfFile(mapping, FILE_MAP_READ, 0, 0, 0);
      CloseHandle(mapping);
      if (address != nullptr) {
        *size = static_cast<size_t>(length.QuadPart);
        view = std::shared_ptr<const void>(address, [](const void* p) { UnmapViewOfFile(p); });
      }
    }
  }
  CloseHandle(file);
  return view;
}
#else
std::shared_ptr<const void> MapWholeFile(const fs::path& path, size_t* size) {
  const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) return nullptr;
  struct stat info;
  std::shared_ptr<const void> view;
  // Only regular files: a pipe or a device is read as a stream.
  if (fstat(fd, &info) == 0 && S_ISREG(info.st_mode) && info.st_size > 0 && info.st_size <= 0xFFFFFFFFll) {
    const size_t length = static_cast<size_t>(info.st_size);
    void* address = mmap(nullptr, length, PROT_READ, MAP_PRIVATE, fd, 0);
    if (address != MAP_FAILED) {
      *size = length;
      view = std::shared_ptr<const void>(address,
                                         [length](const void* p) { munmap(const_cast<void*>(p), length); });
    }
  }
  close(fd);
  return view;
}
#endif

}  // namespace

InputBytes MapInput(const std::string& name) {
  if (name == "-") return OwnedInput(ReadInput(name));
  const fs::path path = PathFromUtf8(name);
  std::error_code error;
  if (!fs::is_directory(path, error)) {
    size_t size = 0;
    if (std::shared_ptr<const void> view = MapWholeFile(path, &size)) {
      std::string_view bytes(static_cast<const char*>(view.get()), size);
      return {std::move(view), bytes};
    }
  }
  // Empty, special or unmappable files, and the error messages.
  return OwnedInput(ReadWholeFile(path));
}

std::FILE* OpenForReading(const fs::path& path, const std::string& name) {
#ifdef _WIN32
  std::FILE* in = _wfopen(path.c_str(), L"rb");
#else
  std::FILE* in = std::fopen(path.c_str(), "rb");
#endif
  if (in == nullptr) throw ToolError(kExitUnreadable, name + ": cannot open");
  return in;
}

WriteResult WriteFileAtomically(const fs::path& target, std::string_view bytes, bool replace) {
  Handle handle = -1;
  const fs::path temporary = CreateTemporary(target, &handle);
  const bool written = WriteAll(handle, bytes);
  const int write_error = errno;
  const bool closed = SyncAndClose(handle);
  if (!written || !closed) {
    RemoveQuietly(temporary);
    throw ToolError(kExitWriteFailed,
                    "cannot write " + Describe(target) + ": " + ErrnoText(written ? errno : write_error));
  }
  const int moved = MoveInto(temporary, target, replace);
  if (moved == 0) return WriteResult::kWritten;
  RemoveQuietly(temporary);
  if (moved == EEXIST) return WriteResult::kTargetExists;
  throw ToolError(kExitWriteFailed, "cannot write " + Describe(target) + ": " + ErrnoText(moved));
}

void WriteOut(std::string_view bytes) {
  if (bytes.empty()) return;
  if (std::fwrite(bytes.data(), 1, bytes.size(), stdout) != bytes.size()) {
    throw ToolError(kExitWriteFailed, "cannot write to standard output: " + ErrnoText(errno));
  }
}

void FlushOut() {
  if (std::fflush(stdout) != 0 || std::ferror(stdout)) {
    throw ToolError(kExitWriteFailed, "cannot write to standard output: " + ErrnoText(errno));
  }
}

#ifdef _WIN32
void SetBinaryStdin() { _setmode(_fileno(stdin), _O_BINARY); }
void SetBinaryStdout() { _setmode(_fileno(stdout), _O_BINARY); }
#else
void SetBinaryStdin() {}
void SetBinaryStdout() {}
#endif

}  // namespace pvtool
