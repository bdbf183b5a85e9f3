#include "platform/query/translate/expression_translator.h"

#include <algorithm>
#include <array>

#include "platform/query/functions/functions.h"
#include "platform/runtime/text.h"

namespace tenora::query {
namespace {

constexpr std::array<std::string_view, 11> kAggregates = {
    "count", "sum", "avg", "min", "max", "first", "last", "stdev", "stdevp", "var", "varp"};

bool IsAggregate(std::string_view name) {
  return std::find(kAggregates.begin(), kAggregates.end(), name) != kAggregates.end();
}

// SQLite computes on with infinity, where the engine overflows.
Fragment Finite(Fragment number) {
  if (number.type != Type::kDouble) return number;
  return {.sql = CallText("finite", {number}), .type = Type::kDouble};
}

bool IsDomainFunction(std::string_view name) {
  return name == "dlookup" || (name.starts_with('d') && IsAggregate(name.substr(1)));
}

}  // namespace

void RequireKnownNames(const TranslationState& state, std::size_t known) {
  if (state.unknown_names.size() <= known) return;
  state.Fail(engine_error::kTooFewParameters,
             TooFewParameters(std::span(state.unknown_names).subspan(known)));
}

Fragment ExpressionTranslator::Translate(const Expression& expression) {
  if (!in_group_key_ && !in_aggregate_ && IsGroupKey(expression)) {
    in_group_key_ = true;
    Fragment key = Translate(expression);
    in_group_key_ = false;
    return key;
  }
  switch (expression.kind) {
    case ExpressionKind::kLiteral:
      return TranslateLiteral(expression);
    case ExpressionKind::kConstant:
      if (IsNull(expression.value)) return {.sql = "null"};
      return {.sql = std::get<bool>(expression.value) ? "-1" : "0",
              .type = Type::kBoolean,
              .binding = Binding::kUnary};
    case ExpressionKind::kColumn:
      return TranslateColumn(expression);
    case ExpressionKind::kCall:
      return TranslateCall(expression);
    case ExpressionKind::kNegate:
      return TranslateNegate(expression);
    case ExpressionKind::kNot: {
      const Fragment operand = TranslateCondition(*expression.arguments[0]);
      return {.sql = "not " + Bracketed(operand, Binding::kCompare),
              .type = Type::kBoolean,
              .binding = Binding::kNot,
              .truth = true};
    }
    case ExpressionKind::kAnd:
    case ExpressionKind::kOr:
      return TranslateChain(expression);
    case ExpressionKind::kConcat:
      return TranslateConcat(expression);
    case ExpressionKind::kArithmetic:
      return TranslateArithmetic(expression);
    case ExpressionKind::kLogical:
      return TranslateLogical(expression);
    case ExpressionKind::kCompare:
      return TranslateCompare(expression);
    case ExpressionKind::kBetween:
      return TranslateBetween(expression);
    case ExpressionKind::kIn:
      return TranslateIn(expression);
    case ExpressionKind::kLike:
      return TranslateLike(expression);
    case ExpressionKind::kIsNull:
      return TranslateIsNull(expression);
    case ExpressionKind::kExists:
      return {.sql = "exists " + subselects_.TranslateExists(*expression.select, scope_),
              .type = Type::kBoolean,
              .binding = Binding::kCompare,
              .truth = true};
    case ExpressionKind::kSubquery: {
      const auto subselect = subselects_.TranslateColumn(*expression.select, scope_, Type::kNull);
      return {.sql = subselect.sql, .type = subselect.type};
    }
    case ExpressionKind::kRowKey:
      return {.sql = scope_.FindSource(expression.qualifier)->row_key, .type = Type::kInteger};
  }
  state_.Fail(engine_error::kSyntax, "Syntax error in query expression.");
}

Fragment ExpressionTranslator::TranslateCondition(const Expression& expression) {
  Fragment fragment = Translate(expression);
  if (fragment.type == Type::kText || fragment.type == Type::kBinary)
    state_.Fail(engine_error::kCriteriaType, "Data type mismatch in criteria expression.");
  if (fragment.type == Type::kDecimal) fragment = ConvertTo(std::move(fragment), Type::kBoolean);
  fragment.truth = true;
  return fragment;
}

Fragment ExpressionTranslator::TranslateLiteral(const Expression& expression) {
  const Type type = TypeOf(expression.value);
  Parameter parameter{.token = expression.token, .type = type};
  if (!state_.open_queries.empty()) parameter.query = state_.open_queries.back();
  state_.parameters.push_back(std::move(parameter));
  const auto number = static_cast<int>(state_.parameters.size());
  return {.sql = "?" + std::to_string(number), .type = type, .parameter = number};
}

void ExpressionTranslator::AddAlias(const std::string& name, Fragment fragment, bool aggregate) {
  // As a literal it would be bound in the type of its last use.
  fragment.parameter = 0;
  aliases_.push_back({.name = name, .fragment = std::move(fragment), .aggregate = aggregate});
}

const ExpressionTranslator::Alias* ExpressionTranslator::FindAlias(std::string_view name) const {
  // Aliases that use aliases twice double in size at every step.
  constexpr std::size_t kLongestAlias = 64 * 1024;
  const auto found = std::ranges::find_if(
      aliases_, [name](const Alias& alias) { return EqualsNoCase(alias.name, name); });
  if (found == aliases_.end()) return nullptr;
  if (found->aggregate && in_aggregate_)
    state_.Fail(engine_error::kAggregateInCriteria,
                "Cannot have aggregate function in this part of the statement (" +
                    std::string(name) + ").");
  if (found->fragment.sql.size() > kLongestAlias)
    state_.Fail(engine_error::kTooComplex, "Query is too complex.");
  return &*found;
}

void ExpressionTranslator::NoteUnknownName(const Expression& column) {
  const std::string name =
      column.qualifier.empty() ? column.name : column.qualifier + "." + column.name;
  const bool noted =
      std::any_of(state_.unknown_names.begin(), state_.unknown_names.end(),
                  [&name](const std::string& unknown) { return EqualsNoCase(unknown, name); });
  if (!noted) state_.unknown_names.push_back(name);
}

Fragment ExpressionTranslator::TranslateColumn(const Expression& expression) {
  const Scope::Match match = scope_.Find(expression.qualifier, expression.name);
  if (match.column == nullptr) {
    if (!match.withheld.empty()) {
      state_.Fail(engine_error::kNoReadPermission,
                  "Record(s) cannot be read; no read permission on '" + match.withheld + "'.");
    }
    if (expression.qualifier.empty()) {
      if (const Alias* const alias = FindAlias(expression.name)) return alias->fragment;
    }
    // Synonyms of true and false, unless there is a column of that name.
    const bool yes = EqualsNoCase(expression.name, "yes");
    if (expression.qualifier.empty() && (yes || EqualsNoCase(expression.name, "no")))
      return {.sql = yes ? "(-1)" : "0", .type = Type::kBoolean};
    // Reported after the whole statement, with the number of all such names.
    NoteUnknownName(expression);
    return {.sql = "null"};
  }
  if (match.ambiguous)
    state_.Fail(engine_error::kAmbiguousName,
                "The specified field '" + expression.name +
                    "' could refer to more than one table listed in the FROM clause of your SQL "
                    "statement.");
  if (place_ == Place::kGroup && !match.outer && !in_aggregate_ && !in_group_key_)
    state_.Fail(engine_error::kNotGrouped,
                "You tried to execute a query that does not include the specified expression '" +
                    expression.name + "' as part of an aggregate function.");
  return {.sql = match.column->sql, .type = match.column->type, .column = true};
}

Fragment ExpressionTranslator::TranslateNegate(const Expression& expression) {
  Fragment operand = AsValue(Translate(*expression.arguments[0]));
  if (operand.type == Type::kText || operand.type == Type::kDate)
    operand = ConvertTo(std::move(operand), Type::kDouble);
  if (operand.parameter != 0) {
    bool& negated = state_.parameters[static_cast<std::size_t>(operand.parameter - 1)].negated;
    negated = !negated;
    return operand;
  }
  if (operand.type == Type::kDecimal)
    return {.sql = CallText("decimal_negate", {operand}), .type = Type::kDecimal};
  const Type type = operand.type == Type::kBoolean ? Type::kInteger : operand.type;
  // The blank matters: two minus signs would start a comment.
  return {
      .sql = "- " + Bracketed(operand, Binding::kWhole), .type = type, .binding = Binding::kUnary};
}

Fragment ExpressionTranslator::TranslateChain(const Expression& expression) {
  const bool both = expression.kind == ExpressionKind::kAnd;
  Fragment chain{
      .type = Type::kBoolean, .binding = both ? Binding::kAnd : Binding::kOr, .truth = true};
  for (const ExpressionPtr& argument : expression.arguments) {
    const Fragment operand = TranslateCondition(*argument);
    if (!chain.sql.empty()) chain.sql += both ? " and " : " or ";
    chain.sql += Bracketed(operand, both ? Binding::kNot : Binding::kAnd);
  }
  return chain;
}

// xor, eqv and imp compare truth values, which must be 1 or 0 for that.
Fragment ExpressionTranslator::TranslateLogical(const Expression& expression) {
  const auto truth = [this](const Expression& operand) {
    return Fragment{.sql = "not " + Bracketed(TranslateCondition(operand), Binding::kWhole),
                    .type = Type::kBoolean,
                    .binding = Binding::kNot};
  };
  const Fragment not_left = truth(*expression.arguments[0]);
  const Fragment not_right = truth(*expression.arguments[1]);
  // a imp b is false only if a is true and b is false: as truth values, not a >= not b.
  const std::string_view operation = expression.operation == "xor"   ? "<>"
                                     : expression.operation == "eqv" ? "="
                                                                     : ">=";
  Fragment result = Join(not_left, operation, not_right, Binding::kCompare, Type::kBoolean);
  result.truth = true;
  return result;
}

Fragment ExpressionTranslator::TranslateConcat(const Expression& expression) {
  Fragment result;
  for (const ExpressionPtr& argument : expression.arguments) {
    Fragment text = ConvertTo(Translate(*argument), Type::kText);
    result = result.sql.empty()
                 ? std::move(text)
                 : Fragment{.sql = CallText("concat", {result, text}), .type = Type::kText};
  }
  return result;
}

Type ExpressionTranslator::ComparisonType(Type left, Type right) const {
  const Type common = CommonType(left, right);
  const auto fits = [common](Type type) {
    return type == common || type == Type::kNull || (IsNumber(type) && IsNumber(common)) ||
           (IsNumber(type) && common == Type::kDate);
  };
  if (!fits(left) || !fits(right))
    state_.Fail(engine_error::kCriteriaType, "Data type mismatch in criteria expression.");
  // Currency is compared with other fractions as a double, so that nothing is rounded away.
  const bool fraction = left == Type::kDouble || right == Type::kDouble;
  return common == Type::kCurrency && fraction ? Type::kDouble : common;
}

Fragment ExpressionTranslator::TranslateCompare(const Expression& expression) {
  Fragment left = Translate(*expression.arguments[0]);
  Fragment right = Translate(*expression.arguments[1]);
  const Type type = ComparisonType(left.type, right.type);
  left = ConvertTo(std::move(left), type);
  right = ConvertTo(std::move(right), type);
  if (type == Type::kText && !left.column && !right.column) left.sql = Collated(left);
  Fragment result = Join(left, expression.operation, right, Binding::kCompare, Type::kBoolean);
  result.truth = true;
  return result;
}

Fragment ExpressionTranslator::TranslateBetween(const Expression& expression) {
  Fragment operands[3];
  Type type = Type::kNull;
  for (std::size_t i = 0; i < 3; ++i) {
    operands[i] = Translate(*expression.arguments[i]);
    type = ComparisonType(type, operands[i].type);
  }
  for (Fragment& operand : operands) operand = ConvertTo(std::move(operand), type);
  std::string sql =
      type == Type::kText ? Collated(operands[0]) : Bracketed(operands[0], Binding::kAdd);
  sql += expression.negated ? " not between " : " between ";
  sql += Bracketed(operands[1], Binding::kAdd) + " and " + Bracketed(operands[2], Binding::kAdd);
  return {
      .sql = std::move(sql), .type = Type::kBoolean, .binding = Binding::kCompare, .truth = true};
}

Fragment ExpressionTranslator::TranslateIn(const Expression& expression) {
  Fragment left = Translate(*expression.arguments[0]);
  std::string list;
  Type type = left.type;
  if (expression.select != nullptr) {
    const auto subselect = subselects_.TranslateColumn(*expression.select, scope_, left.type);
    type = ComparisonType(left.type, subselect.type);
    list = subselect.sql;
  } else {
    std::vector<Fragment> values;
    for (std::size_t i = 1; i < expression.arguments.size(); ++i) {
      values.push_back(Translate(*expression.arguments[i]));
      type = ComparisonType(type, values.back().type);
    }
    for (Fragment& value : values)
      list += (list.empty() ? "(" : ", ") + ConvertTo(std::move(value), type).sql;
    list += ")";
  }
  left = ConvertTo(std::move(left), type);
  const std::string text = type == Type::kText ? Collated(left) : Bracketed(left, Binding::kAdd);
  return {.sql = text + (expression.negated ? " not in " : " in ") + list,
          .type = Type::kBoolean,
          .binding = Binding::kCompare,
          .truth = true};
}

Fragment ExpressionTranslator::TranslateLike(const Expression& expression) {
  const Fragment text = ConvertTo(Translate(*expression.arguments[0]), Type::kText);
  const Fragment pattern = ConvertTo(Translate(*expression.arguments[1]), Type::kText);
  Fragment result{.sql = CallText("like", {text, pattern}), .type = Type::kBoolean};
  if (!expression.negated) return result;
  return {
      .sql = "not " + result.sql, .type = Type::kBoolean, .binding = Binding::kNot, .truth = true};
}

Fragment ExpressionTranslator::TranslateIsNull(const Expression& expression) {
  const Fragment operand = AsValue(Translate(*expression.arguments[0]));
  return {
      .sql = Bracketed(operand, Binding::kAdd) + (expression.negated ? " is not null" : " is null"),
      .type = Type::kBoolean,
      .binding = Binding::kCompare,
      .truth = true};
}

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
  const bool exact = left.type == Type::kDecimal || right.type == Type::kDecimal;
  if (operation == "/" && exact)
    return Operate("decimal_divide", Type::kDecimal, Type::kDecimal, std::move(left),
                   std::move(right));
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
  if (type == Type::kDecimal)
    return Operate(plus ? "decimal_add" : "decimal_subtract", type, type, std::move(left),
                   std::move(right));
  if (type == Type::kBoolean) type = Type::kInteger;
  left = ConvertTo(std::move(left), type);
  right = ConvertTo(std::move(right), type);
  return Finite(Join(left, expression.operation, right, Binding::kAdd, type));
}

Fragment ExpressionTranslator::Multiply(Fragment left, Fragment right) {
  const auto whole = [](Type type) { return type == Type::kBoolean || type == Type::kInteger; };
  if (left.type == Type::kDecimal || right.type == Type::kDecimal)
    return Operate("decimal_multiply", Type::kDecimal, Type::kDecimal, std::move(left),
                   std::move(right));
  if (left.type == Type::kCurrency && right.type == Type::kCurrency)
    return Operate("multiply", Type::kCurrency, Type::kCurrency, std::move(left), std::move(right));
  const bool money = (left.type == Type::kCurrency && whole(right.type)) ||
                     (whole(left.type) && right.type == Type::kCurrency);
  if (money) return Join(left, "*", right, Binding::kMultiply, Type::kCurrency);
  if (whole(left.type) && whole(right.type))
    return Join(left, "*", right, Binding::kMultiply, Type::kInteger);
  left = ConvertTo(std::move(left), Type::kDouble);
  right = ConvertTo(std::move(right), Type::kDouble);
  return Finite(Join(left, "*", right, Binding::kMultiply, Type::kDouble));
}

Fragment ExpressionTranslator::TranslateCall(const Expression& expression) {
  const std::string& name = expression.name;
  if (IsAggregate(name)) return TranslateAggregate(expression);
  if (name == "iif" || name == "switch" || name == "choose") return TranslateChoice(expression);
  if (name == "nz") return TranslateNz(expression);
  if (name == "isnull" && expression.arguments.size() == 1) return TranslateIsNull(expression);
  bool known = false;
  const EngineFunction* function =
      expression.star ? nullptr : FindFunction(name, expression.arguments.size(), known);
  if (function == nullptr) {
    if (!known && IsDomainFunction(name))
      state_.Fail(engine_error::kUnknownFunction,
                  "Function '" + name +
                      "' is not supported in expressions: write a select in brackets, such as "
                      "(select sum(a) from b where c = d).");
    if (!known)
      state_.Fail(engine_error::kUnknownFunction,
                  "Undefined function '" + name + "' in expression.");
    state_.Fail(engine_error::kSyntax,
                "Wrong number of arguments used with function '" + name + "' in query expression.");
  }
  std::vector<Fragment> arguments;
  for (const ExpressionPtr& argument : expression.arguments)
    arguments.push_back(AsValue(Translate(*argument)));
  if (!arguments.empty() && arguments[0].type == Type::kDecimal) {
    const EngineFunction* const exact = FindFunction("decimal_" + name, arguments.size(), known);
    if (exact != nullptr) function = exact;
  }
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    const char letter = function->parameters[i];
    if (letter != '?') arguments[i] = ConvertTo(std::move(arguments[i]), TypeOfLetter(letter));
  }
  const Type type = function->result == '=' ? arguments[0].type : TypeOfLetter(function->result);
  return {.sql = CallText(function->name, arguments), .type = type};
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

// sum, avg, stdev and var, which take numbers only.
Fragment ExpressionTranslator::TranslateSum(const Expression& expression, Fragment argument) {
  const std::string& name = expression.name;
  if (argument.type == Type::kText || argument.type == Type::kBinary)
    state_.Fail(engine_error::kCriteriaType, "Data type mismatch in criteria expression.");
  const bool money = argument.type == Type::kCurrency;
  if (money && name == "sum") return {.sql = "sum(" + argument.sql + ")", .type = Type::kCurrency};
  if (money && name == "avg")
    return {.sql = "e_avg_money(" + argument.sql + ")", .type = Type::kCurrency};
  if (argument.type == Type::kDecimal && (name == "sum" || name == "avg"))
    return {.sql = "e_" + name + "_decimal(" + argument.sql + ")", .type = Type::kDecimal};
  argument = ConvertTo(std::move(argument), Type::kDouble);
  if (name == "sum" || name == "avg")
    return Finite({.sql = name + "(" + argument.sql + ")", .type = Type::kDouble});
  return {.sql = "e_" + name + "(" + argument.sql + ")", .type = Type::kDouble};
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

// nz(value) gives 0 or an empty text for null, depending on the value's type.
Fragment ExpressionTranslator::TranslateNz(const Expression& expression) {
  const auto& arguments = expression.arguments;
  if (arguments.empty() || arguments.size() > 2 || expression.star)
    state_.Fail(engine_error::kSyntax,
                "Wrong number of arguments used with function 'nz' in query expression.");
  Fragment value = AsValue(Translate(*arguments[0]));
  Fragment replacement;
  if (arguments.size() == 2) {
    replacement = AsValue(Translate(*arguments[1]));
  } else if (value.type == Type::kDecimal) {
    replacement = {.sql = "0", .type = Type::kInteger};
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

bool ExpressionTranslator::SameExpression(const Expression& left, const Expression& right) const {
  if (left.kind == ExpressionKind::kColumn && right.kind == ExpressionKind::kColumn) {
    const Scope::Match a = scope_.Find(left.qualifier, left.name);
    return a.column != nullptr && a.column == scope_.Find(right.qualifier, right.name).column;
  }
  return left.kind == right.kind && left.name == right.name && left.operation == right.operation &&
         left.negated == right.negated && left.star == right.star && left.value == right.value &&
         left.select == nullptr && right.select == nullptr &&
         std::equal(left.arguments.begin(), left.arguments.end(), right.arguments.begin(),
                    right.arguments.end(), [this](const ExpressionPtr& a, const ExpressionPtr& b) {
                      return SameExpression(*a, *b);
                    });
}

bool ExpressionTranslator::IsGroupKey(const Expression& expression) const {
  return group_ != nullptr &&
         std::any_of(group_->begin(), group_->end(),
                     [&](const ExpressionPtr& key) { return SameExpression(*key, expression); });
}

}  // namespace tenora::query
