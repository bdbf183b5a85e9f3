// Codes of the form "<<FutureDate:14:Days>>": today's date moved forward, as a long date.
#pragma once

#include <optional>
#include <string>

#include "merge/merge_target.h"
#include "platform/runtime/date.h"

namespace tenora {

// Today moved forward as a whole code asks; none for an unknown unit. Raises 9 (Subscript out of
// range) for a code without a unit, 13 for a count that is not a number, 5 or 6 for a date out of
// range.
std::optional<Date> FutureDate(std::string code, Date today);

// Replaces every future-date code of the letter. Units are "Days", "Weeks", "Months" and "Years",
// case-sensitive; a fractional count is rounded to a whole one, halves to even. A code whose count
// is not a number ends the routine with one message; what was replaced before it stays replaced. A
// code without its ">>" stays. False when the message was shown.
bool InsertFutureDates(const MergeTarget& target);

}  // namespace tenora
