// The key of an index entry: the indexed columns of a row, encoded so that keys compared byte by
// byte sort like the columns' values. For each column of the index in turn:
//
//   ascending     7F and the value's bytes           00 for null
//   descending    80 and the value's bytes inverted  FF for null
//
// Numbers are big-endian with the sign bit inverted; a negative single, double or date has all bits
// inverted. A boolean is 00 for true, FF for false. For text see platform/access/sort_order.h;
// descending text is followed by an extra 00 that is not inverted. Binary values and GUIDs are
// split into pieces of eight bytes, each followed by 09; the last is padded with zeros and followed
// by its length.
#pragma once

#include <string>
#include <vector>

#include "platform/access/format/row.h"
#include "platform/access/sort_order.h"

namespace tenora::access {

// Sorts like the index: std::string compares bytes as unsigned.
using IndexKey = std::string;

class IndexKeyEncoder {
 public:
  // Raises NotEncodable when the key format of a column's type or sort order is not known, or when
  // the index names a column that the table does not have. `table` and `codec` must outlive the
  // encoder.
  IndexKeyEncoder(const TableDefinition& table, const PhysicalIndex& index, const TextCodec& codec);

  // The columns of the index, in its order, as positions in the table's columns.
  const std::vector<std::size_t>& columns() const { return columns_; }

  // Sets `key` to the key of `fields`, one for each of columns(). Raises NotEncodable, naming the
  // column, for a value whose key is not known.
  void Encode(std::span<const StoredField> fields, IndexKey& key);

  // Whether the index has an entry for a row with these fields. An index that ignores nulls has
  // none for a row in which all its columns are null.
  bool Includes(std::span<const StoredField> fields) const;

 private:
  struct Part {
    ColumnType type;
    bool descending;
    const SortOrder* order;  // of text
    std::string_view name;
  };
  void AppendText(const Part& part, Bytes stored, IndexKey& key);
  void AppendField(const Part& part, const StoredField& field, IndexKey& key);

  const TextCodec& codec_;
  std::vector<Part> parts_;
  std::vector<std::size_t> columns_;
  bool leaves_out_nulls_;
  std::string text_;
};

}  // namespace tenora::access
