#include <array>

#include "platform/query/functions/functions.h"
#include "platform/query/values/decimal.h"
#include "platform/runtime/conversion.h"

namespace tenora::query {
namespace {

using Arguments = std::span<const Value>;
using Rounding = Decimal::Rounding;

Value ToDecimal(const FunctionContext&, Arguments a) { return Decimal::Of(a[0]).ToValue(); }

Value Add(const FunctionContext&, Arguments a) {
  return (Decimal::Of(a[0]) + Decimal::Of(a[1])).ToValue();
}

Value Subtract(const FunctionContext&, Arguments a) {
  return (Decimal::Of(a[0]) + -Decimal::Of(a[1])).ToValue();
}

Value Multiply(const FunctionContext&, Arguments a) {
  return (Decimal::Of(a[0]) * Decimal::Of(a[1])).ToValue();
}

Value Divide(const FunctionContext&, Arguments a) {
  const Decimal divisor = Decimal::Of(a[1]);
  if (divisor == Decimal())
    throw RuntimeError(error_number::kDivisionByZero, "Division by zero", "DAO.Database");
  return (Decimal::Of(a[0]) / divisor).ToValue();
}

Value Negate(const FunctionContext&, Arguments a) { return (-Decimal::Of(a[0])).ToValue(); }

Value Abs(const FunctionContext&, Arguments a) { return Decimal::Of(a[0]).Absolute().ToValue(); }

Value Fix(const FunctionContext&, Arguments a) {
  return Decimal::Of(a[0]).Rounded(0, Rounding::kTowardsZero).ToValue();
}

Value Int(const FunctionContext&, Arguments a) {
  const Decimal number = Decimal::Of(a[0]);
  const Decimal whole = number.Rounded(0, Rounding::kTowardsZero);
  const bool lower = number.negative() && !(whole == number);
  return (lower ? whole + Decimal::Of(std::int64_t{-1}) : whole).ToValue();
}

Value Round(const FunctionContext&, Arguments a) {
  const std::int64_t decimals = a.size() < 2 ? 0 : std::get<std::int64_t>(a[1]);
  if (decimals < 0 || decimals > Decimal::kMostDecimals)
    throw StandardError(error_number::kInvalidProcedureCall);
  return Decimal::Of(a[0]).Rounded(static_cast<int>(decimals), Rounding::kHalfToEven).ToValue();
}

// Those with "decimal_" in front are what the translator takes for a decimal operand.
constexpr auto kFunctions = std::to_array<EngineFunction>({
    {"cdec", "?", 'm', false, ToDecimal},
    {"decimal_add", "mm", 'm', false, Add},
    {"decimal_subtract", "mm", 'm', false, Subtract},
    {"decimal_multiply", "mm", 'm', false, Multiply},
    {"decimal_divide", "mm", 'm', false, Divide},
    {"decimal_negate", "m", 'm', false, Negate},
    {"decimal_abs", "m", 'm', false, Abs},
    {"decimal_int", "m", 'm', false, Int},
    {"decimal_fix", "m", 'm', false, Fix},
    {"decimal_round", "m", 'm', false, Round},
    {"decimal_round", "mi", 'm', false, Round},
});

}  // namespace

std::span<const EngineFunction> DecimalFunctions() { return kFunctions; }

}  // namespace tenora::query
