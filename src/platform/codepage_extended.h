// Conversions for the code pages beyond the built-in fast paths (UTF-8,
// windows-1252, ISO-8859-1, US-ASCII). Same contracts as codepage.h.
#ifndef PARCELVANE_SRC_PLATFORM_CODEPAGE_EXTENDED_H
#define PARCELVANE_SRC_PLATFORM_CODEPAGE_EXTENDED_H

#include "parcelvane/platform.h"

namespace pv::detail {

bool ExtendedIsConvertible(UINT codePage);
int ExtendedToWide(UINT codePage, const char* in, int inLen, OLECHAR* out, int outLen);
int ExtendedToNarrow(UINT codePage, const OLECHAR* in, int inLen, char* out, int outLen);

// The single byte that a page writes for a character it cannot represent
// exactly ("best fit"), or -1 when it writes its default character.
int BestFitByte(UINT codePage, OLECHAR c);

}  // namespace pv::detail

#endif  // PARCELVANE_SRC_PLATFORM_CODEPAGE_EXTENDED_H
