// The code "<<BuildingReceiptNumber>>": the running receipt number of the tenant's building.
#pragma once

#include <string_view>

#include "merge/merge_target.h"

namespace tenora {

// Replaces the code by the next receipt number of the property's building, which is advanced in the
// database; by nothing for a property that belongs to no building. The database is open. No other
// program can issue a number between the reading and the advancing. A session that only looks at
// the database shows that number and leaves it for the next letter, which is noted. False when the
// database could
// not be changed, which has been reported: the code then stays and no number is used. A branch on a
// server has its numbers from there, where they were handed over to it. Raises 6 (Overflow) for a
// counter beyond 9007199254740991, 70 (Permission denied) where the numbers are not issued here,
// and ServerError.
bool InsertBuildingReceiptNumber(const MergeTarget& target, std::string_view property_code);

// Before the first letter of a template: raises 70 with the reason where it has the code and its
// numbers are not issued here. A database that cannot be opened is reported; for a session that
// only looks nothing is done.
void RequireReceiptNumbers(Session& session, const RichTextBox& letter);

// Declares the counter's field as an account code and, with a value and a building's code, gives
// that building its counter.
void CreateReceiptNumberRecords(Session& session, std::string_view account_code,
                                std::string_view description, std::string_view value,
                                std::string_view parent_code);

}  // namespace tenora
