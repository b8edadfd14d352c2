// What the tool needs from the terminal it runs in: UTF-8 arguments and
// output, whether a stream is a terminal, and a progress bar.
#ifndef PARCELVANE_TOOLS_CONSOLE_H
#define PARCELVANE_TOOLS_CONSOLE_H

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

namespace pvtool {

// The command-line arguments as UTF-8, the program name excluded.
std::vector<std::string> Utf8Arguments(int argc, char** argv);

// Makes a console show the tool's UTF-8 output (Windows); nothing elsewhere.
void PrepareConsole();

bool IsTerminal(std::FILE* stream);

// A one-line progress bar on standard error. It appears only when
// enabled, and only once a run has taken longer than a moment, and it
// redraws at most ten times a second.
class ProgressBar {
 public:
  ProgressBar(bool enabled, uint64_t total);
  ~ProgressBar();
  ProgressBar(const ProgressBar&) = delete;
  ProgressBar& operator=(const ProgressBar&) = delete;

  void Update(uint64_t done, uint64_t items);
  // Removes the bar from the screen.
  void Finish();

 private:
  using Clock = std::chrono::steady_clock;
  bool enabled_;
  uint64_t total_;
  Clock::time_point start_;
  Clock::time_point last_draw_;
  bool drawn_ = false;
};

}  // namespace pvtool

#endif  // PARCELVANE_TOOLS_CONSOLE_H
