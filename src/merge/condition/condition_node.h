// A condition as a tree.
#pragma once

#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "merge/condition/day_expression.h"
#include "merge/fact.h"

namespace tenora {

struct ConditionOperand {
  FactType type = FactType::kText;
  // A fact's name, with what is added to its date; a day; or a value as it was written.
  struct Named {
    std::string name;
    std::vector<Stretch> added;
  };
  std::variant<Fact, Named, DayExpression> what = {};
};

struct ConditionNode {
  enum class Kind { kAnd, kOr, kNot, kCompare, kEmpty, kTrue, kContains, kStarts };
  enum class Sign { kEqual, kNotEqual, kLess, kAtMost, kMore, kAtLeast };

  Kind kind = Kind::kAnd;
  std::vector<std::shared_ptr<const ConditionNode>> parts = {};  // of kAnd, kOr; the one of kNot
  ConditionOperand left = {};                                    // of the others
  Sign sign = Sign::kEqual;                                      // of kCompare
  ConditionOperand right = {};                                   // of kCompare, kContains, kStarts
};

// What ParseCondition reads; `used` gets the names, each once. Raises ConditionError.
std::shared_ptr<const ConditionNode> ParseCondition(std::string_view text, const FactNames& names,
                                                    std::vector<std::string>* used);

}  // namespace tenora
