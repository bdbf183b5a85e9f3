// The function format() of the dialect.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "platform/query/functions/week_rule.h"
#include "platform/runtime/date.h"
#include "platform/runtime/value.h"

namespace tenora::query {

using DateText = std::function<std::string(Date)>;

// A date as it is joined to texts: its day in the short form, and the time unless it is midnight;
// of a time without a day, the time only.
std::string GeneralDateText(Date date, const DateText& short_date);

// A value in one of the named formats ("general number", "fixed", "standard", "currency",
// "percent", "scientific", "yes/no", "true/false", "on/off", "general date", "long date", "medium
// date", "short date", "long time", "medium time", "short time") or a custom one:
// - of dates: d to dddddd, m to mmmm, y (the day of the year), yy, yyyy, q, w, ww, h, n, s, c,
//   ttttt, AM/PM; ddddd is the short date;
// - of numbers: "#,##0.00" with "%", "E+00" and text around and between the digits, in up to four
//   sections parted by semicolons: above zero, below, zero, null. An empty section is the first;
// - of texts: "@" for a character or a blank, "&" for one or nothing, filled from the right or,
// with
//   "!", from the left; ">" and "<" for upper and lower case. A second section is for empty texts
//   and null.
// Texts stand in double quotes, a character behind a backslash. But for the short date the named
// formats are the English ones, whatever the locale. Null gives the fourth section or "".
std::string FormatValue(const Value& value, std::string_view pattern, const DateText& short_date,
                        const WeekRule& weeks = {});

}  // namespace tenora::query
