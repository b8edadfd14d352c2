// The process's resident memory, and a measurement taken in a child
// process so that what one library leaves in the allocator does not lower
// the next one's figure.
#ifndef PARCELVANE_BENCH_PEER_RESIDENT_MEMORY_H
#define PARCELVANE_BENCH_PEER_RESIDENT_MEMORY_H

#include <malloc.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>

namespace pv::bench {

// A field of /proc/self/status in kB ("VmRSS:", "VmHWM:"), -1 if absent.
inline long StatusKb(const char* key) {
  std::ifstream status("/proc/self/status");
  std::string line;
  size_t keyLength = std::strlen(key);
  while (std::getline(status, line)) {
    if (line.compare(0, keyLength, key) == 0) return std::atol(line.c_str() + keyLength);
  }
  return -1;
}

// Sets the peak resident set (VmHWM) back to the current one.
inline void ResetPeak() {
  if (std::FILE* f = std::fopen("/proc/self/clear_refs", "w")) {
    std::fputs("5", f);
    std::fclose(f);
  }
}

// What `measure` returns, computed in a forked child that shares the
// parent's memory as it stands. A record of plain numbers; NaN-free.
struct ChildFigures {
  double values[4] = {0, 0, 0, 0};
  bool ok = false;
};

template <class Measure>
ChildFigures InChild(Measure&& measure) {
  ChildFigures figures;
  int fds[2];
  if (pipe(fds) != 0) return figures;
  std::fflush(nullptr);
  pid_t pid = fork();
  if (pid < 0) {
    close(fds[0]);
    close(fds[1]);
    return figures;
  }
  if (pid == 0) {
    close(fds[0]);
    malloc_trim(0);
    ChildFigures result = measure();
    result.ok = true;
    ssize_t written = write(fds[1], &result, sizeof result);
    _exit(written == static_cast<ssize_t>(sizeof result) ? 0 : 1);
  }
  close(fds[1]);
  ssize_t got = read(fds[0], &figures, sizeof figures);
  close(fds[0]);
  int status = 0;
  waitpid(pid, &status, 0);
  if (got != static_cast<ssize_t>(sizeof figures) || !WIFEXITED(status) || WEXITSTATUS(status) != 0) {
    figures = ChildFigures();
  }
  return figures;
}

}  // namespace pv::bench

#endif  // PARCELVANE_BENCH_PEER_RESIDENT_MEMORY_H
