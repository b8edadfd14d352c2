#include "src/dispatch_object.h"

#include <cctype>
#include <unordered_map>
#include <vector>

#include "src/com_error.h"
#include "src/variant_convert.h"

namespace py = pybind11;

namespace pvpy {
namespace {

long live_objects = 0;

std::string Lower(std::string text) {
  for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return text;
}

// Dispatch identifiers are a property of the interface: each name is asked
// of GetIDsOfNames once per interface, as hosts cache them.
using IdCache = std::unordered_map<std::string, DISPID>;
IdCache& CacheOf(const InterfaceInfo* info) {
  static std::unordered_map<const InterfaceInfo*, IdCache> caches;
  return caches[info];
}

// The enumerator handed out for DISPID_NEWENUM, as a Python iterator.
class DispatchIterator {
 public:
  explicit DispatchIterator(IEnumVARIANT* items) : items_(items) { CountCreated(); }
  ~DispatchIterator() {
    items_->Release();
    CountDropped();
  }
  DispatchIterator(const DispatchIterator&) = delete;
  DispatchIterator& operator=(const DispatchIterator&) = delete;

  py::object Next() {
    VARIANT item;
    VariantInit(&item);
    ULONG fetched = 0;
    if (items_->Next(1, &item, &fetched) != S_OK || fetched != 1) throw py::stop_iteration();
    return FromVariant(&item);
  }

 private:
  IEnumVARIANT* items_;
};

IUnknown* Identity(IDispatch* object) {
  IUnknown* identity = nullptr;
  if (FAILED(object->QueryInterface(IID_IUnknown, reinterpret_cast<void**>(&identity)))) return object;
  identity->Release();  // the object holds it; only the address is compared
  return identity;
}

[[noreturn]] void ThrowAttribute(const std::string& message) { throw py::attribute_error(message); }

std::string CountText(size_t low, size_t high) {
  if (low == high) return std::to_string(low) + (low == 1 ? " argument" : " arguments");
  return std::to_string(low) + " to " + std::to_string(high) + " arguments";
}

py::object CallMember(const BoundMember& bound, py::args args, py::kwargs kwargs) {
  DispatchObject& self = bound.owner.cast<DispatchObject&>();
  const Member* member = bound.member;
  const std::string operation = self.ClassName() + "." + (member != nullptr ? member->name : "?") +
                                (bound.put_with_arguments ? " (put)" : "");
  if (kwargs.empty() || member == nullptr) {
    if (!kwargs.empty()) throw py::type_error(operation + ": takes no keyword arguments");
    return self.Invoke(bound.id, bound.flags, member, py::tuple(args), operation);
  }
  // Keyword arguments by parameter name, without regard to case; a gap
  // left by them is an omitted argument.
  std::vector<py::object> values;
  for (py::handle arg : args) values.push_back(py::reinterpret_borrow<py::object>(arg));
  for (auto item : kwargs) {
    const std::string key = py::str(item.first);
    size_t index = member->in.size();
    for (size_t i = 0; i < member->in.size(); ++i) {
      if (SameNameIgnoringCase(member->in[i].name, key)) index = i;
    }
    if (index == member->in.size()) throw py::type_error(operation + ": no parameter named " + key);
    if (index < values.size() && values[index]) throw py::type_error(operation + ": " + key + " given twice");
    if (values.size() <= index) values.resize(index + 1);
    values[index] = py::reinterpret_borrow<py::object>(item.second);
  }
  py::tuple all(values.size());
  for (size_t i = 0; i < values.size(); ++i) {
    if (!values[i]) {
      // An omitted argument in the middle: the platform's "not found" marker.
      values[i] = py::module_::import("parcelvane._native").attr("Missing");
    }
    all[i] = values[i];
  }
  return self.Invoke(bound.id, bound.flags, member, all, operation);
}

std::string MemberDoc(const BoundMember& bound) {
  if (bound.member == nullptr) return "A member reached by late binding; no description is known.";
  const Member& m = *bound.member;
  std::string doc = Signature(m, bound.put_with_arguments) + "\n\n";
  if (bound.put_with_arguments) {
    doc += "Sets the property " + m.name + "; the value is the last argument.";
  } else if (m.kind == MemberKind::kGet) {
    doc += "Reads the indexed property " + m.name + ".";
  } else {
    doc += "Calls the method " + m.name + ".";
  }
  if (m.optional > 0) doc += " The last " + std::to_string(m.optional) + " arguments may be left out.";
  return doc;
}

}  // namespace

// The marker of an omitted argument in the middle of a call.
struct MissingArgument {};

long LiveObjects() { return live_objects; }
void CountCreated() { ++live_objects; }
void CountDropped() { --live_objects; }

DispatchObject::DispatchObject(IDispatch* object) : object_(object), info_(IdentifyInterface(object)) {
  CountCreated();
}

DispatchObject::~DispatchObject() {
  object_->Release();
  CountDropped();
}

std::string DispatchObject::ClassName() const { return info_ != nullptr ? info_->class_name : "object"; }

DISPID DispatchObject::IdOf(const std::string& name) {
  IdCache* cache = info_ != nullptr ? &CacheOf(info_) : nullptr;
  const std::string key = Lower(name);
  if (cache != nullptr) {
    auto found = cache->find(key);
    if (found != cache->end()) return found->second;
  }
  BSTR wide = NewBstrFromUtf8(name);
  DISPID id = DISPID_UNKNOWN;
  LPOLESTR names[1] = {wide};
  const HRESULT hr = object_->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &id);
  SysFreeString(wide);
  if (FAILED(hr)) ThrowAttribute("'" + ClassName() + "' object has no member '" + name + "'");
  if (cache != nullptr) cache->emplace(key, id);
  return id;
}

py::object DispatchObject::Invoke(DISPID id, WORD flags, const Member* member, const py::tuple& args,
                                  const std::string& operation) {
  const size_t count = args.size();
  if (member != nullptr) {
    const size_t most = member->in.size();
    const size_t least = most - static_cast<size_t>(member->optional);
    if (count < least || count > most) {
      throw py::type_error(operation + " takes " + CountText(least, most) + " (" + std::to_string(count) +
                           " given)");
    }
  }
  std::vector<VARIANT> arguments(count);
  for (VARIANT& v : arguments) VariantInit(&v);
  auto clear = [&] {
    for (VARIANT& v : arguments) VariantClear(&v);
  };
  try {
    for (size_t i = 0; i < count; ++i) {
      // Last argument first, as DISPPARAMS holds them.
      VARIANT* place = &arguments[count - 1 - i];
      py::handle value = args[i];
      if (py::isinstance<MissingArgument>(value)) {
        place->vt = VT_ERROR;
        place->scode = DISP_E_PARAMNOTFOUND;
        continue;
      }
      const Param* param = member != nullptr ? &member->in[i] : nullptr;
      ToVariant(value, param, operation + (param != nullptr ? " (" + param->name + ")" : ""), place);
    }
  } catch (...) {
    clear();
    throw;
  }
  DISPID put_id = DISPID_PROPERTYPUT;
  const bool put = (flags & DISPATCH_PROPERTYPUT) != 0;
  DISPPARAMS params{arguments.data(), put ? &put_id : nullptr, static_cast<UINT>(count), put ? 1u : 0u};
  VARIANT result;
  VariantInit(&result);
  EXCEPINFO exception{};
  UINT bad_argument = 0;
  HRESULT hr = object_->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, flags, &params, put ? nullptr : &result,
                               &exception, &bad_argument);
  clear();
  std::string description;
  if (hr == DISP_E_EXCEPTION) {
    hr = exception.scode != 0 ? exception.scode : E_FAIL;
    if (exception.bstrDescription != nullptr) description = py::str(StrFromBstr(exception.bstrDescription));
  }
  SysFreeString(exception.bstrSource);
  SysFreeString(exception.bstrDescription);
  SysFreeString(exception.bstrHelpFile);
  if (FAILED(hr)) {
    VariantClear(&result);
    if ((hr == DISP_E_TYPEMISMATCH || hr == DISP_E_OVERFLOW || hr == DISP_E_PARAMNOTOPTIONAL) &&
        bad_argument < count) {
      const size_t position = count - 1 - bad_argument;
      description = "argument " + std::to_string(position + 1);
      if (member != nullptr && position < member->in.size())
        description += " (" + member->in[position].name + ")";
    }
    ThrowComError(hr, operation, description);
  }
  if (hr == S_FALSE) {
    // The thing asked for is absent.
    VariantClear(&result);
    return py::none();
  }
  return FromVariant(&result);
}

py::object WrapObject(IDispatch* object) {
  return py::cast(new DispatchObject(object), py::return_value_policy::take_ownership);
}

void DefineDispatch(py::module_& module) {
  py::class_<MissingArgument>(module, "_MissingArgument");
  module.attr("Missing") = py::cast(MissingArgument{});

  py::class_<DispatchIterator>(module, "DispatchIterator")
      .def("__iter__", [](py::object self) { return self; })
      .def("__next__", &DispatchIterator::Next);

  py::class_<BoundMember>(module, "DispatchMethod",
                          "A method, an indexed property or a put with arguments of a late-bound object.")
      .def("__call__", &CallMember)
      .def_property_readonly("__doc__", &MemberDoc)
      .def("__repr__", [](const BoundMember& b) {
        const DispatchObject& owner = b.owner.cast<const DispatchObject&>();
        return "<parcelvane method " + owner.ClassName() + "." +
               (b.member != nullptr ? Signature(*b.member, b.put_with_arguments) : std::string("?")) + ">";
      });

  // The type's documentation is each object's own (its members), as help(obj) shows it.
  py::class_<DispatchObject>(module, "DispatchObject")
      .def_property_readonly("__doc__",
                             [](const DispatchObject& self) {
                               // What help(obj) shows: every member with its parameters.
                               std::string doc = "A late-bound " + self.ClassName() +
                                                 " object: attributes are its properties and methods,\n"
                                                 "resolved by name without regard to case.\n\n";
                               if (self.info() == nullptr) return doc;
                               for (const Member& m : self.info()->members) {
                                 if (m.kind == MemberKind::kMethod) {
                                   doc += Signature(m, false) + "\n";
                                 } else if (m.kind == MemberKind::kGet) {
                                   doc +=
                                       m.in.empty() ? m.name + " (property)\n" : Signature(m, false) + "\n";
                                 } else if (m.in.size() > 1) {
                                   doc += Signature(m, true) + "\n";
                                 } else if (self.info()->Find(m.name, MemberKind::kGet) == nullptr) {
                                   doc += m.name + " (property, set only)\n";
                                 }
                               }
                               return doc;
                             })
      .def("__getattr__",
           [](py::object self_object, const std::string& name) -> py::object {
             DispatchObject& self = self_object.cast<DispatchObject&>();
             if (name.size() >= 2 && name[0] == '_' && name[1] == '_') {
               ThrowAttribute("'" + self.ClassName() + "' object has no attribute '" + name + "'");
             }
             const InterfaceInfo* info = self.info();
             if (info == nullptr) {
               // Nothing known but the name: a call that may be a method or a getter.
               DISPID id = self.IdOf(name);
               return py::cast(
                   BoundMember{self_object, nullptr, id, DISPATCH_METHOD | DISPATCH_PROPERTYGET, false});
             }
             if (const Member* get = info->Find(name, MemberKind::kGet)) {
               const DISPID id = self.IdOf(get->name);
               if (get->in.empty()) {
                 return self.Invoke(id, DISPATCH_PROPERTYGET, get, py::tuple(),
                                    info->class_name + "." + get->name);
               }
               return py::cast(BoundMember{self_object, get, id, DISPATCH_PROPERTYGET, false});
             }
             if (const Member* method = info->Find(name, MemberKind::kMethod)) {
               return py::cast(
                   BoundMember{self_object, method, self.IdOf(method->name), DISPATCH_METHOD, false});
             }
             if (name.size() > 3 && SameNameIgnoringCase(name.substr(0, 3), "set")) {
               if (const Member* put = info->Find(name.substr(3), MemberKind::kPut)) {
                 return py::cast(
                     BoundMember{self_object, put, self.IdOf(put->name), DISPATCH_PROPERTYPUT, true});
               }
             }
             if (const Member* put = info->Find(name, MemberKind::kPut)) {
               ThrowAttribute(info->class_name + "." + put->name + " can only be set");
             }
             ThrowAttribute("'" + info->class_name + "' object has no member '" + name + "'");
           })
      .def("__setattr__",
           [](DispatchObject& self, const std::string& name, py::object value) {
             const InterfaceInfo* info = self.info();
             const Member* put = info != nullptr ? info->Find(name, MemberKind::kPut) : nullptr;
             if (put == nullptr) {
               if (info != nullptr && info->Find(name, MemberKind::kGet) != nullptr) {
                 ThrowAttribute(self.ClassName() + "." + name + " is read-only");
               }
               ThrowAttribute("'" + self.ClassName() + "' object has no property '" + name + "' to set");
             }
             if (put->in.size() != 1) {
               ThrowAttribute(self.ClassName() + "." + put->name + " takes arguments: call Set" + put->name +
                              "(" + put->in.front().name + ", ..., value)");
             }
             self.Invoke(self.IdOf(put->name), DISPATCH_PROPERTYPUT, put, py::make_tuple(value),
                         self.ClassName() + "." + put->name + " (put)");
           })
      .def("__dir__",
           [](const DispatchObject& self) {
             py::list names;
             if (self.info() == nullptr) return names;
             std::vector<std::string> seen;
             auto add = [&](const std::string& name) {
               for (const std::string& s : seen) {
                 if (s == name) return;
               }
               seen.push_back(name);
               names.append(name);
             };
             for (const Member& m : self.info()->members) {
               add(m.name);
               if (m.kind == MemberKind::kPut && m.in.size() > 1) add("Set" + m.name);
             }
             return names;
           })
      .def("__repr__",
           [](const DispatchObject& self) { return "<parcelvane." + self.ClassName() + " object>"; })
      .def("__bool__", [](const DispatchObject&) { return true; })
      .def("__eq__",
           [](const DispatchObject& self, py::object other) {
             if (!py::isinstance<DispatchObject>(other)) return false;
             return Identity(self.get()) == Identity(other.cast<const DispatchObject&>().get());
           })
      .def("__hash__",
           [](const DispatchObject& self) { return std::hash<const void*>()(Identity(self.get())); })
      .def("__len__",
           [](DispatchObject& self) {
             const InterfaceInfo* info = self.info();
             if (info == nullptr || info->count.empty()) {
               throw py::type_error("'" + self.ClassName() + "' object has no len()");
             }
             const Member* count = info->Find(info->count, MemberKind::kGet);
             py::object n = self.Invoke(self.IdOf(info->count), DISPATCH_PROPERTYGET, count, py::tuple(),
                                        info->class_name + "." + info->count);
             const long value = n.is_none() ? 0 : n.cast<long>();
             return static_cast<size_t>(value < 0 ? 0 : value);
           })
      .def("__getitem__",
           [](py::object self_object, py::object index) -> py::object {
             DispatchObject& self = self_object.cast<DispatchObject&>();
             const InterfaceInfo* info = self.info();
             if (info == nullptr || info->item.empty()) {
               throw py::type_error("'" + self.ClassName() + "' object is not subscriptable");
             }
             const Py_ssize_t length = static_cast<Py_ssize_t>(py::len(self_object));
             const Member* item = info->Find(info->item, MemberKind::kGet);
             auto at = [&](Py_ssize_t i) {
               return self.Invoke(DISPID_VALUE, DISPATCH_PROPERTYGET, item, py::make_tuple(i),
                                  info->class_name + "." + info->item);
             };
             if (PySlice_Check(index.ptr())) {
               Py_ssize_t start = 0, stop = 0, step = 0;
               if (PySlice_Unpack(index.ptr(), &start, &stop, &step) < 0) throw py::error_already_set();
               const Py_ssize_t n = PySlice_AdjustIndices(length, &start, &stop, step);
               py::list items;
               for (Py_ssize_t k = 0; k < n; ++k) items.append(at(start + k * step));
               return std::move(items);
             }
             Py_ssize_t i = index.cast<Py_ssize_t>();
             if (i < 0) i += length;
             if (i < 0 || i >= length) throw py::index_error(info->class_name + " index out of range");
             return at(i);
           })
      .def("__iter__",
           [](DispatchObject& self) {
             const InterfaceInfo* info = self.info();
             if (info == nullptr || info->item.empty()) {
               throw py::type_error("'" + self.ClassName() + "' object is not iterable");
             }
             DISPPARAMS none{nullptr, nullptr, 0, 0};
             VARIANT result;
             VariantInit(&result);
             HRESULT hr =
                 self.get()->Invoke(DISPID_NEWENUM, IID_NULL, LOCALE_USER_DEFAULT,
                                    DISPATCH_METHOD | DISPATCH_PROPERTYGET, &none, &result, nullptr, nullptr);
             if (FAILED(hr)) ThrowComError(hr, info->class_name + " (enumerating)");
             IEnumVARIANT* items = nullptr;
             if (result.vt == VT_UNKNOWN && result.punkVal != nullptr) {
               result.punkVal->QueryInterface(IID_IEnumVARIANT, reinterpret_cast<void**>(&items));
             }
             VariantClear(&result);
             if (items == nullptr) ThrowComError(E_NOINTERFACE, info->class_name + " (enumerating)");
             return new DispatchIterator(items);
           })
      .def("__call__", [](DispatchObject& self, py::args args) {
        // The default member: a collection's item, as parts(0) in scripts.
        const InterfaceInfo* info = self.info();
        if (info == nullptr || info->item.empty()) {
          throw py::type_error("'" + self.ClassName() + "' object is not callable");
        }
        return self.Invoke(DISPID_VALUE, DISPATCH_METHOD | DISPATCH_PROPERTYGET,
                           info->Find(info->item, MemberKind::kGet), py::tuple(args),
                           info->class_name + "." + info->item);
      });

  module.def(
      "Dispatch",
      [](py::object what) -> py::object {
        if (py::isinstance<DispatchObject>(what)) return what;
        const std::string name = py::str(what);
        BSTR wide = NewBstr(what);
        CLSID clsid{};
        HRESULT hr = PvCLSIDFromProgID(wide, &clsid);
        SysFreeString(wide);
        if (hr == CO_E_CLASSSTRING && name.find('.') == std::string::npos) {
          // A bare class name such as "EMSMessageParser".
          BSTR qualified = NewBstrFromUtf8("ParcelvaneLib." + name);
          hr = PvCLSIDFromProgID(qualified, &clsid);
          SysFreeString(qualified);
        }
        if (FAILED(hr)) ThrowComError(hr, "Dispatch(\"" + name + "\")");
        IDispatch* object = nullptr;
        hr = PvCreateInstance(clsid, nullptr, IID_IDispatch, reinterpret_cast<void**>(&object));
        if (FAILED(hr)) ThrowComError(hr, "Dispatch(\"" + name + "\")");
        return WrapObject(object);
      },
      py::arg("prog_id"),
      "Creates an object of the library by program identifier (\"ParcelvaneLib.EMSMessageParser\",\n"
      "versioned or not, or a registered name) or by bare class name (\"EMSMessageParser\").");
  module.def("live_objects", &LiveObjects, "Wrappers holding library objects that are alive now.");
}

}  // namespace pvpy
