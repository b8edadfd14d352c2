// parcelvane._native: the extension module under the parcelvane package.
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "src/com_error.h"
#include "src/dispatch_object.h"
#include "src/message_core.h"
#include "tools/commands.h"
#include "tools/exit_codes.h"
#include "tools/file_io.h"

#if defined(__GLIBC__)
#include <malloc.h>
#endif

namespace py = pybind11;

namespace {

// Parsing hands the library buffers as large as the message, and decoding
// makes more; glibc returns the heap's free top to the system after each,
// so every message paid for fresh pages again (a third of the time on a
// folder of real messages). Keeping 8 MiB of slack at the top of the heap
// avoids that; PARCELVANE_MALLOC_TOP_PAD sets another size in bytes, 0
// leaves the allocator as it is.
void KeepHeapSlack() {
#if defined(__GLIBC__)
  long pad = 8L << 20;
  if (const char* text = std::getenv("PARCELVANE_MALLOC_TOP_PAD")) pad = std::strtol(text, nullptr, 10);
  if (pad > 0) mallopt(M_TOP_PAD, static_cast<int>(pad > (1L << 30) ? (1L << 30) : pad));
#endif
}

}  // namespace

PYBIND11_MODULE(_native, module) {
  module.doc() = "The parcelvane library, linked in, and the native side of the parcelvane package.";
  KeepHeapSlack();
  pvpy::DefineComError(module);
  pvpy::DefineDispatch(module);
  pvpy::DefineMessageCore(module);
  module.def(
      "can_unload", [] { return DllCanUnloadNow() == S_OK; },
      "True when the library holds no objects and no locks (DllCanUnloadNow).");
  module.def(
      "show",
      [](const std::vector<std::string>& args) {
        // The command's show, writing to the process's standard output.
        std::fflush(stdout);
        int code = pvtool::kExitOk;
        try {
          code = pvtool::RunShow(args);
          pvtool::FlushOut();
        } catch (const pvtool::ToolError& error) {
          pvtool::FlushOut();
          std::fputs(("parcelvane: " + std::string(error.what()) + "\n").c_str(), stderr);
          code = error.code();
        }
        std::fflush(stdout);
        return code;
      },
      py::arg("args"), "Runs `parcelvane show ARGS...` and returns its exit code.");
}
