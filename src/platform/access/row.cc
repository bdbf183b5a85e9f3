#include "platform/access/row.h"

#include "platform/access/field_text.h"

namespace tenora::access {

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

Row::Row(const Layout& layout, const TableDefinition& table, Bytes bytes, std::uint32_t page)
    : bytes_(bytes), page_(page), count_size_(layout.row_count_size) {
  if (bytes.size() < count_size_) throw Damage(page, "a row is too short for its column count");
  const bool wide = count_size_ == 2;
  column_count_ = wide ? Load16(bytes.data()) : Load8(bytes.data());
  const std::size_t mask_size = (column_count_ + 7) / 8;
  if (count_size_ + mask_size > bytes.size()) {
    throw Damage(page, "a row is too short for " + std::to_string(column_count_) + " columns");
  }
  const std::size_t mask = bytes.size() - mask_size;
  null_mask_ = bytes.data() + mask;
  data_end_ = mask;
  if (table.variable_columns == 0) return;

  if (mask < 3 * count_size_) throw Damage(page, "a row is too short for its variable columns");
  const std::size_t count_at = mask - count_size_;
  variable_count_ = wide ? Load16(&bytes[count_at]) : Load8(&bytes[count_at]);
  if (!wide) {
    jump_count_ = (bytes.size() - 1) / 256;
    jumps_ = bytes.data() + count_at - 1;
  }
  const std::size_t tail = jump_count_ + (variable_count_ + 1) * count_size_;
  if (tail + count_size_ > count_at) {
    throw Damage(page,
                 "a row is too short for " + std::to_string(variable_count_) + " variable columns");
  }
  starts_ = count_at - jump_count_ - count_size_;
  const std::size_t table_end = count_at - tail;
  data_end_ = VariableStart(variable_count_);
  if (data_end_ > table_end) throw Damage(page, "the columns of a row overlap its offsets");
}

std::size_t Row::VariableStart(std::size_t index) const {
  const std::byte* entry = bytes_.data() + starts_ - index * count_size_;
  if (count_size_ == 2) return Load16(entry);
  std::size_t start = Load8(entry);
  // Whichever end the unused entries lie at, they exceed every index.
  for (std::size_t i = 0; i < jump_count_; ++i) {
    if (Load8(jumps_ - i) <= index) start += 256;
  }
  return start;
}

Bytes Row::Fixed(std::uint16_t offset, std::size_t size) const {
  const std::size_t start = count_size_ + offset;
  if (start + size > data_end_) throw Damage(page_, "a fixed column lies outside its row");
  return bytes_.subspan(start, size);
}

Bytes Row::Variable(std::uint16_t index) const {
  if (index >= variable_count_) return {};
  const std::size_t start = VariableStart(index);
  const std::size_t end = VariableStart(index + std::size_t{1});
  if (start > end || end > data_end_) {
    throw Damage(page_, "a variable column lies outside its row");
  }
  return bytes_.subspan(start, end - start);
}

Bytes StoredBytes(const Row& row, const TableDefinition& table, std::size_t column) {
  const Column& c = table.columns[column];
  if (!row.HasValue(c.number)) return {};
  const ColumnPlace& place = table.places[column];
  return c.fixed_length ? row.Fixed(place.fixed_offset, FixedSize(c))
                        : row.Variable(place.variable_index);
}

}  // namespace tenora::access
