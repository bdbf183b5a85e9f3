// The per-tenant queries that the tenant merge uses. All need the open database of the session.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/runtime/currency.h"
#include "platform/runtime/date.h"
#include "rental/session.h"

namespace tenora {

struct RentChange {
  Date date;
  Currency rent;
};

// The next rent change from today on.
std::optional<RentChange> FindNextRentChange(Session& session, std::string_view tenant_code);
// Its date as a long date, its rent as currency; empty for none.
std::string NextRentChangeDate(Session& session, std::string_view tenant_code);
std::string NextRentChangeValue(Session& session, std::string_view tenant_code);

// The next or the last inspection; none where none is stored.
std::optional<Date> FindInspection(Session& session, bool next, std::string_view tenant_code);
// An inspection as a long date, with a medium time unless it is at midnight; without one the
// current date and time.
std::string InspectionDate(Session& session, std::optional<Date> inspection);

// Fills the payment, balance and paid-to fields of one cached tenant; receipt number 0 means the
// latest payment. False without such a payment: its fields are then empty.
bool LastPayment(Session& session, TenantRecord& tenant, std::int32_t receipt_number);

// Whether a tenancy has a payment that LastPayment finds as its latest.
bool HasPayment(Session& session, const TenantRecord& tenant);

std::string OwnerNameOfProperty(Session& session, std::string_view property_code);
// The number of the owner's bank account.
std::string OwnerAccountOfProperty(Session& session, std::string_view property_code);

}  // namespace tenora
