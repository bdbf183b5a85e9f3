#include "merge/amount_in_words.h"

#include <array>
#include <cmath>
#include <cstddef>

#include "platform/runtime/conversion.h"
#include "platform/runtime/format.h"
#include "platform/runtime/text.h"

namespace tenora {
namespace {

constexpr std::array<std::string_view, 20> kSmall{
    "",         "One",     "Two",     "Three",     "Four",     "Five",    "Six",
    "Seven",    "Eight",   "Nine",    "Ten",       "Eleven",   "Twelve",  "Thirteen",
    "Fourteen", "Fifteen", "Sixteen", "Seventeen", "Eighteen", "Nineteen"};
constexpr std::array<std::string_view, 10> kTens{"",      "",      "Twenty",  "Thirty", "Forty",
                                                 "Fifty", "Sixty", "Seventy", "Eighty", "Ninety"};

// Characters that fit on the first line of the stationery.
constexpr std::size_t kLineLength = 50;

// The number a few digits show. A sign alone counts as 0.
std::int16_t Number(std::string_view digits) {
  return static_cast<std::int16_t>(LeadingNumber(digits));
}

// The words of three digits. The blanks are as cheques have always carried them, the doubled ones
// ("One Hundred and  Five") included.
std::string GroupWords(std::string_view digits) {
  const std::int16_t tens = Number(digits.substr(1));
  std::string words;
  if (Number(digits) > 99) {
    words.append(Word(Number(digits.substr(0, 1))))
        .append(tens != 0 ? " Hundred and " : " Hundred ");
  }
  if (tens < 10) return words.append(" ").append(Word(tens));
  if (tens < 20 || tens % 10 == 0) return words.append(Word(tens));
  words.append(kTens[static_cast<std::size_t>(tens / 10)]);
  return words.append(" ").append(kSmall[static_cast<std::size_t>(tens % 10)]);
}

std::string Digits(double amount) { return FormatNumber(amount, "000000.00"); }

std::string Sentence(double amount, const CurrencyWords& currency) {
  const std::string digits = Digits(amount);
  std::string words = amount < 1.0 ? "Zero" : "";
  words += GroupWords(std::string_view(digits).substr(0, 3));
  if (amount >= 1000) words += " Thousand ";
  words += GroupWords(std::string_view(digits).substr(3, 3));
  return std::string(TrimBlanks(words))
      .append(" ")
      .append(currency.dollar)
      .append(" and ")
      .append(digits, digits.size() - 2)
      .append(" ")
      .append(currency.cents);
}

// Breaks after the last blank that fits on the first line; without one, all goes on the second.
ValueWords OnTwoLines(const std::string& sentence) {
  std::string_view rest = sentence;
  std::size_t after_blank = 0;
  for (std::size_t count = 0; count < kLineLength && !rest.empty(); ++count) {
    const bool blank = TakeCodePoint(rest) == ' ';
    if (blank) after_blank = sentence.size() - rest.size();
  }
  if (rest.empty()) return {sentence, ""};
  return {sentence.substr(0, after_blank), sentence.substr(after_blank)};
}

}  // namespace

std::string_view Word(std::int16_t n) {
  if (n < 0 || n > 90) return {};
  const auto number = static_cast<std::size_t>(n);
  if (number < kSmall.size()) return kSmall[number];
  return number % 10 == 0 ? kTens[number / 10] : std::string_view();
}

ValueWords GetValueWords(double amount, const CurrencyWords& currency) {
  return OnTwoLines(Sentence(std::isfinite(amount) ? amount : 0, currency));
}

ValueWords GetValueWords(Settings& settings, double amount) {
  const CurrencyWords usual;
  return GetValueWords(amount, {settings.GetSettingText("Cheque", "Dollar", usual.dollar),
                                settings.GetSettingText("Cheque", "Cents", usual.cents)});
}

bool WordsSay(double amount) { return Digits(amount).size() == Digits(0).size(); }

}  // namespace tenora
