// The texts that statements and screens are built from.
#pragma once

#include <string>
#include <string_view>

#include "platform/locale/locale.h"
#include "platform/runtime/date.h"

namespace tenora {

// The repair step every statement passes: boolean words become numbers, stray apostrophes inside a
// literal are doubled.
std::string FixSQL(std::string_view sql);

// A value as a statement's literal: 'O''Brien'. Apostrophes are doubled here, since the repair step
// cannot tell them from a literal's own where a statement holds more than one literal.
std::string SQLText(std::string_view value);

// Writes a date as the engine's literal, month first in every locale: #03/05/2026#.
std::string SQLDate(Date date);
// With the time in front: #14:30:00 03/05/2026#.
std::string SQLDateTime(Date date);

// Locale information by its system number, or the default when the system gives none. The number's
// meaning is in platform/locale.
std::string LocaleText(const Locale& locale, int type, std::string_view default_text);
// The pattern of amounts: "###0." and one zero per fractional digit of the currency.
std::string NumberFormat(const Locale& locale);
// An amount in that pattern, with the locale's decimal separator.
std::string MoneyText(const Locale& locale, double amount);

}  // namespace tenora
