// A row on a data page:
//
//   number of columns when the row was written (1 or 2 bytes)
//   fixed columns, each at its offset from the definition
//   variable columns that are not null
//   -- from the end backwards; the last three only if the table ever had a variable column --
//   null mask: a bit per column number, 1 for a value; a boolean's value is its bit
//   count of variable columns (1 or 2)
//   [Jet 3: jump table]
//   start of variable column 0, 1, …, end of the last (1 or 2 each)
//
// Starts have only one byte in Jet 3. Its jump table has an entry for each full 256 bytes of the
// row: the first variable column (the end counts as one more) that starts at or after that offset,
// FF if none does.
#pragma once

#include <cstdint>

#include "platform/access/format/field_codec.h"

namespace tenora::access {

class Row {
 public:
  Row() = default;
  // Raises Corruption, naming `page`, when the parts overlap or extend beyond the row.
  Row(const Layout& layout, const TableDefinition& table, Bytes bytes, std::uint32_t page);

  // The bit in the null mask; false for a column that was added after the row was written.
  bool HasValue(std::uint16_t column_number) const {
    if (column_number >= column_count_) return false;
    return (Load8(null_mask_ + column_number / 8) >> (column_number % 8) & 1) != 0;
  }
  // The bytes of a column that has a value; empty for a variable column that the row does not have.
  // `size` is FixedSize of the column. Raises Corruption when they are outside the row.
  Bytes Fixed(std::uint16_t offset, std::size_t size) const;
  Bytes Variable(std::uint16_t index) const;

 private:
  std::size_t VariableStart(std::size_t index) const;

  Bytes bytes_;
  std::uint32_t page_ = 0;
  std::size_t column_count_ = 0;
  const std::byte* null_mask_ = nullptr;
  std::size_t count_size_ = 0;
  std::size_t data_end_ = 0;  // end of the last column's bytes
  std::size_t variable_count_ = 0;
  std::size_t starts_ = 0;            // offset of variable column 0's start; the others precede it
  const std::byte* jumps_ = nullptr;  // Jet 3: the last entry; the others precede it
  std::size_t jump_count_ = 0;
};

// The bytes of a column, by position in the definition; empty when it is null. Raises Corruption
// when they are outside the row.
Bytes StoredBytes(const Row& row, const TableDefinition& table, std::size_t column);

// The stored field of a column. `present` is its bit in the null mask: false for null, and the
// value of a boolean.
struct StoredField {
  bool present = false;
  Bytes bytes;
};

// A row split into its fields, one for each column of the definition.
struct StoredRow {
  std::vector<Field> fields;

  // Raises Corruption for a row that Row rejects.
  static StoredRow Split(const Layout& layout, const TableDefinition& table, Bytes bytes,
                         std::uint32_t page);
  // The fields of these columns, as IndexKeyEncoder takes them.
  std::vector<StoredField> Pick(const std::vector<std::size_t>& columns) const;
  // The bytes of the row in Jet 4 and ACE. Bytes of deleted columns are zero.
  std::vector<std::byte> Join(const TableDefinition& table) const;
};

}  // namespace tenora::access
