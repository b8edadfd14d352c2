// Facts about the system's locale.
#ifndef PARCELVANE_SRC_PLATFORM_LOCALE_INFO_H
#define PARCELVANE_SRC_PLATFORM_LOCALE_INFO_H

#include "parcelvane/platform.h"

namespace pv {

// The language identifier of the system's default locale: the platform's
// answer on Windows, 0x0409 (English, United States) elsewhere.
WORD SystemDefaultLanguageId();

}  // namespace pv

#endif  // PARCELVANE_SRC_PLATFORM_LOCALE_INFO_H
