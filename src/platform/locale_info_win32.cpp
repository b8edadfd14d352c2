#include "src/platform/locale_info.h"

namespace pv {

WORD SystemDefaultLanguageId() { return ::GetSystemDefaultLangID(); }

}  // namespace pv
