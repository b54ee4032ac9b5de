#include <locale.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "platform/plinth/ALocaleSwitcher.h"

// Windows has no thread locale objects; the thread is given a locale of its own for the scope,
// which leaves the process's locale and every other thread alone. `previous_` holds the name of
// the thread's numeric locale, `neutral_` the thread's mode before.
ALocaleSwitcher::ALocaleSwitcher() noexcept {
  const int mode = ::_configthreadlocale(_ENABLE_PER_THREAD_LOCALE);
  neutral_ = reinterpret_cast<void*>(static_cast<std::intptr_t>(mode));
  const char* name = ::setlocale(LC_NUMERIC, nullptr);
  previous_ = name != nullptr ? ::_strdup(name) : nullptr;
  ::setlocale(LC_NUMERIC, "C");
}

ALocaleSwitcher::~ALocaleSwitcher() {
  if (previous_ != nullptr) ::setlocale(LC_NUMERIC, static_cast<const char*>(previous_));
  ::free(previous_);
  ::_configthreadlocale(static_cast<int>(reinterpret_cast<std::intptr_t>(neutral_)));
}
