// Referential integrity: no row refers, by an enforced relationship, to a row that is missing.
#pragma once

#include <memory>
#include <string>

#include "platform/access/format/row.h"
#include "platform/access/write/write_context.h"

namespace tenora::access {

// Checks the changes to the rows of one table. Both checks raise Corruption for a relationship over
// columns that a table does not have, 3073 when the other table is not in the file.
class ReferentialIntegrity {
 public:
  // `context` must outlive the object.
  ReferentialIntegrity(WriteContext& context, std::shared_ptr<const TableData> table)
      : context_(context), table_(std::move(table)) {}

  // Raises 3201 when a row that `after` refers to is missing. `before` is null for a new row.
  void RequireReferenced(const StoredRow* before, const StoredRow& after);

  // Raises 3200 when rows refer to `before`, which is at `place`, and would lose it; 3073 when the
  // relationship would change those rows too. `after` is null for a deletion.
  void RequireUnreferenced(const StoredRow& before, const StoredRow* after, RowPointer place);

 private:
  RuntimeError Missing(const std::string& table) const;

  WriteContext& context_;
  std::shared_ptr<const TableData> table_;
};

}  // namespace tenora::access
