// The current time as the C library gives it.
#ifndef PARCELVANE_SRC_PLATFORM_CLOCK_H
#define PARCELVANE_SRC_PLATFORM_CLOCK_H

#include <cstdint>

namespace pv {

// Seconds since 1970-01-01 00:00:00 UTC, 64-bit (time()).
int64_t CurrentTimeSeconds();

}  // namespace pv

#endif  // PARCELVANE_SRC_PLATFORM_CLOCK_H
