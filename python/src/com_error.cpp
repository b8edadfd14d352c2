#include "src/com_error.h"

#include <cstdio>

namespace py = pybind11;

namespace pvpy {
namespace {

PyObject* com_error_type = nullptr;

const char* kComErrorDoc =
    "A failing status of the library.\n\n"
    "Attributes: hresult (the status as an unsigned 32-bit number, e.g. 0x80070057),\n"
    "operation (\"EMSMessageParser.FindHeader\"), message (what the status means),\n"
    "description (the library's own text, or \"\").";

}  // namespace

void DefineComError(py::module_& module) {
  com_error_type = PyErr_NewExceptionWithDoc("parcelvane.ComError", kComErrorDoc, PyExc_Exception, nullptr);
  if (com_error_type == nullptr) throw py::error_already_set();
  module.attr("ComError") = py::handle(com_error_type);
}

std::string StatusText(HRESULT hr) {
  switch (static_cast<uint32_t>(hr)) {
    case 0x80004003u:
      return "a required argument or result place is missing (E_POINTER)";
    case 0x80070057u:
      return "an argument is not valid (E_INVALIDARG)";
    case 0x80004005u:
      return "the operation failed: not found, cannot parse or produced nothing (E_FAIL)";
    case 0x8007000Eu:
      return "out of memory (E_OUTOFMEMORY)";
    case 0x80004001u:
      return "not implemented (E_NOTIMPL)";
    case 0x80004002u:
      return "the object does not have this interface (E_NOINTERFACE)";
    case 0x8000FFFFu:
      return "unexpected failure (E_UNEXPECTED)";
    case 0x80020003u:
      return "no such member (DISP_E_MEMBERNOTFOUND)";
    case 0x80020006u:
      return "unknown name (DISP_E_UNKNOWNNAME)";
    case 0x80020005u:
      return "an argument has the wrong type (DISP_E_TYPEMISMATCH)";
    case 0x8002000Eu:
      return "wrong number of arguments (DISP_E_BADPARAMCOUNT)";
    case 0x8002000Au:
      return "a number is out of range (DISP_E_OVERFLOW)";
    case 0x8002000Fu:
      return "a required argument was left out (DISP_E_PARAMNOTOPTIONAL)";
    case 0x80020007u:
      return "named arguments are not accepted (DISP_E_NONAMEDARGS)";
    case 0x8002000Bu:
      return "index out of range (DISP_E_BADINDEX)";
    case 0x800401F3u:
      return "no class has this program identifier (CO_E_CLASSSTRING)";
    case 0x80040111u:
      return "the class is not available (CLASS_E_CLASSNOTAVAILABLE)";
    case 0x80040110u:
      return "the class cannot be aggregated (CLASS_E_NOAGGREGATION)";
    default:
      break;
  }
  char text[64];
  std::snprintf(text, sizeof text, "status 0x%08X", static_cast<unsigned>(hr));
  return text;
}

void ThrowComError(HRESULT hr, const std::string& operation, const std::string& description) {
  // The status's meaning; the library's own text (which names the
  // operation) stays in `description`.
  const std::string message = StatusText(hr);
  char code[16];
  std::snprintf(code, sizeof code, "0x%08X", static_cast<unsigned>(hr));
  py::object error =
      py::reinterpret_borrow<py::object>(com_error_type)(operation + ": " + message + " (" + code + ")");
  error.attr("hresult") = static_cast<uint32_t>(hr);
  error.attr("operation") = operation;
  error.attr("message") = message;
  error.attr("description") = description;
  PyErr_SetObject(com_error_type, error.ptr());
  throw py::error_already_set();
}

}  // namespace pvpy
