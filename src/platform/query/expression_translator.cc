#include "platform/query/expression_translator.h"

#include <algorithm>

#include "platform/runtime/text.h"

namespace tenora::query {

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
  }
  state_.Fail(engine_error::kSyntax, "Syntax error in query expression.");
}

Fragment ExpressionTranslator::TranslateCondition(const Expression& expression) {
  Fragment fragment = Translate(expression);
  if (fragment.type == Type::kText || fragment.type == Type::kBinary)
    state_.Fail(engine_error::kCriteriaType, "Data type mismatch in criteria expression.");
  fragment.truth = true;
  return fragment;
}

Fragment ExpressionTranslator::TranslateLiteral(const Expression& expression) {
  const Type type = TypeOf(expression.value);
  state_.parameters.push_back({.token = expression.token, .type = type});
  const auto number = static_cast<int>(state_.parameters.size());
  return {.sql = "?" + std::to_string(number), .type = type, .parameter = number};
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
    // The words for true and false in forms and grids, unless a column is called so.
    const bool yes = EqualsNoCase(expression.name, "yes");
    if (expression.qualifier.empty() && (yes || EqualsNoCase(expression.name, "no")))
      return {.sql = yes ? "(-1)" : "0", .type = Type::kBoolean};
    // Reported once the whole statement is read, with the number of all such names.
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
  const Type type = operand.type == Type::kBoolean ? Type::kInteger : operand.type;
  // A blank: two signs in a row would start a comment.
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
  // a imp b holds unless a does and b does not: as truth values, not a >= not b.
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
  // Money meets other fractions as a plain number, so that nothing is rounded away.
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
