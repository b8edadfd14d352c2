// Locale-aware comparison of wide strings, as the platform's VarBstrCmp
// makes it in the user's default locale (en-US) with no flags. Ordered
// name indexes (parameter lists) compare their keys with it.
#ifndef PARCELVANE_SRC_PLATFORM_COLLATION_H
#define PARCELVANE_SRC_PLATFORM_COLLATION_H

#include "src/platform/strings.h"

namespace pv {

// Below, equal to or above 0 as `a` sorts before, with or after `b`:
// - letters and digits decide first, after the other punctuation
//   ("_a" < "1" < "a", "a.b" < "a_b" < "ab");
// - case decides only between strings that differ in nothing else, lower
//   case first ("a" < "A" < "a.b", "charset" < "Charset" < "CHARSET");
// - "-" and "'" are ignored unless nothing else differs ("ab" < "a-b");
// - two different strings are never equal: remaining ties go by code unit.
// Cheap enough to call on every insert; safe to call from any thread.
int CompareLocale(WStringView a, WStringView b);

}  // namespace pv

#endif  // PARCELVANE_SRC_PLATFORM_COLLATION_H
