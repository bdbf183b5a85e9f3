// The facts of a tenancy and of an owner by their names: those of the merge codes, and some that
// only conditions, filters and the recipients' table have.
#pragma once

#include <string_view>

#include "merge/fact.h"
#include "rental/tenancy_details.h"

namespace tenora {

// The codes' names and "Days Behind", "Property Address" (its lines in one), "Property Owners
// Account" (the number of a bank account) and "Closed"; for owners "Properties", "Tenancies",
// "Arrears" and "Closed". Fields of the office's own by their prefixes.
const FactNames& TenantFactNames();
const FactNames& OwnerFactNames();

// Of recipients in a table, which knows when each got a letter: no letter can ask for it.
inline constexpr std::string_view kLastLetterFact = "Last Letter";

class TenantFacts : public FactSource {
 public:
  // With `receipt` the state of the account is empty, as the codes for it are in a receipt. The
  // details outlive this.
  TenantFacts(const TenancyDetails& details, Date now, bool receipt = false)
      : details_(details), now_(now), receipt_(receipt) {}
  Fact Get(std::string_view name) const override;

 private:
  const TenancyDetails& details_;
  const Date now_;
  const bool receipt_;
};

class OwnerFacts : public FactSource {
 public:
  OwnerFacts(const OwnerDetails& details, Date now) : details_(details), now_(now) {}
  Fact Get(std::string_view name) const override;

 private:
  const OwnerDetails& details_;
  const Date now_;
};

}  // namespace tenora
