#include "platform/query/functions/format_function.h"

#include <array>
#include <optional>
#include <utility>

#include "platform/query/values/sqlite_value.h"
#include "platform/runtime/conversion.h"
#include "platform/runtime/error.h"
#include "platform/runtime/format.h"
#include "platform/runtime/text.h"

namespace tenora::query {
namespace {

using Named = std::pair<std::string_view, std::string_view>;

constexpr std::array<Named, 6> kDateFormats = {{{"long date", "dddd, d mmmm yyyy"},
                                                {"medium date", "dd-mmm-yy"},
                                                {"short date", "dd/mm/yyyy"},
                                                {"long time", "h:nn:ss AM/PM"},
                                                {"medium time", "hh:nn AM/PM"},
                                                {"short time", "hh:nn"}}};
constexpr std::array<Named, 4> kNumberFormats = {{{"fixed", "0.00"},
                                                  {"standard", "#,##0.00"},
                                                  {"currency", "$#,##0.00;-$#,##0.00"},
                                                  {"percent", "0.00%"}}};
constexpr std::array<Named, 3> kBooleanFormats = {
    {{"yes/no", "Yes/No"}, {"true/false", "True/False"}, {"on/off", "On/Off"}}};

template <std::size_t kCount>
std::optional<std::string_view> FindNamed(const std::array<Named, kCount>& formats,
                                          std::string_view name) {
  for (const Named& format : formats)
    if (EqualsNoCase(format.first, name)) return format.second;
  return std::nullopt;
}

// Hours are 1 to 12 if the pattern contains am/pm.
std::string FormatWithHalfDay(Date date, std::string_view pattern) {
  constexpr std::string_view kHalfDay = "AM/PM";
  const std::size_t at = FindNoCase(pattern, kHalfDay);
  if (at == std::string_view::npos) return FormatDate(date, pattern);
  CalendarTime parts = date.Calendar();
  const std::string_view half = parts.hour < 12 ? "AM" : "PM";
  parts.hour = parts.hour % 12 == 0 ? 12 : parts.hour % 12;
  const Date twelve = Date::FromCalendar(parts);
  return FormatDate(twelve, pattern.substr(0, at)) + std::string(half) +
         FormatDate(twelve, pattern.substr(at + kHalfDay.size()));
}

std::string FormatDateValue(Date date, std::string_view pattern) {
  if (EqualsNoCase(pattern, "general date")) return TextOf(date);
  return FormatWithHalfDay(date, FindNamed(kDateFormats, pattern).value_or(pattern));
}

std::string Grouped(std::string digits) {
  std::size_t end = std::min(digits.find('.'), digits.size());
  const std::size_t first = digits.starts_with('-') ? 1 : 0;
  while (end > first + 3) {
    end -= 3;
    digits.insert(end, ",");
  }
  return digits;
}

// One section of a pattern: text, digits, text.
std::string FormatSection(double number, std::string_view pattern) {
  constexpr std::string_view kDigits = "#0,.";
  const std::size_t start = pattern.find_first_of(kDigits);
  if (start == std::string_view::npos) return std::string(pattern);
  const std::size_t end = std::min(pattern.find_first_not_of(kDigits, start), pattern.size());
  const std::string_view digits = pattern.substr(start, end - start);
  const bool percent = pattern.find('%') != std::string_view::npos;
  std::string text =
      FormatNumber(percent ? number * 100 : number, ReplaceAll(std::string(digits), ",", ""));
  if (digits.find(',') != std::string_view::npos) text = Grouped(std::move(text));
  return std::string(pattern.substr(0, start)) + text + std::string(pattern.substr(end));
}

std::string FormatNumberValue(const Value& value, std::string_view pattern) {
  if (EqualsNoCase(pattern, "general number")) return TextOf(value);
  const double number = ToDouble(value);
  if (const auto words = FindNamed(kBooleanFormats, pattern)) {
    const std::size_t slash = words->find('/');
    return std::string(number != 0 ? words->substr(0, slash) : words->substr(slash + 1));
  }
  const std::string_view format = FindNamed(kNumberFormats, pattern).value_or(pattern);
  const std::size_t semicolon = format.find(';');
  if (semicolon == std::string_view::npos || number >= 0)
    return FormatSection(number, format.substr(0, semicolon));
  std::string_view negative = format.substr(semicolon + 1);
  return FormatSection(-number, negative.substr(0, negative.find(';')));
}

// Whether a pattern formats dates, for values that are texts or numbers.
bool IsDatePattern(std::string_view pattern) {
  if (FindNamed(kDateFormats, pattern) || EqualsNoCase(pattern, "general date")) return true;
  if (FindNamed(kNumberFormats, pattern) || FindNamed(kBooleanFormats, pattern)) return false;
  return pattern.find_first_of("dmyhnsDMYHNS") != std::string_view::npos &&
         pattern.find_first_of("#0") == std::string_view::npos;
}

std::string FormatText(const std::string& text, std::string_view pattern) {
  if (pattern == ">") return ToUpper(text);
  if (pattern == "<") return ToLower(text);
  try {
    if (IsDatePattern(pattern)) return FormatDateValue(ToDate(text), pattern);
    return FormatNumberValue(ToDouble(text), pattern);
  } catch (const RuntimeError&) {
    return text;  // neither number nor date: unchanged
  }
}

}  // namespace

std::string FormatValue(const Value& value, std::string_view pattern) {
  if (IsNull(value)) return {};
  if (pattern.empty()) return TextOf(value);
  switch (TypeOf(value)) {
    case Type::kDate:
      return FormatDateValue(std::get<Date>(value), pattern);
    case Type::kText:
      return FormatText(std::get<std::string>(value), pattern);
    case Type::kBinary:
      throw StandardError(error_number::kTypeMismatch);
    default:
      if (IsDatePattern(pattern)) return FormatDateValue(ToDate(value), pattern);
      return FormatNumberValue(value, pattern);
  }
}

}  // namespace tenora::query
