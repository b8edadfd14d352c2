// Conversions between Python values and the library's values: str and
// wide strings, int and 32-bit integers (range-checked), bytes-like objects
// and byte arrays or data objects, wrapped objects and interface pointers.
#ifndef PARCELVANE_PYTHON_VARIANT_CONVERT_H
#define PARCELVANE_PYTHON_VARIANT_CONVERT_H

#include <pybind11/pybind11.h>

#include <parcelvane/parcelvane.h>

#include <string>
#include <string_view>

#include "src/member_lists.h"

namespace pvpy {

// A new BSTR holding `text` (a str); surrogates pass through as UTF-16 units.
BSTR NewBstr(pybind11::handle text);
BSTR NewBstrFromUtf8(std::string_view utf8);
// A str from UTF-16 units; lone surrogates are kept.
pybind11::object StrFromUtf16(const OLECHAR* units, size_t count);
pybind11::object StrFromBstr(BSTR text);

bool IsBytesLike(pybind11::handle value);

// A new data object holding the bytes of a bytes-like object.
IEMSDataObject* NewDataObject(pybind11::handle buffer);
IEMSDataObject* NewDataObjectFromBytes(const void* bytes, size_t size);
// The selected span of a data object as bytes.
pybind11::bytes SpanBytes(IEMSDataObject* data);

// Fills `out` with the argument `value` for a parameter of `param`'s type
// (null: any type); `where` names the operation for error messages.
// Raises TypeError or OverflowError.
void ToVariant(pybind11::handle value, const Param* param, const std::string& where, VARIANT* out);

// The Python value of a result; takes what `v` owns (it is left empty).
pybind11::object FromVariant(VARIANT* v);

}  // namespace pvpy

#endif  // PARCELVANE_PYTHON_VARIANT_CONVERT_H
