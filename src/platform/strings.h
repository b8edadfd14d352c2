// Wide strings of the interface (BSTR) and the helpers every class uses to
// read and return them.
#ifndef PARCELVANE_SRC_PLATFORM_STRINGS_H
#define PARCELVANE_SRC_PLATFORM_STRINGS_H

#include <string>
#include <string_view>

#include "parcelvane/platform.h"

namespace pv {

using WString = std::basic_string<OLECHAR>;
using WStringView = std::basic_string_view<OLECHAR>;

// The text of a BSTR; a null BSTR reads as the empty string.
inline WStringView View(BSTR s) { return s == nullptr ? WStringView() : WStringView(s, SysStringLen(s)); }

// A new BSTR holding `s` (null only when memory is exhausted).
BSTR AllocBstr(WStringView s);

// Writes a new BSTR holding `s` to `out` (which must not be null):
// S_OK, or E_OUTOFMEMORY with *out set to null.
HRESULT ReturnBstr(WStringView s, BSTR* out);

// An owned BSTR, freed on drop.
class Bstr {
 public:
  Bstr() = default;
  explicit Bstr(WStringView s) : s_(AllocBstr(s)) {}
  Bstr(const Bstr&) = delete;
  Bstr& operator=(const Bstr&) = delete;
  Bstr(Bstr&& other) noexcept : s_(other.s_) { other.s_ = nullptr; }
  Bstr& operator=(Bstr&& other) noexcept {
    if (this != &other) {
      reset();
      s_ = other.s_;
      other.s_ = nullptr;
    }
    return *this;
  }
  ~Bstr() { reset(); }

  static Bstr Adopt(BSTR s) {
    Bstr b;
    b.s_ = s;
    return b;
  }

  BSTR get() const { return s_; }
  WStringView view() const { return View(s_); }
  bool is_null() const { return s_ == nullptr; }
  // Frees the held string and returns the place for an out argument.
  BSTR* put() {
    reset();
    return &s_;
  }
  BSTR detach() {
    BSTR s = s_;
    s_ = nullptr;
    return s;
  }
  void reset() {
    SysFreeString(s_);
    s_ = nullptr;
  }

 private:
  BSTR s_ = nullptr;
};

// ASCII text as a wide string (for fixed names and formats).
WString WidenAscii(std::string_view ascii);

// ASCII case folding, as used for field names and keywords.
inline char ToLowerAscii(char c) { return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c; }
inline char ToUpperAscii(char c) { return (c >= 'a' && c <= 'z') ? static_cast<char>(c - 'a' + 'A') : c; }
bool EqualsIgnoreCaseAscii(std::string_view a, std::string_view b);
bool StartsWithIgnoreCaseAscii(std::string_view s, std::string_view prefix);
bool EqualsIgnoreCaseAscii(WStringView a, WStringView b);
bool StartsWithIgnoreCaseAscii(WStringView s, WStringView prefix);
// Three-way comparison under ASCII case folding (for ordered name indexes).
int CompareIgnoreCaseAscii(std::string_view a, std::string_view b);
int CompareIgnoreCaseAscii(WStringView a, WStringView b);

}  // namespace pv

#endif  // PARCELVANE_SRC_PLATFORM_STRINGS_H
