#include "platform/access/field_encoder.h"

#include <unicode/ustring.h>

#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <string>

#include "platform/access/damage.h"
#include "platform/access/field_text.h"

namespace tenora::access {
namespace {

constexpr const char* kSource = "DAO.Field";
// Jet compresses no more than this many characters.
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
  if (std::abs(number) > std::numeric_limits<float>::max()) throw OutOfRange(column);
  return Whole(static_cast<float>(number));
}

Field DateTime(const Column& column, const Value& value) {
  if (std::holds_alternative<std::string>(value)) throw WrongKind(column);
  return Whole(Number(column, value));
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
  // Without compression the bytes would say that there is one.
  if (!compress && !units.empty() && units.front() == kCompressedMark) throw WrongKind(column);
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

}  // namespace

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
      return Whole(Number(column, value));
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
                         "': values of its type are not written.",
                     kSource);
}

}  // namespace tenora::access
