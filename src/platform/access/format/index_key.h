// The key of an index entry: what the index keeps of a row's columns, so made that keys compared
// byte by byte sort as the columns do. For each column of the index, one after another:
//
//   7F, the value's bytes     80, the same inverted, of a descending column
//   00 for null               FF
//
// Numbers are kept high byte first with the sign bit turned over; a negative single, double or date
// has all its bits turned over. A boolean is 00 for true, FF for false. A text is what sort_order.h
// says; descending it has a 00 of its own behind the inverted bytes. A binary value or GUID is kept
// in pieces of eight bytes, each followed by 09, the last, filled up with zeros, by its length.
#pragma once

#include <string>
#include <vector>

#include "platform/access/format/row.h"
#include "platform/access/format/sort_order.h"

namespace tenora::access {

// Compares as the index sorts: std::string compares bytes without sign.
using IndexKey = std::string;

class IndexKeyEncoder {
 public:
  // Raises NotEncodable when a column's type or sort order is one whose keys are not known here,
  // or when the index names a column that the table does not have. `table` and `codec` must outlive
  // the encoder.
  IndexKeyEncoder(const TableDefinition& table, const PhysicalIndex& index, const TextCodec& codec);

  // The index's columns, in its order, as positions in the table's.
  const std::vector<std::size_t>& columns() const { return columns_; }

  // Replaces `key` with the key of one field for each of columns(). Raises NotEncodable, naming the
  // column, for a value whose key is not known.
  void Encode(std::span<const StoredField> fields, IndexKey& key);

  // Whether the index has an entry for a row of these fields. One that leaves out nulls has none
  // for a row whose columns are all null.
  bool Includes(std::span<const StoredField> fields) const;

 private:
  struct Part {
    ColumnType type;
    bool descending;
    const SortOrder* order;  // of text
    std::string_view name;
  };
  void AppendField(const Part& part, const StoredField& field, IndexKey& key);

  const TextCodec& codec_;
  std::vector<Part> parts_;
  std::vector<std::size_t> columns_;
  bool leaves_out_nulls_;
  std::string text_;
};

}  // namespace tenora::access
