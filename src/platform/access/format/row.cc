#include "platform/access/format/row.h"

#include <algorithm>

namespace tenora::access {
namespace {

void Append16(std::vector<std::byte>& bytes, std::size_t number) {
  bytes.resize(bytes.size() + 2);
  Store16(&bytes[bytes.size() - 2], number);
}

}  // namespace

Row::Row(const Layout& layout, const TableDefinition& table, Bytes bytes, std::uint32_t page)
    : bytes_(bytes), page_(page), count_size_(layout.row_count_size) {
  if (bytes.size() < count_size_) throw Corruption(page, "a row is too short for its column count");
  const bool wide = count_size_ == 2;
  column_count_ = wide ? Load16(bytes.data()) : Load8(bytes.data());
  const std::size_t mask_size = (column_count_ + 7) / 8;
  if (count_size_ + mask_size > bytes.size()) {
    throw Corruption(page, "a row is too short for " + std::to_string(column_count_) + " columns");
  }
  const std::size_t mask = bytes.size() - mask_size;
  null_mask_ = bytes.data() + mask;
  data_end_ = mask;
  if (table.variable_columns == 0) return;

  if (mask < 3 * count_size_) throw Corruption(page, "a row is too short for its variable columns");
  const std::size_t count_at = mask - count_size_;
  variable_count_ = wide ? Load16(&bytes[count_at]) : Load8(&bytes[count_at]);
  if (!wide) {
    jump_count_ = (bytes.size() - 1) / 256;
    jumps_ = bytes.data() + count_at - 1;
  }
  const std::size_t tail = jump_count_ + (variable_count_ + 1) * count_size_;
  if (tail + count_size_ > count_at) {
    throw Corruption(
        page, "a row is too short for " + std::to_string(variable_count_) + " variable columns");
  }
  starts_ = count_at - jump_count_ - count_size_;
  const std::size_t table_end = count_at - tail;
  data_end_ = VariableStart(variable_count_);
  if (data_end_ > table_end) throw Corruption(page, "the columns of a row overlap its offsets");
}

std::size_t Row::VariableStart(std::size_t index) const {
  const std::byte* entry = bytes_.data() + starts_ - index * count_size_;
  if (count_size_ == 2) return Load16(entry);
  std::size_t start = Load8(entry);
  // Unused entries exceed every index, at whichever end they are.
  for (std::size_t i = 0; i < jump_count_; ++i) {
    if (Load8(jumps_ - i) <= index) start += 256;
  }
  return start;
}

Bytes Row::Fixed(std::uint16_t offset, std::size_t size) const {
  const std::size_t start = count_size_ + offset;
  if (start + size > data_end_) throw Corruption(page_, "a fixed column lies outside its row");
  return bytes_.subspan(start, size);
}

Bytes Row::Variable(std::uint16_t index) const {
  if (index >= variable_count_) return {};
  const std::size_t start = VariableStart(index);
  const std::size_t end = VariableStart(index + std::size_t{1});
  if (start > end || end > data_end_) {
    throw Corruption(page_, "a variable column lies outside its row");
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

StoredRow StoredRow::Split(const Layout& layout, const TableDefinition& table, Bytes bytes,
                           std::uint32_t page) {
  const Row row(layout, table, bytes, page);
  StoredRow split;
  for (std::size_t i = 0; i < table.columns.size(); ++i) {
    const Column& column = table.columns[i];
    Field& field = split.fields.emplace_back();
    if (!row.HasValue(column.number)) continue;
    const Bytes stored = column.fixed_length
                             ? row.Fixed(table.places[i].fixed_offset, FixedSize(column))
                             : row.Variable(table.places[i].variable_index);
    field.emplace(stored.begin(), stored.end());
  }
  return split;
}

std::vector<StoredField> StoredRow::Pick(const std::vector<std::size_t>& columns) const {
  std::vector<StoredField> picked;
  for (const std::size_t column : columns) {
    const Field& field = fields[column];
    picked.push_back({field.has_value(), field ? Bytes(*field) : Bytes()});
  }
  return picked;
}

std::vector<std::byte> StoredRow::Join(const TableDefinition& table) const {
  std::vector<std::byte> row(2);
  Store16(row.data(), table.max_columns);
  std::vector<const Field*> variable(table.variable_columns);
  for (std::size_t i = 0; i < table.columns.size(); ++i) {
    const Column& column = table.columns[i];
    const ColumnPlace& place = table.places[i];
    if (!column.fixed_length) {
      if (place.variable_index >= variable.size()) {
        throw Corruption(table.page, "column '" + column.name + "' is beyond the variable columns");
      }
      variable[place.variable_index] = &fields[i];
      continue;
    }
    const std::size_t start = 2 + std::size_t{place.fixed_offset};
    const std::size_t end = start + FixedSize(column);
    if (row.size() < end) row.resize(end);
    if (fields[i]) {
      std::copy_n(fields[i]->begin(), std::min(fields[i]->size(), end - start), &row[0] + start);
    }
  }
  std::vector<std::size_t> starts;
  for (const Field* field : variable) {
    starts.push_back(row.size());
    if (field != nullptr && *field) row.insert(row.end(), (*field)->begin(), (*field)->end());
  }
  if (!variable.empty()) {
    Append16(row, row.size());
    for (auto start = starts.rbegin(); start != starts.rend(); ++start) Append16(row, *start);
    Append16(row, variable.size());
  }
  const std::size_t mask = row.size();
  row.resize(mask + (table.max_columns + std::size_t{7}) / 8);
  for (std::size_t i = 0; i < table.columns.size(); ++i) {
    const std::uint16_t number = table.columns[i].number;
    if (!fields[i]) continue;
    if (number >= table.max_columns) throw Corruption(table.page, "a column's number is too high");
    row[mask + number / 8U] |= std::byte{1} << number % 8;
  }
  return row;
}

}  // namespace tenora::access
