#include "platform/runtime/date.h"

#include <gtest/gtest.h>

#include "platform/runtime/error.h"

namespace tenora {
namespace {

TEST(Date, ReadsAndWritesTheDatabasesDayCounts) {
  const struct {
    double serial;
    CalendarTime parts;
  } cases[] = {
      {0, {1899, 12, 30, 0, 0, 0}},
      {1.5, {1899, 12, 31, 12, 0, 0}},
      {-1.25, {1899, 12, 29, 6, 0, 0}},
      {46347, {2026, 11, 21, 0, 0, 0}},
      {46347.604166666664, {2026, 11, 21, 14, 30, 0}},
      {-243249, {1234, 1, 1, 0, 0, 0}},
      {-243249.75, {1234, 1, 1, 18, 0, 0}},
      {-657434, {100, 1, 1, 0, 0, 0}},
      {2958465, {9999, 12, 31, 0, 0, 0}},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Date::FromSerial(c.serial).Calendar(), c.parts) << c.serial;
    EXPECT_DOUBLE_EQ(Date::FromCalendar(c.parts).serial(), c.serial);
  }
}

TEST(Date, OrdersByTimeBeforeTheDayCountBegins) {
  EXPECT_LT(Date::FromCalendar(1899, 12, 29, 6), Date::FromCalendar(1899, 12, 29, 18));
  EXPECT_LT(Date::FromCalendar(1899, 12, 29, 18), Date());
  EXPECT_EQ(DaysBetween(Date::FromCalendar(1899, 12, 28, 23), Date::FromCalendar(1899, 12, 30, 1)),
            2);
}

TEST(Date, AddsMonthsAndYearsByTheCalendar) {
  EXPECT_EQ(Date::FromCalendar(2026, 1, 31).AddMonths(1), Date::FromCalendar(2026, 2, 28));
  EXPECT_EQ(Date::FromCalendar(2024, 2, 29).AddYears(1), Date::FromCalendar(2025, 2, 28));
  EXPECT_EQ(Date::FromCalendar(2026, 3, 15, 9, 30).AddMonths(-1),
            Date::FromCalendar(2026, 2, 15, 9, 30));
  EXPECT_EQ(Date::FromCalendar(1234, 1, 1, 18).AddDays(1), Date::FromCalendar(1234, 1, 2, 18));
}

TEST(Date, RefusesWhatIsNoDateAndSurvivesDamagedOnes) {
  EXPECT_THROW(Date::FromCalendar(2026, 2, 29), RuntimeError);
  EXPECT_THROW(Date::FromCalendar(9999, 12, 31).AddDays(1), RuntimeError);
  EXPECT_THROW(Date().AddYears(2000000), RuntimeError);
  EXPECT_EQ(Date::FromSerial(1e300).Calendar().year, 9999);
  EXPECT_EQ(Date::FromSerial(-1e300).Calendar().year, 100);
}

}  // namespace
}  // namespace tenora
