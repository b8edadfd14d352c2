// Small helpers for driving the library through its public interface, as
// any host does: counted references, wide strings, statuses and byte
// buffers.
#ifndef PARCELVANE_TOOLS_COM_H
#define PARCELVANE_TOOLS_COM_H

#include <parcelvane/parcelvane.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "tools/utf.h"

namespace pvtool {

// One counted reference, released when dropped.
template <class T>
class Ref {
 public:
  Ref() = default;
  Ref(const Ref& other) : p_(other.p_) {
    if (p_ != nullptr) p_->AddRef();
  }
  Ref(Ref&& other) noexcept : p_(std::exchange(other.p_, nullptr)) {}
  Ref& operator=(Ref other) noexcept {
    std::swap(p_, other.p_);
    return *this;
  }
  ~Ref() {
    if (p_ != nullptr) p_->Release();
  }

  T* get() const { return p_; }
  T* operator->() const { return p_; }
  explicit operator bool() const { return p_ != nullptr; }
  // The place for a result: drops what is held first.
  T** put() {
    *this = Ref();
    return &p_;
  }

 private:
  T* p_ = nullptr;
};

// A wide string owned for the length of its scope.
class Bstr {
 public:
  Bstr() = default;
  explicit Bstr(std::string_view utf8);
  Bstr(const Bstr&) = delete;
  Bstr& operator=(const Bstr&) = delete;
  ~Bstr() { SysFreeString(s_); }

  BSTR get() const { return s_; }
  BSTR* put() {
    SysFreeString(s_);
    s_ = nullptr;
    return &s_;
  }
  U16String wide() const;
  std::string utf8() const { return Utf16ToUtf8(wide()); }

 private:
  BSTR s_ = nullptr;
};

// Throws ToolError(kExitLibraryFailed) naming `what` when `hr` failed.
void Check(HRESULT hr, const char* what);

// A new object of one of the library's classes.
template <class I>
Ref<I> CreateObject(REFCLSID clsid, const char* class_name) {
  Ref<I> object;
  Check(PvCreateInstance(clsid, nullptr, PvInterfaceId<I>::Get(), reinterpret_cast<void**>(object.put())),
        class_name);
  return object;
}

// A data object holding a copy of `bytes`.
Ref<IEMSDataObject> MakeData(std::string_view bytes);
// The bytes of a data object's span (Position, Length).
std::string SpanBytes(IEMSDataObject* data);
// The length of a data object's span.
uint64_t SpanLength(IEMSDataObject* data);

}  // namespace pvtool

#endif  // PARCELVANE_TOOLS_COM_H
