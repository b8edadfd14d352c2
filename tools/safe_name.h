// File names for attachments written to disk. An attachment's name comes
// from the message, that is from whoever sent it: it must never reach
// outside the target directory, name a device, hide itself or carry
// characters that a terminal or another system would act on.
#ifndef PARCELVANE_TOOLS_SAFE_NAME_H
#define PARCELVANE_TOOLS_SAFE_NAME_H

#include <string>
#include <string_view>

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

}  // namespace pvtool

#endif  // PARCELVANE_TOOLS_SAFE_NAME_H
