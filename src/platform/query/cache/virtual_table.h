// Exposes tables to SQLite as virtual tables. SQLite scans or looks up rows that are in memory in
// place, nothing is copied; those of other tables are read from the file.
#pragma once

#include <sqlite3.h>

#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "platform/query/cache/table_source.h"
#include "platform/runtime/error.h"

namespace tenora::query {

struct VirtualTables {
  // A table's index here is the number in its virtual table's name.
  std::vector<std::shared_ptr<TableSource>> sources;
  // Raised while a file was read, kept until the statement reports it.
  std::optional<RuntimeError> error;
};

// What SQLite's "explain query plan" says of one of these tables.
struct TablePlan {
  std::size_t number = 0;            // of the table
  std::vector<std::size_t> columns;  // of a look-up
  bool range = false;                // of the values of its only column
};
// None for a line about something else.
std::optional<TablePlan> ReadTablePlan(std::string_view line);

// Registers the module "source". "create virtual table t3 using source(3)" then makes table
// number 3 available, with columns c0, c1, … `tables` outlives the connection.
void RegisterVirtualTables(sqlite3* connection, VirtualTables& tables);

}  // namespace tenora::query
