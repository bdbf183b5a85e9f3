#include "rental/rent_period.h"

#include <optional>

#include "data/sql_text.h"
#include "platform/dialogs/dialogs.h"
#include "platform/runtime/clock.h"
#include "rental/caches.h"

namespace tenora {
namespace {

// A period's end and price: where the next one starts, and the rent charged up to there.
struct Step {
  Date next;
  Currency rent;
};

Step WeekStep(const RentTerms& terms, PeriodCursor& cursor) {
  if (cursor.first_week_days == kNoPartialWeek) {
    return {cursor.start.AddDays(7 * terms.every_amt), terms.rent};
  }
  const std::int16_t days = cursor.first_week_days;
  cursor.first_week_days = kNoPartialWeek;
  return {cursor.start.AddDays(days), terms.rent.Scaled(days, 7 * terms.every_amt, 2)};
}

// Monthly rent is aligned on the tenancy's due day: a period that starts on another day runs to the
// next due day and costs its part of a month.
Step AlignedMonthStep(const RentTerms& terms, Date start) {
  const int day = start.Calendar().day;
  if (day == terms.monthly_day) return {start.AddMonths(1), terms.rent};
  Date next = day < terms.monthly_day
                  ? start.AddDays(terms.monthly_day - day)
                  : start.AddMonths(1).AddDays(-(day - std::int64_t{terms.monthly_day}));
  if (next <= start) next = start.AddDays(1);
  const ProratedRent rent =
      ProrateWithinMonth(next.AddMonths(-1), next.AddDays(-1), start.AddDays(-1), terms.rent);
  return {next, rent.charged};
}

Step DurationStep(Database& database, const RentTerms& terms) {
  const Date ended = database.LookupDate("[when ended]", "tenancy",
                                         " where reference = " + SQLText(terms.tenant_code),
                                         database.platform().clock.Today());
  return {ended.AddDays(1), terms.rent};
}

void ShowInvalidFrequency(Database& database, const std::string& frequency) {
  database.platform().dialogs.Say("Invalid rent frequency of " + frequency);
}

// None when no (further) period can be made.
std::optional<Step> NextStep(Database& database, const RentTerms& terms, PeriodCursor& cursor) {
  const std::string& unit = terms.every_freq;
  if (unit == "Duration") {
    if (!cursor.first) return std::nullopt;
    return DurationStep(database, terms);
  }
  if (unit != "Day" && unit != "Week" && unit != "Month" && unit != "Year") {
    ShowInvalidFrequency(database, unit);
    return std::nullopt;
  }
  // "0 Week" would start every period where the last one started and never end.
  if (terms.every_amt <= 0) {
    ShowInvalidFrequency(database, std::to_string(terms.every_amt) + " " + unit);
    return std::nullopt;
  }
  if (unit == "Week") return WeekStep(terms, cursor);
  if (unit == "Day") return Step{cursor.start.AddDays(terms.every_amt), terms.rent};
  if (unit == "Year") return Step{cursor.start.AddYears(terms.every_amt), terms.rent};
  if (terms.every_amt == 1) return AlignedMonthStep(terms, cursor.start);
  // Rent due every second month or less often is neither aligned nor prorated.
  return Step{cursor.start.AddMonths(terms.every_amt), terms.rent};
}

}  // namespace

void GeneratePeriods(Database& database, const RentTerms& terms, Date end_date,
                     PeriodCursor& cursor, const KeepPeriod& keep) {
  while (cursor.first || cursor.start <= end_date) {
    const std::optional<Step> step = NextStep(database, terms, cursor);
    if (!step) return;
    cursor.first = false;
    keep(RentPeriod{.PeriodFrom = cursor.start,
                    .PeriodTo = step->next.AddDays(-1),
                    .RentDue = step->rent,
                    .Outstanding = step->rent});
    cursor.start = step->next;
    if (terms.every_freq == "Duration") return;
  }
}

void InsertRentPeriods(Database& database, const RentTerms& terms, Date end_date,
                       PeriodCursor& cursor) {
  GeneratePeriods(database, terms, end_date, cursor, [&](const RentPeriod& period) {
    // The engine needs a decimal point in the rent, whatever the locale.
    database.ExecuteSQL(
        "insert into rent_periods (tenant_code, "
        "period_from,period_to,rent_due,extra_charges,paid,extra_charges_paid) values(" +
        SQLText(terms.tenant_code) + "," + SQLDate(period.PeriodFrom) + "," +
        SQLDate(period.PeriodTo) + "," + period.RentDue.ToText() + ",0,0,0)");
  });
}

ProratedRent ProrateWithinMonth(Date month_start, Date month_end, Date day_before,
                                Currency full_rent) {
  const std::int64_t full_days = DaysBetween(month_start, month_end) + 1;
  const std::int64_t days_before = DaysBetween(month_start, day_before) + 1;
  const Currency not_charged = full_rent.Scaled(days_before, full_days, 2);
  return {not_charged, (full_rent - not_charged).RoundedToCents()};
}

Currency ShareOfRent(Date from, Date to, Date cut_off, Currency amount, int decimals) {
  if (cut_off.Year() == kNoDateYear) return amount;
  const std::int64_t days = DaysBetween(from, to) + 1;
  // Displayed amounts round halves away from zero, unlike the amounts calculated elsewhere.
  if (days == 0) return amount.Scaled(1, 1, decimals, Halves::kAwayFromZero);
  return amount.Scaled(DaysBetween(from, cut_off) + 1, days, decimals, Halves::kAwayFromZero);
}

void TrimPeriods(std::vector<RentPeriod>& schedule, Date cut_off, int decimals) {
  for (std::size_t i = schedule.size(); i-- > 0;) {
    RentPeriod& period = schedule[i];
    if (period.PeriodFrom > cut_off) {
      // With no period before it there is nobody to charge them to.
      if (i > 0) schedule[i - 1].ExtraCharges += period.ExtraCharges;
      schedule.erase(schedule.begin() + static_cast<std::ptrdiff_t>(i));
      continue;
    }
    if (period.PeriodTo <= cut_off) return;
    if (!period.Credit) {
      period.RentDue =
          ShareOfRent(period.PeriodFrom, period.PeriodTo, cut_off, period.RentDue, decimals);
    }
    period.PeriodTo = cut_off;
  }
}

Currency SumOfOutstanding(const std::vector<RentPeriod>& schedule) {
  Currency sum;
  for (const RentPeriod& period : schedule) sum += period.Outstanding;
  return sum;
}

}  // namespace tenora
