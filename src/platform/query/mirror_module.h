// Shows the mirrored tables to SQLite as virtual tables: SQLite walks or looks up their rows where
// they lie, nothing is copied into it.
#pragma once

#include <sqlite3.h>

#include "platform/query/mirror_table.h"

namespace tenora::query {

// The name under which a connection knows the engine's order of texts.
inline constexpr char kCollationName[] = "engine";

// Finds a table by the number in its virtual table's name.
class MirrorTables {
 public:
  virtual ~MirrorTables() = default;
  virtual MirrorTable* TableAt(std::size_t number) = 0;
};

// Registers the module "mirror" and the collation. "create virtual table t3 using mirror(3)" then
// makes table number 3 known, with columns c0, c1, …
void RegisterMirrorModule(sqlite3* connection, MirrorTables& tables);

}  // namespace tenora::query
