// Date literals.
#pragma once

#include <optional>
#include <string_view>

#include "platform/runtime/date.h"

namespace tenora::query {

// Reads the text between the number signs: a date, a time or both in either order. Dates are
// month first ("03/05/2026" is 5 March) unless only day first makes sense ("21/11/2026"), year
// first
// ("2026-11-21") or with the month's name ("21 Nov 2026"); years of two digits below 30 are 20xx.
// Times are "14:30", "14:30:05", with am or pm after it. Empty if it is not a date.
std::optional<Date> ReadDateLiteral(std::string_view text);

}  // namespace tenora::query
