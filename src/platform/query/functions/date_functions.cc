#include <algorithm>
#include <array>
#include <cmath>
#include <string>

#include "platform/query/functions/functions.h"
#include "platform/query/functions/week_rule.h"
#include "platform/query/values/sqlite_value.h"
#include "platform/runtime/conversion.h"
#include "platform/runtime/format.h"
#include "platform/runtime/text.h"

namespace tenora::query {
namespace {

using Arguments = std::span<const Value>;

constexpr std::int64_t kSecondsPerDay = 86400;
constexpr std::int64_t kSunday = 1;  // days of the week count from 1 in the dialect

Date DateAt(const Value& value) { return std::get<Date>(value); }
std::int64_t Integer(const Value& value) { return std::get<std::int64_t>(value); }

RuntimeError BadArgument() { return StandardError(error_number::kInvalidProcedureCall); }

int Small(const Value& value) {
  const std::int64_t number = Integer(value);
  if (number < -1'000'000 || number > 1'000'000) throw BadArgument();
  return static_cast<int>(number);
}

enum class Interval : std::uint8_t {
  kYear,
  kQuarter,
  kMonth,
  kDayOfYear,
  kDay,
  kWeekday,
  kWeek,
  kHour,
  kMinute,
  kSecond
};

Interval ReadInterval(const Value& value) {
  constexpr std::array<std::string_view, 10> kNames = {"yyyy", "q",  "m", "y", "d",
                                                       "w",    "ww", "h", "n", "s"};
  for (std::size_t i = 0; i < kNames.size(); ++i)
    if (EqualsNoCase(std::get<std::string>(value), kNames[i])) return static_cast<Interval>(i);
  throw BadArgument();
}

Value Now(const FunctionContext& context, Arguments) { return context.now(); }
Value Today(const FunctionContext& context, Arguments) { return context.now().DateOnly(); }
Value TimeOfDay(const FunctionContext& context, Arguments) {
  return DateFromSeconds(context.now().SecondOfDay());
}

Value Year(const FunctionContext&, Arguments a) {
  return std::int64_t{DateAt(a[0]).Calendar().year};
}
Value Month(const FunctionContext&, Arguments a) {
  return std::int64_t{DateAt(a[0]).Calendar().month};
}
Value Day(const FunctionContext&, Arguments a) { return std::int64_t{DateAt(a[0]).Calendar().day}; }
Value Hour(const FunctionContext&, Arguments a) {
  return std::int64_t{DateAt(a[0]).Calendar().hour};
}
Value Minute(const FunctionContext&, Arguments a) {
  return std::int64_t{DateAt(a[0]).Calendar().minute};
}
Value Second(const FunctionContext&, Arguments a) {
  return std::int64_t{DateAt(a[0]).Calendar().second};
}

// By the arguments from `first` on: the first day of the week, and the first week of the year.
WeekRule Weeks(Arguments a, std::size_t first) {
  const auto choice = [&](std::size_t i) { return i < a.size() ? Integer(a[i]) : 0; };
  return WeekRule(choice(first), choice(first + 1));
}

Value Weekday(const FunctionContext&, Arguments a) { return Weeks(a, 1).Weekday(DateAt(a[0])); }

Value MonthName(const FunctionContext&, Arguments a) {
  if (Integer(a[0]) < 1 || Integer(a[0]) > 12) throw BadArgument();
  const bool abbreviated = a.size() > 1 && std::get<bool>(a[1]);
  return FormatDate(Date::FromCalendar(2000, Small(a[0]), 1), abbreviated ? "mmm" : "mmmm");
}

Value WeekdayName(const FunctionContext&, Arguments a) {
  if (Integer(a[0]) < 1 || Integer(a[0]) > 7) throw BadArgument();
  const bool abbreviated = a.size() > 1 && std::get<bool>(a[1]);
  const std::int64_t first = a.size() > 2 ? std::max(Integer(a[2]), kSunday) : kSunday;
  if (first > 7) throw BadArgument();
  // 2 January 2000 was a Sunday.
  const Date day = Date::FromCalendar(2000, 1, 1).AddDays(Integer(a[0]) + first - kSunday);
  return FormatDate(day, abbreviated ? "ddd" : "dddd");
}

Date AddSeconds(Date date, std::int64_t seconds) {
  std::int64_t sum = 0;
  if (__builtin_add_overflow(DateToSeconds(date), seconds, &sum)) throw BadArgument();
  const Date day = Date().AddDays(static_cast<std::int64_t>(
      std::floor(static_cast<double>(sum) / static_cast<double>(kSecondsPerDay))));
  return DateFromSeconds(DateToSeconds(day) +
                         ((sum % kSecondsPerDay) + kSecondsPerDay) % kSecondsPerDay);
}

Value DateAdd(const FunctionContext&, Arguments a) {
  const std::int64_t number = std::int64_t{ToInt32(a[1])};
  const int count = Small(number % 1'000'000);
  const Date date = DateAt(a[2]);
  switch (ReadInterval(a[0])) {
    case Interval::kYear:
      return date.AddYears(count);
    case Interval::kQuarter:
      return date.AddMonths(count * 3);
    case Interval::kMonth:
      return date.AddMonths(count);
    case Interval::kDayOfYear:
    case Interval::kDay:
    case Interval::kWeekday:
      return date.AddDays(number);
    case Interval::kWeek:
      return date.AddDays(number * 7);
    case Interval::kHour:
      return AddSeconds(date, number * 3600);
    case Interval::kMinute:
      return AddSeconds(date, number * 60);
    case Interval::kSecond:
      return AddSeconds(date, number);
  }
  throw BadArgument();
}

// The number of boundaries of the interval between two dates.
std::int64_t Difference(Interval interval, Date from, Date to, const WeekRule& weeks) {
  const CalendarTime a = from.Calendar(), b = to.Calendar();
  const std::int64_t days = DaysBetween(from, to);
  switch (interval) {
    case Interval::kYear:
      return b.year - a.year;
    case Interval::kQuarter:
      return (b.year * 4 + (b.month - 1) / 3) - (a.year * 4 + (a.month - 1) / 3);
    case Interval::kMonth:
      return (b.year * 12 + b.month) - (a.year * 12 + a.month);
    case Interval::kDayOfYear:
    case Interval::kDay:
      return days;
    case Interval::kWeekday:
      return days / 7;
    case Interval::kWeek:
      // From the first day of one week to that of the other.
      return (days - weeks.Weekday(to) + weeks.Weekday(from)) / 7;
    case Interval::kHour:
      return days * 24 + b.hour - a.hour;
    case Interval::kMinute:
      return days * 1440 + (b.hour * 60 + b.minute) - (a.hour * 60 + a.minute);
    case Interval::kSecond:
      return DateToSeconds(to) - DateToSeconds(from);
  }
  throw BadArgument();
}

Value DateDiff(const FunctionContext&, Arguments a) {
  return Difference(ReadInterval(a[0]), DateAt(a[1]), DateAt(a[2]), Weeks(a, 3));
}

Value DatePart(const FunctionContext&, Arguments a) {
  const Date date = DateAt(a[1]);
  const CalendarTime parts = date.Calendar();
  const Date new_year = Date::FromCalendar(parts.year, 1, 1);
  switch (ReadInterval(a[0])) {
    case Interval::kYear:
      return std::int64_t{parts.year};
    case Interval::kQuarter:
      return std::int64_t{(parts.month - 1) / 3 + 1};
    case Interval::kMonth:
      return std::int64_t{parts.month};
    case Interval::kDayOfYear:
      return DaysBetween(new_year, date) + 1;
    case Interval::kDay:
      return std::int64_t{parts.day};
    case Interval::kWeekday:
      return Weeks(a, 2).Weekday(date);
    case Interval::kWeek:
      return Weeks(a, 2).WeekOfYear(date);
    case Interval::kHour:
      return std::int64_t{parts.hour};
    case Interval::kMinute:
      return std::int64_t{parts.minute};
    case Interval::kSecond:
      return std::int64_t{parts.second};
  }
  throw BadArgument();
}

// Months and days out of range carry over into the following or preceding year or month.
Value DateSerial(const FunctionContext&, Arguments a) {
  int year = Small(a[0]);
  if (year >= 0 && year < 100) year += year < 30 ? 2000 : 1900;
  if (year < 100 || year > 9999) throw BadArgument();
  return Date::FromCalendar(year, 1, 1).AddMonths(Small(a[1]) - 1).AddDays(Small(a[2]) - 1);
}

Value TimeSerial(const FunctionContext&, Arguments a) {
  return AddSeconds(Date(), Integer(Value(std::int64_t{Small(a[0])})) * 3600 +
                                std::int64_t{Small(a[1])} * 60 + Small(a[2]));
}

Value DateValue(const FunctionContext&, Arguments a) { return DateAt(a[0]).DateOnly(); }
Value TimeValue(const FunctionContext&, Arguments a) {
  return DateFromSeconds(DateAt(a[0]).SecondOfDay());
}

Value IsDate(const FunctionContext&, Arguments a) {
  if (const auto* text = std::get_if<std::string>(&a[0])) {
    try {
      ToDate(*text);
    } catch (const RuntimeError&) {
      return false;
    }
    return true;
  }
  return TypeOf(a[0]) == Type::kDate;
}

constexpr auto kFunctions = std::to_array<EngineFunction>({
    {"now", "", 't', false, Now},
    {"date", "", 't', false, Today},
    {"time", "", 't', false, TimeOfDay},
    {"year", "t", 'i', false, Year},
    {"month", "t", 'i', false, Month},
    {"day", "t", 'i', false, Day},
    {"hour", "t", 'i', false, Hour},
    {"minute", "t", 'i', false, Minute},
    {"second", "t", 'i', false, Second},
    {"weekday", "t", 'i', false, Weekday},
    {"weekday", "ti", 'i', false, Weekday},
    {"monthname", "i", 's', false, MonthName},
    {"monthname", "ib", 's', false, MonthName},
    {"weekdayname", "i", 's', false, WeekdayName},
    {"weekdayname", "ib", 's', false, WeekdayName},
    {"weekdayname", "ibi", 's', false, WeekdayName},
    {"dateadd", "sdt", 't', false, DateAdd},
    {"datediff", "stt", 'i', false, DateDiff},
    {"datediff", "stti", 'i', false, DateDiff},
    {"datediff", "sttii", 'i', false, DateDiff},
    {"datepart", "st", 'i', false, DatePart},
    {"datepart", "sti", 'i', false, DatePart},
    {"datepart", "stii", 'i', false, DatePart},
    {"dateserial", "iii", 't', false, DateSerial},
    {"timeserial", "iii", 't', false, TimeSerial},
    {"datevalue", "t", 't', false, DateValue},
    {"timevalue", "t", 't', false, TimeValue},
    {"isdate", "?", 'b', true, IsDate},
});

}  // namespace

std::span<const EngineFunction> DateFunctions() { return kFunctions; }

}  // namespace tenora::query
