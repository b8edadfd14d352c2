// Path splitting with the C runtime's _wsplitpath_s contract: a path becomes
// drive, directory, base name and extension, each held in a fixed buffer.
#ifndef PARCELVANE_SRC_PLATFORM_SPLIT_PATH_H
#define PARCELVANE_SRC_PLATFORM_SPLIT_PATH_H

#include <cstddef>

#include "src/platform/strings.h"

namespace pv {

// Buffer sizes the library's callers give the runtime, each counting the
// terminator: a component must be shorter than its buffer.
constexpr size_t kSplitPathDriveBuffer = 3;
constexpr size_t kSplitPathDirectoryBuffer = 256;
constexpr size_t kSplitPathNameBuffer = 260;
constexpr size_t kSplitPathExtensionBuffer = 260;

// The runtime's status values (errno numbers, the same on every platform).
constexpr int kSplitPathOk = 0;
constexpr int kSplitPathInvalid = 22;  // EINVAL: no place for the result
constexpr int kSplitPathTooLong = 34;  // ERANGE: a component overflows its buffer

struct PathParts {
  WString drive;      // "C:" or empty
  WString directory;  // up to and including the last "\" or "/"
  WString name;       // the last component without its extension
  WString extension;  // from the last "." of the last component, or empty
};

// Splits `path`:
// - the text ends at the first NUL unit, as it does for the runtime;
// - a drive is any first unit followed by ":" (the runtime does not check
//   for a letter);
// - "\" and "/" both end a directory;
// - the extension starts at the last "." after the directory, so ".hidden"
//   is all extension and "trailingdot." has the extension ".".
// Returns kSplitPathOk, or kSplitPathTooLong with every part emptied when a
// component does not fit its buffer (kSplitPathInvalid for a null `parts`).
int SplitPath(WStringView path, PathParts* parts);

}  // namespace pv

#endif  // PARCELVANE_SRC_PLATFORM_SPLIT_PATH_H
