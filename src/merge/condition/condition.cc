#include "merge/condition.h"

#include <algorithm>
#include <compare>
#include <optional>
#include <utility>

#include "merge/condition/condition_node.h"
#include "platform/runtime/conversion.h"
#include "platform/runtime/error.h"
#include "platform/runtime/search_text.h"

namespace tenora {
namespace {

using Node = ConditionNode;
using Operand = ConditionOperand;
using Order = std::partial_ordering;

// A field's text as the type that it is compared with; none where it is no value of it.
Fact FieldAs(FactType type, const std::string& text) {
  try {
    switch (type) {
      case FactType::kNumber:
      case FactType::kMoney:
        return ToCurrency(text);
      case FactType::kDate:
        return ToDate(text);
      case FactType::kYesNo: {
        const std::string folded = FoldedForSearch(text);
        if (folded == "yes" || folded == "no") return folded == "yes";
        return ToBool(text);
      }
      default:
        return text;
    }
  } catch (const RuntimeError&) {
    return {};
  }
}

std::optional<Currency> Amount(const Fact& fact) {
  if (const auto* money = std::get_if<Currency>(&fact)) return *money;
  if (const auto* number = std::get_if<double>(&fact)) return Currency::FromDouble(*number);
  return std::nullopt;
}

// Days compare without their time: an inspection at noon is on its day.
Order Compare(const Fact& left, const Fact& right) {
  if (const auto amount = Amount(left), other = Amount(right); amount && other) {
    return *amount <=> *other;
  }
  if (left.index() != right.index()) return Order::unordered;
  if (const auto* date = std::get_if<Date>(&left)) {
    return date->DayNumber() <=> std::get<Date>(right).DayNumber();
  }
  if (const auto* yes = std::get_if<bool>(&left)) return *yes <=> std::get<bool>(right);
  if (const auto* text = std::get_if<std::string>(&left)) {
    return FoldedForSearch(*text) <=> FoldedForSearch(std::get<std::string>(right));
  }
  return Order::unordered;
}

class Evaluation {
 public:
  Evaluation(const FactSource& facts, Date today) : facts_(facts), today_(today) {}

  bool Holds(const Node& node) const {
    const auto holds = [&](const std::shared_ptr<const Node>& part) { return Holds(*part); };
    switch (node.kind) {
      case Node::Kind::kAnd:
        return std::ranges::all_of(node.parts, holds);
      case Node::Kind::kOr:
        return std::ranges::any_of(node.parts, holds);
      case Node::Kind::kNot:
        return !Holds(*node.parts.front());
      case Node::Kind::kEmpty:
        return IsEmpty(Of(node.left, node.left.type));
      case Node::Kind::kTrue:
        return Of(node.left, FactType::kYesNo) == Fact(true);
      case Node::Kind::kCompare:
        return Compared(node);
      case Node::Kind::kContains:
      case Node::Kind::kStarts:
        return TextTest(node);
    }
    return false;
  }

 private:
  static bool IsEmpty(const Fact& fact) {
    const auto* text = std::get_if<std::string>(&fact);
    return std::holds_alternative<std::monostate>(fact) || (text != nullptr && text->empty());
  }

  // `with`: the type it is compared with.
  Fact Of(const Operand& operand, FactType with) const {
    if (const auto* day = std::get_if<DayExpression>(&operand.what)) return day->At(today_);
    if (const auto* value = std::get_if<Fact>(&operand.what)) return *value;
    const auto& named = std::get<Operand::Named>(operand.what);
    Fact fact = facts_.Get(named.name);
    if (auto* date = std::get_if<Date>(&fact)) {
      for (const Stretch& stretch : named.added) *date = stretch.After(*date);
    }
    const auto* text = std::get_if<std::string>(&fact);
    if (operand.type == FactType::kField && text != nullptr) return FieldAs(with, *text);
    return fact;
  }

  bool Compared(const Node& node) const {
    Fact left = Of(node.left, node.right.type), right = Of(node.right, node.left.type);
    if (IsEmpty(left) || IsEmpty(right)) {
      const bool both = IsEmpty(left) && IsEmpty(right);
      return node.sign == Node::Sign::kNotEqual ? !both : both && node.sign == Node::Sign::kEqual;
    }
    const Order order = Compare(left, right);
    switch (node.sign) {
      case Node::Sign::kEqual:
        return order == 0;
      case Node::Sign::kNotEqual:
        return order != 0;
      case Node::Sign::kLess:
        return order < 0;
      case Node::Sign::kAtMost:
        return order <= 0;
      case Node::Sign::kMore:
        return order > 0;
      case Node::Sign::kAtLeast:
        return order >= 0;
    }
    return false;
  }

  bool TextTest(const Node& node) const {
    const Fact left = Of(node.left, FactType::kText), right = Of(node.right, FactType::kText);
    const auto* text = std::get_if<std::string>(&left);
    const auto* part = std::get_if<std::string>(&right);
    if (text == nullptr || part == nullptr) return false;
    const std::string in = FoldedForSearch(*text), what = FoldedForSearch(*part);
    return node.kind == Node::Kind::kStarts ? in.starts_with(what)
                                            : in.find(what) != std::string::npos;
  }

  const FactSource& facts_;
  const Date today_;
};

}  // namespace

Condition::Condition(std::string_view text, const FactNames& names)
    : root_(ParseCondition(text, names, &used_)) {}

bool Condition::Holds(const FactSource& facts, Date today) const {
  return Evaluation(facts, today).Holds(*root_);
}

}  // namespace tenora
