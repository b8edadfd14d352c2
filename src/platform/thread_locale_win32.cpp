#include <windows.h>

#include "src/platform/thread_locale.h"

namespace pv {

ScopedThreadLocale::ScopedThreadLocale(LCID locale) : saved_(::GetThreadLocale()) {
  ::SetThreadLocale(locale);
}
ScopedThreadLocale::~ScopedThreadLocale() { ::SetThreadLocale(saved_); }

}  // namespace pv
