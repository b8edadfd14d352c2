// The bytes of a Python object that the library may refer to without a
// copy: only an object that cannot change (bytes, or a contiguous view of
// bytes), held through the buffer protocol until the library lets go.
#ifndef PARCELVANE_PYTHON_PYTHON_BYTES_H
#define PARCELVANE_PYTHON_PYTHON_BYTES_H

#include <pybind11/pybind11.h>

#include <parcelvane/parcelvane.h>

#include <memory>
#include <string_view>

namespace pvpy {

class PythonBytes {
 public:
  // Null when `object` is not immutable bytes.
  static std::shared_ptr<const PythonBytes> HoldImmutable(pybind11::handle object);
  ~PythonBytes();
  PythonBytes(const PythonBytes&) = delete;
  PythonBytes& operator=(const PythonBytes&) = delete;

  std::string_view view() const {
    return std::string_view(static_cast<const char*>(buffer_.buf), static_cast<size_t>(buffer_.len));
  }

 private:
  PythonBytes() = default;
  Py_buffer buffer_{};
};

// A data object over the bytes of `object` when they cannot change,
// otherwise over a copy; null when `object` is larger than the library takes.
IEMSDataObject* DataObjectOver(pybind11::handle object);

}  // namespace pvpy

#endif  // PARCELVANE_PYTHON_PYTHON_BYTES_H
