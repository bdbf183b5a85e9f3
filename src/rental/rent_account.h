// One tenancy's rent account: what is owed, and up to which day the rent is paid.
#pragma once

#include <string_view>
#include <vector>

#include "rental/payments.h"
#include "rental/rent_period.h"
#include "rental/session.h"

namespace tenora {

// Everything is read once, at construction, from the session's open database; a balance from before
// the latest payment then needs no further query.
class RentAccount {
 public:
  // Raises 94 (Invalid use of Null) for a stored period without a date, and what converting the
  // other columns raises. A missing amount counts as 0.
  RentAccount(Session& session, std::string_view tenant_code);

  // The periods up to the tenancy's end (or the session's as-at date) with the payments spread over
  // them; `deduct` is taken off the rent-group payments first.
  std::vector<RentPeriod> Schedule(double deduct) const;

  // A credit balance is negative.
  Currency BalanceOwing() const;
  // The empty date for a tenancy without periods.
  Date PaidToDate(double deduct) const;

 private:
  std::vector<RentPeriod> periods_;  // nothing spread over them yet
  Payments payments_;
  Date today_;
};

}  // namespace tenora
