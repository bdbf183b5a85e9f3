// The relationships between tables that the engine enforces, from MSysRelationships.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "platform/access/read/row_cursor.h"

namespace tenora::access {

struct Relationship {
  std::string name;
  std::string table;                                         // whose rows refer
  std::string referenced;                                    // whose rows are referred to
  std::vector<std::pair<std::string, std::string>> columns;  // of the one and the other
  bool cascades = false;  // changes or deletions reach the referring rows
};

// `table` is MSysRelationships. Raises Corruption when it is not what it should be. Those that are
// kept without being enforced are left out.
std::vector<Relationship> ReadRelationships(const std::shared_ptr<const TableData>& table);

}  // namespace tenora::access
