#include "platform/plinth/ATime.h"

#include <ctime>

ATime::ATime() noexcept {
  const std::time_t now = std::time(nullptr);
  std::tm local = {};
#if defined(_WIN32)
  if (::localtime_s(&local, &now) != 0) return;
#else
  if (::localtime_r(&now, &local) == nullptr) return;
#endif
  year_ = local.tm_year + 1900;
  month_ = local.tm_mon + 1;
  day_ = local.tm_mday;
  hour_ = local.tm_hour;
  minute_ = local.tm_min;
  second_ = local.tm_sec;
}
