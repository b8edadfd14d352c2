#include <cstdio>

#include "tools/commands.h"
#include "tools/exit_codes.h"
#include "tools/file_io.h"
#include "tools/help.h"
#include "tools/utf.h"

namespace pvtool {

bool ParseCommand(const std::string& command, const Args& args, std::vector<OptionDef> options,
                  bool reads_messages, ParsedArgs* parsed) {
  options.push_back({"help", 'h', false, false});
  if (reads_messages) options.push_back({"no-crlf", '\0', false, false});
  *parsed = ParseArgs(args, options);
  if (!parsed->Has("help")) return true;
  WriteOut(CommandHelp(command));
  return false;
}

std::string SingleInput(const ParsedArgs& parsed, const std::string& command, const char* what) {
  const auto& positional = parsed.positional();
  if (positional.empty()) throw ToolError(kExitUsage, command + ": missing " + what);
  if (positional.size() > 1) throw ToolError(kExitUsage, command + ": unexpected argument " + positional[1]);
  return positional[0];
}

LoadOptions LoadOptionsOf(const ParsedArgs& parsed) {
  LoadOptions options;
  options.crlf = !parsed.Has("no-crlf");
  return options;
}

std::string SourceName(const std::string& file) { return file == "-" ? "standard input" : file; }

MessageView LoadMessage(const std::string& file, const LoadOptions& options) {
  InputBytes input = MapInput(file);
  auto converted = std::make_shared<std::string>();
  const std::string_view prepared =
      PrepareMessageView(input.bytes, options, SourceName(file), converted.get());
  // The parsed objects share the mapped file, or the converted copy.
  std::shared_ptr<const void> owner = converted->empty() ? std::move(input.owner) : std::move(converted);
  Ref<IEMSMessageParser> parsed = ParseMessageOver(prepared, owner);
  return MessageView(std::move(parsed), prepared, std::move(owner));
}

void PrintWarnings(const std::string& source, const std::vector<std::string>& warnings) {
  for (const std::string& warning : warnings) {
    std::fputs(("parcelvane: " + TerminalSafe(source + ": " + warning) + "\n").c_str(), stderr);
  }
}

void WriteOutput(const std::string& output, const std::string& bytes) {
  if (output.empty() || output == "-") {
    SetBinaryStdout();
    WriteOut(bytes);
    return;
  }
  WriteFileAtomically(PathFromUtf8(output), bytes, true);
}

}  // namespace pvtool
