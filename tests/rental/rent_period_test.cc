#include "rental/rent_period.h"

#include "platform/runtime/format.h"
#include "rental/rental_fixture.h"

namespace tenora::test {
namespace {

using testing::IsEmpty;

// "2026-01-01 to 2026-01-14: 630" of each, a line a period.
std::string Shown(const std::vector<RentPeriod>& made) {
  std::string text;
  for (const RentPeriod& period : made) {
    text += FormatDate(period.PeriodFrom, "yyyy-mm-dd") + " to " +
            FormatDate(period.PeriodTo, "yyyy-mm-dd") + ": " + period.RentDue.ToText() + "\n";
  }
  return text;
}

class RentPeriods : public ScriptedRental {
 protected:
  std::vector<RentPeriod> Generate(const RentTerms& terms, Date end_date, PeriodCursor& cursor) {
    std::vector<RentPeriod> made;
    GeneratePeriods(session.database, terms, end_date, cursor,
                    [&](const RentPeriod& period) { made.push_back(period); });
    return made;
  }
};

RentTerms Terms(std::int16_t amount, const char* unit, std::int64_t cents,
                std::int16_t monthly_day = 1) {
  return {.tenant_code = "T1",
          .rent = Cents(cents),
          .monthly_day = monthly_day,
          .every_amt = amount,
          .every_freq = unit};
}

TEST_F(RentPeriods, FollowTheFrequency) {
  const struct {
    const char* what;
    RentTerms terms;
    Date start, end;
    const char* made;
  } cases[] = {
      {"days", Terms(14, "Day", 63000), Day(2026, 1, 1), Day(2026, 1, 28),
       "2026-01-01 to 2026-01-14: 630\n2026-01-15 to 2026-01-28: 630\n"},
      {"weeks, the end date's own start included", Terms(2, "Week", 100), Day(2026, 2, 23),
       Day(2026, 3, 9), "2026-02-23 to 2026-03-08: 1\n2026-03-09 to 2026-03-22: 1\n"},
      {"aligned months", Terms(1, "Month", 60000), Day(2026, 6, 1), Day(2026, 7, 1),
       "2026-06-01 to 2026-06-30: 600\n2026-07-01 to 2026-07-31: 600\n"},
      {"before the due day", Terms(1, "Month", 28000, 15), Day(2026, 3, 3), Day(2026, 3, 14),
       "2026-03-03 to 2026-03-14: 120\n"},
      // 20 January to 19 February has 31 days, 5 of them before the 25th: 310.00 less 50.00.
      {"behind the due day", Terms(1, "Month", 31000, 20), Day(2026, 1, 25), Day(2026, 2, 20),
       "2026-01-25 to 2026-02-19: 260\n2026-02-20 to 2026-03-19: 310\n"},
      // The 31st of a short month: its last day is a full month on, then the days up to the 31st
      // are charged apart.
      {"a due day that February lacks", Terms(1, "Month", 31000, 31), Day(2026, 1, 31),
       Day(2026, 3, 1), "2026-01-31 to 2026-02-27: 310\n2026-02-28 to 2026-03-02: 33.21\n"},
      {"a due day before the first: a day a period", Terms(1, "Month", 31000, -30),
       Day(2026, 1, 25), Day(2026, 1, 25), "2026-01-25 to 2026-01-25: 10\n"},
      {"every second month is not aligned", Terms(2, "Month", 50000, 20), Day(2026, 1, 31),
       Day(2026, 3, 31), "2026-01-31 to 2026-03-30: 500\n2026-03-31 to 2026-05-30: 500\n"},
      {"years", Terms(1, "Year", 100), Day(2024, 2, 29), Day(2024, 12, 31),
       "2024-02-29 to 2025-02-27: 1\n"},
      {"nothing behind the end", Terms(1, "Week", 100), Day(2026, 1, 2), Day(2026, 1, 1), ""},
  };
  for (const auto& c : cases) {
    PeriodCursor cursor{.start = c.start};
    const std::vector<RentPeriod> made = Generate(c.terms, c.end, cursor);
    EXPECT_EQ(Shown(made), c.made) << c.what;
    for (const RentPeriod& period : made) EXPECT_EQ(period.Outstanding, period.RentDue) << c.what;
    EXPECT_EQ(cursor.start, made.empty() ? c.start : made.back().PeriodTo.AddDays(1)) << c.what;
  }
  EXPECT_THAT(machine.dialogs.Texts(), IsEmpty());
}

TEST_F(RentPeriods, BeginWithAPartOfAWeek) {
  PeriodCursor cursor{.start = Day(2026, 1, 2), .first_week_days = 3};
  const auto made = Generate(Terms(1, "Week", 10000), Day(2026, 1, 12), cursor);
  EXPECT_EQ(Shown(made),
            "2026-01-02 to 2026-01-04: 42.86\n2026-01-05 to 2026-01-11: 100\n"
            "2026-01-12 to 2026-01-18: 100\n");
  EXPECT_EQ(cursor.first_week_days, kNoPartialWeek);
}

TEST_F(RentPeriods, MakeOneEvenBehindTheEndWhenAskedTo) {
  PeriodCursor cursor{.start = Day(2026, 2, 1), .first = true};
  EXPECT_EQ(Generate(Terms(1, "Week", 100), Day(2026, 1, 1), cursor).size(), 1u);
  EXPECT_FALSE(cursor.first);
}

TEST_F(RentPeriods, OfADurationAreOneUpToTheTenancysEnd) {
  const std::string lookup = "select [when ended] as result from tenancy  where reference = 'T1'";
  const struct {
    Value ended;
    Date last;
  } cases[] = {{Day(2026, 6, 30), Day(2026, 6, 30)}, {Null(), Day(2026, 11, 21)}};
  for (const auto& c : cases) {
    AnswerLookup(lookup, c.ended);
    PeriodCursor cursor{.start = Day(2026, 1, 1), .first = true};
    const auto made = Generate(Terms(1, "Duration", 100), Day(2030, 1, 1), cursor);
    ASSERT_EQ(made.size(), 1u);
    EXPECT_EQ(made[0].PeriodTo, c.last);
    EXPECT_THAT(Generate(Terms(1, "Duration", 100), Day(2030, 1, 1), cursor), IsEmpty());
  }
}

TEST_F(RentPeriods, StopAtAFrequencyThatLeadsNowhere) {
  const struct {
    std::int16_t amount;
    const char* unit;
    const char* shown;
  } cases[] = {
      {1, "month", "Invalid rent frequency of month"},
      {1, "", "Invalid rent frequency of "},
      {0, "Day", "Invalid rent frequency of 0 Day"},
      {-1, "Week", "Invalid rent frequency of -1 Week"},
      {0, "Month", "Invalid rent frequency of 0 Month"},
      {-32768, "Year", "Invalid rent frequency of -32768 Year"},
  };
  for (const auto& c : cases) {
    PeriodCursor cursor{.start = Day(2026, 1, 1)};
    EXPECT_THAT(Generate(Terms(c.amount, c.unit, 100), Day(2026, 2, 1), cursor), IsEmpty());
    EXPECT_EQ(machine.dialogs.Texts().back(), c.shown);
    EXPECT_EQ(machine.dialogs.shown().back().title, kApplicationTitle);
  }
}

TEST_F(RentPeriods, EndWithTheCalendar) {
  PeriodCursor cursor{.start = Day(9999, 12, 20)};
  EXPECT_THROW(Generate(Terms(1, "Week", 100), Day(9999, 12, 31), cursor), RuntimeError);
}

TEST(ProrateWithinMonth, GivesBothParts) {
  const ProratedRent rent =
      ProrateWithinMonth(Day(2026, 2, 15), Day(2026, 3, 14), Day(2026, 3, 2), Cents(28000));
  EXPECT_EQ(rent.not_charged, Cents(16000));
  EXPECT_EQ(rent.charged, Cents(12000));
}

TEST(ShareOfRent, RoundsAsShownAmountsDo) {
  const Date from = Day(2026, 11, 2), to = Day(2026, 11, 8);
  const struct {
    const char* what;
    Date from, to, cut_off;
    std::int64_t cents, share;
  } cases[] = {
      {"three days of seven", from, to, Day(2026, 11, 4), 10000, 4286},
      {"half a cent away from zero", from, Day(2026, 11, 3), from, 10001, 5001},
      {"no cut-off", from, to, Day(1234, 1, 1), 10000, 10000},
      {"no days", from, Day(2026, 11, 1), from, 10000, 10000},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(ShareOfRent(c.from, c.to, c.cut_off, Cents(c.cents), 2), Cents(c.share)) << c.what;
  }
  EXPECT_EQ(ShareOfRent(from, to, Day(2026, 11, 4), Cents(10000), 3).ToText(), "42.857");
}

TEST(TrimPeriods, CutsAtTheTenancysEnd) {
  const auto period = [](int first_day, bool credit) {
    return RentPeriod{.PeriodFrom = Day(2026, 11, first_day),
                      .PeriodTo = Day(2026, 11, first_day + 6),
                      .RentDue = Cents(10000),
                      .ExtraCharges = Cents(first_day),
                      .Credit = credit};
  };
  for (const bool credit : {false, true}) {
    std::vector<RentPeriod> schedule{period(1, credit), period(8, credit), period(15, credit),
                                     period(22, credit)};
    TrimPeriods(schedule, Day(2026, 11, 10), 2);
    ASSERT_EQ(schedule.size(), 2u);
    EXPECT_EQ(schedule[0].RentDue, Cents(10000));
    EXPECT_EQ(schedule[1].PeriodTo, Day(2026, 11, 10));
    EXPECT_EQ(schedule[1].RentDue, Cents(credit ? 10000 : 4286));
    EXPECT_EQ(schedule[1].ExtraCharges, Cents(8 + 15 + 22));
  }
  std::vector<RentPeriod> all{period(8, false), period(15, false)};
  TrimPeriods(all, Day(2026, 11, 7), 2);
  EXPECT_THAT(all, IsEmpty());
  // Periods that overlap are all cut; one that ends on the day ends the walk.
  std::vector<RentPeriod> overlapping{period(8, false), period(9, false), period(10, false)};
  TrimPeriods(overlapping, Day(2026, 11, 14), 2);
  EXPECT_EQ(overlapping[0].RentDue, Cents(10000));
  EXPECT_EQ(overlapping[1].PeriodTo, Day(2026, 11, 14));
  EXPECT_EQ(overlapping[2].RentDue, Cents(7143));
}

}  // namespace
}  // namespace tenora::test
