// parcelvane._native: the extension module under the parcelvane package.
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <cstdio>
#include <string>
#include <vector>

#include "src/com_error.h"
#include "src/dispatch_object.h"
#include "src/message_core.h"
#include "tools/commands.h"
#include "tools/exit_codes.h"
#include "tools/file_io.h"

namespace py = pybind11;

PYBIND11_MODULE(_native, module) {
  module.doc() = "The parcelvane library, linked in, and the native side of the parcelvane package.";
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
