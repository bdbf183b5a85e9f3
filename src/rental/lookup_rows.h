// How the look-ups of one tenancy and the pass over all of them read the same rows.
#pragma once

#include <string>
#include <string_view>

#include "data/database.h"
#include "rental/rent_account.h"
#include "rental/tenant_lookups.h"

namespace tenora {

// The condition on a row of revenues that is a payment of rent or of extra charges.
std::string PaysTenancy(const std::string& rent_group);
inline constexpr std::string_view kLatestPaymentFirst = " order by date desc, recordnumber desc";

// What an earlier look-up has left is of another payment.
void ClearPayment(TenantRecord& tenant);
// Fills the fields of the last payment from its row.
void ReadPayment(const query::Recordset& row, TenantRecord& tenant);

// The amount of the latest payment of rent; null where there is none.
double RentPaymentOf(const Value& amount);
// Fills the paid-to dates, the present one and that before the latest payment of rent.
void FillPaidTo(const RentAccount& account, double rent_payment, TenantRecord& tenant);

// The condition on a row of insp_schedule, and the order of which the first row is meant.
std::string InspectionCondition(Session& session, bool next);
// The same of rentchanges.
std::string RentChangeCondition(Session& session);
// The tables of a property's owner.
inline constexpr std::string_view kOwnersOfProperties =
    "owner inner join property on owner.code = property.ownercode";
// Those of the tenancies of a property's owner, with the condition on open ones.
inline constexpr std::string_view kOpenTenanciesOfOwners =
    "tenancy inner join property on tenancy.[property code] = property.code where closed_yn = 0";

RentChange RentChangeOf(const Value& date, const Value& rent);

}  // namespace tenora
