// The classes root as a text file per scope, changed under an exclusive
// lock and replaced atomically (a temporary file renamed over the old one),
// so that neither a crash nor two processes registering at once leave a
// half-written file.
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <string>

#include "src/platform/reg_file.h"
#include "src/platform/registry.h"

#ifndef PARCELVANE_INSTALL_PREFIX
#define PARCELVANE_INSTALL_PREFIX "/usr/local"
#endif

namespace pv {
namespace {

HRESULT FromErrno(int error) {
  switch (error) {
    case EACCES:
    case EPERM:
    case EROFS:
      return E_ACCESSDENIED;
    case ENOENT:
    case ENOTDIR:
      return static_cast<HRESULT>(0x80070003u);  // the path is not found
    case ENOMEM:
      return E_OUTOFMEMORY;
    default:
      return E_FAIL;
  }
}

std::string EnvOr(const char* name, const std::string& fallback) {
  const char* value = std::getenv(name);
  return value != nullptr && value[0] != '\0' ? std::string(value) : fallback;
}

std::string ScopeFolder(RegistryScope scope) {
  std::string base = EnvOr("PARCELVANE_REGISTRY_DIR", "");
  if (!base.empty()) return base + (scope == RegistryScope::kMachine ? "/machine" : "/user");
  if (scope == RegistryScope::kMachine) return std::string(PARCELVANE_INSTALL_PREFIX) + "/etc/parcelvane";
  std::string config = EnvOr("XDG_CONFIG_HOME", EnvOr("HOME", ".") + "/.config");
  return config + "/parcelvane";
}

const char* ScopeRoot(RegistryScope scope) {
  return scope == RegistryScope::kMachine ? "HKEY_CLASSES_ROOT" : "HKEY_CURRENT_USER\\Software\\Classes";
}

// mkdir -p
int MakeFolders(const std::string& path) {
  for (size_t i = 1; i <= path.size(); ++i) {
    if (i != path.size() && path[i] != '/') continue;
    std::string prefix = path.substr(0, i);
    if (::mkdir(prefix.c_str(), 0755) != 0 && errno != EEXIST) return errno;
  }
  return 0;
}

HRESULT ReadWhole(const std::string& path, std::string* text) {
  text->clear();
  int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) return errno == ENOENT ? S_FALSE : FromErrno(errno);
  char buffer[65536];
  for (;;) {
    ssize_t got = ::read(fd, buffer, sizeof buffer);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) {
      int error = errno;
      ::close(fd);
      return FromErrno(error);
    }
    if (got == 0) break;
    text->append(buffer, static_cast<size_t>(got));
  }
  ::close(fd);
  return S_OK;
}

HRESULT WriteAtomically(const std::string& path, const std::string& text) {
  std::string temporary = path + ".tmp." + std::to_string(::getpid());
  int fd = ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
  if (fd < 0) return FromErrno(errno);
  size_t done = 0;
  while (done < text.size()) {
    ssize_t put = ::write(fd, text.data() + done, text.size() - done);
    if (put < 0 && errno == EINTR) continue;
    if (put <= 0) {
      int error = put < 0 ? errno : EIO;
      ::close(fd);
      ::unlink(temporary.c_str());
      return FromErrno(error);
    }
    done += static_cast<size_t>(put);
  }
  if (::fsync(fd) != 0 || ::close(fd) != 0) {
    int error = errno;
    ::unlink(temporary.c_str());
    return FromErrno(error);
  }
  if (::rename(temporary.c_str(), path.c_str()) != 0) {
    int error = errno;
    ::unlink(temporary.c_str());
    return FromErrno(error);
  }
  return S_OK;
}

class FileClassesRoot final : public ClassesRoot {
 public:
  FileClassesRoot(RegistryScope scope, std::string file, int lockFd)
      : root_(ScopeRoot(scope)), file_(std::move(file)), lockFd_(lockFd) {}
  ~FileClassesRoot() override {
    if (lockFd_ >= 0) ::close(lockFd_);  // releases the lock
  }

  HRESULT Load() {
    std::string text;
    HRESULT hr = ReadWhole(file_, &text);
    if (FAILED(hr) || hr == S_FALSE) return FAILED(hr) ? hr : S_OK;
    std::string error;
    return registry_.Parse(text, &error) ? S_OK : kRegistryCorrupt;
  }

  HRESULT CreateKey(std::string_view key) override {
    registry_.CreateKey(Full(key));
    return S_OK;
  }
  HRESULT SetValue(std::string_view key, std::string_view name, std::string_view value) override {
    if (value.find_first_of(std::string_view("\r\n\0", 3)) != std::string_view::npos) return E_INVALIDARG;
    registry_.SetString(Full(key), name, value);
    return S_OK;
  }
  HRESULT GetValue(std::string_view key, std::string_view name, std::string* value) override {
    return registry_.GetString(Full(key), name, value) ? S_OK : S_FALSE;
  }
  HRESULT DeleteTree(std::string_view key) override {
    registry_.DeleteTree(Full(key));
    return S_OK;
  }
  HRESULT DeleteKeyIfLeaf(std::string_view key) override {
    std::string full = Full(key);
    if (!registry_.HasSubkeys(full)) registry_.DeleteTree(full);
    return S_OK;
  }
  HRESULT Commit() override {
    if (lockFd_ < 0) return E_ACCESSDENIED;  // opened for reading
    return WriteAtomically(file_, registry_.Serialize());
  }

 private:
  std::string Full(std::string_view key) const { return root_ + "\\" + std::string(key); }

  std::string root_;
  std::string file_;
  int lockFd_;
  RegFile registry_;
};

}  // namespace

HRESULT OpenClassesRoot(RegistryScope scope, bool write, std::unique_ptr<ClassesRoot>* out) {
  out->reset();
  std::string folder = ScopeFolder(scope);
  std::string file = folder + "/classes.reg";
  int lockFd = -1;
  if (write) {
    if (int error = MakeFolders(folder)) return FromErrno(error);
    std::string lock = file + ".lock";
    lockFd = ::open(lock.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
    if (lockFd < 0) return FromErrno(errno);
    while (::flock(lockFd, LOCK_EX) != 0) {
      if (errno != EINTR) {
        int error = errno;
        ::close(lockFd);
        return FromErrno(error);
      }
    }
  }
  auto root = std::make_unique<FileClassesRoot>(scope, file, lockFd);
  HRESULT hr = root->Load();
  if (FAILED(hr)) return hr;
  *out = std::move(root);
  return S_OK;
}

}  // namespace pv
