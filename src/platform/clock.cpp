#include "src/platform/clock.h"

#include <ctime>

namespace pv {

int64_t CurrentTimeSeconds() { return static_cast<int64_t>(std::time(nullptr)); }

}  // namespace pv
