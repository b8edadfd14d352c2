// Command-line options: "--name value", "--name=value", "-n value",
// "-nvalue", flags, repeatable options, "--" ending the options, and "-"
// as an ordinary argument (standard input or output).
#ifndef PARCELVANE_TOOLS_CLI_H
#define PARCELVANE_TOOLS_CLI_H

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace pvtool {

struct OptionDef {
  std::string name;        // long name without "--"
  char short_name = '\0';  // or '\0'
  bool takes_value = false;
  bool repeatable = false;
};

class ParsedArgs {
 public:
  bool Has(std::string_view name) const { return values_.count(std::string(name)) != 0; }
  // The value of a single-valued option, or `fallback`.
  std::string Get(std::string_view name, std::string fallback = std::string()) const;
  // Every value of a repeatable option, in the order given.
  std::vector<std::string> All(std::string_view name) const;
  const std::vector<std::string>& positional() const { return positional_; }

 private:
  friend ParsedArgs ParseArgs(const std::vector<std::string>&, const std::vector<OptionDef>&);
  std::map<std::string, std::vector<std::string>> values_;
  std::vector<std::string> positional_;
};

// Throws ToolError(kExitUsage) for an unknown option, a missing value, a
// value given to a flag, or a single-valued option given twice.
ParsedArgs ParseArgs(const std::vector<std::string>& args, const std::vector<OptionDef>& options);

}  // namespace pvtool

#endif  // PARCELVANE_TOOLS_CLI_H
