// Conditions on a recipient's facts: what stands in <<If …>> of a template, behind --where and in
// the filters of the recipients' table.
//
//   Balance Owing > 50 and (Days Behind >= 14 or not Email is empty)
//   Tenancy End Date within 30 days, Last Payment Date in the last 2 weeks
//   Rent Frequency = "Week", Property Address contains "Northcote", Current Rent between 300 and
//   500 Rent Review Date < today + 3 months, Tenancy Start Date >= 1 April 2025
//
// Letter case does not count, in names, words and texts. A comparison with a fact that is missing
// does not hold, except <>.
#pragma once

#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "merge/fact.h"

namespace tenora {

// What is wrong with a condition, as a sentence for its writer.
class ConditionError : public std::runtime_error {
 public:
  explicit ConditionError(const std::string& sentence, std::string possible = {})
      : std::runtime_error(sentence), possible_(std::move(possible)) {}
  // What could stand there instead: the names there are, the comparisons of a type. May be empty.
  const std::string& possible() const { return possible_; }

 private:
  std::string possible_;
};

struct ConditionNode;

class Condition {
 public:
  // Raises ConditionError for what cannot be read, for names that are none of `names` (with those
  // that are meant or there) and for types that do not go together.
  Condition(std::string_view text, const FactNames& names);

  // Raises what the look-ups of `facts` raise.
  bool Holds(const FactSource& facts, Date today) const;
  // The names whose facts it needs, as `names` has them, each once.
  const std::vector<std::string>& Names() const { return used_; }

 private:
  std::vector<std::string> used_;
  std::shared_ptr<const ConditionNode> root_;  // whose making fills used_
};

// A day as people write it: "today", "1 April 2026", "2026-04-01", "1/4/2026" (day first), and
// without a year the latest such day that is not after today; each with "+ 14 days", "- 2 months".
// Raises ConditionError.
Date ReadDay(std::string_view text, Date today);

}  // namespace tenora
