#include "platform/runtime/currency.h"

#include <cmath>
#include <limits>

#include "platform/runtime/error.h"

namespace tenora {
namespace {

// Products of two 64-bit counts need twice the width; both compilers we build with have it.
__extension__ using Wide = __int128;

// value / divisor rounded to the nearest whole number; divisor is positive.
Wide DivideRounded(Wide value, Wide divisor, Halves halves) {
  Wide quotient = value / divisor;
  const Wide remainder = value % divisor;
  const Wide twice = (remainder < 0 ? -remainder : remainder) * 2;
  const bool half_goes_away = halves == Halves::kAwayFromZero || quotient % 2 != 0;
  if (twice > divisor || (twice == divisor && half_goes_away)) quotient += value < 0 ? -1 : 1;
  return quotient;
}

Wide ScaledWide(Wide value, std::int64_t numerator, Wide denominator, Halves halves) {
  if (denominator == 0) throw RuntimeError(error_number::kDivisionByZero, "Division by zero");
  const Wide product = value * numerator;
  return denominator < 0 ? DivideRounded(-product, -denominator, halves)
                         : DivideRounded(product, denominator, halves);
}

std::int64_t Narrow(Wide value) {
  if (value > std::numeric_limits<std::int64_t>::max() ||
      value < std::numeric_limits<std::int64_t>::min()) {
    throw StandardError(error_number::kOverflow);
  }
  return static_cast<std::int64_t>(value);
}

}  // namespace

std::int64_t ScaledCount(std::int64_t value, std::int64_t numerator, std::int64_t denominator,
                         Halves halves) {
  return Narrow(ScaledWide(value, numerator, denominator, halves));
}

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
  return Currency(ScaledCount(count_, numerator, denominator));
}

Currency Currency::Scaled(std::int64_t numerator, std::int64_t denominator, int decimals,
                          Halves halves) const {
  std::int64_t unit = 1;
  for (int i = decimals; i < 4; ++i) unit *= 10;
  return Currency(Narrow(ScaledWide(count_, numerator, Wide{denominator} * unit, halves) * unit));
}

Currency Currency::RoundedToCents() const {
  return Currency(Narrow(DivideRounded(count_, 100, Halves::kToEven) * 100));
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
