#include "rental/payments.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

#include "platform/runtime/error.h"

namespace tenora {
namespace {

const Date kToday = Date::FromCalendar(2026, 11, 21);
const Date kFrom = Date::FromCalendar(2026, 11, 2);

Currency Cents(std::int64_t cents) { return Currency::FromTenThousandths(cents * 100); }

RentPeriod Week(int number, std::int64_t rent, std::int64_t extra = 0) {
  return RentPeriod{.PeriodFrom = kFrom.AddDays(7 * number),
                    .PeriodTo = kFrom.AddDays(7 * number + 6),
                    .RentDue = Cents(rent),
                    .ExtraCharges = Cents(extra)};
}

std::vector<std::int64_t> InCents(const std::vector<RentPeriod>& schedule,
                                  Currency RentPeriod::*field) {
  std::vector<std::int64_t> cents;
  for (const RentPeriod& period : schedule) {
    cents.push_back((period.*field).ten_thousandths() / 100);
  }
  return cents;
}

TEST(PaidToDate, FollowsTheUnpaidPeriod) {
  const struct {
    const char* what;
    int days;
    std::int64_t rent, paid, paid_days;
  } cases[] = {
      {"2.1 days are 2, worth less than the unpaid 70.00", 7, 10000, 3000, 2},
      {"3.5 days round to 4, worth more than the unpaid 50.00", 7, 10000, 5000, 3},
      {"2.5 days round to the even 2", 7, 7000, 2500, 2},
      {"exactly half, worth exactly the unpaid half: kept", 14, 10000, 5000, 7},
      {"half again, a day worth 16.66 and two thirds", 6, 10000, 5000, 3},
      {"nearly everything paid is 7 days less 1", 7, 10000, 9999, 6},
      {"nothing paid", 7, 10000, 0, 0},
      {"money taken back", 7, 10000, -10000, -7},
      {"a month", 30, 60000, 20000, 10},
  };
  for (const auto& c : cases) {
    const RentPeriod period{.PeriodFrom = kFrom,
                            .PeriodTo = kFrom.AddDays(c.days - 1),
                            .RentDue = Cents(c.rent),
                            .Paid = Cents(c.paid)};
    // The period behind is not looked at, however it is paid.
    const RentPeriod behind{.PeriodFrom = kFrom.AddDays(c.days),
                            .PeriodTo = kFrom.AddDays(2 * c.days - 1),
                            .RentDue = Cents(c.rent),
                            .Paid = Cents(c.rent)};
    EXPECT_EQ(PaidToDate({period, behind}, kToday), kFrom.AddDays(c.paid_days)) << c.what;
    EXPECT_EQ(PaidToDate({period}, kToday), kFrom.AddDays(c.paid_days)) << c.what;
  }
}

TEST(PaidToDate, OfAPaidScheduleFollowsTheLastPeriod) {
  const std::int64_t kMost = std::numeric_limits<std::int64_t>::max() / 100000;
  const struct {
    const char* what;
    std::int64_t rent, paid;
    Date expected;
  } cases[] = {
      {"fully paid", 10000, 10000, kFrom.AddDays(6)},
      {"a week too much: the length and a week on", 10000, 20000, kFrom.AddDays(14)},
      {"3.5 days too much: 10.5 is the even 10", 10000, 15000, kFrom.AddDays(10)},
      {"no rent, something paid", 0, 1, kToday},
      {"no rent, nothing paid", 0, 0, kFrom.AddDays(6)},
      {"32000 days still count", 700, 3200000, kFrom.AddDays(32000)},
      {"32001 do not", 700, 3200100, kFrom.AddDays(6)},
      {"far too much", 700, kMost, kFrom.AddDays(6)},
  };
  for (const auto& c : cases) {
    RentPeriod first = Week(-1, 5000);
    first.Paid = first.RentDue;
    RentPeriod last = Week(0, c.rent);
    last.Paid = Cents(c.paid);
    EXPECT_EQ(PaidToDate({first, last}, kToday), c.expected) << c.what;
  }
}

TEST(PaidToDate, HasAnAnswerForDamagedPeriods) {
  EXPECT_EQ(PaidToDate({}, kToday), Date());
  RentPeriod taken_back = Week(0, 0);
  taken_back.Paid = Cents(-1);
  EXPECT_EQ(PaidToDate({taken_back}, kToday), kToday);
  RentPeriod without_days = Week(0, 10000);
  without_days.PeriodTo = without_days.PeriodFrom.AddDays(-1);
  EXPECT_EQ(PaidToDate({without_days}, kToday), without_days.PeriodFrom);
  RentPeriod ever_back = Week(0, 1);
  ever_back.Paid = Cents(-100000000);
  EXPECT_THROW(PaidToDate({ever_back}, kToday), RuntimeError);
}

TEST(SpreadPayments, FollowsWhatPaysFirst) {
  const Payments rent_first{.rent = Cents(25000), .extra_charges = Cents(1500)};
  const Payments shared{.rent = Cents(25000), .rent_group_pays_extra_charges = true};
  Payments by_period = shared;
  by_period.period_by_period = true;
  // Without the rent group among the accounts that pay extra charges the choice does not count.
  Payments by_period_apart = rent_first;
  by_period_apart.period_by_period = true;
  const struct {
    const char* what;
    Payments payments;
    std::vector<std::int64_t> rent, extra;
  } cases[] = {
      {"separate money", rent_first, {10000, 10000, 5000}, {1000, 0, 500}},
      {"chosen but separate", by_period_apart, {10000, 10000, 5000}, {1000, 0, 500}},
      {"rent before all extra charges", shared, {10000, 10000, 5000}, {0, 0, 0}},
      {"period by period", by_period, {10000, 10000, 4000}, {1000, 0, 0}},
  };
  for (const auto& c : cases) {
    std::vector<RentPeriod> schedule{Week(0, 10000, 1000), Week(1, 10000), Week(2, 10000, 2000)};
    SpreadPayments(c.payments, schedule);
    EXPECT_EQ(InCents(schedule, &RentPeriod::Paid), c.rent) << c.what;
    EXPECT_EQ(InCents(schedule, &RentPeriod::ExtraChargesPaid), c.extra) << c.what;
  }
}

TEST(SpreadPayments, PutsWhatIsLeftOnTheLastPeriod) {
  const Payments shared{.rent = Cents(30000), .rent_group_pays_extra_charges = true};
  Payments by_period = shared;
  by_period.period_by_period = true;
  const struct {
    const char* what;
    Payments payments;
    std::int64_t rent, extra, outstanding;
  } cases[] = {
      {"both too much", {.rent = Cents(30000), .extra_charges = Cents(1500)}, 20000, 1500, -10500},
      {"rent group pays the extra charges, too", shared, 19000, 1000, -9000},
      {"period by period", by_period, 19000, 1000, -9000},
      {"money taken back", {.rent = Cents(-500), .extra_charges = Cents(0)}, 0, 0, 11000},
  };
  for (const auto& c : cases) {
    std::vector<RentPeriod> schedule{Week(0, 10000), Week(1, 10000, 1000)};
    SpreadPayments(c.payments, schedule);
    EXPECT_EQ(schedule.back().Paid, Cents(c.rent)) << c.what;
    EXPECT_EQ(schedule.back().ExtraChargesPaid, Cents(c.extra)) << c.what;
    EXPECT_EQ(schedule.back().Outstanding, Cents(c.outstanding)) << c.what;
    const Currency paid = c.payments.rent + c.payments.extra_charges;
    EXPECT_EQ(SumOfOutstanding(schedule), Cents(21000) - paid) << c.what;
  }
  std::vector<RentPeriod> none;
  SpreadPayments({.rent = Cents(100)}, none);
  EXPECT_EQ(SumOfOutstanding(none), Currency());
}

}  // namespace
}  // namespace tenora
