// The table MSysQueries, which has the saved queries in pieces: a row for each table, column, join
// and clause. docs/access-format.md lists them.
#pragma once

#include <memory>

#include "platform/access/read/system_catalogue.h"
#include "platform/access/read/table_data.h"
#include "platform/access/saved_query.h"

namespace tenora::access {

// A query put together from its rows in `table`. Raises Corruption where they make no query, or
// RuntimeError where they cannot be read.
SavedQuery ReadQuery(const std::shared_ptr<const TableData>& table, const QueryEntry& entry);

}  // namespace tenora::access
