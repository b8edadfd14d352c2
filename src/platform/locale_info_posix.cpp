#include "src/platform/locale_info.h"

namespace pv {

// The library behaves as in an en-US installation wherever it runs.
WORD SystemDefaultLanguageId() { return 0x0409; }

}  // namespace pv
