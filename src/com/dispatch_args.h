// Conversion of late-bound arguments to the C++ parameter types of the
// interfaces, and of results back to variants. Included only where the
// dispatch descriptions are built.
#ifndef PARCELVANE_SRC_COM_DISPATCH_ARGS_H
#define PARCELVANE_SRC_COM_DISPATCH_ARGS_H

#include <cmath>
#include <cstdint>
#include <cstring>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>

#include "src/com/com_ptr.h"
#include "src/platform/strings.h"
#include "src/com/dispatch.h"

namespace pv::dispatch {

// The value a variant holds, read through a by-reference variant as script
// engines pass variables. The copy is shallow: nothing is owned.
VARIANT Dereference(const VARIANT& v);

// Integer value of a variant, with the platform's conversions (strings of
// decimal digits, booleans, doubles rounded half to even).
HRESULT ToInt64(const VARIANT& v, int64_t* out);

// ---------------------------------------------------------------- in-arguments
template <class T, class Enable = void>
struct In;

template <>
struct In<LONG> {
  LONG value = 0;
  HRESULT From(const VARIANT* v) {
    if (v == nullptr) return S_OK;  // omitted: 0
    int64_t n = 0;
    HRESULT hr = ToInt64(Dereference(*v), &n);
    if (FAILED(hr)) return hr;
    // Unsigned 32-bit values arrive from some hosts for large numbers.
    if (n < INT32_MIN || n > INT32_MAX) return DISP_E_OVERFLOW;
    value = static_cast<LONG>(n);
    return S_OK;
  }
  LONG Get() const { return value; }
};

template <>
struct In<ULONG> {
  ULONG value = 0;
  HRESULT From(const VARIANT* v) {
    if (v == nullptr) return S_OK;
    int64_t n = 0;
    HRESULT hr = ToInt64(Dereference(*v), &n);
    if (FAILED(hr)) return hr;
    if (n < 0 || n > UINT32_MAX) return DISP_E_OVERFLOW;
    value = static_cast<ULONG>(n);
    return S_OK;
  }
  ULONG Get() const { return value; }
};

template <>
struct In<BSTR> {
  Bstr owned;
  BSTR borrowed = nullptr;
  HRESULT From(const VARIANT* v);  // omitted: the text "0"
  BSTR Get() const { return owned.is_null() ? borrowed : owned.get(); }
};

template <>
struct In<VARIANT> {
  VARIANT value{};
  HRESULT From(const VARIANT* v) {
    if (v == nullptr) {
      VariantInit(&value);
      return S_OK;
    }
    value = Dereference(*v);
    return S_OK;
  }
  VARIANT Get() const { return value; }
};

// An interface pointer from VT_DISPATCH or VT_UNKNOWN; empty and null
// variants give a null pointer.
HRESULT QueryFromVariant(const VARIANT& v, REFIID iid, void** out);

template <class I>
struct In<I*, std::enable_if_t<std::is_base_of_v<IUnknown, I>>> {
  ComPtr<I> value;
  HRESULT From(const VARIANT* v) {
    if (v == nullptr) return S_OK;
    return QueryFromVariant(Dereference(*v), IidOf<I>::Get(), value.put_void());
  }
  I* Get() const { return value.get(); }
};

// ---------------------------------------------------------------- results
template <class T, class Enable = void>
struct Out;

template <>
struct Out<BSTR*> {
  Bstr value;
  BSTR* Place() { return value.put(); }
  void To(VARIANT* r) {
    r->vt = VT_BSTR;
    r->bstrVal = value.detach();
  }
};

template <>
struct Out<LONG*> {
  LONG value = 0;
  LONG* Place() { return &value; }
  void To(VARIANT* r) {
    r->vt = VT_I4;
    r->lVal = value;
  }
};

template <>
struct Out<ULONG*> {
  ULONG value = 0;
  ULONG* Place() { return &value; }
  void To(VARIANT* r) {
    r->vt = VT_UI4;
    r->ulVal = value;
  }
};

template <>
struct Out<VARIANT*> {
  VARIANT value{};
  Out() { VariantInit(&value); }
  ~Out() { VariantClear(&value); }
  VARIANT* Place() { return &value; }
  void To(VARIANT* r) {
    *r = value;
    VariantInit(&value);
  }
};

template <class I>
struct Out<I**, std::enable_if_t<std::is_base_of_v<IUnknown, I>>> {
  ComPtr<I> value;
  I** Place() { return value.put(); }
  void To(VARIANT* r) {
    if constexpr (std::is_base_of_v<IDispatch, I>) {
      r->vt = VT_DISPATCH;
      r->pdispVal = value.detach();
    } else {
      r->vt = VT_UNKNOWN;
      r->punkVal = value.detach();
    }
  }
};

template <class T>
struct IsResultType : std::false_type {};
template <>
struct IsResultType<BSTR*> : std::true_type {};
template <>
struct IsResultType<LONG*> : std::true_type {};
template <>
struct IsResultType<ULONG*> : std::true_type {};
template <>
struct IsResultType<VARIANT*> : std::true_type {};
template <class I>
struct IsResultType<I**> : std::is_base_of<IUnknown, I> {};

// ---------------------------------------------------------------- the call
template <auto Member>
struct Thunk;

template <class I, class... A, HRESULT (STDMETHODCALLTYPE I::*Member)(A...)>
struct Thunk<Member> {
  using Args = std::tuple<A...>;
  static constexpr int kCount = sizeof...(A);
  static constexpr bool kHasResult = [] {
    if constexpr (kCount == 0) {
      return false;
    } else {
      return IsResultType<std::tuple_element_t<kCount - 1, Args>>::value;
    }
  }();
  static constexpr int kInCount = kHasResult ? kCount - 1 : kCount;

  static HRESULT Call(void* iface, const VARIANT* const* in, VARIANT* result, UINT* badArg) {
    return CallWith(static_cast<I*>(iface), in, result, badArg, std::make_index_sequence<kInCount>{});
  }

 private:
  template <size_t... Is>
  static HRESULT CallWith(I* self, const VARIANT* const* in, VARIANT* result, UINT* badArg,
                          std::index_sequence<Is...>) {
    std::tuple<In<std::tuple_element_t<Is, Args>>...> args;
    HRESULT hr = S_OK;
    (void)in;
    (void)badArg;
    // Convert in order; stop at the first argument that does not convert.
    ((SUCCEEDED(hr) ? (hr = std::get<Is>(args).From(in[Is]), FAILED(hr) ? (*badArg = Is, 0) : 0) : 0), ...);
    if (FAILED(hr)) return hr;
    if constexpr (kHasResult) {
      Out<std::tuple_element_t<kCount - 1, Args>> out;
      hr = (self->*Member)(std::get<Is>(args).Get()..., out.Place());
      if (SUCCEEDED(hr) && result != nullptr) out.To(result);
      return hr;
    } else {
      return (self->*Member)(std::get<Is>(args).Get()...);
    }
  }
};

template <auto Member>
DispatchMember Describe(const char* name, MemberKind kind, int optional) {
  using T = Thunk<Member>;
  return DispatchMember{name, kind, T::kInCount, optional, T::kHasResult, &T::Call, 0};
}

}  // namespace pv::dispatch

#endif  // PARCELVANE_SRC_COM_DISPATCH_ARGS_H
