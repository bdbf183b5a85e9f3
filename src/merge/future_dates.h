// Codes of the form "<<FutureDate:14:Days>>": today's date moved forward, as a long date.
#pragma once

#include "merge/merge_target.h"

namespace tenora {

// Replaces every future-date code of the letter. Units are "Days", "Weeks", "Months" and "Years",
// letter case counting; a fractional count is rounded to a whole one, halves to even. A code whose
// count is no number ends the routine with one message; what was replaced before it stays replaced.
// A code without its ">>" stays. False when the message was shown.
bool InsertFutureDates(const MergeTarget& target);

}  // namespace tenora
