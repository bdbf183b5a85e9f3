#include "ui/dialogs/filter_rows.h"

#include <algorithm>
#include <array>
#include <utility>

#include "platform/runtime/search_text.h"
#include "platform/runtime/text.h"

namespace tenora {
namespace {

template <std::size_t First, std::size_t Rest>
constexpr auto Joined(const std::array<FilterComparison, First>& first,
                      const std::array<FilterComparison, Rest>& rest) {
  std::array<FilterComparison, First + Rest> all{};
  std::ranges::copy(first, all.begin());
  std::ranges::copy(rest, all.begin() + First);
  return all;
}

constexpr FilterComparison kEmpty{"is empty", "@ is empty", 0, ""};
constexpr FilterComparison kNotEmpty{"is not empty", "@ is not empty", 0, ""};

constexpr std::array kOfNumbers{FilterComparison{"is at least", "@ >= #", 1, "50"},
                                FilterComparison{"is more than", "@ > #", 1, "50"},
                                FilterComparison{"is at most", "@ <= #", 1, "50"},
                                FilterComparison{"is less than", "@ < #", 1, "50"},
                                FilterComparison{"is", "@ = #", 1, "50"},
                                FilterComparison{"is between", "@ between # and #", 2, "50"},
                                kEmpty,
                                kNotEmpty};

constexpr std::array kOfDates{
    FilterComparison{"is in the next … days", "@ within # days", 1, "30"},
    FilterComparison{"was in the last … days", "@ in the last # days", 1, "14"},
    FilterComparison{"was not in the last … days", "not @ in the last # days", 1, "14"},
    FilterComparison{"is before", "@ < #", 1, kDayExample},
    FilterComparison{"is on or after", "@ >= #", 1, kDayExample},
    FilterComparison{"is not since", "not @ >= #", 1, kDayExample},
    FilterComparison{"is on", "@ = #", 1, kDayExample},
    FilterComparison{"is between", "@ between # and #", 2, kDayExample},
    kEmpty,
    kNotEmpty};

constexpr std::array kByText{FilterComparison{"contains", "@ contains \"#\"", 1, "Smith"},
                             FilterComparison{"does not contain", "@ not contains \"#\"", 1, ""},
                             FilterComparison{"starts with", "@ starts with \"#\"", 1, "Smith"},
                             FilterComparison{"is", "@ = \"#\"", 1, "Smith"},
                             FilterComparison{"is not", "@ <> \"#\"", 1, "Smith"}};

constexpr std::array kOfTexts = Joined(kByText, std::array{kEmpty, kNotEmpty});

constexpr std::array kOfFields = Joined(
    kByText, std::array{FilterComparison{"is at least", "@ >= #", 1, "50"},
                        FilterComparison{"is at most", "@ <= #", 1, "50"}, kEmpty, kNotEmpty});

constexpr std::array kOfYesNo{FilterComparison{"is yes", "@", 0, ""},
                              FilterComparison{"is no", "not @", 0, ""}};

// In the quotation marks that it does not hold; empty where it holds both.
std::string Quoted(const std::string& value) {
  for (const char quote : {'"', '\''}) {
    if (value.find(quote) == std::string::npos) return quote + value + quote;
  }
  return {};
}

// What the pattern says; empty without a value that it needs.
std::string RowText(const FilterRow& row, const FactNames& names) {
  const FactNames::Name* name = names.Find(row.fact);
  if (name == nullptr) return {};
  const auto comparisons = FilterComparisons(name->type);
  if (row.comparison >= comparisons.size()) return {};
  std::string text;
  int value = 0;
  const std::string_view pattern = comparisons[row.comparison].pattern;
  for (std::size_t i = 0; i < pattern.size(); ++i) {
    const bool quoted = pattern[i] == '"';
    if (pattern[i] == '@') {
      text += name->name;
    } else if (quoted || pattern[i] == '#') {
      const std::string written(TrimBlanks(value++ == 0 ? row.first : row.second));
      const std::string part = quoted && !written.empty() ? Quoted(written) : written;
      if (part.empty()) return {};
      text += part;
      if (quoted) i += 2;
    } else {
      text += pattern[i];
    }
  }
  return text;
}

bool StartsNoCase(std::string_view text, std::string_view start) {
  return text.size() >= start.size() && EqualsNoCase(text.substr(0, start.size()), start);
}

// Reads `text` as the pattern says; the values go to the row.
bool Matches(std::string_view text, std::string_view pattern, std::string_view fact,
             FilterRow* row) {
  int value = 0;
  while (!pattern.empty()) {
    if (pattern.front() == '@') {
      if (!StartsNoCase(text, fact)) return false;
      text.remove_prefix(fact.size());
      pattern.remove_prefix(1);
    } else if (pattern.front() == '#') {
      pattern.remove_prefix(1);
      // What stands behind the value, up to the next one.
      const std::string_view behind = pattern.substr(0, pattern.find('#'));
      std::size_t end = behind.empty() ? text.size() : 0;
      while (!behind.empty() && end < text.size() && !StartsNoCase(text.substr(end), behind)) ++end;
      if (end == 0 || (end == text.size() && !behind.empty())) return false;
      (value++ == 0 ? row->first : row->second) = std::string(text.substr(0, end));
      text.remove_prefix(end);
    } else {
      if (!StartsNoCase(text, pattern.substr(0, 1))) return false;
      text.remove_prefix(1);
      pattern.remove_prefix(1);
    }
  }
  return text.empty();
}

std::optional<FilterRow> ReadRow(std::string_view text, const FactNames& names) {
  std::string_view behind_not = text;
  if (StartsNoCase(text, "not ")) behind_not.remove_prefix(4);
  const FactNames::Name* fact = nullptr;
  for (const FactNames::Name& each : names.Names()) {
    const std::string& name = each.name;
    const bool whole = StartsNoCase(behind_not, name) &&
                       (behind_not.size() == name.size() || behind_not[name.size()] == ' ');
    if (whole && (fact == nullptr || name.size() > fact->name.size())) fact = &each;
  }
  if (fact == nullptr) return std::nullopt;
  const auto comparisons = FilterComparisons(fact->type);
  for (std::size_t i = 0; i < comparisons.size(); ++i) {
    FilterRow row{.fact = fact->name, .comparison = i};
    if (Matches(text, comparisons[i].pattern, fact->name, &row)) return row;
  }
  return std::nullopt;
}

// The parts that "and" or "or" joins outside quotation marks; the "and" of a "between" does not.
// None where both join, and with brackets.
struct Parts {
  bool any = false;
  std::vector<std::string> texts;
};

std::optional<Parts> PartsOf(std::string_view text) {
  Parts parts;
  bool all = false, between = false, quoted = false;
  std::string part;
  for (const std::string& word : Split(text, " ")) {
    if (word.empty()) continue;
    const bool joins =
        !quoted && (EqualsNoCase(word, "or") || (EqualsNoCase(word, "and") && !between));
    if (joins) {
      (EqualsNoCase(word, "or") ? parts.any : all) = true;
      parts.texts.push_back(std::exchange(part, {}));
      continue;
    }
    if (!quoted && EqualsNoCase(word, "and")) between = false;
    if (!quoted && EqualsNoCase(word, "between")) between = true;
    for (const char c : word) {
      if (c == '"') quoted = !quoted;
      if (!quoted && (c == '(' || c == ')')) return std::nullopt;
    }
    part += (part.empty() ? "" : " ") + word;
  }
  parts.texts.push_back(part);
  if (parts.any && all) return std::nullopt;
  return parts;
}

}  // namespace

std::span<const FilterComparison> FilterComparisons(FactType type) {
  switch (type) {
    case FactType::kNumber:
    case FactType::kMoney:
      return kOfNumbers;
    case FactType::kDate:
      return kOfDates;
    case FactType::kYesNo:
      return kOfYesNo;
    case FactType::kField:
      return kOfFields;
    case FactType::kText:
      break;
  }
  return kOfTexts;
}

std::string FilterText(const FilterRows& rows, const FactNames& names) {
  std::string text;
  for (const FilterRow& row : rows.rows) {
    const std::string part = RowText(row, names);
    if (part.empty()) continue;
    if (!text.empty()) text += rows.any ? " or " : " and ";
    text += part;
  }
  return text;
}

std::optional<FilterRows> ReadFilterRows(std::string_view text, const FactNames& names) {
  const std::optional<Parts> parts = PartsOf(text);
  if (!parts) return std::nullopt;
  FilterRows read{.any = parts->any};
  for (const std::string& part : parts->texts) {
    std::optional<FilterRow> row = ReadRow(part, names);
    if (!row) return std::nullopt;
    read.rows.push_back(std::move(*row));
  }
  // Whatever was misread does not come out as it went in.
  std::string joined;
  for (const std::string& part : parts->texts) {
    joined += (joined.empty() ? "" : parts->any ? " or " : " and ") + part;
  }
  if (FoldedForSearch(FilterText(read, names)) != FoldedForSearch(joined)) return std::nullopt;
  return read;
}

}  // namespace tenora
