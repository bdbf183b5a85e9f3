#include "platform/runtime/clock.h"

#include <cstdlib>
#include <ctime>
#include <string>

#include "platform/runtime/conversion.h"
#include "platform/runtime/error.h"

namespace tenora {

Clock Clock::FromEnvironment() {
  const char* text = std::getenv("TENORA_NOW");
  if (text == nullptr || *text == '\0') return Clock();
  try {
    return Clock(ToDate(std::string(text)));
  } catch (const RuntimeError&) {
    throw StandardError(error_number::kTypeMismatch, "TENORA_NOW=" + std::string(text));
  }
}

Date Clock::Now() const {
  if (fixed_) return *fixed_;
  return LocalTime(std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now()));
}

Date LocalTime(std::chrono::sys_seconds time) {
  constexpr int kLastYear = 9999;
  const std::time_t seconds = std::chrono::system_clock::to_time_t(time);
  std::tm local{};
  if (localtime_r(&seconds, &local) == nullptr || local.tm_year > kLastYear - 1900) return Date();
  // A leap second (60) counts as the last second of its minute.
  return Date::FromCalendar(local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour,
                            local.tm_min, local.tm_sec > 59 ? 59 : local.tm_sec);
}

}  // namespace tenora
