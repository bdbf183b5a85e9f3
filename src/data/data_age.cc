#include "data/data_age.h"

#include <cstdint>

#include "platform/runtime/format.h"

namespace tenora {

std::string DataAgeText(const std::string& branch, Date taken, Date now) {
  const bool today = taken.DateOnly() == now.DateOnly();
  return branch + ": data of " + FormatDate(taken, today ? "hh:nn" : "d mmmm yyyy hh:nn");
}

bool IsOlder(Date taken, Date now, std::chrono::minutes age) {
  const std::int64_t days = DaysBetween(taken.DateOnly(), now.DateOnly());
  const std::int64_t seconds = now.SecondOfDay() - taken.SecondOfDay();
  return std::chrono::days(days) + std::chrono::seconds(seconds) > age;
}

}  // namespace tenora
