#include "src/platform/strings.h"

#include <algorithm>

namespace pv {

BSTR AllocBstr(WStringView s) {
  if (s.size() > 0x3FFFFFF0u) return nullptr;
  return SysAllocStringLen(s.data(), static_cast<UINT>(s.size()));
}

HRESULT ReturnBstr(WStringView s, BSTR* out) {
  *out = AllocBstr(s);
  return *out == nullptr ? E_OUTOFMEMORY : S_OK;
}

WString WidenAscii(std::string_view ascii) {
  WString w(ascii.size(), OLECHAR(0));
  std::transform(ascii.begin(), ascii.end(), w.begin(),
                 [](char c) { return static_cast<OLECHAR>(static_cast<unsigned char>(c)); });
  return w;
}

namespace {

template <class Char>
Char FoldAscii(Char c) {
  return (c >= Char('A') && c <= Char('Z')) ? static_cast<Char>(c - Char('A') + Char('a')) : c;
}

template <class View>
bool EqualsFolded(View a, View b) {
  if (a.size() != b.size()) return false;
  for (size_t i = 0; i < a.size(); ++i) {
    if (FoldAscii(a[i]) != FoldAscii(b[i])) return false;
  }
  return true;
}

template <class View>
int CompareFolded(View a, View b) {
  size_t n = std::min(a.size(), b.size());
  for (size_t i = 0; i < n; ++i) {
    // Compare as unsigned units so bytes of 0x80 and above order after ASCII.
    auto x = static_cast<std::make_unsigned_t<typename View::value_type>>(FoldAscii(a[i]));
    auto y = static_cast<std::make_unsigned_t<typename View::value_type>>(FoldAscii(b[i]));
    if (x != y) return x < y ? -1 : 1;
  }
  if (a.size() == b.size()) return 0;
  return a.size() < b.size() ? -1 : 1;
}

}  // namespace

bool EqualsIgnoreCaseAscii(std::string_view a, std::string_view b) { return EqualsFolded(a, b); }
bool EqualsIgnoreCaseAscii(WStringView a, WStringView b) { return EqualsFolded(a, b); }

bool StartsWithIgnoreCaseAscii(std::string_view s, std::string_view prefix) {
  return s.size() >= prefix.size() && EqualsFolded(s.substr(0, prefix.size()), prefix);
}
bool StartsWithIgnoreCaseAscii(WStringView s, WStringView prefix) {
  return s.size() >= prefix.size() && EqualsFolded(s.substr(0, prefix.size()), prefix);
}

int CompareIgnoreCaseAscii(std::string_view a, std::string_view b) { return CompareFolded(a, b); }
int CompareIgnoreCaseAscii(WStringView a, WStringView b) { return CompareFolded(a, b); }

}  // namespace pv
