// Path splitting on arbitrary UTF-16 text: every answer stays inside the
// input and inside the buffer limits, and the parts put back together give
// the input up to its first NUL.
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "src/platform/split_path.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace pv;
  WString path(size / 2, OLECHAR(0));
  for (size_t i = 0; i < path.size(); ++i) {
    path[i] = static_cast<OLECHAR>(data[2 * i] | (data[2 * i + 1] << 8));
  }
  PathParts parts;
  int status = SplitPath(path, &parts);
  WStringView text(path);
  text = text.substr(0, text.find(OLECHAR(0)));
  if (status == kSplitPathTooLong) {
    if (!parts.drive.empty() || !parts.directory.empty() || !parts.name.empty() || !parts.extension.empty()) {
      std::abort();
    }
    return 0;
  }
  if (status != kSplitPathOk) std::abort();
  if (parts.drive.size() >= kSplitPathDriveBuffer || parts.directory.size() >= kSplitPathDirectoryBuffer ||
      parts.name.size() >= kSplitPathNameBuffer || parts.extension.size() >= kSplitPathExtensionBuffer) {
    std::abort();
  }
  if (parts.drive + parts.directory + parts.name + parts.extension != text) std::abort();
  if (parts.name.find(u'\\') != WString::npos || parts.name.find(u'/') != WString::npos) std::abort();
  if (!parts.extension.empty() &&
      (parts.extension[0] != u'.' || parts.extension.find(u'\\') != WString::npos ||
       parts.extension.find(u'/') != WString::npos)) {
    std::abort();
  }
  return 0;
}
