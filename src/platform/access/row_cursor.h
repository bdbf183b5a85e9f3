// The walk over a table's rows: the pages its usage map names, in order, and on each page its rows.
#pragma once

#include <memory>
#include <vector>

#include "platform/access/table_definition.h"

namespace tenora::access {

// What a cursor needs of its table; shared with it, so that a cursor may outlive the table.
struct TableData {
  std::shared_ptr<const PageFile> file;
  std::string name;
  TableDefinition definition;
};

// A cursor that tells where the current row is: its slot where a walk meets it, which is what an
// index points to, also when the row has moved on from there.
class PlacedCursor : public RowCursor {
 public:
  virtual RowPointer place() const = 0;
};

std::unique_ptr<PlacedCursor> OpenCursor(std::shared_ptr<const TableData> table);
// Walks these rows alone. Raises Damage for a place that holds none.
std::unique_ptr<PlacedCursor> OpenCursorAt(std::shared_ptr<const TableData> table,
                                           std::vector<RowPointer> places);

}  // namespace tenora::access
