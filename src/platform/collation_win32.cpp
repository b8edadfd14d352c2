#include "src/platform/collation.h"

namespace pv {
namespace {

int CompareCodeUnits(WStringView a, WStringView b) {
  int r = a.compare(b);
  return r < 0 ? -1 : (r > 0 ? 1 : 0);
}

}  // namespace

int CompareLocale(WStringView a, WStringView b) {
  // The comparison reads each argument's length prefix: it needs real BSTRs.
  Bstr left(a);
  Bstr right(b);
  if (left.is_null() || right.is_null()) return CompareCodeUnits(a, b);
  HRESULT r = ::VarBstrCmp(left.get(), right.get(), LOCALE_USER_DEFAULT, 0);
  if (r == VARCMP_LT) return -1;
  if (r == VARCMP_GT) return 1;
  // Strings that differ only in characters the locale ignores still differ.
  return CompareCodeUnits(a, b);
}

}  // namespace pv
