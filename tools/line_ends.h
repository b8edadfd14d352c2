// Line-end conversion. The library recognises message structure only at
// CR LF; files on Linux usually end their lines with a bare LF.
#ifndef PARCELVANE_TOOLS_LINE_ENDS_H
#define PARCELVANE_TOOLS_LINE_ENDS_H

#include <string>
#include <string_view>

namespace pvtool {

// Every LF that does not follow a CR becomes CR LF; everything else,
// a lone CR included, is copied.
std::string BareLfToCrLf(std::string_view text);
// True when `text` holds an LF that does not follow a CR.
bool HasBareLf(std::string_view text);
// Every CR LF becomes LF, for text shown on a terminal or written to a
// text file.
std::string CrLfToLf(std::string_view text);

}  // namespace pvtool

#endif  // PARCELVANE_TOOLS_LINE_ENDS_H
