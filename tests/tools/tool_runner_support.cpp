#include "tests/tools/tool_runner.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace pvtool::test {
namespace fs = std::filesystem;

#ifndef PARCELVANE_TOOL_PATH
#define PARCELVANE_TOOL_PATH ""
#endif
#ifndef PARCELVANE_SAMPLES_DIR
#define PARCELVANE_SAMPLES_DIR ""
#endif

TempDir::TempDir() {
  std::string pattern = (fs::temp_directory_path() / "parcelvane-tool-XXXXXX").string();
  if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("mkdtemp failed");
  path_ = pattern;
}

TempDir::~TempDir() {
  std::error_code ignored;
  fs::remove_all(path_, ignored);
}

std::string TempDir::Write(const std::string& name, const std::string& bytes) const {
  const std::string path = *this / name;
  std::ofstream(path, std::ios::binary) << bytes;
  return path;
}

JsonValue JsonOf(const RunResult& r) {
  JsonValue value;
  std::string error;
  EXPECT_EQ(r.exit_code, 0) << r.err;
  EXPECT_TRUE(ParseJson(r.out, &value, &error)) << error << "\n" << r.out;
  return value;
}

std::string ReadFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

std::vector<std::string> ListDir(const std::string& path) {
  std::vector<std::string> names;
  for (const auto& entry : fs::directory_iterator(path)) names.push_back(entry.path().filename().string());
  std::sort(names.begin(), names.end());
  return names;
}

std::string Sample(const std::string& name) { return std::string(PARCELVANE_SAMPLES_DIR) + "/" + name; }

RunResult RunTool(const std::vector<std::string>& args, const RunOptions& options) {
  TempDir io;
  const std::string in_path = io.Write("stdin", options.stdin_bytes);
  const std::string out_path = options.stdout_path.empty() ? io / "stdout" : options.stdout_path;
  const std::string err_path = io / "stderr";

  std::vector<std::string> argv_storage = {PARCELVANE_TOOL_PATH};
  argv_storage.insert(argv_storage.end(), args.begin(), args.end());
  std::vector<char*> argv;
  for (std::string& arg : argv_storage) argv.push_back(arg.data());
  argv.push_back(nullptr);

  const pid_t pid = fork();
  if (pid == 0) {
    const int in = open(in_path.c_str(), O_RDONLY);
    const int out = open(out_path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    const int err = open(err_path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    if (in < 0 || out < 0 || err < 0) _exit(127);
    dup2(in, 0), dup2(out, 1), dup2(err, 2);
    if (!options.cwd.empty() && chdir(options.cwd.c_str()) != 0) _exit(127);
    if (options.stack_bytes != 0) {
      const rlimit stack = {options.stack_bytes, options.stack_bytes};
      if (setrlimit(RLIMIT_STACK, &stack) != 0) _exit(127);
    }
    execv(argv[0], argv.data());
    _exit(127);
  }
  RunResult result;
  int status = 0;
  if (pid < 0 || waitpid(pid, &status, 0) != pid) return result;
  result.exit_code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  if (options.stdout_path.empty()) result.out = ReadFile(out_path);
  result.err = ReadFile(err_path);
  return result;
}

JsonValue JsonOutput(const RunResult& r) {
  JsonValue value;
  std::string error;
  EXPECT_EQ(r.exit_code, 0) << r.err;
  EXPECT_TRUE(ParseJson(r.out, &value, &error)) << error << "\n" << r.out;
  return value;
}

RunResult RunToolWithTerminalStderr(const std::vector<std::string>& args, const std::string& environment) {
  TempDir io;
  const std::string out_path = io / "stdout";
  std::vector<std::string> argv_storage = {PARCELVANE_TOOL_PATH};
  argv_storage.insert(argv_storage.end(), args.begin(), args.end());
  std::vector<char*> argv;
  for (std::string& arg : argv_storage) argv.push_back(arg.data());
  argv.push_back(nullptr);

  RunResult result;
  int master = -1, slave = -1;
  if (openpty(&master, &slave, nullptr, nullptr, nullptr) != 0) return result;
  const pid_t pid = fork();
  if (pid == 0) {
    const int in = open("/dev/null", O_RDONLY);
    const int out = open(out_path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    if (in < 0 || out < 0) _exit(127);
    dup2(in, 0), dup2(out, 1), dup2(slave, 2);
    close(master);
    if (!environment.empty()) putenv(const_cast<char*>(environment.c_str()));
    execv(argv[0], argv.data());
    _exit(127);
  }
  close(slave);
  // Read the terminal while the child runs, so that it never blocks on it.
  char buffer[4096];
  for (;;) {
    pollfd fd{master, POLLIN, 0};
    if (poll(&fd, 1, 100) > 0) {
      const ssize_t got = read(master, buffer, sizeof buffer);
      if (got > 0) {
        result.err.append(buffer, static_cast<size_t>(got));
        continue;
      }
      break;  // EIO once the child has closed its side
    }
    int status = 0;
    if (waitpid(pid, &status, WNOHANG) == pid) {
      result.exit_code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
      close(master);
      result.out = ReadFile(out_path);
      return result;
    }
  }
  close(master);
  int status = 0;
  if (waitpid(pid, &status, 0) == pid) result.exit_code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  result.out = ReadFile(out_path);
  return result;
}

}  // namespace pvtool::test
