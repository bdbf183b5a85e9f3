// The aggregates that SQLite lacks: e_first, e_last, e_avg_money (of ten-thousandths, rounded half
// to even), and the deviations e_stdev, e_stdevp, e_var, e_varp.
#pragma once

#include <sqlite3.h>

namespace tenora::query {

void RegisterAggregates(sqlite3* connection);

}  // namespace tenora::query
