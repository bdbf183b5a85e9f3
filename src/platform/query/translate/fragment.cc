#include "platform/query/translate/fragment.h"

#include "platform/query/values/collation.h"

namespace tenora::query {

std::string Bracketed(const Fragment& fragment, Binding least) {
  return fragment.binding < least ? "(" + fragment.sql + ")" : fragment.sql;
}

Fragment Join(const Fragment& left, std::string_view operation, const Fragment& right,
              Binding binding, Type type) {
  const auto tighter = static_cast<Binding>(static_cast<int>(binding) + 1);
  // Comparisons do not associate: both sides must bind more tightly.
  std::string sql = Bracketed(left, binding == Binding::kCompare ? tighter : binding);
  sql.append(" ").append(operation).append(" ").append(Bracketed(right, tighter));
  return {.sql = std::move(sql), .type = type, .binding = binding};
}

Fragment AsValue(Fragment fragment) {
  if (!fragment.truth) return fragment;
  return {.sql = "-" + Bracketed(fragment, Binding::kWhole),
          .type = Type::kBoolean,
          .binding = Binding::kUnary};
}

std::string CallText(std::string_view function, const std::vector<Fragment>& arguments) {
  std::string types;
  for (const Fragment& argument : arguments) types.push_back(TypeLetter(argument.type));
  std::string sql = "e_" + std::string(function) + "('" + types + "'";
  for (const Fragment& argument : arguments) sql += ", " + argument.sql;
  return sql + ")";
}

std::string Collated(const Fragment& fragment) {
  if (fragment.type != Type::kText || fragment.column) return fragment.sql;
  return Bracketed(fragment, Binding::kWhole) + " collate " + kCollationName;
}

Type CommonType(Type left, Type right) {
  if (left == Type::kNull || left == right) return right;
  if (right == Type::kNull) return left;
  if (IsNumber(left) && IsNumber(right)) return std::max(left, right);
  if (left == Type::kBinary || right == Type::kBinary) return Type::kBinary;
  if (left == Type::kText || right == Type::kText) return Type::kText;
  return Type::kDate;  // one is a date, the other a number
}

namespace {

std::string_view ConversionFunction(Type type) {
  switch (type) {
    case Type::kBoolean:
      return "cbool";
    case Type::kInteger:
      return "clng";
    case Type::kDouble:
      return "cdbl";
    case Type::kCurrency:
      return "ccur";
    case Type::kDecimal:
      return "cdec";
    case Type::kDate:
      return "cdate";
    default:
      return "cstr";
  }
}

}  // namespace

Fragment Convert(Fragment fragment, Type type, std::vector<Parameter>& parameters) {
  fragment = AsValue(std::move(fragment));
  const Type from = fragment.type;
  if (from == type || from == Type::kNull || type == Type::kNull || type == Type::kBinary)
    return fragment;
  // The text of a date depends on the locale, which only cstr knows.
  const bool date_text = from == Type::kDate && type == Type::kText;
  if (fragment.parameter != 0 && !date_text) {
    parameters[static_cast<std::size_t>(fragment.parameter - 1)].type = type;
    fragment.type = type;
    return fragment;
  }
  const bool whole = from == Type::kBoolean || from == Type::kInteger;
  if (whole && (type == Type::kInteger || type == Type::kDouble)) {
    fragment.type = type;
    return fragment;
  }
  if (whole && type == Type::kCurrency)
    return {.sql = Bracketed(fragment, Binding::kMultiply) + " * 10000",
            .type = type,
            .binding = Binding::kMultiply};
  if (from == Type::kCurrency && type == Type::kDouble)
    return {.sql = Bracketed(fragment, Binding::kMultiply) + " / 10000.0",
            .type = type,
            .binding = Binding::kMultiply};
  return {.sql = CallText(ConversionFunction(type), {fragment}), .type = type};
}

}  // namespace tenora::query
