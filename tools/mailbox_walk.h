// The message files of a directory, as ls and index read them: cur/ then
// new/ for a maildir, else the directory's own files and, when asked, then
// those of its subdirectories, depth first; each directory in name order,
// hidden entries left out.
//
// A symbolic link is read only when it stays inside the directory given:
// a link out of it (cur/3 -> /etc/shadow) is skipped and reported, unless
// the caller asks to follow links. Followed directory links are entered
// once each, so a link loop ends.
#ifndef PARCELVANE_TOOLS_MAILBOX_WALK_H
#define PARCELVANE_TOOLS_MAILBOX_WALK_H

#include <string>
#include <vector>

#include "tools/file_io.h"

namespace pvtool {

struct WalkOptions {
  bool follow = false;     // follow links that leave the directory
  bool recursive = false;  // enter subdirectories (maildirs in them included)
};

struct WalkResult {
  std::vector<fs::path> files;
  std::vector<fs::path> skipped_links;  // links out of the directory, not followed
};

// Throws ToolError(kExitUnreadable) when `dir` itself cannot be read.
WalkResult MessageFiles(const fs::path& dir, const WalkOptions& options);

// "path: a symbolic link out of the directory, not followed (--follow
// follows it)" for each skipped link, on standard error.
void ReportSkippedLinks(const WalkResult& walk);

}  // namespace pvtool

#endif  // PARCELVANE_TOOLS_MAILBOX_WALK_H
