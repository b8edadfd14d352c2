// parcelvane.ComError: a failing status of the library as a Python
// exception with the status, the operation's name and a readable message.
#ifndef PARCELVANE_PYTHON_COM_ERROR_H
#define PARCELVANE_PYTHON_COM_ERROR_H

#include <pybind11/pybind11.h>

#include <parcelvane/parcelvane.h>

#include <string>

namespace pvpy {

// Creates parcelvane._native.ComError in `module`.
void DefineComError(pybind11::module_& module);

// What a status means, in a few words.
std::string StatusText(HRESULT hr);

// Raises ComError; `description` is the library's own text, when it gave one.
[[noreturn]] void ThrowComError(HRESULT hr, const std::string& operation,
                                const std::string& description = "");

}  // namespace pvpy

#endif  // PARCELVANE_PYTHON_COM_ERROR_H
