// What has happened in a tenancy and is going to: its payments, inspections, rent changes and the
// ledger of its account, in the order of their dates. All need the open database of the session.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/runtime/currency.h"
#include "platform/runtime/date.h"
#include "rental/session.h"
#include "rental/tenant_lookups.h"

namespace tenora {

// To any account: rent, other charges, a bond.
struct PaymentRecord {
  Date date;
  Currency amount;
  Currency tax;
  std::int32_t number = 0;
  std::string tender;
  std::string account;  // its code, as "RENT"
  std::string comment;  // empty where the database keeps none
};

// Payments without a date are at the beginning.
std::vector<PaymentRecord> PaymentsOf(Session& session, std::string_view tenant_code);

struct InspectionRecord {
  Date date;
  std::string remark;  // empty where the database keeps none
};

std::vector<InspectionRecord> InspectionsOf(Session& session, std::string_view tenant_code);
std::vector<RentChange> RentChangesOf(Session& session, std::string_view tenant_code);

struct LedgerEntry {
  Date date;
  std::string text;
  std::optional<Currency> charge, payment;  // one of them
  Currency balance;                         // after it; a credit is negative
};

// Every charge of the rent account and every payment that counts in it, charges first on their day.
// Periods are charged when they begin, as far as the account counts them: the last one of an ended
// tenancy only up to its end. The last balance is what RentAccount says: where payments are
// recorded but no periods, of which the account knows nothing, a last entry says so and takes them
// out. Raises what RentAccount raises.
std::vector<LedgerEntry> LedgerOf(Session& session, std::string_view tenant_code);

}  // namespace tenora
