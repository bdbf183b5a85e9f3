#include "rental/payments.h"

#include <algorithm>
#include <cstdint>

namespace tenora {
namespace {

// A product of an amount and a count of days.
__extension__ using Wide = __int128;

// A longer overpayment is taken for a mistake; the result is then the schedule's end.
constexpr std::int64_t kMostPaidDays = 32000;

// Pays one charge out of what is left; false when that used everything up.
bool PayCharge(Currency& left, Currency charge, Currency& paid) {
  if (left <= charge) {
    paid = left;
    left = Currency();
    return false;
  }
  paid = charge;
  left -= charge;
  return true;
}

void PayRent(Currency& left, std::vector<RentPeriod>& schedule) {
  for (RentPeriod& period : schedule) {
    if (!PayCharge(left, period.RentDue, period.Paid)) return;
  }
}

void PayExtraCharges(Currency& left, std::vector<RentPeriod>& schedule) {
  for (RentPeriod& period : schedule) {
    if (period.ExtraCharges <= Currency()) continue;
    if (!PayCharge(left, period.ExtraCharges, period.ExtraChargesPaid)) return;
  }
}

void PayPeriodByPeriod(Currency& left, std::vector<RentPeriod>& schedule) {
  for (RentPeriod& period : schedule) {
    if (!PayCharge(left, period.RentDue, period.Paid)) return;
    if (period.ExtraCharges <= Currency()) continue;
    if (!PayCharge(left, period.ExtraCharges, period.ExtraChargesPaid)) return;
  }
}

std::int64_t DaysOf(const RentPeriod& period) {
  return DaysBetween(period.PeriodFrom, period.PeriodTo) + 1;
}

// The days that the payment covers at the period's price, half a day rounded to even; more than
// the period has when it is overpaid. RentDue is not 0.
std::int64_t PaidDays(const RentPeriod& period) {
  return ScaledCount(DaysOf(period), period.Paid.ten_thousandths(),
                     period.RentDue.ten_thousandths());
}

// RentDue ÷ days × paid days > RentDue - Paid, multiplied by the days so that nothing is rounded.
// The unpaid part is what is compared with, not the paid one: this is deliberate. It takes a day
// off wherever more than about half of the period is paid.
bool WorthMoreThanUnpaid(const RentPeriod& period, std::int64_t paid_days) {
  const std::int64_t days = DaysOf(period);
  const Wide worth = Wide{period.RentDue.ten_thousandths()} * paid_days;
  const Wide unpaid =
      (Wide{period.RentDue.ten_thousandths()} - period.Paid.ten_thousandths()) * days;
  // A period that ends before it starts has a negative count of days, which turns the comparison.
  return days < 0 ? worth < unpaid : worth > unpaid;
}

Date PaidToWithin(const RentPeriod& period, Date today) {
  if (period.RentDue == Currency()) return today;
  std::int64_t days = PaidDays(period);
  if (WorthMoreThanUnpaid(period, days)) --days;
  return period.PeriodFrom.AddDays(days);
}

Date PaidToBehind(const RentPeriod& last, Date today) {
  if (last.Paid == last.RentDue) return last.PeriodTo;
  if (last.RentDue == Currency()) return today;
  const std::int64_t days = PaidDays(last);
  return days > kMostPaidDays ? last.PeriodTo : last.PeriodFrom.AddDays(days);
}

}  // namespace

void SpreadPayments(const Payments& payments, std::vector<RentPeriod>& schedule) {
  if (schedule.empty()) return;
  Currency rent = payments.rent;
  Currency extra;
  if (payments.period_by_period && payments.rent_group_pays_extra_charges) {
    PayPeriodByPeriod(rent, schedule);
  } else if (payments.rent_group_pays_extra_charges) {
    PayRent(rent, schedule);
    PayExtraCharges(rent, schedule);
  } else {
    PayRent(rent, schedule);
    extra = payments.extra_charges;
    PayExtraCharges(extra, schedule);
  }
  schedule.back().ExtraChargesPaid += extra;
  schedule.back().Paid += rent;
  for (RentPeriod& period : schedule) {
    period.Outstanding =
        period.RentDue + period.ExtraCharges - period.Paid - period.ExtraChargesPaid;
  }
}

Date PaidToDate(const std::vector<RentPeriod>& schedule, Date today) {
  if (schedule.empty()) return Date();
  const auto unpaid = std::find_if(schedule.begin(), schedule.end(), [](const RentPeriod& period) {
    return period.Paid < period.RentDue;
  });
  return unpaid != schedule.end() ? PaidToWithin(*unpaid, today)
                                  : PaidToBehind(schedule.back(), today);
}

}  // namespace tenora
