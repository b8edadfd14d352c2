// The current time is the C library's, in seconds since 1970.
#include <chrono>

#include "src/platform/clock.h"
#include "tests/test_util.h"

namespace pv::test {
namespace {

int64_t SystemSeconds() {
  return std::chrono::duration_cast<std::chrono::seconds>(std::chrono::system_clock::now().time_since_epoch())
      .count();
}

TEST(Clock, CurrentTimeIsSecondsSince1970) {
  int64_t before = SystemSeconds();
  int64_t now = CurrentTimeSeconds();
  int64_t after = SystemSeconds();
  EXPECT_LE(before, now);
  EXPECT_LE(now, after);
}

TEST(Clock, CurrentTimeIsAfterTheLibraryWasWritten) {
  EXPECT_GT(CurrentTimeSeconds(), int64_t{1700000000});  // November 2023
}

}  // namespace
}  // namespace pv::test
