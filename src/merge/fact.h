// A value that conditions, filters and formats work with: what a merge code prints, before it is
// text.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "platform/runtime/currency.h"
#include "platform/runtime/date.h"

namespace tenora {

enum class FactType {
  kText,
  kNumber,
  kMoney,
  kDate,
  kYesNo,
  kField,  // a field of the office's own: text that is compared as whatever stands on the other
           // side
};

// Of the type that its name says; std::monostate where the data has none. A field's is text.
using Fact = std::variant<std::monostate, std::string, double, Currency, Date, bool>;

// A date that the data means as "none" is no fact: the empty date, and the package's placeholder.
Fact DateFact(Date date);
// An empty text is none.
Fact TextFact(std::string text);

// A fact for programs: numbers and amounts with a point, dates as 2026-11-21 (with a time of day as
// 2026-11-21T09:30:00), "yes" or "no"; empty for none.
std::string PlainText(const Fact& fact);

// The names that a condition can use, each with its type.
class FactNames {
 public:
  struct Name {
    std::string name;
    FactType type;
  };

  void Add(std::string_view name, FactType type);
  // Names that begin with this are fields: "TCustom:". Only the names added whole may hold blanks.
  void AddFieldPrefix(std::string_view prefix) { prefixes_.emplace_back(prefix); }
  void Add(const FactNames& others);
  // Without their prefixes: for somebody who adds every field that there is.
  void AddNames(const FactNames& others);

  // The name, letter case and the number of blanks between words aside; null for none.
  const Name* Find(std::string_view name) const;
  bool IsField(std::string_view name) const;
  // In the order in which they were added; fields too, where they were added whole.
  const std::vector<Name>& Names() const { return names_; }
  // In the same order, the names that are no fields.
  std::vector<std::string_view> All() const;
  // The most words that a name has.
  std::size_t LongestWords() const { return longest_words_; }

 private:
  std::vector<Name> names_;
  std::map<std::string, std::size_t, std::less<>> by_folded_;
  std::vector<std::string> prefixes_;
  std::size_t longest_words_ = 1;
};

// Where a recipient's or a row's facts come from.
class FactSource {
 public:
  virtual ~FactSource() = default;
  // `name` as FactNames has it, or a field's whole name. Raises what the look-up raises.
  virtual Fact Get(std::string_view name) const = 0;
};

}  // namespace tenora
