// A row taken apart into the bytes of its columns, and put together again.
#pragma once

#include <optional>
#include <vector>

#include "platform/access/index_key.h"
#include "platform/access/row.h"

namespace tenora::access {

// A column's bytes as the row keeps them, none for null. A boolean that is true has some, of no
// bytes.
using Field = std::optional<std::vector<std::byte>>;

// For each column of the table, in the definition's order.
struct StoredRow {
  std::vector<Field> fields;

  // Raises Damage for a broken row.
  static StoredRow Split(const Layout& layout, const TableDefinition& table, Bytes bytes,
                         std::uint32_t page);
  // The fields of these columns as index keys are made of them.
  std::vector<StoredField> Pick(const std::vector<std::size_t>& columns) const;
  // As Jet 4 and ACE keep it. Places of deleted columns are zero.
  std::vector<std::byte> Join(const TableDefinition& table) const;
};

}  // namespace tenora::access
