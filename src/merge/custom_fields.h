// Codes of the form "<<TCustom:field>>": user-defined fields of a tenant, property or owner.
#pragma once

#include <cstdint>
#include <string_view>

#include "merge/merge_target.h"
#include "rental/custom_field_parents.h"

namespace tenora {

// Fills the custom codes of one prefix ("TCustom:") from the record's fields and removes those for
// which the record has none. A prefix that is not a code stays. The database is open. Raises the
// failure when the fields cannot be read; the codes then stay.
void InsertCustomFields(const MergeTarget& target, std::int16_t parent_type,
                        std::string_view parent_code, std::string_view prefix);

}  // namespace tenora
