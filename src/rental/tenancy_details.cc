#include "rental/tenancy_details.h"

#include <algorithm>

#include "data/sql_text.h"
#include "rental/custom_field_parents.h"
#include "rental/custom_field_table.h"
#include "rental/lookup_rows.h"
#include "rental/missing_date.h"
#include "rental/rent_account.h"

namespace tenora {
namespace {

// Calls `use` with the code of each open tenancy in a property of the owner.
template <typename Use>
void ForEachTenancy(Session& session, const std::string& owner_code, Use&& use) {
  RecordsetPtr rows;
  Database& database = session.database;
  database.CreateSet(rows,
                     std::string("select reference from ")
                         .append(kOpenTenanciesOfOwners)
                         .append(" and property.ownercode = ")
                         .append(SQLText(owner_code)),
                     query::kForwardOnly, query::kReadOnly);
  for (; !database.DataEOF(rows); database.MoveNext(rows)) use(TextOf(rows->Field("reference")));
}

}  // namespace

std::int64_t DaysBehind(const TenantRecord& with_account, Date today) {
  if (with_account.BalanceOwing <= 0 || DateMeansNone(with_account.PaidToDate)) return 0;
  return std::max<std::int64_t>(0, DaysBetween(with_account.PaidToDate, today));
}

const TenantRecord& LookedUpTenancy::WithAccount() const {
  if (!has_payment_) has_payment_ = LastPayment(session_, tenant_, receipt_number_);
  return tenant_;
}

bool LookedUpTenancy::HasPayment() const {
  WithAccount();
  return *has_payment_;
}

std::optional<Date> LookedUpTenancy::Inspection(bool next) const {
  return FindInspection(session_, next, tenant_.Reference);
}

std::optional<RentChange> LookedUpTenancy::NextRentChange() const {
  return FindNextRentChange(session_, tenant_.Reference);
}

std::string LookedUpTenancy::OwnerName() const {
  return OwnerNameOfProperty(session_, tenant_.PropertyCode);
}

std::string LookedUpTenancy::OwnerAccount() const {
  return OwnerAccountOfProperty(session_, tenant_.PropertyCode);
}

std::string LookedUpTenancy::TenantField(std::string_view code) const {
  return LookUpCustomField(session_.database, kTenantParent, tenant_.Reference, code);
}

std::string LookedUpTenancy::PropertyField(std::string_view code) const {
  return LookUpCustomField(session_.database, kPropertyParent, tenant_.PropertyCode, code);
}

int LookedUpOwner::Properties() const {
  return static_cast<int>(LeadingNumber(session_.database.LookupText(
      "count(*)", "property", " where ownercode = " + SQLText(owner_.Code), "0")));
}

int LookedUpOwner::Tenancies() const {
  int count = 0;
  ForEachTenancy(session_, owner_.Code, [&](const std::string&) { ++count; });
  return count;
}

Currency LookedUpOwner::Arrears() const {
  Currency arrears;
  ForEachTenancy(session_, owner_.Code, [&](const std::string& reference) {
    const Currency balance = RentAccount(session_, reference).BalanceOwing();
    if (balance > Currency()) arrears += balance;
  });
  return arrears;
}

std::string LookedUpOwner::OwnerField(std::string_view code) const {
  return LookUpCustomField(session_.database, kOwnerParent, owner_.Code, code);
}

}  // namespace tenora
