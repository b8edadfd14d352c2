// The help texts of the command and its subcommands.
#ifndef PARCELVANE_TOOLS_HELP_H
#define PARCELVANE_TOOLS_HELP_H

#include <string>
#include <string_view>

namespace pvtool {

std::string ToolHelp();
// The help of one subcommand, or "" for an unknown name.
std::string CommandHelp(std::string_view command);
std::string VersionText();

}  // namespace pvtool

#endif  // PARCELVANE_TOOLS_HELP_H
