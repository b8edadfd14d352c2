#include "tools/mailbox_walk.h"

#include <algorithm>
#include <cstdio>
#include <set>
#include <system_error>

#include "tools/exit_codes.h"
#include "tools/utf.h"

namespace pvtool {
namespace {

bool IsMaildir(const fs::path& dir) {
  std::error_code error;
  return fs::is_directory(dir / "cur", error) || fs::is_directory(dir / "new", error);
}

// True when `path`, links resolved, lies within `root` (already resolved).
bool StaysInside(const fs::path& path, const fs::path& root) {
  std::error_code error;
  const fs::path target = fs::canonical(path, error);
  if (error) return false;
  const auto [root_end, target_at] = std::mismatch(root.begin(), root.end(), target.begin(), target.end());
  return root_end == root.end();
}

class Walker {
 public:
  Walker(const fs::path& dir, const WalkOptions& options) : options_(options) {
    std::error_code error;
    root_ = fs::canonical(dir, error);
    if (error) root_ = dir;
    entered_.insert(root_);
  }

  // Whether to read or enter `path`: it is no link, or a link that stays
  // inside or may be followed.
  bool MayUse(const fs::path& path, const fs::file_status& link_status, WalkResult* result) {
    if (!fs::is_symlink(link_status)) return true;
    if (options_.follow || StaysInside(path, root_)) return true;
    result->skipped_links.push_back(path);
    return false;
  }

  // Enters a directory once: a followed link back up must not loop.
  bool FirstVisit(const fs::path& dir) {
    std::error_code error;
    const fs::path real = fs::canonical(dir, error);
    return !error && entered_.insert(real).second;
  }

  void Walk(const fs::path& dir, WalkResult* result) {
    std::vector<fs::path> pending = {dir};
    while (!pending.empty()) {
      const fs::path current = pending.back();
      pending.pop_back();
      std::vector<fs::path> subdirectories;
      if (IsMaildir(current)) {
        for (const char* folder : {"cur", "new"}) {
          if (MayEnter(current / folder, result)) ReadFolder(current / folder, false, result, nullptr);
        }
      } else {
        ReadFolder(current, current == dir, result, options_.recursive ? &subdirectories : nullptr);
      }
      // Depth first, in name order: the stack takes them in reverse.
      pending.insert(pending.end(), subdirectories.rbegin(), subdirectories.rend());
    }
  }

 private:
  // Whether to enter a directory met on the way: not a link out of the
  // directory given (unless links are followed), not entered before.
  bool MayEnter(const fs::path& folder, WalkResult* result) {
    std::error_code error;
    const fs::file_status link_status = fs::symlink_status(folder, error);
    return !error && fs::is_directory(fs::status(folder, error)) && MayUse(folder, link_status, result) &&
           FirstVisit(folder);
  }

  // The files of one folder in name order; its subdirectories that may be
  // entered go to `subdirectories` when it is given.
  void ReadFolder(const fs::path& folder, bool is_root, WalkResult* result,
                  std::vector<fs::path>* subdirectories) {
    std::error_code error;
    fs::directory_iterator it(folder, error), end;
    if (error && is_root) throw ToolError(kExitUnreadable, PathToUtf8(folder) + ": " + error.message());
    std::vector<fs::path> files;
    std::vector<fs::path> folders;
    for (; !error && it != end; it.increment(error)) {
      const std::string name = PathToUtf8(it->path().filename());
      if (name.empty() || name[0] == '.') continue;
      std::error_code status_error;
      const fs::file_status link_status = it->symlink_status(status_error);
      if (status_error) continue;
      const fs::file_status status = it->status(status_error);
      if (status_error) continue;
      if (fs::is_regular_file(status)) {
        if (MayUse(it->path(), link_status, result)) files.push_back(it->path());
      } else if (fs::is_directory(status) && subdirectories != nullptr && MayEnter(it->path(), result)) {
        folders.push_back(it->path());
      }
    }
    std::sort(files.begin(), files.end());
    std::sort(folders.begin(), folders.end());
    result->files.insert(result->files.end(), files.begin(), files.end());
    if (subdirectories != nullptr)
      subdirectories->insert(subdirectories->end(), folders.begin(), folders.end());
  }

  WalkOptions options_;
  fs::path root_;
  std::set<fs::path> entered_;
};

}  // namespace

WalkResult MessageFiles(const fs::path& dir, const WalkOptions& options) {
  WalkResult result;
  Walker(dir, options).Walk(dir, &result);
  return result;
}

void ReportSkippedLinks(const WalkResult& walk) {
  for (const fs::path& link : walk.skipped_links) {
    std::fputs(("parcelvane: " + TerminalSafe(PathToUtf8(link)) +
                ": a symbolic link out of the directory, not followed (--follow follows it)\n")
                   .c_str(),
               stderr);
  }
}

}  // namespace pvtool
