// Conversions between the run-time types. All raise 13 (Type mismatch) for text that is not a value
// of the type, 6 (Overflow) for one out of range and 94 (Invalid use of Null) for null.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/runtime/value.h"

namespace tenora {

// Numbers are rounded to whole ones with halves to even. Text is read with a point as decimal
// separator, blanks around it ignored; "&h1F" is hexadecimal.
std::int16_t ToInt16(const Value& value);
std::int32_t ToInt32(const Value& value);
double ToDouble(const Value& value);
Currency ToCurrency(const Value& value);

// "True" and "False" in any letter case, or a number: 0 is false.
bool ToBool(const Value& value);

// Text in one of the forms "2026-11-21", "22 Dec 2000", "21/11/2026" (day first), each with an
// optional time "14:30" or "14:30:05"; numbers are day counts.
Date ToDate(const Value& value);

// As TextOf, but null raises 94.
std::string ToText(const Value& value);

// The number at the start of a text, 0 when it has none: "12.5abc" is 12.5. Blanks before and
// within are skipped. Never raises.
double LeadingNumber(std::string_view text);

// The same with the text behind the number, without its blanks; the whole text where it begins with
// none.
struct NumberAndRest {
  double number = 0;
  std::string rest;
};
NumberAndRest SplitLeadingNumber(std::string_view text);

// A number as text: up to 15 significant digits, no grouping, a point: "12.5", "-0.25", "1E+20".
std::string NumberText(double number);
// The same for a single-precision number: up to 7 significant digits.
std::string SingleText(double number);

}  // namespace tenora
