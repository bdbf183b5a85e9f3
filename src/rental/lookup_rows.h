// How the look-ups of one tenancy and the pass over all of them read the same rows.
#pragma once

#include <compare>
#include <cstdint>
#include <string>
#include <string_view>

#include "data/database.h"
#include "rental/rent_account.h"
#include "rental/tenant_lookups.h"

namespace tenora {

// Conditions on a row of revenues: a payment of rent, one of extra charges, either.
std::string PaysRent(const std::string& rent_group);
inline constexpr std::string_view kPaysExtraCharges =
    "[revenue group] in (select gl_code from glcodes where type = 1 and pay_extra_charges <> 0)";
std::string PaysTenancy(const std::string& rent_group);

// The columns of revenues that say which payment is the latest, and what it was.
struct PaymentRow {
  Value date, number, tender = {}, amount = {}, tax = {};
};
// Whether a payment is later than another in the order of kLatestPaymentFirst. Unordered where only
// a statement knows, since the two are equally late or a value is missing.
std::partial_ordering CompareLateness(const PaymentRow& left, const PaymentRow& right);
inline constexpr std::string_view kLatestPaymentFirst = " order by date desc, recordnumber desc";

// What an earlier look-up has left is of another payment.
void ClearPayment(TenantRecord& tenant);
// Fills the fields of the last payment from its row.
void ReadPayment(const PaymentRow& row, TenantRecord& tenant);
// Finds it by a statement; false, and empty fields, where there is none.
bool FindLastPayment(Session& session, TenantRecord& tenant, const std::string& rent_group,
                     std::int32_t receipt_number);
// The amount of the latest payment of rent, by a statement; 0 where there is none.
double FindRentPayment(Session& session, const TenantRecord& tenant, const std::string& rent_group);

// The latest stored period, also a future one; empty dates without one.
struct LatestPeriod {
  Date from, to;
};
LatestPeriod FindLatestPeriod(Session& session, const std::string& tenant_code);

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
