// parcelvane text / html: one body of the message, decoded, in UTF-8.
#include <cstdio>

#include "tools/commands.h"
#include "tools/exit_codes.h"
#include "tools/file_io.h"
#include "tools/line_ends.h"

namespace pvtool {
namespace {

int RunBody(const std::string& command, const Args& args, bool html) {
  ParsedArgs parsed;
  if (!ParseCommand(command, args, {{"crlf-out", '\0', false, false}}, true, &parsed)) return 0;
  const std::string file = SingleInput(parsed, command);
  const MessageView message = LoadMessage(file, LoadOptionsOf(parsed));
  std::string body;
  const bool found = html ? message.HtmlBody(&body) : message.TextBody(&body);
  if (!found) {
    std::fputs(
        ("parcelvane: " + SourceName(file) + ": the message has no " + (html ? "HTML" : "text") + " body\n")
            .c_str(),
        stderr);
    return 1;
  }
  if (parsed.Has("crlf-out")) {
    SetBinaryStdout();
    WriteOut(body);
    return 0;
  }
  // Standard output in text mode gives each LF the platform's line end.
  WriteOut(CrLfToLf(body));
  return 0;
}

}  // namespace

int RunText(const Args& args) { return RunBody("text", args, false); }
int RunHtml(const Args& args) { return RunBody("html", args, true); }

}  // namespace pvtool
