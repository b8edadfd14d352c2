// Upper-case mapping off Windows: ICU's simple case mapping.
#include <unicode/uchar.h>

#include "src/platform/strstri.h"

namespace pv::detail {

char16_t UpperCaseUnit(char16_t unit) {
  UChar32 upper = u_toupper(unit);
  return upper <= 0xFFFF ? static_cast<char16_t>(upper) : unit;
}

}  // namespace pv::detail
