// Custom format patterns for dates and amounts. The named formats ("long date", "currency") follow
// the locale and live in platform/locale.
#pragma once

#include <string>
#include <string_view>

#include "platform/runtime/currency.h"
#include "platform/runtime/date.h"

namespace tenora {

// Letters in any case: d dd ddd dddd m mm mmm mmmm yy yyyy h hh n nn s ss; "m" directly behind an
// hour means minutes; everything else stands for itself. Month and day names are English.
std::string FormatDate(Date date, std::string_view pattern);

// Patterns of "#" and "0" with an optional point and zeros: "###0.00", "000000.00". Halves of the
// last decimal are rounded away from zero, on the number's decimal text (15 digits).
// `decimal_separator` stands where the pattern has its point.
std::string FormatNumber(double number, std::string_view pattern,
                         std::string_view decimal_separator = ".");
std::string FormatNumber(Currency amount, std::string_view pattern,
                         std::string_view decimal_separator = ".");

}  // namespace tenora
