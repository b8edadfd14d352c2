// parcelvane compose: a new message from command-line options.
#include <chrono>
#include <cstring>

#include "tools/commands.h"
#include "tools/compose.h"
#include "tools/exit_codes.h"
#include "tools/file_io.h"
#include "tools/mail_text.h"

namespace pvtool {
namespace {

[[noreturn]] void Refuse(const char* option, const std::string& why) {
  throw ToolError(kExitUsage, std::string("compose: --") + option + " " + why);
}

// Every text option: UTF-8, and no NUL, which no header can carry.
void RequireText(const char* option, std::string_view value) {
  if (!IsValidUtf8(value)) Refuse(option, "is not valid UTF-8");
  if (value.find('\0') != std::string_view::npos) Refuse(option, "holds a NUL character");
}

// A value written into a header as it stands: a line break would end the
// field and start another.
void RequireOneLine(const char* option, std::string_view value) {
  RequireText(option, value);
  for (const char c : value) {
    if (c == '\r' || c == '\n') {
      Refuse(option, "holds a line break (CR or LF), which would end the header field");
    }
    const auto byte = static_cast<unsigned char>(c);
    if ((byte < 0x20 && c != '\t') || byte == 0x7F) Refuse(option, "holds a control character");
  }
}

void RequireAddress(const char* option, std::string_view address) {
  RequireOneLine(option, address);
  for (const char c : address) {
    if (c == ' ' || c == '\t') Refuse(option, "holds a blank in the address");
    if (static_cast<unsigned char>(c) >= 0x80) {
      Refuse(option, "holds non-ASCII text in the address, which a header cannot carry unencoded");
    }
    if (std::strchr("<>\",;\\", c) != nullptr) {
      Refuse(option, std::string("holds \"") + c + "\" in the address, which would end it");
    }
  }
}

std::vector<std::pair<std::string, std::string>> ReadAddresses(const ParsedArgs& parsed, const char* option) {
  std::vector<std::pair<std::string, std::string>> addresses;
  for (const std::string& text : parsed.All(option)) {
    RequireText(option, text);
    if (text.empty()) continue;
    Address address = SplitAddress(text);
    RequireAddress(option, address.address);
    addresses.emplace_back(std::move(address.name), std::move(address.address));
  }
  return addresses;
}

std::string FileName(const std::string& path) { return PathToUtf8(PathFromUtf8(path).filename()); }

std::string NowAsHeaderDate() {
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  return HeaderDate(std::chrono::duration_cast<std::chrono::seconds>(now).count());
}

}  // namespace

ComposeRequest ReadComposeRequest(const ParsedArgs& parsed) {
  if (!parsed.positional().empty()) {
    throw ToolError(kExitUsage, "compose: unexpected argument " + parsed.positional()[0]);
  }
  if (parsed.Has("text") && parsed.Has("text-file")) {
    throw ToolError(kExitUsage, "compose: give either --text or --text-file, not both");
  }
  ComposeRequest r;
  r.from = ReadAddresses(parsed, "from");
  r.to = ReadAddresses(parsed, "to");
  r.cc = ReadAddresses(parsed, "cc");
  r.subject = parsed.Get("subject");
  RequireText("subject", r.subject);
  r.date = parsed.Has("date") ? parsed.Get("date") : NowAsHeaderDate();
  RequireOneLine("date", r.date);
  r.headers = parsed.All("header");
  for (const std::string& header : r.headers) RequireOneLine("header", header);
  if (parsed.Has("text")) r.has_text = true, r.text = parsed.Get("text");
  if (parsed.Has("text-file")) r.has_text = true, r.text = ReadInput(parsed.Get("text-file"));
  if (parsed.Has("html-file")) r.has_html = true, r.html = ReadInput(parsed.Get("html-file"));
  for (const std::string& path : parsed.All("attach")) {
    if (path == "-") throw ToolError(kExitUsage, "compose: --attach needs a file name, not -");
    r.attachments.push_back({FileName(path), ReadWholeFile(PathFromUtf8(path))});
  }
  return r;
}

std::vector<OptionDef> ComposeOptions() {
  return {{"from", '\0', true, false},    {"to", '\0', true, true},         {"cc", '\0', true, true},
          {"subject", '\0', true, false}, {"date", '\0', true, false},      {"header", '\0', true, true},
          {"text", '\0', true, false},    {"text-file", '\0', true, false}, {"html-file", '\0', true, false},
          {"attach", '\0', true, true},   {"output", 'o', true, false}};
}

int RunCompose(const Args& args) {
  ParsedArgs parsed;
  if (!ParseCommand("compose", args, ComposeOptions(), false, &parsed)) return 0;
  const std::string message = BuildMessage(ReadComposeRequest(parsed));
  WriteOutput(parsed.Get("output"), message);
  return 0;
}

}  // namespace pvtool
