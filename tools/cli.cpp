#include "tools/cli.h"

#include "tools/exit_codes.h"

namespace pvtool {
namespace {

const OptionDef* FindLong(const std::vector<OptionDef>& options, std::string_view name) {
  for (const OptionDef& option : options) {
    if (option.name == name) return &option;
  }
  return nullptr;
}

const OptionDef* FindShort(const std::vector<OptionDef>& options, char name) {
  for (const OptionDef& option : options) {
    if (option.short_name != '\0' && option.short_name == name) return &option;
  }
  return nullptr;
}

[[noreturn]] void Fail(const std::string& message) { throw ToolError(kExitUsage, message); }

}  // namespace

std::string ParsedArgs::Get(std::string_view name, std::string fallback) const {
  auto it = values_.find(std::string(name));
  if (it == values_.end() || it->second.empty()) return fallback;
  return it->second.back();
}

std::vector<std::string> ParsedArgs::All(std::string_view name) const {
  auto it = values_.find(std::string(name));
  if (it == values_.end()) return {};
  return it->second;
}

ParsedArgs ParseArgs(const std::vector<std::string>& args, const std::vector<OptionDef>& options) {
  ParsedArgs parsed;
  bool options_ended = false;
  for (size_t i = 0; i < args.size(); ++i) {
    const std::string& arg = args[i];
    if (options_ended || arg == "-" || arg.empty() || arg[0] != '-') {
      parsed.positional_.push_back(arg);
      continue;
    }
    if (arg == "--") {
      options_ended = true;
      continue;
    }
    const OptionDef* option = nullptr;
    std::string shown;
    std::string inline_value;
    bool has_inline_value = false;
    if (arg.compare(0, 2, "--") == 0) {
      const size_t equals = arg.find('=');
      const std::string name = arg.substr(2, equals == std::string::npos ? std::string::npos : equals - 2);
      shown = "--" + name;
      option = FindLong(options, name);
      if (equals != std::string::npos) {
        has_inline_value = true;
        inline_value = arg.substr(equals + 1);
      }
    } else {
      shown = arg.substr(0, 2);
      option = FindShort(options, arg[1]);
      if (arg.size() > 2) {
        has_inline_value = true;
        inline_value = arg.substr(2);
      }
    }
    if (option == nullptr) Fail("unknown option " + shown);
    std::vector<std::string>& values = parsed.values_[option->name];
    if (!option->takes_value) {
      if (has_inline_value) Fail("option " + shown + " takes no value");
      values.emplace_back();
      continue;
    }
    if (!has_inline_value) {
      if (i + 1 >= args.size()) Fail("option " + shown + " needs a value");
      inline_value = args[++i];
    }
    if (!option->repeatable && !values.empty()) Fail("option " + shown + " given more than once");
    values.push_back(inline_value);
  }
  return parsed;
}

}  // namespace pvtool
