#include "platform/query/values/sqlite_value.h"

#include <cmath>

#include "platform/access/engine_error.h"
#include "platform/runtime/conversion.h"
#include "platform/runtime/error.h"
#include "platform/runtime/text.h"

namespace tenora::query {
namespace {

constexpr std::int64_t kSecondsPerDay = 86400;
constexpr std::string_view kTypeLetters = "nbidcmtsx";
// 1 January 100 and the last second of 9999.
constexpr std::int64_t kFirstSecond = -657434 * kSecondsPerDay;
constexpr std::int64_t kLastSecond = 2958466 * kSecondsPerDay - 1;

Value ReadInteger(std::int64_t number, Type type) {
  switch (type) {
    case Type::kBoolean:
      return number != 0;
    case Type::kDouble:
      return static_cast<double>(number);
    case Type::kCurrency:
      return Currency::FromTenThousandths(number);
    case Type::kDate:
      if (number < kFirstSecond || number > kLastSecond)
        throw StandardError(error_number::kOverflow);
      return DateFromSeconds(number);
    default:
      return number;
  }
}

// SQLite turns integers that overflow into floating point.
Value ReadReal(double number, Type type) {
  if (type == Type::kCurrency || type == Type::kDate) throw StandardError(error_number::kOverflow);
  if (type == Type::kBoolean) return number != 0;
  // What a file holds in a column of doubles is read as it is.
  if (type != Type::kDouble && !std::isfinite(number)) throw StandardError(error_number::kOverflow);
  return number;
}

std::string_view TextView(sqlite3_value* value) {
  const auto* const text = reinterpret_cast<const char*>(sqlite3_value_text(value));
  return {text == nullptr ? "" : text, static_cast<std::size_t>(sqlite3_value_bytes(value))};
}

std::string_view BlobView(sqlite3_value* value) {
  const auto* const bytes = static_cast<const char*>(sqlite3_value_blob(value));
  return {bytes == nullptr ? "" : bytes, static_cast<std::size_t>(sqlite3_value_bytes(value))};
}

std::vector<std::byte> Bytes(sqlite3_value* value) {
  const auto* const bytes = static_cast<const std::byte*>(sqlite3_value_blob(value));
  return {bytes, bytes + sqlite3_value_bytes(value)};
}

}  // namespace

Type TypeOf(const Value& value) {
  constexpr Type kTypes[] = {Type::kNull,     Type::kBoolean, Type::kInteger, Type::kDouble,
                             Type::kCurrency, Type::kDate,    Type::kText,    Type::kBinary};
  return kTypes[value.index()];
}

Type TypeOf(access::ColumnType type) {
  switch (type) {
    case access::ColumnType::kBoolean:
      return Type::kBoolean;
    case access::ColumnType::kByte:
    case access::ColumnType::kInteger:
    case access::ColumnType::kLong:
    case access::ColumnType::kBigInt:
    case access::ColumnType::kComplex:
      return Type::kInteger;
    case access::ColumnType::kCurrency:
      return Type::kCurrency;
    case access::ColumnType::kSingle:
    case access::ColumnType::kDouble:
      return Type::kDouble;
    case access::ColumnType::kDecimal:
      return Type::kDecimal;
    case access::ColumnType::kDateTime:
    case access::ColumnType::kDateTimeExtended:
      return Type::kDate;
    case access::ColumnType::kText:
    case access::ColumnType::kMemo:
    case access::ColumnType::kGuid:
      return Type::kText;
    case access::ColumnType::kBinary:
    case access::ColumnType::kOle:
      return Type::kBinary;
  }
  return Type::kBinary;
}

std::int64_t DateToSeconds(Date date) {
  return date.DayNumber() * kSecondsPerDay + date.SecondOfDay();
}

Date DateFromSeconds(std::int64_t seconds) {
  std::int64_t day = seconds / kSecondsPerDay;
  std::int64_t second = seconds % kSecondsPerDay;
  if (second < 0) {
    second += kSecondsPerDay;
    --day;
  }
  const double fraction = static_cast<double>(second) / static_cast<double>(kSecondsPerDay);
  // Before day 0, too, the fraction counts forward from midnight.
  return Date::FromSerial(static_cast<double>(day) + (day < 0 ? -fraction : fraction));
}

char TypeLetter(Type type) { return kTypeLetters[static_cast<std::size_t>(type)]; }

Type TypeOfLetter(char letter) { return static_cast<Type>(kTypeLetters.find(letter)); }

Value ReadValue(sqlite3_value* value, Type type) {
  switch (sqlite3_value_type(value)) {
    case SQLITE_INTEGER:
      return ReadInteger(sqlite3_value_int64(value), type);
    case SQLITE_FLOAT:
      return ReadReal(sqlite3_value_double(value), type);
    case SQLITE_TEXT:
      return std::string(TextView(value));
    case SQLITE_BLOB:
      if (type == Type::kDecimal) return Decimal::FromKey(BlobView(value)).ToValue();
      return Bytes(value);
    default:
      return Null{};
  }
}

void SetResult(sqlite3_context* context, const Value& value, Type type) {
  if (type == Type::kDecimal && !IsNull(value)) {
    const std::string key = Decimal::Of(value).Key();
    return sqlite3_result_blob64(context, key.data(), key.size(), SQLITE_TRANSIENT);
  }
  switch (TypeOf(value)) {
    case Type::kNull:
      return sqlite3_result_null(context);
    case Type::kBoolean:
      return sqlite3_result_int(context, std::get<bool>(value) ? -1 : 0);
    case Type::kInteger:
      return sqlite3_result_int64(context, std::get<std::int64_t>(value));
    case Type::kDouble:
      return sqlite3_result_double(context, std::get<double>(value));
    case Type::kCurrency:
      return sqlite3_result_int64(context, std::get<Currency>(value).ten_thousandths());
    case Type::kDecimal:  // of no value
      return;
    case Type::kDate:
      return sqlite3_result_int64(context, DateToSeconds(std::get<Date>(value)));
    case Type::kText: {
      const auto& text = std::get<std::string>(value);
      return sqlite3_result_text64(context, text.data(), text.size(), SQLITE_TRANSIENT,
                                   SQLITE_UTF8);
    }
    case Type::kBinary: {
      const auto& bytes = std::get<std::vector<std::byte>>(value);
      return sqlite3_result_blob64(context, bytes.data(), bytes.size(), SQLITE_TRANSIENT);
    }
  }
}

void BindValue(sqlite3_stmt* statement, int parameter, const Value& value) {
  const auto bind = [&] {
    switch (TypeOf(value)) {
      case Type::kBoolean:
        return sqlite3_bind_int(statement, parameter, std::get<bool>(value) ? -1 : 0);
      case Type::kInteger:
        return sqlite3_bind_int64(statement, parameter, std::get<std::int64_t>(value));
      case Type::kDouble:
        return sqlite3_bind_double(statement, parameter, std::get<double>(value));
      case Type::kCurrency:
        return sqlite3_bind_int64(statement, parameter,
                                  std::get<Currency>(value).ten_thousandths());
      case Type::kDate:
        return sqlite3_bind_int64(statement, parameter, DateToSeconds(std::get<Date>(value)));
      case Type::kText: {
        const auto& text = std::get<std::string>(value);
        return sqlite3_bind_text64(statement, parameter, text.data(), text.size(), SQLITE_TRANSIENT,
                                   SQLITE_UTF8);
      }
      case Type::kNull:
      case Type::kDecimal:  // of no value
      case Type::kBinary:   // has no literals
        break;
    }
    return sqlite3_bind_null(statement, parameter);
  };
  // An unbound parameter would be null and match other rows.
  RequireDone(bind());
}

void BindDecimal(sqlite3_stmt* statement, int parameter, const Decimal& number) {
  const std::string key = number.Key();
  RequireDone(sqlite3_bind_blob64(statement, parameter, key.data(), key.size(), SQLITE_TRANSIENT));
}

Value WithoutGrouping(const Value& value) {
  const auto* const text = std::get_if<std::string>(&value);
  if (text == nullptr || text->find(',') == std::string::npos) return value;
  std::string number;
  bool digits = false, behind_point = false;
  for (const char c : *text) {
    digits = digits || IsDigit(c);
    behind_point = behind_point || c == '.';
    if (c != ',' || !digits || behind_point) number += c;
  }
  return number;
}

Value ConvertTo(const Value& value, Type type) {
  if (IsNull(value) || TypeOf(value) == type) return value;
  switch (type) {
    case Type::kBoolean:
      return ToBool(value);
    case Type::kInteger: {
      const double number = std::nearbyint(ToDouble(WithoutGrouping(value)));
      if (!(std::abs(number) <= 9.2e18)) throw StandardError(error_number::kOverflow);
      return static_cast<std::int64_t>(number);
    }
    case Type::kDouble:
      return ToDouble(WithoutGrouping(value));
    case Type::kCurrency:
      return ToCurrency(WithoutGrouping(value));
    case Type::kDecimal:
      return Decimal::Of(WithoutGrouping(value)).ToValue();
    case Type::kDate:
      return ToDate(value);
    case Type::kText:
      return TextOf(value);
    default:
      throw StandardError(error_number::kTypeMismatch);
  }
}

void RequireDone(int sqlite_status) {
  if (sqlite_status == SQLITE_OK) return;
  throw RuntimeError(
      access::engine_error::kOutOfResources,
      std::string("System resource exceeded (") + sqlite3_errstr(sqlite_status) + ").",
      "DAO.Database");
}

}  // namespace tenora::query
