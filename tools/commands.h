// The subcommands. Each takes its arguments (after the command name) and
// returns the exit code; failures are thrown as ToolError.
#ifndef PARCELVANE_TOOLS_COMMANDS_H
#define PARCELVANE_TOOLS_COMMANDS_H

#include <string>
#include <vector>

#include "tools/cli.h"
#include "tools/message_view.h"

namespace pvtool {

using Args = std::vector<std::string>;

int RunShow(const Args& args);
int RunHeaders(const Args& args);
int RunText(const Args& args);
int RunHtml(const Args& args);
int RunExtract(const Args& args);
int RunCompose(const Args& args);
int RunLs(const Args& args);
int RunIndex(const Args& args);
int RunRoundtrip(const Args& args);

// ---------------------------------------------------------------- shared by the commands
// Parses `args` with `options` plus --help and, when `reads_messages`,
// --no-crlf. Returns false when help was asked for (and printed).
bool ParseCommand(const std::string& command, const Args& args, std::vector<OptionDef> options,
                  bool reads_messages, ParsedArgs* parsed);
// The one positional argument; a usage error otherwise.
std::string SingleInput(const ParsedArgs& parsed, const std::string& command, const char* what = "FILE");
LoadOptions LoadOptionsOf(const ParsedArgs& parsed);
// "standard input" for "-", else the name itself.
std::string SourceName(const std::string& file);
// Reads, prepares and parses the message in `file`.
MessageView LoadMessage(const std::string& file, const LoadOptions& options);
// Writes each warning to standard error, naming `source`.
void PrintWarnings(const std::string& source, const std::vector<std::string>& warnings);
// Writes `bytes` to `output` ("" or "-": standard output) without leaving
// half a file.
void WriteOutput(const std::string& output, const std::string& bytes);

}  // namespace pvtool

#endif  // PARCELVANE_TOOLS_COMMANDS_H
