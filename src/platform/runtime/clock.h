// The current date and time.
#pragma once

#include <chrono>
#include <optional>

#include "platform/runtime/date.h"

namespace tenora {

class Clock {
 public:
  // The machine's local time.
  Clock() = default;
  // A fixed clock, for tests and demonstrations.
  explicit Clock(Date fixed) : fixed_(fixed) {}
  // Fixed at the time in the environment variable TENORA_NOW ("2026-11-21 09:30:00"),
  // else the machine's. Raises 13 (Type mismatch) when the variable holds no date.
  static Clock FromEnvironment();

  Date Now() const;
  // Today at 00:00.
  Date Today() const { return Now().DateOnly(); }

 private:
  std::optional<Date> fixed_;
};

// A time as this computer's clock shows it; the empty date for one that no calendar has.
Date LocalTime(std::chrono::sys_seconds time);

}  // namespace tenora
