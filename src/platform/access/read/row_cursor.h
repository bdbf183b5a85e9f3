// The walk over a table's rows: the pages its usage map names, in order, and on each page its rows.
#pragma once

#include <memory>
#include <vector>

#include "platform/access/database_file.h"
#include "platform/access/read/table_data.h"

namespace tenora::access {

// A cursor that tells where the current row is: its slot where a walk meets it, which is what an
// index points to, also when the row has moved on from there.
class PlacedCursor : public RowCursor {
 public:
  virtual RowPointer place() const = 0;
};

std::unique_ptr<PlacedCursor> OpenCursor(std::shared_ptr<const TableData> table);
// Walks these rows alone. Raises Corruption for a place that holds none.
std::unique_ptr<PlacedCursor> OpenCursorAt(std::shared_ptr<const TableData> table,
                                           std::vector<RowPointer> places);

}  // namespace tenora::access
