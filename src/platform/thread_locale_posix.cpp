#include "src/platform/thread_locale.h"

namespace pv {

// Nothing to set: the saved value only keeps the two builds' objects alike.
ScopedThreadLocale::ScopedThreadLocale(LCID locale) : saved_(locale) {}
ScopedThreadLocale::~ScopedThreadLocale() { static_cast<void>(saved_); }

}  // namespace pv
