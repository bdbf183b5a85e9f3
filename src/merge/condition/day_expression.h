// A day as people write it: "today", "1 April 2026", "2026-04-01", "1/4/2026", "1 April", each with
// so many days, weeks, months or years added or taken off.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <vector>

#include "merge/condition/condition_words.h"
#include "platform/runtime/date.h"

namespace tenora {

// A number of days or months.
struct Stretch {
  int days = 0, months = 0;

  Date After(Date date) const { return date.AddMonths(months).AddDays(days); }
  Stretch Back() const { return {-days, -months}; }
};

struct DayExpression {
  // Neither: today. A month and day without a year: the latest such day that is not after today.
  std::optional<Date> fixed = {};
  int month = 0, day = 0;
  std::vector<Stretch> added = {};

  // Raises 5 for a day outside the calendar.
  Date At(Date today) const;
};

// The stretch or day that begins at `at`, which moves past it; nothing, and `at` unmoved, where
// none does. Numbers too large for a calendar raise ConditionError.
std::optional<Stretch> TakeStretch(std::span<const ConditionWord> words, std::size_t& at);
std::optional<DayExpression> TakeDay(std::span<const ConditionWord> words, std::size_t& at);
// What is added to or taken off a day: "+ 14 days - 1 month".
std::vector<Stretch> TakeAdded(std::span<const ConditionWord> words, std::size_t& at);

}  // namespace tenora
