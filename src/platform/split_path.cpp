// Path splitting: pure logic, the same on every platform, so that both
// builds name attachments alike.
#include "src/platform/split_path.h"

namespace pv {
namespace {

bool IsSeparator(OLECHAR c) { return c == u'\\' || c == u'/'; }

// The text a C-string consumer sees: everything before the first NUL.
WStringView UpToNul(WStringView path) {
  size_t end = path.find(OLECHAR(0));
  return end == WStringView::npos ? path : path.substr(0, end);
}

// One past the last separator, or 0 when there is none.
size_t DirectoryEnd(WStringView rest) {
  for (size_t i = rest.size(); i > 0; --i) {
    if (IsSeparator(rest[i - 1])) return i;
  }
  return 0;
}

bool Fits(WStringView component, size_t buffer) { return component.size() < buffer; }

}  // namespace

int SplitPath(WStringView path, PathParts* parts) {
  if (parts == nullptr) return kSplitPathInvalid;
  *parts = PathParts();
  WStringView rest = UpToNul(path);

  WStringView drive;
  if (rest.size() >= 2 && rest[1] == u':') {
    drive = rest.substr(0, 2);
    rest.remove_prefix(2);
  }
  WStringView directory = rest.substr(0, DirectoryEnd(rest));
  rest.remove_prefix(directory.size());
  size_t dot = rest.rfind(u'.');
  WStringView name = dot == WStringView::npos ? rest : rest.substr(0, dot);
  WStringView extension = dot == WStringView::npos ? WStringView() : rest.substr(dot);

  if (!Fits(drive, kSplitPathDriveBuffer) || !Fits(directory, kSplitPathDirectoryBuffer) ||
      !Fits(name, kSplitPathNameBuffer) || !Fits(extension, kSplitPathExtensionBuffer)) {
    return kSplitPathTooLong;
  }
  parts->drive.assign(drive);
  parts->directory.assign(directory);
  parts->name.assign(name);
  parts->extension.assign(extension);
  return kSplitPathOk;
}

}  // namespace pv
