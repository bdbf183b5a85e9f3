#include "platform/runtime/format.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

#include "platform/runtime/text.h"

namespace tenora {
namespace {

constexpr std::array<std::string_view, 12> kMonths{"January",   "February", "March",    "April",
                                                   "May",       "June",     "July",     "August",
                                                   "September", "October",  "November", "December"};
constexpr std::array<std::string_view, 7> kDays{"Sunday",   "Monday", "Tuesday", "Wednesday",
                                                "Thursday", "Friday", "Saturday"};

std::string Padded(int number, std::size_t width) {
  std::string digits = std::to_string(number);
  return digits.size() < width ? std::string(width - digits.size(), '0') + digits : digits;
}

std::string NameOrNumber(int number, std::string_view name, std::size_t count) {
  if (count <= 2) return Padded(number, count);
  return std::string(count == 3 ? name.substr(0, 3) : name);
}

// The digits of a non-negative decimal number, split at the point.
struct Digits {
  std::string whole;
  std::string decimals;
};

Digits SplitDigits(const std::string& text) {
  const std::size_t point = text.find('.');
  if (point == std::string::npos) return {text, ""};
  return {text.substr(0, point), text.substr(point + 1)};
}

// At most 15 significant digits without exponent, as the run-time prints numbers.
Digits DecimalDigits(double magnitude) {
  const int exponent = magnitude > 0 ? static_cast<int>(std::floor(std::log10(magnitude))) : 0;
  const int decimals = std::clamp(14 - exponent, 0, 40);
  std::array<char, 400> buffer{};
  // Not by printf, whose decimal point is the locale's.
  const char* const end =
      std::to_chars(buffer.begin(), buffer.end(), magnitude, std::chars_format::fixed, decimals)
          .ptr;
  return SplitDigits(std::string(buffer.data(), static_cast<std::size_t>(end - buffer.data())));
}

void RoundAwayFromZero(Digits& digits, std::size_t decimals) {
  if (digits.decimals.size() <= decimals) {
    digits.decimals.resize(decimals, '0');
    return;
  }
  bool carry = digits.decimals[decimals] >= '5';
  digits.decimals.resize(decimals);
  std::string all = digits.whole + digits.decimals;
  for (std::size_t i = all.size(); carry && i-- > 0;) {
    carry = all[i] == '9';
    all[i] = carry ? '0' : static_cast<char>(all[i] + 1);
  }
  if (carry) all.insert(all.begin(), '1');
  digits.whole = all.substr(0, all.size() - decimals);
  digits.decimals = all.substr(all.size() - decimals);
}

std::string FormatDigits(bool negative, Digits digits, std::string_view pattern,
                         std::string_view decimal_separator) {
  const std::size_t point = std::min(pattern.find('.'), pattern.size());
  const std::size_t decimals = pattern.size() - std::min(pattern.size(), point + 1);
  const auto least_digits = static_cast<std::size_t>(
      std::count(pattern.begin(), pattern.begin() + static_cast<std::ptrdiff_t>(point), '0'));
  RoundAwayFromZero(digits, decimals);
  digits.whole.erase(0, std::min(digits.whole.find_first_not_of('0'), digits.whole.size()));
  if (digits.whole.size() < least_digits) {
    digits.whole.insert(0, least_digits - digits.whole.size(), '0');
  }
  const bool zero = (digits.whole + digits.decimals).find_first_not_of('0') == std::string::npos;
  std::string text = negative && !zero ? "-" : "";
  text += digits.whole;
  if (point < pattern.size()) text.append(decimal_separator).append(digits.decimals);
  return text;
}

}  // namespace

std::string FormatDate(Date date, std::string_view pattern) {
  const CalendarTime parts = date.Calendar();
  const auto month_name = kMonths[static_cast<std::size_t>(parts.month - 1)];
  const auto day_name = kDays[static_cast<std::size_t>(date.Weekday())];
  std::string result;
  bool behind_hour = false;
  for (std::size_t i = 0; i < pattern.size();) {
    const char letter = LowerAscii(pattern[i]);
    std::size_t count = 1;
    while (i + count < pattern.size() && LowerAscii(pattern[i + count]) == letter) ++count;
    switch (letter) {
      case 'd':
        result += NameOrNumber(parts.day, day_name, count);
        break;
      case 'm':
        result += behind_hour ? Padded(parts.minute, count)
                              : NameOrNumber(parts.month, month_name, count);
        break;
      case 'y':
        result += count <= 2 ? Padded(parts.year % 100, 2) : Padded(parts.year, 4);
        break;
      case 'h':
        result += Padded(parts.hour, count);
        break;
      case 'n':
        result += Padded(parts.minute, count);
        break;
      case 's':
        result += Padded(parts.second, count);
        break;
      default:
        result.append(pattern.substr(i, count));
    }
    // A time separator keeps the "behind an hour" state, so that "hh:mm" reads as minutes.
    if (letter == 'h') {
      behind_hour = true;
    } else if (letter != ':' && letter != '.') {
      behind_hour = false;
    }
    i += count;
  }
  return result;
}

std::string FormatNumber(double number, std::string_view pattern,
                         std::string_view decimal_separator) {
  if (!std::isfinite(number)) number = 0;
  return FormatDigits(number < 0, DecimalDigits(std::abs(number)), pattern, decimal_separator);
}

std::string FormatNumber(Currency amount, std::string_view pattern,
                         std::string_view decimal_separator) {
  std::string digits = amount.ToText();
  const bool negative = digits.front() == '-';
  if (negative) digits.erase(0, 1);
  return FormatDigits(negative, SplitDigits(digits), pattern, decimal_separator);
}

}  // namespace tenora
