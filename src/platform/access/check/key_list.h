// The keys that a table's rows give for the columns of an index or of a relationship.
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

  // Raises Corruption when a column lies outside the row.
  void Add(RowPointer home, const Row& row);
  // By key and row; entries() and unkeyed() are in no order before.
  void Sort();

  const std::vector<Entry>& entries() const { return entries_; }
  // The rows whose keys are not known.
  const std::vector<RowPointer>& unkeyed() const { return unkeyed_; }
  // Why keys are not known; empty when all are.
  const std::string& reason() const { return reason_; }
  // Whether keys are known but for those of some rows.
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
