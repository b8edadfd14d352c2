#include "tools/console.h"

#include <cstdlib>

#include "tools/utf.h"

#ifdef _WIN32
#include <io.h>
#include <windows.h>
#include <shellapi.h>
#else
#include <unistd.h>
#endif

namespace pvtool {

#ifdef _WIN32
std::vector<std::string> Utf8Arguments(int, char**) {
  // The narrow arguments are in the ANSI code page; the wide ones are exact.
  int count = 0;
  LPWSTR* wide = CommandLineToArgvW(GetCommandLineW(), &count);
  std::vector<std::string> args;
  for (int i = 1; wide != nullptr && i < count; ++i) {
    const std::wstring arg(wide[i]);
    args.push_back(Utf16ToUtf8(U16String(arg.begin(), arg.end())));
  }
  if (wide != nullptr) LocalFree(wide);
  return args;
}

void PrepareConsole() { SetConsoleOutputCP(CP_UTF8); }

bool IsTerminal(std::FILE* stream) { return _isatty(_fileno(stream)) != 0; }
#else
std::vector<std::string> Utf8Arguments(int argc, char** argv) {
  return std::vector<std::string>(argv + (argc > 0 ? 1 : 0), argv + argc);
}

void PrepareConsole() {}

bool IsTerminal(std::FILE* stream) { return isatty(fileno(stream)) != 0; }
#endif

namespace {

std::chrono::milliseconds ProgressDelay() {
  const char* text = std::getenv("PARCELVANE_PROGRESS_DELAY_MS");
  if (text == nullptr || *text == '\0') return std::chrono::milliseconds(500);
  char* end = nullptr;
  const long value = std::strtol(text, &end, 10);
  if (*end != '\0' || value < 0) return std::chrono::milliseconds(500);
  return std::chrono::milliseconds(value);
}

}  // namespace

ProgressBar::ProgressBar(bool enabled, uint64_t total)
    : enabled_(enabled), total_(total), start_(Clock::now()), last_draw_(start_), delay_(ProgressDelay()) {}

ProgressBar::~ProgressBar() { Finish(); }

void ProgressBar::Update(uint64_t done, uint64_t items) {
  if (!enabled_) return;
  const auto now = Clock::now();
  if (now - start_ < delay_) return;
  if (drawn_ && now - last_draw_ < std::chrono::milliseconds(100)) return;
  last_draw_ = now;
  drawn_ = true;
  constexpr int kWidth = 30;
  const uint64_t shown = total_ == 0 ? 0 : (done > total_ ? total_ : done);
  const int filled = total_ == 0 ? 0 : static_cast<int>(shown * kWidth / total_);
  const int percent = total_ == 0 ? 0 : static_cast<int>(shown * 100 / total_);
  // Messages per second so far, and the time left at the rate the input
  // has been read.
  const double seconds = std::chrono::duration<double>(now - start_).count();
  const uint64_t rate = seconds > 0 ? static_cast<uint64_t>(items / seconds) : 0;
  std::string left;
  if (total_ != 0 && shown > 0 && shown < total_) {
    const auto remaining = static_cast<uint64_t>(seconds * static_cast<double>(total_ - shown) / shown);
    char text[32];
    std::snprintf(text, sizeof text, "  %llu:%02llu left", static_cast<unsigned long long>(remaining / 60),
                  static_cast<unsigned long long>(remaining % 60));
    left = text;
  }
  std::string bar = "\r[" + std::string(static_cast<size_t>(filled), '#') +
                    std::string(static_cast<size_t>(kWidth - filled), '.') + "] " + std::to_string(percent) +
                    "%  " + std::to_string(items) + " messages  " + std::to_string(rate) + " messages/s" +
                    left + " ";
  std::fputs(bar.c_str(), stderr);
  std::fflush(stderr);
}

void ProgressBar::Finish() {
  if (!drawn_) return;
  drawn_ = false;
  std::fputs(("\r" + std::string(100, ' ') + "\r").c_str(), stderr);
  std::fflush(stderr);
}

}  // namespace pvtool
