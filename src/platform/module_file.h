// The file this library was loaded from: the shared library itself, or the
// program it is linked into. Registration writes it as the class's server.
#ifndef PARCELVANE_SRC_PLATFORM_MODULE_FILE_H
#define PARCELVANE_SRC_PLATFORM_MODULE_FILE_H

#include <string>

namespace pv {

// The absolute path, UTF-8; empty when the system cannot tell.
std::string ModuleFilePath();

}  // namespace pv

#endif  // PARCELVANE_SRC_PLATFORM_MODULE_FILE_H
