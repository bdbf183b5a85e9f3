// The keys of a table's rows over the columns of an index or of a relationship.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/access/format/index_key.h"
#include "platform/access/format/row.h"

namespace tenora::access {

class KeyList {
 public:
  struct Entry {
    IndexKey key;
    RowPointer row;
    bool has_null = false;
  };

  // `table` and `codec` must outlive the list.
  KeyList(const TableDefinition& table, const PhysicalIndex& index, const TextCodec& codec);

  // Raises Corruption when a column extends beyond the row.
  void Add(RowPointer home, const Row& row);
  // Sorts entries() by key and row, unkeyed() by row.
  void Sort();

  const std::vector<Entry>& entries() const { return entries_; }
  // The rows whose keys cannot be encoded.
  const std::vector<RowPointer>& unkeyed() const { return unkeyed_; }
  // Why not; empty when all keys can be encoded.
  const std::string& reason() const { return reason_; }
  // Whether keys can be encoded at all; those of some rows may still be missing.
  bool has_keys() const { return encoder_.has_value(); }

 private:
  const TableDefinition& table_;
  std::optional<IndexKeyEncoder> encoder_;
  std::vector<StoredField> fields_;
  std::vector<Entry> entries_;
  std::vector<RowPointer> unkeyed_;
  std::string reason_;
};

}  // namespace tenora::access
