// Command-line option parsing.
#ifdef PARCELVANE_TOOL_PATH

#include <gtest/gtest.h>

#include "tools/cli.h"
#include "tools/exit_codes.h"

namespace pvtool {
namespace {

const std::vector<OptionDef> kOptions = {
    {"dir", 'd', true, false}, {"to", '\0', true, true}, {"json", '\0', false, false}};

int UsageCode(const std::vector<std::string>& args) {
  try {
    ParseArgs(args, kOptions);
  } catch (const ToolError& error) {
    return error.code();
  }
  return 0;
}

TEST(ParseArgs, ReadsValuesInEveryForm) {
  const ParsedArgs a = ParseArgs({"--dir", "x", "file"}, kOptions);
  EXPECT_EQ(a.Get("dir"), "x");
  EXPECT_EQ(ParseArgs({"--dir=y"}, kOptions).Get("dir"), "y");
  EXPECT_EQ(ParseArgs({"-d", "z"}, kOptions).Get("dir"), "z");
  EXPECT_EQ(ParseArgs({"-dw"}, kOptions).Get("dir"), "w");
  EXPECT_EQ(a.positional(), std::vector<std::string>{"file"});
}

TEST(ParseArgs, RepeatableOptionsKeepEveryValueInOrder) {
  const ParsedArgs a = ParseArgs({"--to", "a", "--to=b"}, kOptions);
  EXPECT_EQ(a.All("to"), (std::vector<std::string>{"a", "b"}));
}

TEST(ParseArgs, FlagsAndTheDashArgument) {
  const ParsedArgs a = ParseArgs({"--json", "-"}, kOptions);
  EXPECT_TRUE(a.Has("json"));
  EXPECT_FALSE(a.Has("dir"));
  EXPECT_EQ(a.positional(), std::vector<std::string>{"-"});
}

TEST(ParseArgs, DoubleDashEndsTheOptions) {
  const ParsedArgs a = ParseArgs({"--", "--json", "-d"}, kOptions);
  EXPECT_FALSE(a.Has("json"));
  EXPECT_EQ(a.positional(), (std::vector<std::string>{"--json", "-d"}));
}

TEST(ParseArgs, MistakesAreUsageErrors) {
  EXPECT_EQ(UsageCode({"--nope"}), kExitUsage);
  EXPECT_EQ(UsageCode({"-x"}), kExitUsage);
  EXPECT_EQ(UsageCode({"--dir"}), kExitUsage);
  EXPECT_EQ(UsageCode({"--json=1"}), kExitUsage);
  EXPECT_EQ(UsageCode({"--dir", "a", "--dir", "b"}), kExitUsage);
}

}  // namespace
}  // namespace pvtool

#endif
