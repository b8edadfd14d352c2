#include "tools/attachment_files.h"

#include <system_error>

#include "tools/exit_codes.h"

namespace pvtool {
namespace {

fs::path PrepareDirectory(const std::string& dir) {
  if (dir.empty()) return fs::path();
  const fs::path path = PathFromUtf8(dir);
  std::error_code error;
  if (fs::is_directory(path, error)) return path;
  if (fs::exists(path, error)) throw ToolError(kExitWriteFailed, dir + ": not a directory");
  fs::create_directories(path, error);
  if (error) throw ToolError(kExitWriteFailed, "cannot create " + dir + ": " + error.message());
  return path;
}

// The target of `name` in `dir`; throws if it would not be a direct child
// of `dir` (SafeFileName guarantees it; this is the last line of defence).
fs::path ChildOf(const fs::path& dir, const std::string& name) {
  const fs::path child = PathFromUtf8(name);
  if (child.has_root_path() || child.has_parent_path() || child.filename() != child || name == "." ||
      name == "..") {
    throw ToolError(kExitWriteFailed, "refusing the unsafe file name " + name);
  }
  return dir / child;
}

}  // namespace

AttachmentDirectory::AttachmentDirectory(const std::string& dir, bool force)
    : dir_(PrepareDirectory(dir)), force_(force) {}

Written AttachmentDirectory::Write(const std::string& name, const std::string& bytes) {
  constexpr unsigned kMaxNumber = 100000;
  const std::string safe = SafeFileName(name);
  for (;;) {
    unsigned number = 0;
    const std::string candidate = names_.Next(safe, &number);
    if (number >= kMaxNumber) break;
    const fs::path target = ChildOf(dir_, candidate);
    if (WriteFileAtomically(target, bytes, force_) == WriteResult::kWritten) {
      names_.MarkUsed(candidate);
      return {PathToUtf8(target), bytes.size()};
    }
  }
  throw ToolError(kExitWriteFailed, "no free file name for " + safe);
}

}  // namespace pvtool
