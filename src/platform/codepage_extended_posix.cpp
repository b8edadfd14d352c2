// Conversions beyond the built-in fast paths. None yet: every other page
// reports itself unconvertible.
#include "src/platform/codepage_extended.h"

namespace pv::detail {

bool ExtendedIsConvertible(UINT) { return false; }
int ExtendedToWide(UINT, const char*, int, OLECHAR*, int) { return 0; }
int ExtendedToNarrow(UINT, const OLECHAR*, int, char*, int) { return 0; }
int BestFitByte(UINT, OLECHAR) { return -1; }

}  // namespace pv::detail
