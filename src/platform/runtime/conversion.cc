#include "platform/runtime/conversion.h"

#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <optional>
#include <vector>

#include "platform/runtime/error.h"
#include "platform/runtime/text.h"

namespace tenora {
namespace {

RuntimeError Mismatch() { return StandardError(error_number::kTypeMismatch); }

std::optional<double> ParseNumber(std::string_view text) {
  std::string_view digits = TrimBlanks(text);
  if (StartsWithNoCase(digits, "&h")) {
    std::uint32_t hex = 0;
    digits.remove_prefix(2);
    const auto [end, error] = std::from_chars(digits.begin(), digits.end(), hex, 16);
    if (error != std::errc() || end != digits.end()) return std::nullopt;
    return hex;
  }
  if (digits.starts_with('+')) digits.remove_prefix(1);
  double number = 0;
  const auto [end, error] = std::from_chars(digits.begin(), digits.end(), number);
  if (error != std::errc() || end != digits.end() || !std::isfinite(number)) return std::nullopt;
  return number;
}

template <typename Integer>
Integer ToInteger(const Value& value) {
  const double rounded = std::nearbyint(ToDouble(value));
  if (rounded < static_cast<double>(std::numeric_limits<Integer>::min()) ||
      rounded > static_cast<double>(std::numeric_limits<Integer>::max())) {
    throw StandardError(error_number::kOverflow);
  }
  return static_cast<Integer>(rounded);
}

struct ToDoubleVisitor {
  double operator()(const Null&) const { throw StandardError(error_number::kInvalidUseOfNull); }
  double operator()(bool value) const { return value ? -1 : 0; }
  double operator()(std::int64_t value) const { return static_cast<double>(value); }
  double operator()(double value) const { return value; }
  double operator()(Currency value) const { return value.ToDouble(); }
  double operator()(Date value) const { return value.serial(); }
  double operator()(const std::string& value) const {
    const std::optional<double> number = ParseNumber(value);
    if (!number) throw Mismatch();
    return *number;
  }
  double operator()(const std::vector<std::byte>&) const { throw Mismatch(); }
};

constexpr std::array<std::string_view, 12> kMonthNames{"jan", "feb", "mar", "apr", "may", "jun",
                                                       "jul", "aug", "sep", "oct", "nov", "dec"};

std::optional<int> ParseSmall(std::string_view text) {
  int number = 0;
  const auto [end, error] = std::from_chars(text.begin(), text.end(), number);
  if (text.empty() || error != std::errc() || end != text.end()) return std::nullopt;
  return number;
}

std::optional<int> ParseMonth(std::string_view text) {
  if (std::optional<int> number = ParseSmall(text)) return number;
  if (text.size() < 3) return std::nullopt;
  for (std::size_t i = 0; i < kMonthNames.size(); ++i) {
    if (StartsWithNoCase(text, kMonthNames[i])) return static_cast<int>(i) + 1;
  }
  return std::nullopt;
}

std::optional<CalendarTime> ParseDate(std::string_view text) {
  std::string spaced(TrimBlanks(text));
  // "2026-11-21T09:30:00", but not the month in "21 OCT 2026".
  const std::size_t mark = spaced.find('T');
  if (mark != std::string::npos && mark > 0 && IsDigit(spaced[mark - 1])) spaced[mark] = ' ';
  std::vector<std::string> words = Split(spaced, " ");
  std::string time;
  if (words.back().find(':') != std::string::npos) {
    time = words.back();
    words.pop_back();
  }
  std::string day_text;
  for (const std::string& word : words) day_text += (day_text.empty() ? "" : "/") + word;
  const std::vector<std::string> parts = Split(ReplaceAll(std::move(day_text), "-", "/"), "/");
  if (parts.size() != 3) return std::nullopt;
  const bool year_first = parts[0].size() == 4;
  const std::optional<int> year = ParseSmall(year_first ? parts[0] : parts[2]);
  const std::optional<int> month = ParseMonth(parts[1]);
  const std::optional<int> day = ParseSmall(year_first ? parts[2] : parts[0]);
  if (!year || !month || !day || !IsCalendarDay(*year, *month, *day)) return std::nullopt;
  CalendarTime result{*year, *month, *day, 0, 0, 0};
  if (!time.empty()) {
    const std::vector<std::string> clock = Split(time, ":");
    const std::optional<int> hour = ParseSmall(clock[0]);
    const std::optional<int> minute = ParseSmall(clock[1]);
    const std::optional<int> second = clock.size() > 2 ? ParseSmall(clock[2]) : 0;
    if (!hour || !minute || !second || clock.size() > 3) return std::nullopt;
    result.hour = *hour;
    result.minute = *minute;
    result.second = *second;
  }
  return result;
}

// By to_chars, as printf's numbers depend on the process's locale.
std::string SignificantDigits(double number, int count) {
  if (number == 0) return "0";
  std::array<char, 40> buffer{};
  const char* const end =
      std::to_chars(buffer.begin(), buffer.end(), number, std::chars_format::general, count).ptr;
  return ToUpper(std::string_view(buffer.data(), static_cast<std::size_t>(end - buffer.data())));
}

}  // namespace

std::int16_t ToInt16(const Value& value) { return ToInteger<std::int16_t>(value); }
std::int32_t ToInt32(const Value& value) { return ToInteger<std::int32_t>(value); }
double ToDouble(const Value& value) { return std::visit(ToDoubleVisitor{}, value); }

Currency ToCurrency(const Value& value) {
  if (const Currency* amount = std::get_if<Currency>(&value)) return *amount;
  return Currency::FromDouble(ToDouble(value));
}

bool ToBool(const Value& value) {
  if (const std::string* text = std::get_if<std::string>(&value)) {
    const std::string_view word = TrimBlanks(*text);
    if (EqualsNoCase(word, "true")) return true;
    if (EqualsNoCase(word, "false")) return false;
  }
  return ToDouble(value) != 0;
}

Date ToDate(const Value& value) {
  if (const Date* date = std::get_if<Date>(&value)) return *date;
  if (const std::string* text = std::get_if<std::string>(&value)) {
    if (const std::optional<CalendarTime> parts = ParseDate(*text)) {
      return Date::FromCalendar(*parts);
    }
    throw Mismatch();
  }
  return Date::FromSerial(ToDouble(value));
}

std::string ToText(const Value& value) {
  if (IsNull(value)) throw StandardError(error_number::kInvalidUseOfNull);
  return TextOf(value);
}

double LeadingNumber(std::string_view text) { return SplitLeadingNumber(text).number; }

NumberAndRest SplitLeadingNumber(std::string_view text) {
  std::string digits;
  for (const char c : text) {
    if (c == ' ' || c == '\t' || c == '\n') continue;
    if (c == '+' && digits.empty()) continue;
    digits += c;
  }
  // from_chars would also read "inf" and "nan", which are not numbers here.
  const std::size_t first = digits.find_first_not_of('-');
  if (first == std::string::npos || !(IsDigit(digits[first]) || digits[first] == '.')) {
    return {0, digits};
  }
  double number = 0;
  const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), number);
  const bool in_range = result.ec == std::errc() && std::isfinite(number);
  return {in_range ? number : 0,
          digits.substr(static_cast<std::size_t>(result.ptr - digits.data()))};
}

std::string NumberText(double number) { return SignificantDigits(number, 15); }
std::string SingleText(double number) { return SignificantDigits(number, 7); }

}  // namespace tenora
