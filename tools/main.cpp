// parcelvane: read, extract and compose Internet mail messages from the
// shell. Built on the library's public interface only.
#include <cstdio>
#include <exception>
#include <new>
#include <string>

#include "tools/commands.h"
#include "tools/console.h"
#include "tools/exit_codes.h"
#include "tools/file_io.h"
#include "tools/help.h"

namespace pvtool {
namespace {

using Runner = int (*)(const Args&);

Runner FindCommand(const std::string& name) {
  struct Command {
    const char* name;
    Runner run;
  };
  static const Command kCommands[] = {
      {"show", RunShow}, {"headers", RunHeaders},     {"text", RunText},
      {"html", RunHtml}, {"extract", RunExtract},     {"compose", RunCompose},
      {"ls", RunLs},     {"roundtrip", RunRoundtrip}, {"index", RunIndex},
  };
  for (const Command& command : kCommands) {
    if (name == command.name) return command.run;
  }
  return nullptr;
}

int Run(const Args& all) {
  if (all.empty()) {
    std::fputs(ToolHelp().c_str(), stderr);
    return kExitUsage;
  }
  const std::string& first = all[0];
  if (first == "--help" || first == "-h") {
    WriteOut(ToolHelp());
    return kExitOk;
  }
  if (first == "--version") {
    WriteOut(VersionText());
    return kExitOk;
  }
  if (first == "help") {
    const std::string text = all.size() > 1 ? CommandHelp(all[1]) : ToolHelp();
    if (text.empty()) throw ToolError(kExitUsage, "unknown command " + all[1]);
    WriteOut(text);
    return kExitOk;
  }
  const Runner run = FindCommand(first);
  if (run == nullptr) {
    throw ToolError(kExitUsage, (first[0] == '-' ? "unknown option " : "unknown command ") + first +
                                    " (see parcelvane --help)");
  }
  return run(Args(all.begin() + 1, all.end()));
}

void PrintError(const std::string& message) {
  std::fflush(stdout);
  std::fputs(("parcelvane: " + message + "\n").c_str(), stderr);
}

}  // namespace
}  // namespace pvtool

int main(int argc, char** argv) {
  using namespace pvtool;
  PrepareConsole();
  int code = kExitOk;
  try {
    code = Run(Utf8Arguments(argc, argv));
    FlushOut();
  } catch (const ToolError& error) {
    PrintError(error.what());
    code = error.code();
  } catch (const std::bad_alloc&) {
    PrintError("out of memory");
    code = kExitLibraryFailed;
  } catch (const std::exception& error) {
    PrintError(error.what());
    code = kExitLibraryFailed;
  }
  return code;
}
