#include "platform/query/values/decimal.h"

#include <algorithm>
#include <charconv>

#include "platform/runtime/conversion.h"
#include "platform/runtime/error.h"
#include "platform/runtime/text.h"

namespace tenora::query {
namespace {

constexpr std::size_t kWords = 7;
using Words = std::array<std::uint32_t, kWords>;
// Room for a product, or for a dividend with 28 further digits.
using WideWords = std::array<std::uint32_t, 2 * kWords>;

RuntimeError Overflow() { return StandardError(error_number::kOverflow); }

template <typename Number>
int Compare(const Number& left, const Number& right) {
  for (std::size_t i = left.size(); i > 0; --i)
    if (left[i - 1] != right[i - 1]) return left[i - 1] < right[i - 1] ? -1 : 1;
  return 0;
}

template <typename Number>
bool IsZero(const Number& number) {
  return std::ranges::all_of(number, [](std::uint32_t word) { return word == 0; });
}

// Multiplies by `factor` and adds `more`; false if the result does not fit.
template <typename Number>
bool MultiplyAdd(Number& number, std::uint32_t factor, std::uint32_t more) {
  std::uint64_t carry = more;
  for (std::uint32_t& word : number) {
    carry += std::uint64_t{word} * factor;
    word = static_cast<std::uint32_t>(carry);
    carry >>= 32;
  }
  return carry == 0;
}

template <typename Number>
std::uint32_t DivideBy(Number& number, std::uint32_t divisor) {
  std::uint64_t rest = 0;
  for (std::size_t i = number.size(); i > 0; --i) {
    rest = rest << 32 | number[i - 1];
    number[i - 1] = static_cast<std::uint32_t>(rest / divisor);
    rest %= divisor;
  }
  return static_cast<std::uint32_t>(rest);
}

template <typename Number>
void Subtract(Number& number, const Number& less) {
  std::int64_t borrow = 0;
  for (std::size_t i = 0; i < number.size(); ++i) {
    borrow += std::int64_t{number[i]} - less[i];
    number[i] = static_cast<std::uint32_t>(borrow);
    borrow >>= 32;
  }
}

WideWords Widened(const Words& words) {
  WideWords wide{};
  std::ranges::copy(words, wide.begin());
  return wide;
}

Words Narrowed(const WideWords& wide) {
  Words words;
  std::copy_n(wide.begin(), kWords, words.begin());
  if (std::any_of(wide.begin() + kWords, wide.end(), [](std::uint32_t w) { return w != 0; }))
    throw Overflow();
  return words;
}

WideWords PowerOfTen(int exponent) {
  WideWords power{1};
  for (int i = 0; i < exponent; ++i) MultiplyAdd(power, 10, 0);
  return power;
}

// By shifting and subtracting: quick enough for the few decimals that anybody divides.
WideWords Quotient(const WideWords& dividend, const WideWords& divisor,
                   Decimal::Rounding rounding) {
  constexpr std::size_t kBits = 32;
  WideWords quotient{}, rest{};
  for (std::size_t bit = dividend.size() * kBits; bit > 0; --bit) {
    const std::size_t word = (bit - 1) / kBits, shift = (bit - 1) % kBits;
    MultiplyAdd(rest, 2, dividend[word] >> shift & 1);
    if (Compare(rest, divisor) < 0) continue;
    Subtract(rest, divisor);
    quotient[word] |= std::uint32_t{1} << shift;
  }
  if (rounding == Decimal::Rounding::kTowardsZero) return quotient;
  MultiplyAdd(rest, 2, 0);
  const int half = Compare(rest, divisor);
  const bool odd = (quotient[0] & 1) != 0;
  const bool up = half > 0 || (half == 0 && (odd || rounding == Decimal::Rounding::kHalfAway));
  if (up) MultiplyAdd(quotient, 1, 1);
  return quotient;
}

}  // namespace

Decimal::Decimal(bool negative, const Words& words)
    : negative_(negative && !IsZero(words)), words_(words) {}

std::optional<Decimal> Decimal::Parse(std::string_view text) {
  constexpr int kLargestExponent = 400;
  text = TrimBlanks(text);
  const bool negative = text.starts_with('-');
  if (negative || text.starts_with('+')) text.remove_prefix(1);
  int exponent = 0;
  if (const std::size_t mark = text.find_first_of("eE"); mark != text.npos) {
    std::string_view digits = text.substr(mark + 1);
    if (digits.starts_with('+')) digits.remove_prefix(1);
    const auto [end, error] =
        std::from_chars(digits.data(), digits.data() + digits.size(), exponent);
    if (error != std::errc() || end != digits.data() + digits.size()) return std::nullopt;
    exponent = std::clamp(exponent, -kLargestExponent, kLargestExponent);
    text = text.substr(0, mark);
  }
  WideWords number{};
  int decimals = -exponent;
  bool point = false, any = false;
  for (const char c : text) {
    if (c == '.' && !point) {
      point = true;
      continue;
    }
    if (!IsDigit(c)) return std::nullopt;
    any = true;
    // Digits behind so many others are far behind the last decimal.
    if (point && number.back() > 0) continue;
    if (!MultiplyAdd(number, 10, static_cast<std::uint32_t>(c - '0'))) throw Overflow();
    if (point) ++decimals;
  }
  if (!any) return std::nullopt;
  if (IsZero(number)) return Decimal();
  for (; decimals < kMostDecimals; ++decimals)
    if (!MultiplyAdd(number, 10, 0)) throw Overflow();
  // No number has more digits than this.
  constexpr int kMostDigits = 134;
  if (decimals - kMostDecimals > kMostDigits) return Decimal();
  number = Quotient(number, PowerOfTen(decimals - kMostDecimals), Rounding::kHalfToEven);
  return Decimal(negative, Narrowed(number));
}

Decimal Decimal::Of(const Value& value) {
  const auto read = [](const std::string& text) {
    const std::optional<Decimal> number = Parse(text);
    return number ? *number : *Parse(NumberText(ToDouble(text)));
  };
  if (const auto* text = std::get_if<std::string>(&value)) return read(*text);
  if (std::holds_alternative<std::int64_t>(value) || std::holds_alternative<Currency>(value))
    return read(TextOf(value));
  return read(NumberText(ToDouble(value)));
}

Decimal Decimal::FromKey(std::string_view key) {
  if (key.size() != kKeySize) return {};
  const bool negative = key[0] == 0;
  Words words{};
  for (std::size_t i = 0; i + 1 < kKeySize; ++i) {
    const auto byte = static_cast<std::uint8_t>(negative ? ~key[i + 1] : key[i + 1]);
    words[kWords - 1 - i / 4] = words[kWords - 1 - i / 4] << 8 | byte;
  }
  return Decimal(negative, words);
}

std::string Decimal::Key() const {
  std::string key(1, static_cast<char>(negative_ ? 0 : 1));
  for (std::size_t i = kWords; i > 0; --i) {
    for (int shift = 24; shift >= 0; shift -= 8) {
      const auto byte = static_cast<char>(words_[i - 1] >> shift);
      key += static_cast<char>(negative_ ? ~byte : byte);
    }
  }
  return key;
}

std::string Decimal::Text() const {
  constexpr std::uint32_t kNineDigits = 1'000'000'000;
  Words rest = words_;
  std::string digits;  // the least significant first
  while (!IsZero(rest)) {
    std::uint32_t nine = DivideBy(rest, kNineDigits);
    for (int i = 0; i < 9; ++i, nine /= 10) digits += static_cast<char>('0' + nine % 10);
  }
  digits.append(kMostDecimals + 1 - std::min<std::size_t>(digits.size(), kMostDecimals + 1), '0');
  std::ranges::reverse(digits);
  std::string decimals = digits.substr(digits.size() - kMostDecimals);
  std::string whole = digits.substr(0, digits.size() - kMostDecimals);
  decimals.erase(decimals.find_last_not_of('0') + 1);
  whole.erase(0, std::min(whole.find_first_not_of('0'), whole.size() - 1));
  return (negative_ ? "-" : "") + whole + (decimals.empty() ? "" : "." + decimals);
}

Value Decimal::ToValue() const {
  std::string text = Text();
  const double number = ToDouble(text);
  if (NumberText(number) != text) return text;
  return number;
}

Decimal Decimal::Absolute() const { return Decimal(false, words_); }

Decimal Decimal::Rounded(int decimals, Rounding rounding) const {
  const int dropped = std::clamp(kMostDecimals - decimals, 0, kMostDecimals);
  WideWords number = Quotient(Widened(words_), PowerOfTen(dropped), rounding);
  for (int i = 0; i < dropped; ++i) MultiplyAdd(number, 10, 0);
  return Decimal(negative_, Narrowed(number));
}

Decimal operator-(const Decimal& number) { return Decimal(!number.negative_, number.words_); }

Decimal operator+(const Decimal& left, const Decimal& right) {
  Words sum = left.words_;
  if (left.negative_ == right.negative_) {
    std::uint64_t carry = 0;
    for (std::size_t i = 0; i < kWords; ++i) {
      carry += std::uint64_t{sum[i]} + right.words_[i];
      sum[i] = static_cast<std::uint32_t>(carry);
      carry >>= 32;
    }
    if (carry != 0) throw Overflow();
    return Decimal(left.negative_, sum);
  }
  if (Compare(left.words_, right.words_) >= 0) {
    Subtract(sum, right.words_);
    return Decimal(left.negative_, sum);
  }
  sum = right.words_;
  Subtract(sum, left.words_);
  return Decimal(right.negative_, sum);
}

Decimal operator*(const Decimal& left, const Decimal& right) {
  WideWords product{};
  for (std::size_t i = 0; i < kWords; ++i) {
    std::uint64_t carry = 0;
    for (std::size_t j = 0; j < kWords; ++j) {
      carry += std::uint64_t{left.words_[i]} * right.words_[j] + product[i + j];
      product[i + j] = static_cast<std::uint32_t>(carry);
      carry >>= 32;
    }
    product[i + kWords] = static_cast<std::uint32_t>(carry);
  }
  const WideWords quotient =
      Quotient(product, PowerOfTen(Decimal::kMostDecimals), Decimal::Rounding::kHalfToEven);
  return Decimal(left.negative_ != right.negative_, Narrowed(quotient));
}

Decimal operator/(const Decimal& left, const Decimal& right) {
  WideWords dividend = Widened(left.words_);
  for (int i = 0; i < Decimal::kMostDecimals; ++i) MultiplyAdd(dividend, 10, 0);
  const WideWords quotient =
      Quotient(dividend, Widened(right.words_), Decimal::Rounding::kHalfToEven);
  return Decimal(left.negative_ != right.negative_, Narrowed(quotient));
}

}  // namespace tenora::query
