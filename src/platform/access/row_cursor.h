// The walk over a table's rows: the pages its usage map names, in order, and on each page its rows.
#pragma once

#include <memory>

#include "platform/access/table_definition.h"

namespace tenora::access {

// What a cursor needs of its table; shared with it, so that a cursor may outlive the table.
struct TableData {
  std::shared_ptr<const PageFile> file;
  std::string name;
  TableDefinition definition;
};

std::unique_ptr<RowCursor> OpenCursor(std::shared_ptr<const TableData> table);

}  // namespace tenora::access
