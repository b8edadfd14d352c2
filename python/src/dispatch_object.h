// Late-bound objects as script hosts see them: every attribute is resolved
// by name through the object's GetIDsOfNames and called through Invoke.
#ifndef PARCELVANE_PYTHON_DISPATCH_OBJECT_H
#define PARCELVANE_PYTHON_DISPATCH_OBJECT_H

#include <pybind11/pybind11.h>

#include <parcelvane/parcelvane.h>

#include <string>

#include "src/member_lists.h"

namespace pvpy {

// Wrappers that hold references to library objects and are alive now.
long LiveObjects();
void CountCreated();
void CountDropped();

class DispatchObject {
 public:
  // Takes over the reference `object` carries.
  explicit DispatchObject(IDispatch* object);
  ~DispatchObject();
  DispatchObject(const DispatchObject&) = delete;
  DispatchObject& operator=(const DispatchObject&) = delete;

  IDispatch* get() const { return object_; }
  const InterfaceInfo* info() const { return info_; }
  std::string ClassName() const;

  // The dispatch identifier of a name, from the object's GetIDsOfNames.
  DISPID IdOf(const std::string& name);

  // Invokes `id` with `args` (the put value last for a put); `member` when
  // known checks the count and types of the arguments.
  pybind11::object Invoke(DISPID id, WORD flags, const Member* member, const pybind11::tuple& args,
                          const std::string& operation);

 private:
  IDispatch* object_;
  const InterfaceInfo* info_;
};

// A new wrapper taking over the reference `object` carries.
pybind11::object WrapObject(IDispatch* object);

// A method or an indexed property of one object, ready to be called.
struct BoundMember {
  pybind11::object owner;  // the DispatchObject
  const Member* member;
  DISPID id;
  WORD flags;
  bool put_with_arguments;
};

void DefineDispatch(pybind11::module_& module);

}  // namespace pvpy

#endif  // PARCELVANE_PYTHON_DISPATCH_OBJECT_H
