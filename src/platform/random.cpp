#include "src/platform/random.h"

#include <atomic>

namespace pv {

int NextRandom() {
  static std::atomic<uint32_t> state{CrtRandom::kInitialState};
  uint32_t current = state.load(std::memory_order_relaxed);
  uint32_t next;
  do {
    next = current * CrtRandom::kMultiplier + CrtRandom::kIncrement;
  } while (!state.compare_exchange_weak(current, next, std::memory_order_relaxed));
  return CrtRandom::Output(next);
}

}  // namespace pv
