// Cursors over the rows of a table: a scan of the pages that the table owns, and rows at given
// places.
#pragma once

#include <memory>
#include <vector>

#include "platform/access/database_file.h"
#include "platform/access/read/table_data.h"

namespace tenora::access {

// A cursor that also gives the place of the current row: the slot where a scan finds it and to
// which indexes point, even if the row has moved to another page since.
class PlacedCursor : public RowCursor {
 public:
  virtual RowPointer place() const = 0;
};

std::unique_ptr<PlacedCursor> OpenCursor(std::shared_ptr<const TableData> table);
// Visits only the rows at these places. Next() raises RuntimeError 3049 for a place without a row.
std::unique_ptr<PlacedCursor> OpenCursorAt(std::shared_ptr<const TableData> table,
                                           std::vector<RowPointer> places);

}  // namespace tenora::access
