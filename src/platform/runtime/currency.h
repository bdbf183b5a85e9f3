// Money as the database keeps it: a signed 64-bit count of ten-thousandths of a currency unit.
#pragma once

#include <compare>
#include <cstdint>
#include <string>

namespace tenora {

// Which way half of the last digit goes.
enum class Halves { kToEven, kAwayFromZero };

// value × numerator ÷ denominator, exact and then rounded once to a whole number. Raises 6
// (Overflow) when the result does not fit, 11 when denominator is 0.
std::int64_t ScaledCount(std::int64_t value, std::int64_t numerator, std::int64_t denominator,
                         Halves halves = Halves::kToEven);

class Currency {
 public:
  constexpr Currency() = default;
  static constexpr Currency FromTenThousandths(std::int64_t count) { return Currency(count); }
  static constexpr Currency FromUnits(std::int32_t units) { return Currency(units * kScale); }
  // Rounds to four decimals, halves to even. Raises 6 (Overflow) outside the range.
  static Currency FromDouble(double amount);

  constexpr std::int64_t ten_thousandths() const { return count_; }
  double ToDouble() const;

  // Raise 6 (Overflow) when the result does not fit.
  Currency operator+(Currency other) const;
  Currency operator-(Currency other) const;
  Currency& operator+=(Currency other) { return *this = *this + other; }
  Currency& operator-=(Currency other) { return *this = *this - other; }
  Currency operator-() const { return Currency() - *this; }

  // This amount times numerator over denominator, exact and then rounded to four decimals, halves
  // to even. Raises 6 (Overflow) when the result does not fit, 11 when denominator is 0.
  Currency Scaled(std::int64_t numerator, std::int64_t denominator) const;
  // The same, rounded once to `decimals` (0 to 4).
  Currency Scaled(std::int64_t numerator, std::int64_t denominator, int decimals,
                  Halves halves = Halves::kToEven) const;

  // To two decimals, halves to even: 2.345 gives 2.34, 2.355 gives 2.36.
  Currency RoundedToCents() const;
  Currency Absolute() const { return count_ < 0 ? -*this : *this; }

  // Without grouping, a point as separator, as many decimals as needed: "42.86", "-0.5", "100".
  std::string ToText() const;

  constexpr auto operator<=>(const Currency&) const = default;

 private:
  static constexpr std::int64_t kScale = 10000;
  explicit constexpr Currency(std::int64_t count) : count_(count) {}

  std::int64_t count_ = 0;
};

}  // namespace tenora
