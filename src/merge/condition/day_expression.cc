#include "merge/condition/day_expression.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <string>
#include <string_view>

#include "merge/condition.h"
#include "platform/runtime/conversion.h"
#include "platform/runtime/error.h"
#include "platform/runtime/text.h"

namespace tenora {
namespace {

using Kind = ConditionWord::Kind;

constexpr std::array<std::string_view, 12> kMonths{"january",   "february", "march",    "april",
                                                   "may",       "june",     "july",     "august",
                                                   "september", "october",  "november", "december"};
constexpr std::size_t kShortMonth = 3;
constexpr int kDaysInWeek = 7, kMonthsInYear = 12;
// Longer times have no use, and lead out of the calendar.
constexpr int kMostDays = 73'000, kMostMonths = 2'400;
constexpr std::size_t kMostAdded = 4;

std::optional<int> WholeNumber(const ConditionWord& word) {
  int number = 0;
  const char* const end = word.text.data() + word.text.size();
  const auto [stop, error] = std::from_chars(word.text.data(), end, number);
  if (word.kind != Kind::kWord || error != std::errc() || stop != end) return std::nullopt;
  return number;
}

int MonthNumber(const ConditionWord& word) {
  std::string name = ToLower(word.text);
  if (name.ends_with('.')) name.pop_back();
  if (word.kind != Kind::kWord || name.size() < kShortMonth) return 0;
  for (std::size_t month = 0; month < kMonths.size(); ++month) {
    if (kMonths[month].starts_with(name)) return static_cast<int>(month) + 1;
  }
  return 0;
}

// "2026-04-01", "1/4/2026".
std::optional<Date> DateInOneWord(const ConditionWord& word) {
  if (word.kind != Kind::kWord || !IsDigit(word.text.front()) ||
      (std::ranges::count(word.text, '-') != 2 && std::ranges::count(word.text, '/') != 2)) {
    return std::nullopt;
  }
  try {
    return ToDate(word.text);
  } catch (const RuntimeError&) {
    throw ConditionError("\"" + word.text +
                         "\" is no date; write it as 2026-04-01 or 1 April 2026");
  }
}

}  // namespace

Date DayExpression::At(Date today) const {
  Date date = fixed.value_or(today);
  if (!fixed && month != 0) {
    // 29 February counts in the years that have it.
    for (int year = today.Year();; --year) {
      if (!IsCalendarDay(year, month, day)) continue;
      date = Date::FromCalendar(year, month, day);
      if (date <= today) break;
    }
  }
  for (const Stretch& stretch : added) date = stretch.After(date);
  return date;
}

std::optional<Stretch> TakeStretch(std::span<const ConditionWord> words, std::size_t& at) {
  const std::optional<int> number = WholeNumber(words[at]);
  if (!number || words[at + 1].kind != Kind::kWord) return std::nullopt;
  std::string unit = ToLower(words[at + 1].text);
  if (unit.ends_with('s')) unit.pop_back();
  const bool in_months = unit == "month" || unit == "year";
  if (!in_months && unit != "day" && unit != "week") return std::nullopt;
  const int size = unit == "week" ? kDaysInWeek : unit == "year" ? kMonthsInYear : 1;
  if (*number < 0 || *number > (in_months ? kMostMonths : kMostDays) / size) {
    throw ConditionError(words[at].text + " " + words[at + 1].text + " is too long a time");
  }
  at += 2;
  return in_months ? Stretch{.months = *number * size} : Stretch{.days = *number * size};
}

std::optional<DayExpression> TakeDay(std::span<const ConditionWord> words, std::size_t& at) {
  DayExpression day;
  if (words[at].kind == Kind::kWord && ToLower(words[at].text) == "today") {
    ++at;
  } else if (const auto date = DateInOneWord(words[at])) {
    day.fixed = date;
    ++at;
  } else if (const auto number = WholeNumber(words[at])) {
    const int month = MonthNumber(words[at + 1]);
    if (month == 0) return std::nullopt;
    const std::optional<int> year = WholeNumber(words[at + 2]);
    // Without a year, of a leap year.
    if (!IsCalendarDay(year.value_or(2000), month, *number)) {
      throw ConditionError("There is no day \"" + words[at].text + " " + words[at + 1].text +
                           (year ? " " + words[at + 2].text : "") + "\"");
    }
    if (year) {
      day.fixed = Date::FromCalendar(*year, month, *number);
    } else {
      day.month = month;
      day.day = *number;
    }
    at += year ? 3 : 2;
  } else {
    return std::nullopt;
  }
  day.added = TakeAdded(words, at);
  return day;
}

std::vector<Stretch> TakeAdded(std::span<const ConditionWord> words, std::size_t& at) {
  std::vector<Stretch> added;
  while (words[at].kind == Kind::kSign && (words[at].text == "+" || words[at].text == "-")) {
    const bool back = words[at].text == "-";
    std::size_t next = at + 1;
    const std::optional<Stretch> stretch = TakeStretch(words, next);
    if (!stretch) {
      throw ConditionError("Behind \"" + words[at].text +
                           "\" stands a number of days, weeks, months or years, as in "
                           "\"today + 14 days\"");
    }
    if (added.size() == kMostAdded) {
      throw ConditionError("Too much is added to a day or taken off it");
    }
    added.push_back(back ? stretch->Back() : *stretch);
    at = next;
  }
  return added;
}

Date ReadDay(std::string_view text, Date today) {
  const std::vector<ConditionWord> words = WordsOf(text);
  std::size_t at = 0;
  const std::optional<DayExpression> day = TakeDay(words, at);
  if (!day || words[at].kind != Kind::kEnd) {
    throw ConditionError("\"" + std::string(text) +
                         "\" is no day; write it as 1 April 2026, 2026-04-01 or today - 3 months");
  }
  return day->At(today);
}

}  // namespace tenora
