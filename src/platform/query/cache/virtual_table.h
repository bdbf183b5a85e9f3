// Exposes cached tables to SQLite as virtual tables: SQLite scans or looks up their rows in place,
// nothing is copied.
#pragma once

#include <sqlite3.h>

#include <memory>
#include <vector>

#include "platform/query/cache/cached_table.h"

namespace tenora::query {

// A table's index here is the number in its virtual table's name.
using VirtualTables = std::vector<std::shared_ptr<CachedTable>>;

// Registers the module "cached". "create virtual table t3 using cached(3)" then makes table
// number 3 available, with columns c0, c1, … `tables` outlives the connection.
void RegisterVirtualTables(sqlite3* connection, const VirtualTables& tables);

}  // namespace tenora::query
