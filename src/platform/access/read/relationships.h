// The relationships between tables that the engine enforces, from MSysRelationships.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "platform/access/read/row_cursor.h"

namespace tenora::access {

struct Relationship {
  std::string name;
  std::string table;                                         // the one whose rows refer
  std::string referenced;                                    // the one whose rows are referred to
  std::vector<std::pair<std::string, std::string>> columns;  // referring column, referenced column
  bool cascades = false;  // changes or deletions are carried over to the referring rows
};

// `table` is MSysRelationships. Relationships that are not enforced are left out. Raises Corruption
// when a column is missing, RuntimeError when rows cannot be read.
std::vector<Relationship> ReadRelationships(const std::shared_ptr<const TableData>& table);

}  // namespace tenora::access
