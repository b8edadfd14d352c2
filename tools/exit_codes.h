// The exit codes of the command, documented in its --help, and the error
// that carries one of them up to main.
#ifndef PARCELVANE_TOOLS_EXIT_CODES_H
#define PARCELVANE_TOOLS_EXIT_CODES_H

#include <stdexcept>
#include <string>

namespace pvtool {

enum ExitCode : int {
  kExitOk = 0,
  kExitUsage = 2,          // unknown option, missing or extra argument
  kExitUnreadable = 3,     // the input (file, directory, standard input) cannot be read
  kExitNotMessage = 4,     // the input is not a message (or not a mailbox)
  kExitWriteFailed = 5,    // an output file or standard output cannot be written
  kExitLibraryFailed = 6,  // the library refused an operation
};

// Ends the command: main prints the message on standard error and exits
// with the code.
class ToolError : public std::runtime_error {
 public:
  ToolError(ExitCode code, const std::string& message) : std::runtime_error(message), code_(code) {}
  ExitCode code() const { return code_; }

 private:
  ExitCode code_;
};

}  // namespace pvtool

#endif  // PARCELVANE_TOOLS_EXIT_CODES_H
