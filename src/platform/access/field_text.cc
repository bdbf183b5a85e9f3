#include "platform/access/field_text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <string_view>

namespace tenora::access {
namespace {

// 30 December 1899, counted from 1 January of the year 1.
constexpr std::int64_t kDayZero = 693593;
constexpr double kTicksPerDay = 864000000000.0;

bool ParseDigits(std::string_view text, std::int64_t& number) {
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  return error == std::errc() && end == text.data() + text.size() && number >= 0;
}

}  // namespace

std::string GuidText(const std::byte* stored) {
  // The order in which the stored bytes are written out; -1 is a dash.
  constexpr std::array kOrder{3, 2, 1, 0, -1, 5, 4, -1, 7, 6, -1, 8, 9, -1, 10, 11, 12, 13, 14, 15};
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string text = "{";
  for (const int place : kOrder) {
    if (place < 0) {
      text += '-';
      continue;
    }
    const std::uint8_t byte = Load8(stored + place);
    text += kDigits[byte >> 4];
    text += kDigits[byte & 15];
  }
  return text + "}";
}

std::string DecimalText(const std::byte* stored, std::uint8_t scale) {
  std::array<std::uint32_t, 4> words;
  for (std::size_t i = 0; i < words.size(); ++i) words[i] = Load32(stored + 1 + 4 * i);
  std::string digits;  // lowest first
  while (std::any_of(words.begin(), words.end(), [](std::uint32_t word) { return word != 0; })) {
    std::uint64_t rest = 0;
    for (std::uint32_t& word : words) {
      const std::uint64_t dividend = rest << 32 | word;
      word = static_cast<std::uint32_t>(dividend / 10);
      rest = dividend % 10;
    }
    digits += static_cast<char>('0' + rest);
  }
  const bool negative = !digits.empty() && (Load8(stored) & 0x80) != 0;
  if (digits.size() <= scale) digits.append(scale + std::size_t{1} - digits.size(), '0');
  if (scale > 0) digits.insert(scale, 1, '.');
  if (negative) digits += '-';
  std::reverse(digits.begin(), digits.end());
  return digits;
}

bool ExtendedDateSerial(const std::byte* stored, double& serial) {
  const std::string_view text(reinterpret_cast<const char*>(stored), kExtendedDateSize);
  std::int64_t days = 0, ticks = 0;
  if (text[19] != ':' || text[39] != ':' || !ParseDigits(text.substr(0, 19), days) ||
      !ParseDigits(text.substr(20, 19), ticks)) {
    return false;
  }
  // Before day zero the whole part is negative while the fraction still counts forward.
  const double whole = static_cast<double>(days - kDayZero);
  const double fraction = static_cast<double>(ticks) / kTicksPerDay;
  serial = whole < 0 ? whole - fraction : whole + fraction;
  return true;
}

}  // namespace tenora::access
