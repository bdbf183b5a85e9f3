#include "platform/runtime/date.h"

#include <algorithm>
#include <chrono>
#include <cmath>

#include "platform/runtime/error.h"

namespace tenora {
namespace {

constexpr std::int64_t kSecondsPerDay = 86400;
// Day number of 30 December 1899 in the count of std::chrono (days since 1 January 1970).
constexpr std::int64_t kEpochInUnixDays = -25569;
// 1 January 100 and 31 December 9999, the range the database's date type can hold.
constexpr double kFirstDay = -657434;
constexpr double kLastDay = 2958465;

std::int64_t DayNumberOf(int year, int month, int day) {
  using namespace std::chrono;
  const year_month_day ymd{std::chrono::year{year},
                           std::chrono::month{static_cast<unsigned>(month)},
                           std::chrono::day{static_cast<unsigned>(day)}};
  return sys_days{ymd}.time_since_epoch().count() - kEpochInUnixDays;
}

}  // namespace

int DaysInMonth(int year, int month) {
  using namespace std::chrono;
  const year_month_day_last last{std::chrono::year{year},
                                 month_day_last{std::chrono::month{static_cast<unsigned>(month)}}};
  return static_cast<int>(static_cast<unsigned>(last.day()));
}

bool IsCalendarDay(int year, int month, int day) {
  return year >= 100 && year <= 9999 && month >= 1 && month <= 12 && day >= 1 &&
         day <= DaysInMonth(year, month);
}

Date Date::FromDayAndSecond(std::int64_t day, int second) {
  const double fraction = static_cast<double>(second) / static_cast<double>(kSecondsPerDay);
  const double whole = static_cast<double>(day);
  return Date(day < 0 ? whole - fraction : whole + fraction);
}

Date Date::FromCalendar(const CalendarTime& parts) {
  const bool valid = IsCalendarDay(parts.year, parts.month, parts.day) && parts.hour >= 0 &&
                     parts.hour < 24 && parts.minute >= 0 && parts.minute < 60 &&
                     parts.second >= 0 && parts.second < 60;
  if (!valid) throw StandardError(error_number::kInvalidProcedureCall);
  return FromDayAndSecond(DayNumberOf(parts.year, parts.month, parts.day),
                          parts.hour * 3600 + parts.minute * 60 + parts.second);
}

Date Date::FromCalendar(int year, int month, int day, int hour, int minute, int second) {
  return FromCalendar(CalendarTime{year, month, day, hour, minute, second});
}

// Seconds since 30 December 1899, rounded; the base for comparing and splitting. A damaged file can
// hold any double: what is no date at all counts as the nearest end of the range.
std::int64_t Date::Seconds() const {
  if (std::isnan(serial_)) return 0;
  const double bounded = std::clamp(serial_, kFirstDay, kLastDay + 0.999989);
  const double whole = std::trunc(bounded);
  const auto second = std::llround(std::abs(bounded - whole) * static_cast<double>(kSecondsPerDay));
  return static_cast<std::int64_t>(whole) * kSecondsPerDay + second;
}

std::int64_t Date::DayNumber() const {
  const std::int64_t seconds = Seconds();
  return seconds >= 0 ? seconds / kSecondsPerDay
                      : -((-seconds + kSecondsPerDay - 1) / kSecondsPerDay);
}

int Date::SecondOfDay() const { return static_cast<int>(Seconds() - DayNumber() * kSecondsPerDay); }

CalendarTime Date::Calendar() const {
  using namespace std::chrono;
  const year_month_day ymd{sys_days{days{DayNumber() + kEpochInUnixDays}}};
  const int second = SecondOfDay();
  return CalendarTime{static_cast<int>(ymd.year()),
                      static_cast<int>(static_cast<unsigned>(ymd.month())),
                      static_cast<int>(static_cast<unsigned>(ymd.day())),
                      second / 3600,
                      second / 60 % 60,
                      second % 60};
}

int Date::Weekday() const {
  // 30 December 1899 was a Saturday.
  return static_cast<int>(((DayNumber() + 6) % 7 + 7) % 7);
}

Date Date::DateOnly() const { return FromDayAndSecond(DayNumber(), 0); }

Date Date::AddDays(std::int64_t days) const {
  const std::int64_t day = DayNumber() + days;
  if (static_cast<double>(day) < kFirstDay || static_cast<double>(day) > kLastDay) {
    throw StandardError(error_number::kInvalidProcedureCall);
  }
  return FromDayAndSecond(day, SecondOfDay());
}

Date Date::AddMonths(int months) const {
  CalendarTime parts = Calendar();
  const std::int64_t month_index = std::int64_t{parts.year} * 12 + (parts.month - 1) + months;
  if (month_index < 100 * 12 || month_index >= 10000 * 12) {
    throw StandardError(error_number::kInvalidProcedureCall);
  }
  parts.year = static_cast<int>(month_index / 12);
  parts.month = static_cast<int>(month_index % 12) + 1;
  parts.day = std::min(parts.day, DaysInMonth(parts.year, parts.month));
  return FromCalendar(parts);
}

Date Date::AddYears(int years) const {
  if (years < -10000 || years > 10000) throw StandardError(error_number::kInvalidProcedureCall);
  return AddMonths(years * 12);
}

std::strong_ordering operator<=>(const Date& left, const Date& right) {
  return left.Seconds() <=> right.Seconds();
}

std::int64_t DaysBetween(Date from, Date to) { return to.DayNumber() - from.DayNumber(); }

}  // namespace tenora
