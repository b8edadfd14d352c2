// Conversions for the code pages beyond the built-in fast paths (UTF-8,
// windows-1252, ISO-8859-1, US-ASCII). Same contracts as codepage.h.
#ifndef PARCELVANE_SRC_PLATFORM_CODEPAGE_EXTENDED_H
#define PARCELVANE_SRC_PLATFORM_CODEPAGE_EXTENDED_H

#include "parcelvane/platform.h"

namespace pv::detail {

bool ExtendedIsConvertible(UINT codePage);
int ExtendedToWide(UINT codePage, const char* in, int inLen, OLECHAR* out, int outLen);
int ExtendedToNarrow(UINT codePage, const OLECHAR* in, int inLen, char* out, int outLen);

// Whether a page can serve as the ANSI page: stateless, with the ASCII
// bytes meaning ASCII, so that the narrow text of the library stays ASCII.
bool ExtendedIsAsciiCompatible(UINT codePage);

// The character a page may write instead of `c` when it cannot hold `c`
// ("best fit": U+0100 gives "A"), or -1 when there is none. The caller
// checks that its page holds the answer.
int BestFitUnit(OLECHAR c);

}  // namespace pv::detail

#endif  // PARCELVANE_SRC_PLATFORM_CODEPAGE_EXTENDED_H
