// A cheque's amount written out, on up to two lines of its stationery.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "data/settings.h"

namespace tenora {

// "One" to "Nineteen", "Twenty", "Thirty" to "Ninety"; empty for every other number.
std::string_view Word(std::int16_t n);

struct ValueWords {
  std::string line1;
  std::string line2;  // empty when the sentence fits on the first
};

struct CurrencyWords {
  std::string dollar = "Dollars";  // one word for one unit and for many
  std::string cents = "Cents";
};

// "Twelve Dollars and 50 Cents". The wording holds for 0.00 to 999,999.99; any other number gives
// some text. Infinity and NaN count as 0.
ValueWords GetValueWords(double amount, const CurrencyWords& currency);
// With the settings "Dollar" and "Cents" of section "Cheque".
ValueWords GetValueWords(Settings& settings, double amount);
// Whether the words say the amount: they have six places before the point and no sign.
bool WordsSay(double amount);

}  // namespace tenora
