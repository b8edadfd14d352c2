// The system's thread-local slots: unlike the compiler's thread-local
// variables (emulated here, with a thread-exit destructor that pins the
// module), a slot leaves nothing behind once it is freed at unload.
#include <windows.h>

#include "src/platform/thread_slot.h"

namespace pv {
namespace {

volatile LONG g_index = static_cast<LONG>(TLS_OUT_OF_INDEXES);

DWORD SlotIndex() {
  LONG index = g_index;
  if (index != static_cast<LONG>(TLS_OUT_OF_INDEXES)) return static_cast<DWORD>(index);
  DWORD fresh = ::TlsAlloc();
  LONG previous =
      ::InterlockedCompareExchange(&g_index, static_cast<LONG>(fresh), static_cast<LONG>(TLS_OUT_OF_INDEXES));
  if (previous == static_cast<LONG>(TLS_OUT_OF_INDEXES)) return fresh;
  ::TlsFree(fresh);  // another thread was first
  return static_cast<DWORD>(previous);
}

}  // namespace

void* GetThreadSlot() { return ::TlsGetValue(SlotIndex()); }
void SetThreadSlot(void* value) { ::TlsSetValue(SlotIndex(), value); }

void FreeThreadSlot() {
  LONG index = ::InterlockedExchange(&g_index, static_cast<LONG>(TLS_OUT_OF_INDEXES));
  if (index != static_cast<LONG>(TLS_OUT_OF_INDEXES)) ::TlsFree(static_cast<DWORD>(index));
}

}  // namespace pv
