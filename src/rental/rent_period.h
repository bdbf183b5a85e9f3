// A tenancy's rent falls due period by period. Here is one period, and everything that makes
// periods or shortens them; how payments are spread over them is in payments.h.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "data/database.h"
#include "platform/runtime/currency.h"
#include "platform/runtime/date.h"

namespace tenora {

struct RentPeriod {
  Date PeriodFrom = {};
  Date PeriodTo = {};  // the last day, inclusive
  Currency RentDue = {};
  Currency Paid = {};
  Currency ExtraCharges = {};
  Currency ExtraChargesPaid = {};
  bool Credit = false;  // stored with a negative rent, whose absolute value is in RentDue
  Currency Outstanding = {};
};

// How the rent of a tenancy falls due, as its row in the database says.
struct RentTerms {
  std::string tenant_code = {};
  Currency rent = {};            // of one full period
  std::int16_t monthly_day = 0;  // due day where rent falls due every month
  std::int16_t every_amt = 0;
  std::string every_freq = {};  // "Day", "Week", "Month", "Year" or "Duration"; letter case counts
};

inline constexpr std::int16_t kNoPartialWeek = -1;

// How far the periods have been made; carried from call to call.
struct PeriodCursor {
  Date start = {};     // of the next period to make
  bool first = false;  // make one period even if `start` is after the end date
  std::int16_t first_week_days = kNoPartialWeek;  // days of a first partial period of weekly rent
};

using KeepPeriod = std::function<void(const RentPeriod&)>;

// Makes periods, each handed to `keep`, while they start on or before `end_date`. A frequency that
// is unknown, or that would never get to the end date, is shown in a box and nothing more is made.
// Raises 5 when a period would end outside the calendar, 6 when a rent does not fit.
void GeneratePeriods(Database& database, const RentTerms& terms, Date end_date,
                     PeriodCursor& cursor, const KeepPeriod& keep);

// Makes the same periods as rows of the table rent_periods instead.
void InsertRentPeriods(Database& database, const RentTerms& terms, Date end_date,
                       PeriodCursor& cursor);

struct ProratedRent {
  Currency not_charged;
  Currency charged;
};

// Splits a month's rent, both parts to two decimals: the month runs from `month_start` (a month
// before the next due date) to `month_end`, and what is charged begins after `day_before`.
ProratedRent ProrateWithinMonth(Date month_start, Date month_end, Date day_before,
                                Currency full_rent);

// The part of `amount` for the days of the period up to and with `cut_off`, rounded as amounts are
// shown, to `decimals`; the whole amount when the cut-off says "no date".
Currency ShareOfRent(Date from, Date to, Date cut_off, Currency amount, int decimals);

// Removes the periods that start after `cut_off` (their extra charges move to the period before)
// and shortens those that extend past it.
void TrimPeriods(std::vector<RentPeriod>& schedule, Date cut_off, int decimals);

Currency SumOfOutstanding(const std::vector<RentPeriod>& schedule);

}  // namespace tenora
