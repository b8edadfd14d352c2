// One pointer per thread, with no destructor and nothing registered for
// thread exit: a module that keeps its state here can be unloaded while
// the threads that used it go on.
#ifndef PARCELVANE_SRC_PLATFORM_THREAD_SLOT_H
#define PARCELVANE_SRC_PLATFORM_THREAD_SLOT_H

namespace pv {

// The calling thread's value (initially null) and its replacement.
void* GetThreadSlot();
void SetThreadSlot(void* value);

// Gives the slot back to the system when the module is unloaded.
void FreeThreadSlot();

}  // namespace pv

#endif  // PARCELVANE_SRC_PLATFORM_THREAD_SLOT_H
