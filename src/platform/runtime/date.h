// A date and time as the database and the settings keep it: days since 30 December 1899, the time
// of day as the fraction. Before that day the whole part is negative while the fraction still
// counts forward from midnight (-1.25 is 29 December 1899, 06:00). This is the one place that
// converts between day counts and calendar dates (proleptic Gregorian, years 100 to 9999, whole
// seconds).
#pragma once

#include <compare>
#include <cstdint>

namespace tenora {

struct CalendarTime {
  int year = 1899;
  int month = 12;  // 1 to 12
  int day = 30;    // 1 to 31
  int hour = 0;
  int minute = 0;
  int second = 0;

  bool operator==(const CalendarTime&) const = default;
};

class Date {
 public:
  // The empty date: 30 December 1899, 00:00.
  constexpr Date() = default;

  static constexpr Date FromSerial(double days) { return Date(days); }
  // Raises 5 (Invalid procedure call) when the parts name no date of the years 100 to 9999.
  static Date FromCalendar(const CalendarTime& parts);
  static Date FromCalendar(int year, int month, int day, int hour = 0, int minute = 0,
                           int second = 0);

  double serial() const { return serial_; }
  CalendarTime Calendar() const;
  int Year() const { return Calendar().year; }
  // 0 is Sunday.
  int Weekday() const;

  // Whole days since 30 December 1899, and seconds since midnight (0 to 86399).
  std::int64_t DayNumber() const;
  int SecondOfDay() const;
  // The same day at 00:00.
  Date DateOnly() const;

  // Calendar arithmetic; the time of day stays. A day that the target month lacks becomes its last.
  Date AddDays(std::int64_t days) const;
  Date AddMonths(int months) const;
  Date AddYears(int years) const;

  // Dates order by time, also before 1899 where the serial numbers do not.
  friend std::strong_ordering operator<=>(const Date& left, const Date& right);
  friend bool operator==(const Date& left, const Date& right) { return (left <=> right) == 0; }

 private:
  explicit constexpr Date(double serial) : serial_(serial) {}
  static Date FromDayAndSecond(std::int64_t day, int second);
  std::int64_t Seconds() const;

  double serial_ = 0;
};

// Whole calendar days from one date to another: negative when `to` is earlier; times are ignored.
std::int64_t DaysBetween(Date from, Date to);

// Whether a calendar has this day: year 100 to 9999, month and day in range.
bool IsCalendarDay(int year, int month, int day);
int DaysInMonth(int year, int month);

}  // namespace tenora
