#include <dlfcn.h>
#include <limits.h>
#include <stdlib.h>

#include "src/platform/module_file.h"

namespace pv {

std::string ModuleFilePath() {
  Dl_info info{};
  if (::dladdr(reinterpret_cast<void*>(&ModuleFilePath), &info) == 0 || info.dli_fname == nullptr) return {};
  char resolved[PATH_MAX];
  if (::realpath(info.dli_fname, resolved) == nullptr) return info.dli_fname;
  return resolved;
}

}  // namespace pv
