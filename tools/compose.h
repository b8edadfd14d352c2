// The message that parcelvane compose builds, apart from where it goes:
// the options are checked and the files read first, then every header
// value is written so that text from the user stays data.
#ifndef PARCELVANE_TOOLS_COMPOSE_H
#define PARCELVANE_TOOLS_COMPOSE_H

#include <string>
#include <utility>
#include <vector>

#include "tools/cli.h"

namespace pvtool {

struct ComposeAttachment {
  std::string name;  // the file name, UTF-8
  std::string bytes;
};

// What the options ask for, checked, with every file read.
struct ComposeRequest {
  std::string subject, date;
  std::vector<std::pair<std::string, std::string>> from, to, cc;  // {display name, address}
  std::vector<std::string> headers;                               // "Name: value"
  bool has_text = false, has_html = false;
  std::string text, html;
  std::vector<ComposeAttachment> attachments;
};

// The options of compose, -o included.
std::vector<OptionDef> ComposeOptions();

// Checks the options and reads the files. Throws ToolError(kExitUsage)
// naming the option for a value that a header cannot carry: text that is
// not UTF-8 or holds a NUL; a line break or other control character in an
// address, the date or a --header value; a blank, non-ASCII text or one
// of < > " , ; \ in an address.
ComposeRequest ReadComposeRequest(const ParsedArgs& parsed);

// The assembled message. Display names and the subject are written as
// encoded words whenever their plain form would not read back the same,
// attachment names as RFC 2231 values or encoded words, so any text there
// is data. Bytes of a file name that are not UTF-8, and NUL, become
// U+FFFD.
std::string BuildMessage(const ComposeRequest& request);

}  // namespace pvtool

#endif  // PARCELVANE_TOOLS_COMPOSE_H
