#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>

#include "src/platform/codepage.h"
#include "src/platform/file.h"

namespace pv {

ReadOnlyFile::~ReadOnlyFile() {
  if (handle_ >= 0) ::close(static_cast<int>(handle_));
}

bool ReadOnlyFile::Open(WStringView path) {
  std::string name;
  if (!ToNarrow(kCodePageUtf8, path, &name) || name.empty()) return false;
  if (name.find('\0') != std::string::npos) return false;
  int fd = ::open(name.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) return false;
  struct stat st;
  if (::fstat(fd, &st) != 0 || S_ISDIR(st.st_mode)) {
    ::close(fd);
    return false;
  }
  handle_ = fd;
  return true;
}

bool ReadOnlyFile::Size(uint64_t* size) const {
  struct stat st;
  if (handle_ < 0 || ::fstat(static_cast<int>(handle_), &st) != 0) return false;
  *size = static_cast<uint64_t>(st.st_size);
  return true;
}

size_t ReadOnlyFile::Read(void* buffer, size_t count) {
  size_t done = 0;
  while (done < count) {
    ssize_t n = ::read(static_cast<int>(handle_), static_cast<char*>(buffer) + done, count - done);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) break;
    done += static_cast<size_t>(n);
  }
  return done;
}

}  // namespace pv
