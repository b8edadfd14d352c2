// The module's load and unload notifications: on unload the thread slot
// goes back to the system, so nothing of the module outlives it.
#include <windows.h>

#include "src/platform/thread_slot.h"

extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD reason, LPVOID reserved) {
  // At process exit (reserved non-null) the system frees everything anyway.
  if (reason == DLL_PROCESS_DETACH && reserved == nullptr) pv::FreeThreadSlot();
  return TRUE;
}
