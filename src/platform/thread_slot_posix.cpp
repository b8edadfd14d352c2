#include "src/platform/thread_slot.h"

namespace pv {
namespace {
// A trivially destructible thread-local: the runtime registers nothing for it.
thread_local void* t_slot = nullptr;
}  // namespace

void* GetThreadSlot() { return t_slot; }
void SetThreadSlot(void* value) { t_slot = value; }
void FreeThreadSlot() {}

}  // namespace pv
