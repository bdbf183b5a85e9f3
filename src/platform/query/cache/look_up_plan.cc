#include "platform/query/cache/look_up_plan.h"

#include <algorithm>
#include <string_view>

#include "platform/query/values/collation.h"

namespace tenora::query {
namespace {

// What reaching a row of the file costs, compared with a row in memory.
constexpr double kLookUpCost = 200, kFoundCost = 8;

// The usable equalities, one a column.
std::vector<int> Equalities(const TableSource& source, sqlite3_index_info& info) {
  std::vector<int> usable;
  const auto column_of = [&](int constraint) { return info.aConstraint[constraint].iColumn; };
  for (int i = 0; i < info.nConstraint; ++i) {
    const auto& constraint = info.aConstraint[i];
    if (constraint.usable == 0 || constraint.op != SQLITE_INDEX_CONSTRAINT_EQ) continue;
    if (constraint.iColumn < 0) continue;
    const SourceColumn& column = source.columns()[static_cast<std::size_t>(constraint.iColumn)];
    if (!column.CanLookUp()) continue;
    if (column.type == Type::kText &&
        std::string_view(sqlite3_vtab_collation(&info, i)) != kCollationName)
      continue;
    if (std::ranges::find(usable, constraint.iColumn, column_of) == usable.end())
      usable.push_back(i);
  }
  return usable;
}

// Chooses the equality on the most selective column.
LookUpPlan PlanInMemory(CachedTable& table, const sqlite3_index_info& info,
                        const std::vector<int>& equalities) {
  LookUpPlan best;
  for (const int i : equalities) {
    const double found = table.RowsPerValue(static_cast<std::size_t>(info.aConstraint[i].iColumn));
    if (best.constraints.empty() || found < best.rows) best = {{i}, found, found + 1, 1};
  }
  return best;
}

// Chooses an index of the file. Without one the rows are found in a pass over the table, the first
// time, and then in memory.
LookUpPlan PlanInFile(TableSource& source, const sqlite3_index_info& info,
                      const std::vector<int>& equalities) {
  if (equalities.empty()) return {};
  std::vector<std::size_t> columns;
  for (const int i : equalities)
    columns.push_back(static_cast<std::size_t>(info.aConstraint[i].iColumn));
  const access::IndexPath* const path = source.FindIndex(columns);
  if (path == nullptr) {
    constexpr double kShare = 0.1;
    const double rows = static_cast<double>(source.row_count());
    return {{equalities.front()}, std::max(rows * kShare, 1.0), rows + 1, 1};
  }
  LookUpPlan plan{{},
                  path->rows_per_key,
                  kLookUpCost + kFoundCost * path->rows_per_key,
                  static_cast<int>(path->columns.size()),
                  true};
  for (const std::size_t column : path->columns) {
    const auto place = std::ranges::find(columns, column) - columns.begin();
    plan.constraints.push_back(equalities[static_cast<std::size_t>(place)]);
  }
  return plan;
}

// The constraints of one column; -1 for none.
struct Bounds {
  int column = 0;
  int equal = -1, from = -1, to = -1;
};

std::vector<Bounds> BoundsOf(const TableSource& source, sqlite3_index_info& info) {
  std::vector<Bounds> all;
  for (int i = 0; i < info.nConstraint; ++i) {
    const auto& constraint = info.aConstraint[i];
    if (constraint.usable == 0 || constraint.iColumn < 0) continue;
    const SourceColumn& column = source.columns()[static_cast<std::size_t>(constraint.iColumn)];
    if (!column.CanFindRange()) continue;
    if (column.type == Type::kText &&
        std::string_view(sqlite3_vtab_collation(&info, i)) != kCollationName)
      continue;
    auto bounds = std::ranges::find(all, constraint.iColumn, &Bounds::column);
    if (bounds == all.end()) bounds = all.insert(all.end(), Bounds{.column = constraint.iColumn});
    // Keys of equal dates and numbers with fractions differ; all others are looked up by equality.
    const bool equal = constraint.op == SQLITE_INDEX_CONSTRAINT_EQ &&
                       (column.type == Type::kDate || column.type == Type::kDouble);
    if (equal) bounds->equal = i;
    if (constraint.op == SQLITE_INDEX_CONSTRAINT_GE || constraint.op == SQLITE_INDEX_CONSTRAINT_GT)
      bounds->from = i;
    if (constraint.op == SQLITE_INDEX_CONSTRAINT_LE || constraint.op == SQLITE_INDEX_CONSTRAINT_LT)
      bounds->to = i;
  }
  return all;
}

// Chooses an index of the file for a range. Its bounds are not known yet; one that proves too wide
// is read in a pass over the table.
LookUpPlan PlanRange(TableSource& source, sqlite3_index_info& info) {
  constexpr double kShareOfTwo = 0.02, kCostOfTwo = 0.3, kShareOfOne = 0.25, kCostOfOne = 0.8;
  const double rows = static_cast<double>(source.row_count());
  LookUpPlan best;
  for (const Bounds& bounds : BoundsOf(source, info)) {
    if (bounds.equal < 0 && bounds.from < 0 && bounds.to < 0) continue;
    const access::IndexPath* const path =
        source.FindRangeIndex(static_cast<std::size_t>(bounds.column));
    if (path == nullptr) continue;
    LookUpPlan plan{{bounds.from < 0 ? bounds.to : bounds.from},
                    rows * kShareOfOne,
                    rows * kCostOfOne + kLookUpCost,
                    bounds.from < 0 ? kTo : kFrom,
                    true};
    if (bounds.equal >= 0) {
      plan = {{bounds.equal},
              path->rows_per_key,
              kLookUpCost + kFoundCost * path->rows_per_key,
              kBoth,
              true};
    } else if (bounds.from >= 0 && bounds.to >= 0) {
      plan = {{bounds.from, bounds.to},
              rows * kShareOfTwo,
              rows * kCostOfTwo + kLookUpCost,
              kFromTo,
              true};
    }
    if (best.constraints.empty() || plan.cost < best.cost) best = plan;
  }
  return best;
}

}  // namespace

LookUpPlan PlanLookUp(TableSource& source, sqlite3_index_info& info) {
  const std::vector<int> equalities = Equalities(source, info);
  if (source.rows() != nullptr) return PlanInMemory(*source.rows(), info, equalities);
  const LookUpPlan plan = PlanInFile(source, info, equalities);
  if (plan.indexed) return plan;
  const LookUpPlan range = PlanRange(source, info);
  return range.indexed && (plan.constraints.empty() || range.cost < plan.cost) ? range : plan;
}

}  // namespace tenora::query
