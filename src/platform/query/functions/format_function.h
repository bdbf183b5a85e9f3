// The function format() of the dialect.
#pragma once

#include <string>
#include <string_view>

#include "platform/runtime/value.h"

namespace tenora::query {

// A value in one of the named formats ("fixed", "standard", "currency", "percent", "general
// number", "yes/no", "true/false", "on/off", "long date", "medium date", "short date", "long time",
// "medium time", "short time", "general date") or a custom one: date letters, "#,##0.00" and the
// like with text around the digits and a section for negative numbers after a semicolon, ">" and
// "<" for upper and lower case. The named formats are the English ones, whatever the locale. Null
// gives "".
std::string FormatValue(const Value& value, std::string_view pattern);

}  // namespace tenora::query
