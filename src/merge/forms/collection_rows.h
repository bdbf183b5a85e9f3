// The rows that <<Each …>> repeats for.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "merge/form_names.h"
#include "rental/session.h"
#include "rental/tenancy_details.h"
#include "rental/tenancy_history.h"

namespace tenora {

class CollectionRow {
 public:
  virtual ~CollectionRow() = default;
  // A column by its name. Raises what the look-ups raise.
  virtual Fact Get(std::string_view name) const = 0;
  // Of a tenancy's row its record, of a property's its code; else null and empty.
  virtual TenantRecord* Tenant() const { return nullptr; }
  virtual std::string PropertyCode() const { return {}; }
};

// Whose rows.
struct CollectionOwner {
  const TenantRecord* tenant = nullptr;  // the tenancy, where there is one
  const OwnerRecord* owner = nullptr;
  std::string property;  // only the tenancies of this one; empty for all of the owner's
};

// The ledger of one tenancy after the other: several repetitions and the opening balance of one
// letter need it, and it takes longer than all else.
class LatestLedger {
 public:
  explicit LatestLedger(Session& session) : session_(session) {}
  // As LedgerOf; good until the next call.
  const std::vector<LedgerEntry>& Of(const TenantRecord& tenant);
  // What the tenancy owed before a day.
  Currency BalanceBefore(const TenantRecord& tenant, Date day);

 private:
  Session& session_;
  std::optional<std::string> reference_;
  std::vector<LedgerEntry> entries_;
};

// In the order of their days; properties by code, tenancies by property and name, without those
// that are closed.
std::vector<std::unique_ptr<CollectionRow>> RowsOf(Session& session, const Collection& collection,
                                                   const CollectionOwner& owner,
                                                   LatestLedger& ledger);

}  // namespace tenora
