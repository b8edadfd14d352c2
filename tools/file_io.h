// Reading inputs and writing outputs without ever leaving half a file:
// every file is written to a temporary name beside it and then renamed.
#ifndef PARCELVANE_TOOLS_FILE_IO_H
#define PARCELVANE_TOOLS_FILE_IO_H

#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

namespace pvtool {

namespace fs = std::filesystem;

// Paths are handled as UTF-8 text in the tool.
fs::path PathFromUtf8(std::string_view utf8);
std::string PathToUtf8(const fs::path& path);

// The whole content of a file, or of standard input for "-". Throws
// ToolError(kExitUnreadable) when it cannot be read.
std::string ReadInput(const std::string& name);
std::string ReadWholeFile(const fs::path& path);

// The bytes of an input, kept alive by `owner`: a regular file mapped into
// memory read-only (no copy), or what standard input or a special file gave.
struct InputBytes {
  std::shared_ptr<const void> owner;
  std::string_view bytes;
};
// Like ReadInput, but maps a regular file instead of reading it.
InputBytes MapInput(const std::string& name);

// A file opened for reading bytes; throws ToolError(kExitUnreadable)
// naming `name` when it cannot be opened. The caller closes it.
std::FILE* OpenForReading(const fs::path& path, const std::string& name);

enum class WriteResult { kWritten, kTargetExists };

// Writes `bytes` to `target` through a temporary file in the same
// directory. Without `replace`, an existing target is left untouched and
// kTargetExists is returned. Throws ToolError(kExitWriteFailed) on any
// failure, after removing the temporary file.
WriteResult WriteFileAtomically(const fs::path& target, std::string_view bytes, bool replace);

// Writes to standard output (or standard error); throws
// ToolError(kExitWriteFailed) when the stream refuses.
void WriteOut(std::string_view bytes);
void FlushOut();

// Standard input and output carry bytes unchanged (matters on Windows).
void SetBinaryStdin();
void SetBinaryStdout();

}  // namespace pvtool

#endif  // PARCELVANE_TOOLS_FILE_IO_H
