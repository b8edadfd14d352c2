// parcelvane headers: every header field, decoded or as stored.
#include "tools/commands.h"
#include "tools/file_io.h"
#include "tools/line_ends.h"
#include "tools/utf.h"

namespace pvtool {
namespace {

// A raw value with its folding kept: each continuation on a line of its own.
std::string RawLines(const std::string& value) {
  const std::string lf = CrLfToLf(value);
  std::string out;
  size_t start = 0;
  for (;;) {
    const size_t end = lf.find('\n', start);
    out += TerminalSafe(
        std::string_view(lf).substr(start, end == std::string::npos ? std::string::npos : end - start));
    if (end == std::string::npos) break;
    out += "\n";
    start = end + 1;
  }
  return out;
}

}  // namespace

int RunHeaders(const Args& args) {
  ParsedArgs parsed;
  if (!ParseCommand("headers", args, {{"raw", '\0', false, false}}, true, &parsed)) return 0;
  const std::string file = SingleInput(parsed, "headers");
  const MessageView message = LoadMessage(file, LoadOptionsOf(parsed));
  const bool raw = parsed.Has("raw");
  std::string out;
  for (const HeaderLine& line : message.AllHeaders(raw)) {
    const std::string value = raw ? RawLines(line.value) : TerminalSafe(line.value);
    out += TerminalSafe(line.name) + ": " + value + "\n";
  }
  WriteOut(out);
  return 0;
}

}  // namespace pvtool
