// An interface pointer that the library holds, together with the C++
// interface through which the library works on it.
//
// Whether the object is the library's own or another implementation's is
// decided once, when the pointer is stored: the library's own object serves
// the C++ interface itself, another implementation's is wrapped in an
// adapter that calls its interface. Code inside the library then calls the
// C++ interface and never asks again.
//
// Each C++ interface names its two sides with a specialization of
// AccessTraits, defined where the adapter is:
//
//   template <>
//   struct AccessTraits<FieldAccess> {
//     // The library's own object behind `object` as FieldAccess, or null.
//     static FieldAccess* Own(IEMSMessageParameter* object);
//     // A new adapter over another implementation's object (throws
//     // std::bad_alloc); the holder deletes it.
//     static FieldAccess* NewForeign(IEMSMessageParameter* object);
//   };
#ifndef PARCELVANE_SRC_COM_ADAPTED_H
#define PARCELVANE_SRC_COM_ADAPTED_H

#include <cstddef>
#include <cstdint>
#include <utility>

#include "src/com/com_ptr.h"

namespace pv {

template <class Access>
struct AccessTraits;

template <class I, class Access>
class Adapted {
 public:
  Adapted() = default;
  Adapted(std::nullptr_t) {}  // NOLINT: a null holder converts like a null pointer
  explicit Adapted(I* object) { Reset(object); }
  explicit Adapted(ComPtr<I> object) { Reset(std::move(object)); }

  // A copy keeps the decision: the library's own object is shared, another
  // implementation's gets an adapter of its own.
  Adapted(const Adapted& other) : object_(other.object_), access_(other.CopiedAccess()) {}
  Adapted(Adapted&& other) noexcept
      : object_(std::move(other.object_)), access_(std::exchange(other.access_, 0)) {}
  Adapted& operator=(const Adapted& other) {
    if (this != &other) {
      const uintptr_t access = other.CopiedAccess();
      DeleteAdapter();
      object_ = other.object_;
      access_ = access;
    }
    return *this;
  }
  Adapted& operator=(Adapted&& other) noexcept {
    if (this != &other) {
      DeleteAdapter();
      object_ = std::move(other.object_);
      access_ = std::exchange(other.access_, 0);
    }
    return *this;
  }
  ~Adapted() { DeleteAdapter(); }

  // Holds `object` (a new reference) and decides how to reach it. Throws
  // std::bad_alloc when an adapter cannot be made; the holder is then as it
  // was.
  void Reset(ComPtr<I> object) {
    uintptr_t access = 0;
    if (object) {
      if (Access* own = AccessTraits<Access>::Own(object.get())) {
        access = reinterpret_cast<uintptr_t>(own);
      } else {
        access = reinterpret_cast<uintptr_t>(AccessTraits<Access>::NewForeign(object.get())) | kAdapterBit;
      }
    }
    DeleteAdapter();
    object_ = std::move(object);
    access_ = access;
  }
  void Reset(I* object) { Reset(ComPtr<I>(object)); }
  // Holds the library's own object, already known as `own`, without asking.
  void ResetOwn(ComPtr<I> object, Access* own) {
    DeleteAdapter();
    object_ = std::move(object);
    access_ = object_ ? reinterpret_cast<uintptr_t>(own) : 0;
  }

  I* get() const { return object_.get(); }
  const ComPtr<I>& object() const { return object_; }
  Access* access() const { return reinterpret_cast<Access*>(access_ & ~kAdapterBit); }
  Access* operator->() const { return access(); }
  explicit operator bool() const { return static_cast<bool>(object_); }

 private:
  // Adapters are heap objects, so their addresses leave the lowest bit
  // free to say that the holder owns one.
  static constexpr uintptr_t kAdapterBit = 1;

  uintptr_t CopiedAccess() const {
    if ((access_ & kAdapterBit) == 0) return access_;
    return reinterpret_cast<uintptr_t>(AccessTraits<Access>::NewForeign(object_.get())) | kAdapterBit;
  }

  void DeleteAdapter() {
    if ((access_ & kAdapterBit) != 0) delete access();
    access_ = 0;
  }

  ComPtr<I> object_;
  uintptr_t access_ = 0;
};

}  // namespace pv

#endif  // PARCELVANE_SRC_COM_ADAPTED_H
