// Which constraints of a statement lead to a table's rows, and what that is expected to cost.
#pragma once

#include <sqlite3.h>

#include <vector>

#include "platform/query/cache/table_source.h"

namespace tenora::query {

// What the values of a range are: its bounds, or one value that is both. SQLite keeps the number
// with the plan; those above 0 are numbers of values of a look-up by equality.
enum RangeKind : int { kFrom = -1, kTo = -2, kFromTo = -3, kBoth = -4 };

// Constraints that a look-up can use, and how many rows it is expected to find.
struct LookUpPlan {
  std::vector<int> constraints;
  double rows = 0;
  double cost = 0;
  int number = 0;  // of values, or a RangeKind
  bool indexed = false;
};

// The cheapest way; without constraints where all rows must be passed. Raises what looking for an
// index raises.
LookUpPlan PlanLookUp(TableSource& source, sqlite3_index_info& info);

}  // namespace tenora::query
