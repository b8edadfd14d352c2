// A counted reference to an object: AddRef on copy, Release on drop.
#ifndef PARCELVANE_SRC_COM_COM_PTR_H
#define PARCELVANE_SRC_COM_COM_PTR_H

#include <cstddef>
#include <utility>

#include "parcelvane/platform.h"
#include "src/com/iid_of.h"

namespace pv {

template <class T>
class ComPtr {
 public:
  ComPtr() = default;
  ComPtr(std::nullptr_t) {}  // NOLINT(google-explicit-constructor)
  // Takes a new reference to `p`.
  explicit ComPtr(T* p) : p_(p) {
    if (p_ != nullptr) p_->AddRef();
  }
  ComPtr(const ComPtr& other) : ComPtr(other.p_) {}
  ComPtr(ComPtr&& other) noexcept : p_(other.p_) { other.p_ = nullptr; }
  ~ComPtr() { reset(); }

  ComPtr& operator=(const ComPtr& other) {
    if (this != &other) ComPtr(other).swap(*this);
    return *this;
  }
  ComPtr& operator=(ComPtr&& other) noexcept {
    ComPtr(std::move(other)).swap(*this);
    return *this;
  }
  ComPtr& operator=(std::nullptr_t) {
    reset();
    return *this;
  }

  // Adopts a reference the caller already owns (no AddRef).
  static ComPtr Adopt(T* p) {
    ComPtr r;
    r.p_ = p;
    return r;
  }

  T* get() const { return p_; }
  T* operator->() const { return p_; }
  explicit operator bool() const { return p_ != nullptr; }

  // Releases the held reference and returns the place for an out argument.
  T** put() {
    reset();
    return &p_;
  }
  void** put_void() { return reinterpret_cast<void**>(put()); }

  // Hands the reference to the caller.
  T* detach() {
    T* p = p_;
    p_ = nullptr;
    return p;
  }
  // Writes a new reference to an out argument (which must not be null).
  void CopyTo(T** out) const {
    *out = p_;
    if (p_ != nullptr) p_->AddRef();
  }

  void reset() {
    T* p = p_;
    p_ = nullptr;
    if (p != nullptr) p->Release();
  }
  void swap(ComPtr& other) noexcept { std::swap(p_, other.p_); }

  template <class U>
  HRESULT As(ComPtr<U>* out) const {
    if (p_ == nullptr) return E_POINTER;
    return p_->QueryInterface(IidOf<U>::Get(), out->put_void());
  }

  friend bool operator==(const ComPtr& a, const ComPtr& b) { return a.p_ == b.p_; }
  friend bool operator!=(const ComPtr& a, const ComPtr& b) { return a.p_ != b.p_; }

 private:
  T* p_ = nullptr;
};

}  // namespace pv

#endif  // PARCELVANE_SRC_COM_COM_PTR_H
