// What a tenant's payments do to the rent schedule, and up to which day they cover it.
#pragma once

#include <vector>

#include "platform/runtime/currency.h"
#include "platform/runtime/date.h"
#include "rental/rent_period.h"

namespace tenora {

struct Payments {
  Currency rent = {};           // paid to the rent group
  Currency extra_charges = {};  // paid to the other accounts that pay extra charges
  // The rent group itself pays extra charges: what rent leaves over goes to them, and
  // `extra_charges` is not used.
  bool rent_group_pays_extra_charges = false;
  // Each period's rent and extra charges before the next period's; only where the rent group pays
  // extra charges. Otherwise all rent first.
  bool period_by_period = false;
};

// Fills Paid, ExtraChargesPaid and Outstanding. What is left over goes on the last period; without
// any period it is dropped.
void SpreadPayments(const Payments& payments, std::vector<RentPeriod>& schedule);

// The day up to which a schedule with spread payments is paid; the empty date for an empty one.
// Raises 5 when that day is outside the calendar.
Date PaidToDate(const std::vector<RentPeriod>& schedule, Date today);

}  // namespace tenora
