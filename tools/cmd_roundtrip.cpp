// parcelvane roundtrip: parse, assemble again, write.
#include "tools/commands.h"

namespace pvtool {

int RunRoundtrip(const Args& args) {
  ParsedArgs parsed;
  if (!ParseCommand("roundtrip", args, {{"output", 'o', true, false}}, true, &parsed)) return 0;
  const std::string file = SingleInput(parsed, "roundtrip");
  const MessageView message = LoadMessage(file, LoadOptionsOf(parsed));
  WriteOutput(parsed.Get("output"), message.Assemble());
  return 0;
}

}  // namespace pvtool
