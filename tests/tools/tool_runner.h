// Runs the built parcelvane command in a child process, with standard
// input from a string and standard output and error captured, as a
// person at a shell would run it.
#ifndef PARCELVANE_TESTS_TOOLS_TOOL_RUNNER_H
#define PARCELVANE_TESTS_TOOLS_TOOL_RUNNER_H

#include <string>
#include <utility>
#include <vector>

#include "tests/tools/json_value.h"

namespace pvtool::test {

struct RunResult {
  int exit_code = -1;  // -1 when the process did not exit normally (a crash)
  std::string out;
  std::string err;
};

struct RunOptions {
  std::string stdin_bytes;
  std::string cwd;          // "" for the test's own directory
  std::string stdout_path;  // "" to capture; a path to send standard output there
  size_t stack_bytes = 0;   // the child's stack limit; 0 leaves it as it is
};

inline RunOptions WithStdin(std::string bytes) {
  RunOptions options;
  options.stdin_bytes = std::move(bytes);
  return options;
}
inline RunOptions InDir(std::string cwd) {
  RunOptions options;
  options.cwd = std::move(cwd);
  return options;
}

RunResult RunTool(const std::vector<std::string>& args, const RunOptions& options = RunOptions());

// The one JSON document a successful run printed; test failures otherwise.
JsonValue JsonOutput(const RunResult& r);

// Runs the command with standard error on a pseudo-terminal (so that it
// sees a terminal there) and standard output in a file; `err` holds what
// the terminal received. `environment` ("NAME=value") is added to the
// child's environment when not empty.
RunResult RunToolWithTerminalStderr(const std::vector<std::string>& args,
                                    const std::string& environment = "");

// A fresh directory, removed with everything in it at the end of the scope.
class TempDir {
 public:
  TempDir();
  ~TempDir();
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;
  const std::string& path() const { return path_; }
  // `path()/name`.
  std::string operator/(const std::string& name) const { return path_ + "/" + name; }
  // Writes a file inside the directory and returns its path.
  std::string Write(const std::string& name, const std::string& bytes) const;

 private:
  std::string path_;
};

// The JSON document a run printed; a test failure when the run failed or
// printed anything else.
JsonValue JsonOf(const RunResult& r);

std::string ReadFile(const std::string& path);
// The names in a directory, sorted.
std::vector<std::string> ListDir(const std::string& path);
std::string Sample(const std::string& name);

}  // namespace pvtool::test

#endif  // PARCELVANE_TESTS_TOOLS_TOOL_RUNNER_H
