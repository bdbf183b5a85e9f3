#include "platform/access/format/field_codec.h"

#include <unicode/ustring.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <string_view>

#include "platform/access/format/corruption.h"

namespace tenora::access {
namespace {

constexpr const char* kSource = "DAO.Field";
// The engine does not compress longer texts.
constexpr std::size_t kMostCompressed = 1024;
constexpr char16_t kCompressedMark = 0xFEFF;

RuntimeError WrongKind(const Column& column) {
  return RuntimeError(engine_error::kTypeConversion,
                      "Data type conversion error. Field '" + column.name + "'.", kSource);
}

RuntimeError OutOfRange(const Column& column) {
  return RuntimeError(engine_error::kNumericOverflow,
                      "Numeric field overflow. Field '" + column.name + "'.", kSource);
}

template <typename T>
Field Whole(T number) {
  Field field(std::in_place, sizeof number);
  Store(field->data(), number);
  return field;
}

double Number(const Column& column, const Value& value) {
  if (const auto* boolean = std::get_if<bool>(&value)) return *boolean ? -1 : 0;
  if (const auto* whole = std::get_if<std::int64_t>(&value)) return static_cast<double>(*whole);
  if (const auto* number = std::get_if<double>(&value)) return *number;
  if (const auto* money = std::get_if<Currency>(&value)) return money->ToDouble();
  if (const auto* date = std::get_if<Date>(&value)) return date->serial();
  if (const auto* text = std::get_if<std::string>(&value)) {
    double number = 0;
    const char* const end = text->data() + text->size();
    const auto [rest, error] = std::from_chars(text->data(), end, number);
    if (error == std::errc() && rest == end) return number;
  }
  throw WrongKind(column);
}

template <typename T>
Field Integer(const Column& column, const Value& value) {
  std::int64_t whole = 0;
  if (const auto* exact = std::get_if<std::int64_t>(&value)) {
    whole = *exact;
  } else {
    const double rounded = std::nearbyint(Number(column, value));
    if (!(std::abs(rounded) < 9.2e18)) throw OutOfRange(column);
    whole = static_cast<std::int64_t>(rounded);
  }
  if (whole < static_cast<std::int64_t>(std::numeric_limits<T>::min()) ||
      whole > static_cast<std::int64_t>(std::numeric_limits<T>::max())) {
    throw OutOfRange(column);
  }
  return Whole(static_cast<T>(whole));
}

Field Money(const Column& column, const Value& value) {
  if (const auto* money = std::get_if<Currency>(&value)) return Whole(money->ten_thousandths());
  try {
    return Whole(Currency::FromDouble(Number(column, value)).ten_thousandths());
  } catch (const RuntimeError& overflow) {
    if (overflow.number() != error_number::kOverflow) throw;
    throw OutOfRange(column);
  }
}

Field Single(const Column& column, const Value& value) {
  const double number = Number(column, value);
  if (!(std::abs(number) <= std::numeric_limits<float>::max())) throw OutOfRange(column);
  return Whole(static_cast<float>(number));
}

Field Double(const Column& column, const Value& value) {
  const double number = Number(column, value);
  if (!std::isfinite(number)) throw OutOfRange(column);
  return Whole(number);
}

Field DateTime(const Column& column, const Value& value) {
  if (std::holds_alternative<std::string>(value)) throw WrongKind(column);
  const double serial = Number(column, value);
  // The day of a number that is no date is the nearest one that there is.
  const double day = Date::FromSerial(serial).DateOnly().serial();
  if (!(std::abs(serial - day) < 1)) throw OutOfRange(column);
  return Whole(serial);
}

std::u16string Units(const Column& column, const std::string& text) {
  std::u16string units(text.size(), u'\0');
  std::int32_t length = 0;
  UErrorCode error = U_ZERO_ERROR;
  u_strFromUTF8(units.data(), static_cast<std::int32_t>(units.size()), &length, text.data(),
                static_cast<std::int32_t>(text.size()), &error);
  if (U_FAILURE(error)) throw WrongKind(column);
  units.resize(static_cast<std::size_t>(length));
  return units;
}

Field Text(const Column& column, const ColumnPlace& place, const std::string& text) {
  const std::u16string units = Units(column, text);
  if (column.type == ColumnType::kText && units.size() * 2 > column.length) {
    throw RuntimeError(engine_error::kFieldTooSmall,
                       "The field is too small to accept the amount of data you attempted to add. "
                       "Try inserting or pasting less data. Field '" +
                           column.name + "'.",
                       kSource);
  }
  bool compress = (place.more_flags & kColumnCompressed) != 0 && units.size() > 2 &&
                  units.size() <= kMostCompressed;
  for (const char16_t unit : units) compress = compress && unit > 0 && unit <= 0xFF;
  // Uncompressed, the text would start with the mark of a compressed one.
  if (!compress && units.size() > 1 && units.front() == kCompressedMark) throw WrongKind(column);
  Field field(std::in_place);
  if (compress) {
    *field = {std::byte{0xFF}, std::byte{0xFE}};
    for (const char16_t unit : units) field->push_back(static_cast<std::byte>(unit));
  } else {
    const Bytes bytes = std::as_bytes(std::span(units));
    field->assign(bytes.begin(), bytes.end());
  }
  return field;
}

Field Binary(const Column& column, const Value& value) {
  const auto* bytes = std::get_if<std::vector<std::byte>>(&value);
  if (bytes == nullptr) throw WrongKind(column);
  if (column.type == ColumnType::kBinary && bytes->size() > column.length) {
    throw RuntimeError(
        engine_error::kFieldTooSmall,
        "The field is too small to accept the amount of data you attempted to add. Field '" +
            column.name + "'.",
        kSource);
  }
  return *bytes;
}

Field Guid(const Column& column, const Value& value) {
  const auto* text = std::get_if<std::string>(&value);
  if (text == nullptr) throw WrongKind(column);
  std::array<std::byte, kGuidSize> written{};
  std::size_t digits = 0;
  for (const char c : *text) {
    if (c == '{' || c == '}' || c == '-') continue;
    unsigned digit = 0;
    const auto parsed = std::from_chars(&c, &c + 1, digit, 16);
    if (parsed.ec != std::errc() || digits == 2 * kGuidSize) throw WrongKind(column);
    written[digits / 2] = written[digits / 2] << 4 | static_cast<std::byte>(digit);
    ++digits;
  }
  if (digits != 2 * kGuidSize) throw WrongKind(column);
  constexpr std::array<std::size_t, kGuidSize> kOrder{3, 2, 1,  0,  5,  4,  7,  6,
                                                      8, 9, 10, 11, 12, 13, 14, 15};
  Field field(std::in_place);
  for (const std::size_t place : kOrder) field->push_back(written[place]);
  return field;
}

// Days from 1 January of year 1 to 30 December 1899.
constexpr std::int64_t kDayZero = 693593;
constexpr double kTicksPerDay = 864000000000.0;

bool ParseDigits(std::string_view text, std::int64_t& number) {
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  return error == std::errc() && end == text.data() + text.size() && number >= 0;
}

}  // namespace

std::size_t FixedSize(const Column& column) {
  switch (column.type) {
    case ColumnType::kBoolean:
      return 0;
    case ColumnType::kByte:
      return 1;
    case ColumnType::kInteger:
      return 2;
    case ColumnType::kLong:
    case ColumnType::kSingle:
    case ColumnType::kComplex:
      return 4;
    case ColumnType::kCurrency:
    case ColumnType::kDouble:
    case ColumnType::kDateTime:
    case ColumnType::kBigInt:
      return 8;
    case ColumnType::kGuid:
      return kGuidSize;
    case ColumnType::kDecimal:
      return kDecimalSize;
    case ColumnType::kDateTimeExtended:
      return kExtendedDateSize;
    default:
      return column.length;
  }
}

std::string GuidText(const std::byte* stored) {
  // The order in which the stored bytes appear in the text; -1 is a dash.
  constexpr std::array kOrder{3, 2, 1, 0, -1, 5, 4, -1, 7, 6, -1, 8, 9, -1, 10, 11, 12, 13, 14, 15};
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string text = "{";
  for (const int place : kOrder) {
    if (place < 0) {
      text += '-';
      continue;
    }
    const std::uint8_t byte = Load8(stored + place);
    text += kDigits[byte >> 4];
    text += kDigits[byte & 15];
  }
  return text + "}";
}

std::string DecimalText(const std::byte* stored, std::uint8_t scale) {
  std::array<std::uint32_t, 4> words;
  for (std::size_t i = 0; i < words.size(); ++i) words[i] = Load32(stored + 1 + 4 * i);
  std::string digits;  // least significant first
  while (std::any_of(words.begin(), words.end(), [](std::uint32_t word) { return word != 0; })) {
    std::uint64_t rest = 0;
    for (std::uint32_t& word : words) {
      const std::uint64_t dividend = rest << 32 | word;
      word = static_cast<std::uint32_t>(dividend / 10);
      rest = dividend % 10;
    }
    digits += static_cast<char>('0' + rest);
  }
  const bool negative = !digits.empty() && (Load8(stored) & 0x80) != 0;
  if (digits.size() <= scale) digits.append(scale + std::size_t{1} - digits.size(), '0');
  if (scale > 0) digits.insert(scale, 1, '.');
  if (negative) digits += '-';
  std::reverse(digits.begin(), digits.end());
  return digits;
}

bool ExtendedDateSerial(const std::byte* stored, double& serial) {
  const std::string_view text(reinterpret_cast<const char*>(stored), kExtendedDateSize);
  std::int64_t days = 0, ticks = 0;
  if (text[19] != ':' || text[39] != ':' || !ParseDigits(text.substr(0, 19), days) ||
      !ParseDigits(text.substr(20, 19), ticks)) {
    return false;
  }
  // Before day zero the integer part is negative, but the fraction still counts forward.
  const double whole = static_cast<double>(days - kDayZero);
  const double fraction = static_cast<double>(ticks) / kTicksPerDay;
  serial = whole < 0 ? whole - fraction : whole + fraction;
  return true;
}

Field EncodeField(const Column& column, const ColumnPlace& place, const Value& value) {
  if (column.type == ColumnType::kBoolean) {
    const bool set = !IsNull(value) && Number(column, value) != 0;
    return set ? Field(std::in_place) : std::nullopt;
  }
  if (IsNull(value)) return std::nullopt;
  switch (column.type) {
    case ColumnType::kByte:
      return Integer<std::uint8_t>(column, value);
    case ColumnType::kInteger:
      return Integer<std::int16_t>(column, value);
    case ColumnType::kLong:
      return Integer<std::int32_t>(column, value);
    case ColumnType::kBigInt:
      return Integer<std::int64_t>(column, value);
    case ColumnType::kCurrency:
      return Money(column, value);
    case ColumnType::kSingle:
      return Single(column, value);
    case ColumnType::kDouble:
      return Double(column, value);
    case ColumnType::kDateTime:
      return DateTime(column, value);
    case ColumnType::kGuid:
      return Guid(column, value);
    case ColumnType::kText:
    case ColumnType::kMemo:
      if (column.fixed_length || std::holds_alternative<std::vector<std::byte>>(value)) break;
      return Text(column, place, TextOf(value));
    case ColumnType::kBinary:
    case ColumnType::kOle:
      if (column.fixed_length) break;
      return Binary(column, value);
    default:
      break;
  }
  throw RuntimeError(engine_error::kNotUpdatable,
                     "Operation must use an updateable query. Field '" + column.name +
                         "': writing values of its type is not supported.",
                     kSource);
}

}  // namespace tenora::access
