#include "platform/runtime/currency.h"

#include <cmath>
#include <limits>

#include "platform/runtime/error.h"

namespace tenora {
namespace {

// Products of two 64-bit counts need twice the width; both compilers we build with have it.
__extension__ using Wide = __int128;

// value / divisor rounded to the nearest whole number, halves to even; divisor is positive.
Wide DivideHalfEven(Wide value, Wide divisor) {
  Wide quotient = value / divisor;
  const Wide remainder = value % divisor;
  const Wide twice = (remainder < 0 ? -remainder : remainder) * 2;
  if (twice > divisor || (twice == divisor && quotient % 2 != 0)) quotient += value < 0 ? -1 : 1;
  return quotient;
}

std::int64_t Narrow(Wide value) {
  if (value > std::numeric_limits<std::int64_t>::max() ||
      value < std::numeric_limits<std::int64_t>::min()) {
    throw StandardError(error_number::kOverflow);
  }
  return static_cast<std::int64_t>(value);
}

}  // namespace

Currency Currency::FromDouble(double amount) {
  const double scaled = amount * static_cast<double>(kScale);
  // 2^63 as a double; the comparison also refuses what is not a number.
  constexpr double kLimit = 9223372036854775808.0;
  if (!(scaled > -kLimit && scaled < kLimit)) throw StandardError(error_number::kOverflow);
  return Currency(static_cast<std::int64_t>(std::nearbyint(scaled)));
}

double Currency::ToDouble() const {
  return static_cast<double>(count_) / static_cast<double>(kScale);
}

Currency Currency::operator+(Currency other) const {
  return Currency(Narrow(Wide{count_} + other.count_));
}

Currency Currency::operator-(Currency other) const {
  return Currency(Narrow(Wide{count_} - other.count_));
}

Currency Currency::Scaled(std::int64_t numerator, std::int64_t denominator) const {
  if (denominator == 0) throw RuntimeError(11, "Division by zero");
  Wide product = Wide{count_} * numerator;
  if (denominator < 0) product = -product;
  const Wide divisor = denominator < 0 ? -Wide{denominator} : Wide{denominator};
  return Currency(Narrow(DivideHalfEven(product, divisor)));
}

Currency Currency::RoundedToCents() const {
  return Currency(Narrow(DivideHalfEven(count_, 100) * 100));
}

std::string Currency::ToText() const {
  const Wide magnitude = count_ < 0 ? -Wide{count_} : Wide{count_};
  std::string text = count_ < 0 ? "-" : "";
  text += std::to_string(static_cast<std::uint64_t>(magnitude / kScale));
  std::string decimals = std::to_string(static_cast<std::uint64_t>(magnitude % kScale) + kScale);
  decimals.front() = '.';
  while (decimals.back() == '0') decimals.pop_back();
  if (decimals != ".") text += decimals;
  return text;
}

}  // namespace tenora
