// The native side of the Pythonic layer: a parsed message and its parts,
// read early-bound through the same library objects, so that a walk over
// every part costs no name lookups.
#ifndef PARCELVANE_PYTHON_MESSAGE_CORE_H
#define PARCELVANE_PYTHON_MESSAGE_CORE_H

#include <pybind11/pybind11.h>

namespace pvpy {

void DefineMessageCore(pybind11::module_& module);

}  // namespace pvpy

#endif  // PARCELVANE_PYTHON_MESSAGE_CORE_H
