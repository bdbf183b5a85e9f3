// One tenancy's rent account: what is owed, and up to which day the rent is paid.
#pragma once

#include <cstddef>
#include <functional>
#include <span>
#include <stop_token>
#include <string>
#include <string_view>
#include <utility>
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
  // Of stored periods in their order, up to the cut-off already, and the payments.
  RentAccount(std::vector<RentPeriod> periods, const Payments& payments, Date today)
      : periods_(std::move(periods)), payments_(payments), today_(today) {}

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

// One of many accounts.
struct ReadAccount {
  RentAccount account;
  // Of the latest stored period, also a future one; the empty date without one.
  Date latest_from, latest_to;
};
using ReadOneAccount = std::function<ReadAccount()>;
using UseAccount = std::function<void(std::size_t number, const ReadOneAccount& read)>;

// Calls `use` once for each of the codes, in any order, with its number among them; they are
// distinct as the engine compares texts. `read`, which only `use` may call, gives what the
// constructor makes of this code, or raises what that raises: a bad row concerns its own tenancy.
// Everything is read by a few statements for all of them. When a stop is asked for, nothing more is
// handed to `use`. Raises 91 when the tables cannot be read, which has been shown.
void ForEachRentAccount(Session& session, std::span<const std::string> codes,
                        const std::stop_token& stop, const UseAccount& use);

}  // namespace tenora
