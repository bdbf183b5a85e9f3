#include "platform/query/cache/cell.h"

#include <charconv>

#include "platform/query/values/decimal.h"
#include "platform/query/values/sqlite_value.h"

namespace tenora::query {
namespace {

// A single-precision number as the double that reads the same: 7.1, not 7.0999999046.
double FromSingle(double single) {
  char digits[32];
  const auto end =
      std::to_chars(std::begin(digits), std::end(digits), static_cast<float>(single)).ptr;
  double number = single;
  std::from_chars(digits, end, number);
  return number;
}

}  // namespace

std::int64_t IntegerCell(access::RowCursor& row, std::size_t column, access::ColumnType type) {
  switch (type) {
    case access::ColumnType::kBoolean:
      return row.Boolean(column) ? -1 : 0;
    case access::ColumnType::kCurrency:
      return row.TenThousandths(column);
    case access::ColumnType::kDateTime:
      return DateToSeconds(Date::FromSerial(row.Double(column)));
    case access::ColumnType::kDateTimeExtended: {
      const Value value = row.Field(column);
      const Date* date = std::get_if<Date>(&value);
      return date == nullptr ? 0 : DateToSeconds(*date);
    }
    default:
      return row.Integer(column);
  }
}

double DoubleCell(access::RowCursor& row, std::size_t column, access::ColumnType type) {
  const double number = row.Double(column);
  return type == access::ColumnType::kSingle ? FromSingle(number) : number;
}

std::string_view BytesCell(access::RowCursor& row, std::size_t column, access::ColumnType type,
                           std::string& buffer) {
  if (type == access::ColumnType::kDecimal) {
    buffer = row.IsNull(column) ? "" : Decimal::Parse(row.Text(column)).value_or(Decimal()).Key();
    return buffer;
  }
  const auto bytes = row.Bytes(column);
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

}  // namespace tenora::query
