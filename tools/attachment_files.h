// Attachments written to a directory, as extract and index --extract do:
// under a safe name (see SafeFileName), never outside the directory, never
// over a file that existed before unless asked, a taken name numbered.
#ifndef PARCELVANE_TOOLS_ATTACHMENT_FILES_H
#define PARCELVANE_TOOLS_ATTACHMENT_FILES_H

#include <cstdint>
#include <string>

#include "tools/file_io.h"
#include "tools/safe_name.h"

namespace pvtool {

struct Written {
  std::string path;  // UTF-8, inside the directory
  uint64_t size = 0;
};

class AttachmentDirectory {
 public:
  // `dir` is created when missing; "" is the current directory (paths then
  // carry no "./"). With `force`, files that existed before are replaced.
  // Throws ToolError(kExitWriteFailed) when it cannot be made.
  AttachmentDirectory(const std::string& dir, bool force);

  // Writes `bytes` under the safe form of `name` or, when that is taken
  // (by an older file or by an attachment of this run), under the first
  // free numbered name.
  Written Write(const std::string& name, const std::string& bytes);

 private:
  fs::path dir_;
  bool force_;
  RunNames names_;
};

}  // namespace pvtool

#endif  // PARCELVANE_TOOLS_ATTACHMENT_FILES_H
