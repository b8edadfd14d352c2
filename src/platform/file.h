// Whole-file reading: a file opened for reading as raw bytes.
#ifndef PARCELVANE_SRC_PLATFORM_FILE_H
#define PARCELVANE_SRC_PLATFORM_FILE_H

#include <cstddef>
#include <cstdint>

#include "src/platform/strings.h"

namespace pv {

class ReadOnlyFile {
 public:
  ReadOnlyFile() = default;
  ~ReadOnlyFile();
  ReadOnlyFile(const ReadOnlyFile&) = delete;
  ReadOnlyFile& operator=(const ReadOnlyFile&) = delete;

  // Opens the file named by a wide path (UTF-8 on the file system off
  // Windows), sharing it for reading only. False when it cannot be opened.
  bool Open(WStringView path);
  // The file's length in bytes; false on a file-system error.
  bool Size(uint64_t* size) const;
  // Reads up to `count` bytes; returns the number read (short at the end or
  // on an error).
  size_t Read(void* buffer, size_t count);

 private:
  intptr_t handle_ = -1;
};

}  // namespace pv

#endif  // PARCELVANE_SRC_PLATFORM_FILE_H
