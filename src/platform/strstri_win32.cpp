// Upper-case mapping on Windows: the platform's own, in the system locale.
#include "src/platform/strstri.h"

#include "parcelvane/platform.h"

namespace pv::detail {

char16_t UpperCaseUnit(char16_t unit) {
  WCHAR in = static_cast<WCHAR>(unit);
  WCHAR out = in;
  if (::LCMapStringW(LOCALE_SYSTEM_DEFAULT, LCMAP_UPPERCASE, &in, 1, &out, 1) != 1) return unit;
  return static_cast<char16_t>(out);
}

}  // namespace pv::detail
