// What the generated producers (produce.h, written by make_abi from the
// interface member lists) build on: Guard, and the test of whether a class
// hand-writes an operation.
#ifndef PARCELVANE_SRC_COM_PRODUCE_SUPPORT_H
#define PARCELVANE_SRC_COM_PRODUCE_SUPPORT_H

#include <parcelvane/platform.h>

#include <exception>
#include <new>
#include <type_traits>

namespace pv {

// Runs an operation's body, turning exhausted memory into E_OUTOFMEMORY and
// any other exception into E_UNEXPECTED, so that no failure escapes an
// interface call in any other way.
template <class F>
HRESULT Guard(F&& body) noexcept {
  try {
    return body();
  } catch (const std::bad_alloc&) {
    return E_OUTOFMEMORY;
  } catch (...) {
    return E_UNEXPECTED;
  }
}

// The operations of interface I for class D: null checks of the result
// places and Guard around D's plain implementation of each operation.
template <class D, class I>
class Produce;

namespace produce_detail {

template <class M>
struct MemberOwner;
template <class C, class R, class... A>
struct MemberOwner<R (STDMETHODCALLTYPE C::*)(A...)> {
  using type = C;
};

// Whether D declares (or inherits from elsewhere) its own body of the
// operation that Producer defines: `M` is the type of &D::operation.
template <class D, class Producer, class M>
inline constexpr bool kHandWritten = !std::is_same_v<typename MemberOwner<M>::type, Producer>;

}  // namespace produce_detail

}  // namespace pv

#endif  // PARCELVANE_SRC_COM_PRODUCE_SUPPORT_H
