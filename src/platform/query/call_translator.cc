// Arithmetic, functions and aggregates; the rest of expressions is in expression_translator.cc.

#include <algorithm>
#include <array>

#include "platform/query/expression_translator.h"
#include "platform/query/functions.h"

namespace tenora::query {
namespace {

constexpr std::array<std::string_view, 11> kAggregates = {
    "count", "sum", "avg", "min", "max", "first", "last", "stdev", "stdevp", "var", "varp"};

bool IsAggregate(std::string_view name) {
  return std::find(kAggregates.begin(), kAggregates.end(), name) != kAggregates.end();
}

}  // namespace

bool ExpressionTranslator::HasAggregate(const Expression& expression) {
  if (expression.kind == ExpressionKind::kCall && IsAggregate(expression.name)) return true;
  return std::any_of(expression.arguments.begin(), expression.arguments.end(),
                     [](const ExpressionPtr& argument) { return HasAggregate(*argument); });
}

Fragment ExpressionTranslator::TranslateArithmetic(const Expression& expression) {
  Fragment left = AsValue(Translate(*expression.arguments[0]));
  Fragment right = AsValue(Translate(*expression.arguments[1]));
  const std::string& operation = expression.operation;
  if (operation == "+" || operation == "-")
    return Add(expression, std::move(left), std::move(right));
  if (operation == "*") return Multiply(std::move(left), std::move(right));
  if (operation == "\\")
    return Operate("quotient", Type::kDouble, Type::kInteger, std::move(left), std::move(right));
  if (operation == "mod")
    return Operate("modulo", Type::kDouble, Type::kInteger, std::move(left), std::move(right));
  return Operate(operation == "/" ? "divide" : "power", Type::kDouble, Type::kDouble,
                 std::move(left), std::move(right));
}

Fragment ExpressionTranslator::Operate(std::string_view function, Type operands, Type result,
                                       Fragment left, Fragment right) {
  left = ConvertTo(std::move(left), operands);
  right = ConvertTo(std::move(right), operands);
  return {.sql = CallText(function, {left, right}), .type = result};
}

Fragment ExpressionTranslator::Add(const Expression& expression, Fragment left, Fragment right) {
  const bool plus = expression.operation == "+";
  const auto text_or_null = [](Type type) { return type == Type::kText || type == Type::kNull; };
  const bool text = left.type == Type::kText || right.type == Type::kText;
  if (plus && text && text_or_null(left.type) && text_or_null(right.type))
    return {.sql = "(" + left.sql + " || " + right.sql + ")", .type = Type::kText};
  if (left.type == Type::kText) left = ConvertTo(std::move(left), Type::kDouble);
  if (right.type == Type::kText) right = ConvertTo(std::move(right), Type::kDouble);
  const bool dates = left.type == Type::kDate && right.type == Type::kDate;
  if (dates && !plus)  // days, with a fraction
    return {.sql = "(" + left.sql + " - " + Bracketed(right, Binding::kMultiply) + ") / 86400.0",
            .type = Type::kDouble,
            .binding = Binding::kMultiply};
  if (left.type == Type::kDate || right.type == Type::kDate) {
    left = ConvertTo(std::move(left), Type::kDate);
    right = ConvertTo(std::move(right), Type::kDate);
    return Join(left, expression.operation, right, Binding::kAdd, Type::kDate);
  }
  Type type = CommonType(left.type, right.type);
  if (type == Type::kBoolean) type = Type::kInteger;
  left = ConvertTo(std::move(left), type);
  right = ConvertTo(std::move(right), type);
  return Join(left, expression.operation, right, Binding::kAdd, type);
}

Fragment ExpressionTranslator::Multiply(Fragment left, Fragment right) {
  const auto whole = [](Type type) { return type == Type::kBoolean || type == Type::kInteger; };
  if (left.type == Type::kCurrency && right.type == Type::kCurrency)
    return Operate("multiply", Type::kCurrency, Type::kCurrency, std::move(left), std::move(right));
  const bool money = (left.type == Type::kCurrency && whole(right.type)) ||
                     (whole(left.type) && right.type == Type::kCurrency);
  if (money) return Join(left, "*", right, Binding::kMultiply, Type::kCurrency);
  if (whole(left.type) && whole(right.type))
    return Join(left, "*", right, Binding::kMultiply, Type::kInteger);
  left = ConvertTo(std::move(left), Type::kDouble);
  right = ConvertTo(std::move(right), Type::kDouble);
  return Join(left, "*", right, Binding::kMultiply, Type::kDouble);
}

Fragment ExpressionTranslator::TranslateCall(const Expression& expression) {
  const std::string& name = expression.name;
  if (IsAggregate(name)) return TranslateAggregate(expression);
  if (name == "iif" || name == "switch" || name == "choose") return TranslateChoice(expression);
  if (name == "nz") return TranslateNz(expression);
  if (name == "isnull" && expression.arguments.size() == 1) return TranslateIsNull(expression);
  bool known = false;
  const EngineFunction* const function =
      expression.star ? nullptr : FindFunction(name, expression.arguments.size(), known);
  if (function == nullptr) {
    if (!known)
      state_.Fail(engine_error::kUnknownFunction,
                  "Undefined function '" + name + "' in expression.");
    state_.Fail(engine_error::kSyntax,
                "Wrong number of arguments used with function '" + name + "' in query expression.");
  }
  std::vector<Fragment> arguments;
  for (std::size_t i = 0; i < expression.arguments.size(); ++i) {
    Fragment argument = AsValue(Translate(*expression.arguments[i]));
    const char letter = function->parameters[i];
    arguments.push_back(letter == '?' ? std::move(argument)
                                      : ConvertTo(std::move(argument), TypeOfLetter(letter)));
  }
  const Type type = function->result == '=' ? arguments[0].type : TypeOfLetter(function->result);
  return {.sql = CallText(name, arguments), .type = type};
}

Fragment ExpressionTranslator::TranslateAggregate(const Expression& expression) {
  if (place_ == Place::kRow || in_aggregate_)
    state_.Fail(
        engine_error::kAggregateInCriteria,
        "Cannot have aggregate function in this part of the statement (" + expression.name + ").");
  if (expression.star && expression.name == "count")
    return {.sql = "count(*)", .type = Type::kInteger};
  if (expression.arguments.size() != 1)
    state_.Fail(engine_error::kSyntax, "Wrong number of arguments used with function '" +
                                           expression.name + "' in query expression.");
  in_aggregate_ = true;
  Fragment argument = AsValue(Translate(*expression.arguments[0]));
  in_aggregate_ = false;
  const std::string& name = expression.name;
  if (name == "count") return {.sql = "count(" + argument.sql + ")", .type = Type::kInteger};
  if (name == "min" || name == "max")
    return {.sql = name + "(" + Collated(argument) + ")", .type = argument.type};
  if (name == "first" || name == "last")
    return {.sql = "e_" + name + "(" + argument.sql + ")", .type = argument.type};
  return TranslateSum(expression, std::move(argument));
}

// sum, avg and the deviations, which take numbers only.
Fragment ExpressionTranslator::TranslateSum(const Expression& expression, Fragment argument) {
  const std::string& name = expression.name;
  if (argument.type == Type::kText || argument.type == Type::kBinary)
    state_.Fail(engine_error::kCriteriaType, "Data type mismatch in criteria expression.");
  const bool money = argument.type == Type::kCurrency;
  if (money && name == "sum") return {.sql = "sum(" + argument.sql + ")", .type = Type::kCurrency};
  if (money && name == "avg")
    return {.sql = "e_avg_money(" + argument.sql + ")", .type = Type::kCurrency};
  argument = ConvertTo(std::move(argument), Type::kDouble);
  const std::string function = name == "sum" || name == "avg" ? name : "e_" + name;
  return {.sql = function + "(" + argument.sql + ")", .type = Type::kDouble};
}

Fragment ExpressionTranslator::CaseOf(std::string_view subject,
                                      const std::vector<std::pair<Fragment, Fragment>>& branches,
                                      Fragment otherwise) {
  Type type = otherwise.type;
  for (const auto& branch : branches) type = CommonType(type, branch.second.type);
  Fragment result{.sql = "case " + std::string(subject), .type = type};
  for (const auto& [condition, value] : branches)
    result.sql += " when " + condition.sql + " then " + ConvertTo(value, type).sql;
  result.sql += " else " + ConvertTo(std::move(otherwise), type).sql + " end";
  return result;
}

// iif(condition, a, b), switch(condition, a, condition, b, …) and choose(number, a, b, …).
Fragment ExpressionTranslator::TranslateChoice(const Expression& expression) {
  const auto& arguments = expression.arguments;
  const std::string& name = expression.name;
  const bool fits = name == "iif"      ? arguments.size() == 3
                    : name == "switch" ? !arguments.empty() && arguments.size() % 2 == 0
                                       : arguments.size() >= 2;
  if (!fits || expression.star)
    state_.Fail(engine_error::kSyntax,
                "Wrong number of arguments used with function '" + name + "' in query expression.");
  std::vector<std::pair<Fragment, Fragment>> branches;
  Fragment otherwise{.sql = "null"};
  if (name == "choose") {
    const Fragment choice = ConvertTo(Translate(*arguments[0]), Type::kInteger);
    for (std::size_t i = 1; i < arguments.size(); ++i)
      branches.emplace_back(Fragment{.sql = std::to_string(i)}, AsValue(Translate(*arguments[i])));
    return CaseOf(choice.sql, branches, std::move(otherwise));
  }
  for (std::size_t i = 0; i + 1 < arguments.size(); i += 2)
    branches.emplace_back(TranslateCondition(*arguments[i]), AsValue(Translate(*arguments[i + 1])));
  if (name == "iif") otherwise = AsValue(Translate(*arguments[2]));
  return CaseOf({}, branches, std::move(otherwise));
}

// nz(value) stands for the value's own kind of nothing: 0 or an empty text.
Fragment ExpressionTranslator::TranslateNz(const Expression& expression) {
  const auto& arguments = expression.arguments;
  if (arguments.empty() || arguments.size() > 2 || expression.star)
    state_.Fail(engine_error::kSyntax,
                "Wrong number of arguments used with function 'nz' in query expression.");
  Fragment value = AsValue(Translate(*arguments[0]));
  Fragment replacement;
  if (arguments.size() == 2) {
    replacement = AsValue(Translate(*arguments[1]));
  } else if (IsNumber(value.type)) {
    replacement = {.sql = "0", .type = value.type};
  } else {
    replacement = {.sql = "''", .type = Type::kText};
  }
  const Type type = CommonType(value.type, replacement.type);
  return {.sql = "coalesce(" + ConvertTo(std::move(value), type).sql + ", " +
                 ConvertTo(std::move(replacement), type).sql + ")",
          .type = type};
}

}  // namespace tenora::query
