// The rows that <<Each …>> repeats for.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "merge/form_names.h"
#include "rental/session.h"
#include "rental/tenancy_details.h"

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

// In the order of their days; properties by code, tenancies by property and name, without those
// that are closed.
std::vector<std::unique_ptr<CollectionRow>> RowsOf(Session& session, const Collection& collection,
                                                   const CollectionOwner& owner);

// What a tenancy owed before a day.
Currency BalanceBefore(Session& session, const TenantRecord& tenant, Date day);

}  // namespace tenora
