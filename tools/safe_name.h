// File names for attachments written to disk. An attachment's name comes
// from the message, that is from whoever sent it: it must never reach
// outside the target directory, name a device, hide itself or carry
// characters that a terminal or another system would act on.
#ifndef PARCELVANE_TOOLS_SAFE_NAME_H
#define PARCELVANE_TOOLS_SAFE_NAME_H

#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

namespace pvtool {

// The longest name SafeFileName produces, in bytes; leaves room for a
// number below the usual limit of 255 bytes per path component.
constexpr size_t kMaxSafeNameBytes = 200;

// A single path component made from `name` (UTF-8):
// - directory separators ("/" and "\"), control characters (C0, DEL, C1),
//   the characters Windows refuses (< > : " | ? *) and invisible direction
//   overrides become "_";
// - leading dots become "_" (no "..", no hidden files); leading blanks and
//   trailing blanks and dots are removed;
// - a device name (CON, PRN, AUX, NUL, COM0-9, LPT0-9, CONIN$, CONOUT$,
//   with or without an extension) gets a "_" in front;
// - longer names are cut to kMaxSafeNameBytes, keeping a short extension;
// - an empty result becomes "attachment".
// The same rules apply on every platform, so a name is the same wherever
// the message is extracted.
std::string SafeFileName(std::string_view name);

// "report.pdf" with number 2 gives "report-2.pdf"; "README" gives
// "README-2".
std::string NumberedName(std::string_view name, unsigned number);

// The file names of one extraction run. The candidates for a name are the
// name itself, then NumberedName(name, 1), 2, ...; every call hands out
// the next candidate that the run has not used, resuming where the last
// call for that name stopped. So n attachments of one name cost n
// candidates in all, not n * n / 2, however many share it.
class RunNames {
 public:
  // The next candidate for `name`; `number` (optional) receives its
  // number, 0 for the name itself.
  std::string Next(const std::string& name, unsigned* number = nullptr);
  // Records a name as taken by this run (written under it).
  void MarkUsed(const std::string& name) { used_.insert(name); }

 private:
  std::unordered_set<std::string> used_;
  std::unordered_map<std::string, unsigned> next_number_;
};

}  // namespace pvtool

#endif  // PARCELVANE_TOOLS_SAFE_NAME_H
