// What must be read for the facts of some names.
#pragma once

#include <span>
#include <string>

#include "rental/all_owners.h"
#include "rental/all_tenancies.h"

namespace tenora {

// The names are those of the kind's FactNames, or fields.
TenancyNeeds TenancyNeedsOf(std::span<const std::string> names);
OwnerNeeds OwnerNeedsOf(std::span<const std::string> names);

}  // namespace tenora
