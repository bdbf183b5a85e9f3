#include <array>
#include <charconv>
#include <cmath>
#include <limits>

#include "platform/query/functions/functions.h"
#include "platform/runtime/conversion.h"
#include "platform/runtime/text.h"

namespace tenora::query {
namespace {

using Arguments = std::span<const Value>;

double Double(const Value& value) { return std::get<double>(value); }
Currency Money(const Value& value) { return std::get<Currency>(value); }

RuntimeError BadArgument() { return StandardError(error_number::kInvalidProcedureCall); }

Value Finite(double number) {
  if (!std::isfinite(number)) throw StandardError(error_number::kOverflow);
  return number;
}

// The standard error numbers of the run-time system end before this one.
RuntimeError DivisionByZero() {
  return RuntimeError(error_number::kDivisionByZero, "Division by zero", "DAO.Database");
}

Value RequireFinite(const FunctionContext&, Arguments a) { return Finite(Double(a[0])); }

Value Divide(const FunctionContext&, Arguments a) {
  if (Double(a[1]) == 0) throw DivisionByZero();
  return Finite(Double(a[0]) / Double(a[1]));
}

std::int64_t Whole(double number) {
  return std::get<std::int64_t>(ConvertTo(number, Type::kInteger));
}

// Both operands are first rounded to integers, halves to even.
Value Quotient(const FunctionContext&, Arguments a) {
  const std::int64_t divisor = Whole(Double(a[1]));
  if (divisor == 0) throw DivisionByZero();
  return Whole(std::trunc(static_cast<double>(Whole(Double(a[0]))) / static_cast<double>(divisor)));
}

Value Modulo(const FunctionContext&, Arguments a) {
  const std::int64_t divisor = Whole(Double(a[1]));
  if (divisor == 0) throw DivisionByZero();
  if (divisor == -1) return std::int64_t{0};  // the lowest number has no positive counterpart
  return Whole(Double(a[0])) % divisor;
}

Value Power(const FunctionContext&, Arguments a) {
  const double result = std::pow(Double(a[0]), Double(a[1]));
  if (std::isnan(result)) throw BadArgument();
  return Finite(result);
}

// Currency times currency, both in ten-thousandths.
Value Multiply(const FunctionContext&, Arguments a) {
  return Money(a[0]).Scaled(Money(a[1]).ten_thousandths(), 10000);
}

Value Abs(const FunctionContext&, Arguments a) {
  if (const auto* integer = std::get_if<std::int64_t>(&a[0])) {
    if (*integer == std::numeric_limits<std::int64_t>::min())
      throw StandardError(error_number::kOverflow);
    return std::abs(*integer);
  }
  if (const auto* money = std::get_if<Currency>(&a[0])) return money->Absolute();
  return ConvertTo(std::abs(ToDouble(a[0])), TypeOf(a[0]));
}

// Applies a rounding function on doubles to a value of any number type.
template <typename Rounding>
Value Rounded(const Value& value, const Rounding& rounding) {
  if (std::holds_alternative<std::int64_t>(value) || std::holds_alternative<bool>(value))
    return value;
  return ConvertTo(rounding(ToDouble(value)), TypeOf(value));
}

Value Int(const FunctionContext&, Arguments a) {
  return Rounded(a[0], [](double number) { return std::floor(number); });
}

Value Fix(const FunctionContext&, Arguments a) {
  return Rounded(a[0], [](double number) { return std::trunc(number); });
}

// Rounds to a number of decimals, halves to even. The decimal text decides what a half is: 2.345 is
// one although no double equals it exactly.
Value RoundTo(const Value& value, std::int64_t decimals) {
  if (decimals < 0 || decimals > 22) throw BadArgument();
  if (const auto* money = std::get_if<Currency>(&value)) {
    if (decimals >= 4) return *money;
    std::int64_t unit = 10000;
    for (std::int64_t i = 0; i < decimals; ++i) unit /= 10;
    const Currency units = money->Scaled(1, unit);
    // Scaled rounds to whole ten-thousandths, each now standing for one unit.
    return Currency::FromTenThousandths(units.ten_thousandths()).Scaled(unit, 1);
  }
  return Rounded(value, [decimals](double number) {
    const double scale = std::pow(10.0, static_cast<double>(decimals));
    const double scaled = number * scale;
    if (!std::isfinite(scaled) || std::abs(scaled) > 1e15) return number;
    return std::nearbyint(ToDouble(Value(NumberText(scaled)))) / scale;
  });
}

Value RoundToWhole(const FunctionContext&, Arguments a) { return RoundTo(a[0], 0); }
Value Round(const FunctionContext&, Arguments a) {
  return RoundTo(a[0], std::get<std::int64_t>(a[1]));
}

Value Sign(const FunctionContext&, Arguments a) {
  return std::int64_t{(Double(a[0]) > 0) - (Double(a[0]) < 0)};
}

Value Sqr(const FunctionContext&, Arguments a) {
  if (Double(a[0]) < 0) throw BadArgument();
  return std::sqrt(Double(a[0]));
}

Value Exp(const FunctionContext&, Arguments a) { return Finite(std::exp(Double(a[0]))); }

Value Log(const FunctionContext&, Arguments a) {
  if (Double(a[0]) <= 0) throw BadArgument();
  return std::log(Double(a[0]));
}

// The number behind "&H" or "&O". As in the engine, up to 16 bits are a signed number of 16 bits,
// and more one of 32.
double LeadingBits(std::string_view digits, int base) {
  std::uint32_t bits = 0;
  const auto [end, error] = std::from_chars(digits.begin(), digits.end(), bits, base);
  if (error == std::errc::result_out_of_range) throw StandardError(error_number::kOverflow);
  return bits <= 0xFFFF ? static_cast<double>(static_cast<std::int16_t>(bits))
                        : static_cast<double>(static_cast<std::int32_t>(bits));
}

Value Val(const FunctionContext&, Arguments a) {
  const auto& text = std::get<std::string>(a[0]);
  const std::string digits = ReplaceAll(text, " ", "");
  if (StartsWithNoCase(digits, "&h")) return LeadingBits(std::string_view(digits).substr(2), 16);
  if (StartsWithNoCase(digits, "&o")) return LeadingBits(std::string_view(digits).substr(2), 8);
  return LeadingNumber(text);
}

template <Type kType>
Value Converted(const FunctionContext&, Arguments a) {
  return ConvertTo(a[0], kType);
}

Value ToCalendarDate(const FunctionContext&, Arguments a) {
  const Date date = ToDate(a[0]);
  // The day of a number that is no date is the nearest one that there is.
  if (!(std::abs(date.serial() - date.DateOnly().serial()) < 1))
    throw StandardError(error_number::kOverflow);
  return date;
}

Value ToShort(const FunctionContext&, Arguments a) {
  return std::int64_t{ToInt16(WithoutGrouping(a[0]))};
}
Value ToLong(const FunctionContext&, Arguments a) {
  return std::int64_t{ToInt32(WithoutGrouping(a[0]))};
}

Value ToByte(const FunctionContext&, Arguments a) {
  const std::int32_t number = ToInt32(WithoutGrouping(a[0]));
  if (number < 0 || number > 255) throw StandardError(error_number::kOverflow);
  return std::int64_t{number};
}

Value IsNumeric(const FunctionContext&, Arguments a) {
  if (const auto* text = std::get_if<std::string>(&a[0])) {
    try {
      ToDouble(WithoutGrouping(*text));
    } catch (const RuntimeError&) {
      return false;
    }
    return true;
  }
  return !IsNull(a[0]) && TypeOf(a[0]) != Type::kDate && TypeOf(a[0]) != Type::kBinary;
}

constexpr auto kFunctions = std::to_array<EngineFunction>({
    {"finite", "d", 'd', false, RequireFinite},
    {"divide", "dd", 'd', false, Divide},
    {"quotient", "dd", 'i', false, Quotient},
    {"modulo", "dd", 'i', false, Modulo},
    {"power", "dd", 'd', false, Power},
    {"multiply", "cc", 'c', false, Multiply},
    {"abs", "?", '=', false, Abs},
    {"int", "?", '=', false, Int},
    {"fix", "?", '=', false, Fix},
    {"round", "?", '=', false, RoundToWhole},
    {"round", "?i", '=', false, Round},
    {"sgn", "d", 'i', false, Sign},
    {"sqr", "d", 'd', false, Sqr},
    {"exp", "d", 'd', false, Exp},
    {"log", "d", 'd', false, Log},
    {"val", "s", 'd', false, Val},
    {"cint", "?", 'i', false, ToShort},
    {"clng", "?", 'i', false, ToLong},
    {"cbyte", "?", 'i', false, ToByte},
    {"cdbl", "?", 'd', false, Converted<Type::kDouble>},
    {"csng", "?", 'd', false, Converted<Type::kDouble>},
    {"ccur", "?", 'c', false, Converted<Type::kCurrency>},
    {"cbool", "?", 'b', false, Converted<Type::kBoolean>},
    {"cdate", "?", 't', false, ToCalendarDate},
    {"cvdate", "?", 't', false, ToCalendarDate},
    {"isnumeric", "?", 'b', true, IsNumeric},
});

}  // namespace

std::span<const EngineFunction> NumberFunctions() { return kFunctions; }

}  // namespace tenora::query
