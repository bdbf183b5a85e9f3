// A filter as rows of fact, comparison and value, and the condition's text that it stands for.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "merge/fact.h"

namespace tenora {

// The example of a value that is a day.
inline constexpr std::string_view kDayExample = "1 April 2026";

struct FilterComparison {
  std::string_view caption;  // "is at least"
  std::string_view pattern;  // "@ >= #": the fact and the value, or two values
  int values;                // 0 to 2
  std::string_view example;  // of a value
};

// What a fact of the type can be compared with; never empty.
std::span<const FilterComparison> FilterComparisons(FactType type);

struct FilterRow {
  std::string fact;            // its name
  std::size_t comparison = 0;  // among those of its type
  std::string first = {}, second = {};

  bool operator==(const FilterRow&) const = default;
};

struct FilterRows {
  bool any = false;  // joined by "or", not "and"
  std::vector<FilterRow> rows = {};

  bool operator==(const FilterRows&) const = default;
};

// Rows that lack a value, or whose fact is none of `names`, are left out.
std::string FilterText(const FilterRows& rows, const FactNames& names);
// None for a condition that rows cannot show, and for what is no condition.
std::optional<FilterRows> ReadFilterRows(std::string_view text, const FactNames& names);

}  // namespace tenora
