// The code "<<BuildingReceiptNumber>>": the running receipt number of the tenant's building.
#pragma once

#include <string_view>

#include "merge/merge_target.h"

namespace tenora {

// Removes the code for a property that belongs to no building. A building's number is not issued
// yet, since the database is only read: that is said in a message that names the letter, the code
// stays, and the result is false. The database is open.
bool InsertBuildingReceiptNumber(const MergeTarget& target, std::string_view property_code);

}  // namespace tenora
