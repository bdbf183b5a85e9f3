// Numbers of the engine's decimal columns, with all their digits.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/runtime/value.h"

namespace tenora::query {

// An exact number with up to 28 decimals and 39 digits before the point: more than the 28 digits of
// a column, so that sums do not overflow where the engine's do not.
class Decimal {
 public:
  enum class Rounding : std::uint8_t { kHalfToEven, kHalfAway, kTowardsZero };
  static constexpr int kMostDecimals = 28;
  // A sign and the magnitude.
  static constexpr std::size_t kKeySize = 29;

  Decimal() = default;
  // "-12.50", ".5", "1.5E-3"; none for other texts. Further decimals are rounded, halves to even.
  // Raises 6 (Overflow) for a number that is too large.
  static std::optional<Decimal> Parse(std::string_view text);
  // A number, or the text of one; a double counts with its 15 digits. Raises 13 (Type mismatch), 94
  // (Invalid use of Null) and 6.
  static Decimal Of(const Value& value);
  // What Key gave; 0 for anything else.
  static Decimal FromKey(std::string_view key);

  // Bytes that sort like the numbers, the same for equal ones.
  std::string Key() const;
  // Without zeros at the end: "-12.5".
  std::string Text() const;
  // A double that shows all digits, or else the text.
  Value ToValue() const;

  bool negative() const { return negative_; }
  Decimal Absolute() const;
  // With so many decimals, from 0 to 28.
  Decimal Rounded(int decimals, Rounding rounding) const;

  // The results have 28 decimals, halves rounded to even. All raise 6; the divisor is not 0.
  friend Decimal operator-(const Decimal& number);
  friend Decimal operator+(const Decimal& left, const Decimal& right);
  friend Decimal operator*(const Decimal& left, const Decimal& right);
  friend Decimal operator/(const Decimal& left, const Decimal& right);
  bool operator==(const Decimal&) const = default;

 private:
  // The magnitude times 10^28, the least significant word first.
  static constexpr std::size_t kWords = 7;
  using Words = std::array<std::uint32_t, kWords>;

  Decimal(bool negative, const Words& words);

  bool negative_ = false;  // never of 0
  Words words_{};
};

}  // namespace tenora::query
