#include "src/python_bytes.h"

#include "src/com_error.h"
#include "src/variant_convert.h"

namespace py = pybind11;

namespace pvpy {
namespace {

bool IsImmutableBytes(py::handle object) {
  if (PyBytes_Check(object.ptr())) return true;
  if (!PyMemoryView_Check(object.ptr())) return false;
  const Py_buffer* view = PyMemoryView_GET_BUFFER(object.ptr());
  return view->obj != nullptr && PyBytes_Check(view->obj) && PyBuffer_IsContiguous(view, 'C');
}

// Called by the library when the last object over the bytes is gone,
// possibly on another thread and possibly late: the interpreter must
// still be there to take the buffer back.
void ReleaseHeld(void* context) { delete static_cast<std::shared_ptr<const PythonBytes>*>(context); }

}  // namespace

std::shared_ptr<const PythonBytes> PythonBytes::HoldImmutable(py::handle object) {
  if (!IsImmutableBytes(object)) return nullptr;
  std::shared_ptr<PythonBytes> held(new PythonBytes());
  if (PyObject_GetBuffer(object.ptr(), &held->buffer_, PyBUF_SIMPLE) != 0) throw py::error_already_set();
  return held;
}

PythonBytes::~PythonBytes() {
  if (buffer_.obj == nullptr || !Py_IsInitialized()) return;
  PyGILState_STATE state = PyGILState_Ensure();
  PyBuffer_Release(&buffer_);
  PyGILState_Release(state);
}

IEMSDataObject* DataObjectOver(py::handle object) {
  std::shared_ptr<const PythonBytes> held = PythonBytes::HoldImmutable(object);
  if (!held) return NewDataObject(object);
  const std::string_view bytes = held->view();
  if (bytes.size() > 0xFFFFFFFFull) throw py::value_error("more than 4 GiB of bytes for the library");
  auto* context = new std::shared_ptr<const PythonBytes>(std::move(held));
  IEMSDataObject* data = nullptr;
  const HRESULT hr =
      PvCreateDataObjectOver(bytes.data(), static_cast<ULONG>(bytes.size()), &ReleaseHeld, context, &data);
  if (FAILED(hr)) {
    delete context;  // not called on failure
    ThrowComError(hr, "PvCreateDataObjectOver");
  }
  return data;
}

}  // namespace pvpy
