#include "src/variant_convert.h"

#include <climits>
#include <cstring>
#include <utility>

#include "src/com_error.h"
#include "src/dispatch_object.h"
#include "src/python_bytes.h"

namespace py = pybind11;

namespace pvpy {
namespace {

// The UTF-16 length of a str of the given kind and characters.
template <class Char>
size_t Utf16Length(const Char* chars, Py_ssize_t count) {
  size_t length = static_cast<size_t>(count);
  if constexpr (sizeof(Char) == 4) {
    for (Py_ssize_t i = 0; i < count; ++i) length += chars[i] > 0xFFFF ? 1 : 0;
  }
  return length;
}

template <class Char>
void WriteUtf16(const Char* chars, Py_ssize_t count, OLECHAR* out) {
  for (Py_ssize_t i = 0; i < count; ++i) {
    const uint32_t c = chars[i];
    if (c > 0xFFFF) {
      *out++ = static_cast<OLECHAR>(0xD800 + ((c - 0x10000) >> 10));
      *out++ = static_cast<OLECHAR>(0xDC00 + ((c - 0x10000) & 0x3FF));
    } else {
      *out++ = static_cast<OLECHAR>(c);
    }
  }
}

template <class Char>
BSTR BstrOf(const void* data, Py_ssize_t count) {
  const Char* chars = static_cast<const Char*>(data);
  const size_t length = Utf16Length(chars, count);
  if (length > UINT_MAX / 4) throw std::length_error("text too long for the library");
  BSTR text = SysAllocStringLen(nullptr, static_cast<UINT>(length));
  if (text == nullptr) throw std::bad_alloc();
  WriteUtf16(chars, count, text);
  return text;
}

[[noreturn]] void ThrowType(const std::string& where, const char* wanted, py::handle value) {
  throw py::type_error(where + ": expected " + wanted + ", got " +
                       std::string(py::str(py::type::of(value).attr("__name__"))));
}

// A 32-bit integer of the parameter's signedness; OverflowError outside it.
void ToInteger(py::handle value, ValueType type, const std::string& where, VARIANT* out) {
  int overflow = 0;
  const long long n = PyLong_AsLongLongAndOverflow(value.ptr(), &overflow);
  if (n == -1 && PyErr_Occurred()) throw py::error_already_set();
  const bool is_unsigned = type == ValueType::kULong;
  const long long low = is_unsigned ? 0 : INT32_MIN;
  const long long high = is_unsigned ? static_cast<long long>(UINT32_MAX) : INT32_MAX;
  if (overflow != 0 || n < low || n > high) {
    const std::string message = where + ": " + std::string(py::str(value)) + " does not fit " +
                                (is_unsigned ? "an unsigned 32-bit integer (0 to 4294967295)"
                                             : "a signed 32-bit integer (-2147483648 to 2147483647)");
    PyErr_SetString(PyExc_OverflowError, message.c_str());
    throw py::error_already_set();
  }
  if (is_unsigned) {
    out->vt = VT_UI4;
    out->ulVal = static_cast<ULONG>(n);
  } else {
    out->vt = VT_I4;
    out->lVal = static_cast<LONG>(n);
  }
}

SAFEARRAY* ByteArray(const void* bytes, size_t size) {
  if (size > UINT32_MAX) throw std::length_error("more than 4 GiB of bytes for the library");
  SAFEARRAY* array = SafeArrayCreateVector(VT_UI1, 0, static_cast<ULONG>(size));
  if (array == nullptr) throw std::bad_alloc();
  void* elements = nullptr;
  if (FAILED(SafeArrayAccessData(array, &elements))) {
    SafeArrayDestroy(array);
    throw std::bad_alloc();
  }
  if (size > 0) std::memcpy(elements, bytes, size);
  SafeArrayUnaccessData(array);
  return array;
}

}  // namespace

py::bytes SpanBytesOfWhole(IEMSDataObject* data);

BSTR NewBstr(py::handle text) {
  PyObject* s = text.ptr();
  if (PyUnicode_READY(s) != 0) throw py::error_already_set();
  const Py_ssize_t count = PyUnicode_GET_LENGTH(s);
  const void* data = PyUnicode_DATA(s);
  switch (PyUnicode_KIND(s)) {
    case PyUnicode_1BYTE_KIND:
      return BstrOf<Py_UCS1>(data, count);
    case PyUnicode_2BYTE_KIND:
      return BstrOf<Py_UCS2>(data, count);
    default:
      return BstrOf<Py_UCS4>(data, count);
  }
}

BSTR NewBstrFromUtf8(std::string_view utf8) {
  py::str text(utf8.data(), utf8.size());
  return NewBstr(text);
}

py::object StrFromUtf16(const OLECHAR* units, size_t count) {
  if (count == 0) return py::str("");
  int byte_order = -1;  // little-endian, as the units are in memory on this platform
  PyObject* text =
      PyUnicode_DecodeUTF16(reinterpret_cast<const char*>(units),
                            static_cast<Py_ssize_t>(count * sizeof(OLECHAR)), "surrogatepass", &byte_order);
  if (text == nullptr) throw py::error_already_set();
  return py::reinterpret_steal<py::object>(text);
}

py::object StrFromBstr(BSTR text) { return StrFromUtf16(text, text == nullptr ? 0 : SysStringLen(text)); }

bool IsBytesLike(py::handle value) {
  return PyBytes_Check(value.ptr()) || PyByteArray_Check(value.ptr()) || PyMemoryView_Check(value.ptr());
}

IEMSDataObject* NewDataObjectFromBytes(const void* bytes, size_t size) {
  IEMSDataObject* data = nullptr;
  HRESULT hr =
      PvCreateInstance(CLSID_EMSDataObject, nullptr, IID_IEMSDataObject, reinterpret_cast<void**>(&data));
  if (FAILED(hr)) ThrowComError(hr, "EMSDataObject (creating)");
  VARIANT v;
  VariantInit(&v);
  v.vt = VT_ARRAY | VT_UI1;
  try {
    v.parray = ByteArray(bytes, size);
  } catch (...) {
    data->Release();
    throw;
  }
  hr = data->put_Data(v);
  VariantClear(&v);
  if (FAILED(hr)) {
    data->Release();
    ThrowComError(hr, "EMSDataObject.Data (put)");
  }
  return data;
}

// The bytes of a bytes-like object, in order; a strided view is copied
// into `copy` first.
std::pair<const void*, size_t> ContiguousBytes(py::handle buffer, py::bytes* copy) {
  if (PyMemoryView_Check(buffer.ptr()) &&
      !PyBuffer_IsContiguous(PyMemoryView_GET_BUFFER(buffer.ptr()), 'C')) {
    *copy = py::reinterpret_steal<py::bytes>(PyObject_CallMethod(buffer.ptr(), "tobytes", nullptr));
    if (!*copy) throw py::error_already_set();
    return {PyBytes_AS_STRING(copy->ptr()), static_cast<size_t>(PyBytes_GET_SIZE(copy->ptr()))};
  }
  py::buffer_info info = py::reinterpret_borrow<py::buffer>(buffer).request();
  return {info.ptr, static_cast<size_t>(info.size * info.itemsize)};
}

IEMSDataObject* NewDataObject(py::handle buffer) {
  py::bytes copy;
  const auto [bytes, size] = ContiguousBytes(buffer, &copy);
  return NewDataObjectFromBytes(bytes, size);
}

py::bytes SpanBytes(IEMSDataObject* data) {
  if (data == nullptr) return py::bytes("");
  ULONG position = 0, length = 0, size = 0;
  data->get_Position(&position);
  data->get_Length(&length);
  data->get_DataSize(&size);
  if (position != 0 || length != size) {
    // A span of a larger buffer (a parsed body is a span of the message):
    // copy the span alone rather than the whole buffer.
    IEMSDataObject* block = nullptr;
    if (FAILED(data->ExtractBlockAsData(&block)) || block == nullptr) return py::bytes("");
    py::bytes bytes = SpanBytesOfWhole(block);
    block->Release();
    return bytes;
  }
  return SpanBytesOfWhole(data);
}

py::bytes SpanBytesOfWhole(IEMSDataObject* data) {
  ULONG position = 0, length = 0;
  data->get_Position(&position);
  data->get_Length(&length);
  VARIANT v;
  VariantInit(&v);
  if (FAILED(data->get_Data(&v))) return py::bytes("");
  py::bytes result("");
  if (v.vt == (VT_ARRAY | VT_UI1) && v.parray != nullptr) {
    void* elements = nullptr;
    if (SUCCEEDED(SafeArrayAccessData(v.parray, &elements))) {
      const ULONG total = v.parray->rgsabound[0].cElements;
      // The span, within what the array holds.
      const ULONG start = position < total ? position : total;
      const ULONG count = length < total - start ? length : total - start;
      result = py::bytes(static_cast<const char*>(elements) + start, count);
      SafeArrayUnaccessData(v.parray);
    }
  }
  VariantClear(&v);
  return result;
}

void ToVariant(py::handle value, const Param* param, const std::string& where, VARIANT* out) {
  VariantInit(out);
  const ValueType type = param == nullptr ? ValueType::kVariant : param->type;
  if (value.is_none()) {
    if (type == ValueType::kString) {
      out->vt = VT_BSTR;
      out->bstrVal = nullptr;  // the missing string
    }
    return;  // VT_EMPTY: a null object, an omitted number
  }
  if (py::isinstance<DispatchObject>(value)) {
    if (type != ValueType::kObject && type != ValueType::kVariant) ThrowType(where, "a number or str", value);
    IDispatch* object = value.cast<DispatchObject&>().get();
    object->AddRef();
    out->vt = VT_DISPATCH;
    out->pdispVal = object;
    return;
  }
  if (PyLong_Check(value.ptr())) {
    if (type == ValueType::kObject) ThrowType(where, "a parcelvane object", value);
    ToInteger(value, type == ValueType::kULong ? ValueType::kULong : ValueType::kLong, where, out);
    return;
  }
  if (PyUnicode_Check(value.ptr())) {
    if (type == ValueType::kObject) ThrowType(where, "a parcelvane object", value);
    out->vt = VT_BSTR;
    out->bstrVal = NewBstr(value);
    return;
  }
  if (IsBytesLike(value)) {
    if (type == ValueType::kVariant) {
      py::bytes copy;
      const auto [bytes, size] = ContiguousBytes(value, &copy);
      out->parray = ByteArray(bytes, size);
      out->vt = VT_ARRAY | VT_UI1;
      return;
    }
    if (type == ValueType::kObject && param->type_name == "IEMSDataObject") {
      // Immutable bytes are not copied: the data object refers to them.
      out->vt = VT_DISPATCH;
      out->pdispVal = DataObjectOver(value);
      return;
    }
    ThrowType(where, type == ValueType::kObject ? "a parcelvane object" : "a number or str", value);
  }
  ThrowType(where,
            type == ValueType::kObject   ? "a parcelvane object or None"
            : type == ValueType::kString ? "str"
                                         : "int, str, bytes or a parcelvane object",
            value);
}

py::object FromVariant(VARIANT* v) {
  py::object result = py::none();
  switch (v->vt) {
    case VT_EMPTY:
    case VT_NULL:
      break;
    case VT_BSTR:
      // A null string is the missing string: what a getter leaves when it
      // answers S_FALSE (Invoke reports success for it).
      if (v->bstrVal != nullptr) result = StrFromBstr(v->bstrVal);
      break;
    case VT_I4:
      result = py::int_(static_cast<long>(v->lVal));
      break;
    case VT_UI4:
      result = py::int_(static_cast<unsigned long>(v->ulVal));
      break;
    case VT_I2:
      result = py::int_(static_cast<long>(v->iVal));
      break;
    case VT_BOOL:
      result = py::bool_(v->boolVal != 0);
      break;
    case VT_DISPATCH:
      if (v->pdispVal != nullptr) {
        result = WrapObject(v->pdispVal);  // takes the reference
        v->vt = VT_EMPTY;
      }
      break;
    case VT_UNKNOWN:
      if (v->punkVal != nullptr) {
        IDispatch* object = nullptr;
        if (SUCCEEDED(v->punkVal->QueryInterface(IID_IDispatch, reinterpret_cast<void**>(&object)))) {
          result = WrapObject(object);
        }
      }
      break;
    case VT_ARRAY | VT_UI1:
    case VT_ARRAY | VT_UI2:
      if (v->parray != nullptr) {
        void* elements = nullptr;
        if (SUCCEEDED(SafeArrayAccessData(v->parray, &elements))) {
          const ULONG count = v->parray->rgsabound[0].cElements;
          if (v->vt == (VT_ARRAY | VT_UI1)) {
            result = py::bytes(static_cast<const char*>(elements), count);
          } else {
            // A text array: its UTF-16 units as a str.
            result = StrFromUtf16(static_cast<const OLECHAR*>(elements), count);
          }
          SafeArrayUnaccessData(v->parray);
        }
      }
      break;
    default:
      VariantClear(v);
      throw py::type_error("a result of variant type " + std::to_string(v->vt) + " has no Python value");
  }
  VariantClear(v);
  return result;
}

}  // namespace pvpy
