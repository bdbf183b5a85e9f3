#include "platform/query/functions/week_rule.h"

#include <algorithm>

#include "platform/runtime/error.h"

namespace tenora::query {
namespace {

constexpr std::int64_t kWithNewYear = 1, kFourDays = 2, kFullWeek = 3;

}  // namespace

WeekRule::WeekRule(std::int64_t first_day, std::int64_t first_week)
    : first_day_(std::max<std::int64_t>(first_day, 1)),
      first_week_(std::max<std::int64_t>(first_week, 1)) {
  if (first_day < 0 || first_day > 7 || first_week < 0 || first_week > kFullWeek)
    throw StandardError(error_number::kInvalidProcedureCall);
}

std::int64_t WeekRule::Weekday(Date date) const {
  return (date.Weekday() + 1 - first_day_ + 7) % 7 + 1;
}

Date WeekRule::FirstWeek(int year) const {
  const Date new_year = Date::FromCalendar(year, 1, 1);
  const std::int64_t weekday = Weekday(new_year);
  const Date begin = new_year.AddDays(1 - weekday);
  const std::int64_t least = first_week_ == kFourDays ? 4 : first_week_ == kFullWeek ? 7 : 1;
  return 8 - weekday >= least ? begin : begin.AddDays(7);
}

std::int64_t WeekRule::WeekOfYear(Date date) const {
  constexpr int kFirstYear = 100, kLastYear = 9999;
  const int year = date.Calendar().year;
  Date begin = FirstWeek(year);
  if (DaysBetween(begin, date) < 0 && year > kFirstYear) {
    begin = FirstWeek(year - 1);
  } else if (first_week_ != kWithNewYear && year < kLastYear &&
             DaysBetween(FirstWeek(year + 1), date) >= 0) {
    begin = FirstWeek(year + 1);
  }
  return DaysBetween(begin, date) / 7 + 1;
}

}  // namespace tenora::query
