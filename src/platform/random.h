// The C runtime's pseudo-random generator, kept private to the library:
// the same sequence on every platform, and the host's own rand() state is
// never read or moved.
#ifndef PARCELVANE_SRC_PLATFORM_RANDOM_H
#define PARCELVANE_SRC_PLATFORM_RANDOM_H

#include <cstdint>

namespace pv {

// The largest value a draw gives (RAND_MAX of the runtime).
constexpr int kRandomMax = 0x7FFF;

// A linear congruential generator with the runtime's constants. It starts
// in the state the runtime has before any seeding, so the first draws are
// 41, 18467, 6334, 26500, ...
class CrtRandom {
 public:
  // The next value, 0 to kRandomMax.
  int Next() {
    state_ = state_ * kMultiplier + kIncrement;
    return Output(state_);
  }

  static constexpr uint32_t kInitialState = 1;
  static constexpr uint32_t kMultiplier = 214013;
  static constexpr uint32_t kIncrement = 2531011;
  static constexpr int Output(uint32_t state) { return static_cast<int>((state >> 16) & kRandomMax); }

 private:
  uint32_t state_ = kInitialState;  // unsigned: the product wraps modulo 2^32
};

// The process's generator, never seeded: each call takes the next value of
// one sequence shared by all threads (safe to call concurrently).
int NextRandom();

}  // namespace pv

#endif  // PARCELVANE_SRC_PLATFORM_RANDOM_H
