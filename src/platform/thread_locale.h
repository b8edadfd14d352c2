// The calling thread's locale, set for a scope and restored after it:
// registration runs under the system default locale. Threads have no
// locale of their own off Windows, where this does nothing.
#ifndef PARCELVANE_SRC_PLATFORM_THREAD_LOCALE_H
#define PARCELVANE_SRC_PLATFORM_THREAD_LOCALE_H

#include "parcelvane/platform.h"

namespace pv {

class ScopedThreadLocale {
 public:
  explicit ScopedThreadLocale(LCID locale);
  ~ScopedThreadLocale();
  ScopedThreadLocale(const ScopedThreadLocale&) = delete;
  ScopedThreadLocale& operator=(const ScopedThreadLocale&) = delete;

 private:
  LCID saved_ = 0;
};

}  // namespace pv

#endif  // PARCELVANE_SRC_PLATFORM_THREAD_LOCALE_H
