#include "src/com/module_lock.h"

#include <atomic>

namespace pv {
namespace {
std::atomic<LONG> g_lock_count{0};
}  // namespace

void ModuleLock() { g_lock_count.fetch_add(1, std::memory_order_relaxed); }
void ModuleUnlock() { g_lock_count.fetch_sub(1, std::memory_order_relaxed); }
LONG ModuleLockCount() { return g_lock_count.load(std::memory_order_relaxed); }

}  // namespace pv
