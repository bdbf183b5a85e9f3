// How the dialect's functions count weeks.
#pragma once

#include <cstdint>

#include "platform/runtime/date.h"

namespace tenora::query {

class WeekRule {
 public:
  // Weeks begin on Sunday; that of 1 January is the first.
  WeekRule() = default;
  // As the functions take it: weeks begin on day 1, Sunday, to 7; the first one of a year has 1
  // January (1), at least four days of the year (2) or all seven (3). 0 stands for 1. Raises 5 for
  // other numbers.
  WeekRule(std::int64_t first_day, std::int64_t first_week);

  // 1 for the first day of a week, to 7.
  std::int64_t Weekday(Date date) const;
  // 1 to 54. The first and last days of a year may be in a week of the neighbouring one.
  std::int64_t WeekOfYear(Date date) const;

 private:
  // When the first week of a year begins.
  Date FirstWeek(int year) const;

  std::int64_t first_day_ = 1, first_week_ = 1;
};

}  // namespace tenora::query
