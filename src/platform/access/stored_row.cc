#include "platform/access/stored_row.h"

#include <algorithm>

namespace tenora::access {
namespace {

void Append16(std::vector<std::byte>& bytes, std::size_t number) {
  bytes.resize(bytes.size() + 2);
  Store16(&bytes[bytes.size() - 2], number);
}

}  // namespace

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
        throw Damage(table.page, "column '" + column.name + "' is beyond the variable columns");
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
    if (number >= table.max_columns) throw Damage(table.page, "a column's number is too high");
    row[mask + number / 8U] |= std::byte{1} << number % 8;
  }
  return row;
}

}  // namespace tenora::access
