#include "platform/server/result_rows.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>

#include "platform/runtime/date.h"

namespace tenora::server {
namespace {

using access::ColumnType;

// Rows are numbered by page and place in it.
constexpr std::int64_t kPlaces = 256;

[[noreturn]] void ThrowUnreadable(std::string_view text, const char* what) {
  throw ServerError(server_error::kCallFailed,
                    "The server gave '" + std::string(text) + "' where " + what + " was expected.");
}

template <typename Number>
Number NumberOf(std::string_view text) {
  Number number{};
  const auto [end, status] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (status != std::errc() || end != text.data() + text.size()) ThrowUnreadable(text, "a number");
  return number;
}

// "-12.5" or "-12.5000" gives -125000.
std::int64_t TenThousandthsOf(std::string_view text) {
  constexpr std::size_t kDecimals = 4;
  const std::size_t point = std::min(text.find('.'), text.size());
  std::string digits(text.substr(0, point));
  std::string decimals(point < text.size() ? text.substr(point + 1) : std::string_view());
  if (decimals.size() > kDecimals) ThrowUnreadable(text, "an amount");
  decimals.resize(kDecimals, '0');
  return NumberOf<std::int64_t>(digits + decimals);
}

// "2026-11-21 14:30:05", the time possibly missing.
Date DateOf(std::string_view text) {
  CalendarTime parts{};
  const std::string terminated(text);
  const int read = std::sscanf(terminated.c_str(), "%d-%d-%d %d:%d:%d", &parts.year, &parts.month,
                               &parts.day, &parts.hour, &parts.minute, &parts.second);
  constexpr int kDay = 3, kTime = 6;
  if (read != kDay && read != kTime) ThrowUnreadable(text, "a date");
  return Date::FromCalendar(parts);
}

std::string DateText(Date date) {
  const CalendarTime parts = date.Calendar();
  char text[64];
  std::snprintf(text, sizeof text, "%04d-%02d-%02d %02d:%02d:%02d", parts.year, parts.month,
                parts.day, parts.hour, parts.minute, parts.second);
  return text;
}

std::string AmountText(std::int64_t ten_thousandths) {
  return Currency::FromTenThousandths(ten_thousandths).ToText();
}

template <typename Number>
std::string ShortestText(Number number) {
  char digits[64];
  return {digits, std::to_chars(std::begin(digits), std::end(digits), number).ptr};
}

}  // namespace

std::string SelectedExpression(const std::string& stored, const access::Column& column) {
  return stored.empty() ? "extra->>" + Literal(column.name) : Name(stored);
}

std::optional<std::string> SentField(access::RowCursor& row, std::size_t column, ColumnType type) {
  if (type != ColumnType::kBoolean && row.IsNull(column)) return std::nullopt;
  switch (type) {
    case ColumnType::kBoolean:
      return row.Boolean(column) ? "t" : "f";
    case ColumnType::kByte:
    case ColumnType::kInteger:
    case ColumnType::kLong:
    case ColumnType::kBigInt:
    case ColumnType::kComplex:
      return std::to_string(row.Integer(column));
    case ColumnType::kCurrency:
      return AmountText(row.TenThousandths(column));
    case ColumnType::kSingle:
      return ShortestText(static_cast<float>(row.Double(column)));
    case ColumnType::kDouble:
      return ShortestText(row.Double(column));
    case ColumnType::kDateTime:
    case ColumnType::kDateTimeExtended:
      return DateText(Date::FromSerial(row.Double(column)));
    case ColumnType::kText:
    case ColumnType::kMemo:
    case ColumnType::kGuid:
    case ColumnType::kDecimal: {
      std::string text(row.Text(column));
      std::erase(text, '\0');
      return text;
    }
    case ColumnType::kBinary:
    case ColumnType::kOle:
      break;
  }
  const std::span<const std::byte> bytes = row.Bytes(column);
  return HexBytes({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
}

bool ResultRows::Next() {
  if (result_ != nullptr) ++row_;
  if (result_ == nullptr || row_ >= result_->rows()) {
    result_ = next_ ? next_(last_row_) : nullptr;
    row_ = 0;
    if (result_ == nullptr || result_->rows() == 0) {
      next_ = nullptr;
      result_ = nullptr;
      return false;
    }
  }
  last_row_ = result_->Integer(row_, 0);
  return true;
}

access::RowId ResultRows::Id() const {
  return {static_cast<std::uint32_t>(last_row_ / kPlaces),
          static_cast<std::uint8_t>(last_row_ % kPlaces)};
}

std::string_view ResultRows::Field(std::size_t column) const {
  return result_->Text(row_, static_cast<int>(column) + 1);
}

bool ResultRows::IsNull(std::size_t column) const {
  return columns_[column].type != ColumnType::kBoolean &&
         result_->IsNull(row_, static_cast<int>(column) + 1);
}

bool ResultRows::Boolean(std::size_t column) const { return Field(column).starts_with('t'); }

std::int64_t ResultRows::Integer(std::size_t column) const {
  return IsNull(column) ? 0 : NumberOf<std::int64_t>(Field(column));
}

std::int64_t ResultRows::TenThousandths(std::size_t column) const {
  return IsNull(column) ? 0 : TenThousandthsOf(Field(column));
}

double ResultRows::Double(std::size_t column) const {
  if (IsNull(column)) return 0;
  switch (columns_[column].type) {
    case ColumnType::kDateTime:
    case ColumnType::kDateTimeExtended:
      return DateOf(Field(column)).serial();
    case ColumnType::kSingle:
      return NumberOf<float>(Field(column));
    default:
      return NumberOf<double>(Field(column));
  }
}

std::string_view ResultRows::Text(std::size_t column) { return Field(column); }

std::span<const std::byte> ResultRows::Bytes(std::size_t column) {
  bytes_.clear();
  std::string_view text = Field(column);
  if (text.starts_with("\\x")) text.remove_prefix(2);
  constexpr int kHexadecimal = 16;
  for (; text.size() >= 2; text.remove_prefix(2)) {
    unsigned char byte = 0;
    std::from_chars(text.data(), text.data() + 2, byte, kHexadecimal);
    bytes_.push_back(static_cast<std::byte>(byte));
  }
  return bytes_;
}

}  // namespace tenora::server
