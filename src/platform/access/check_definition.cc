#include "platform/access/check_definition.h"

#include <algorithm>
#include <map>
#include <set>

#include "platform/access/row.h"

namespace tenora::access {
namespace {

bool IsKnown(ColumnType type) {
  const auto number = static_cast<int>(type);
  return (number >= 1 && number <= 12) || (number >= 15 && number <= 20);
}

// A faulty column makes all rows doubtful.
class ColumnCheck {
 public:
  ColumnCheck(const CheckContext& context, const FindingPlace& place, const TableDefinition& table)
      : context_(context), place_(place), table_(table) {}

  void Check(std::size_t position) {
    const Column& column = table_.columns[position];
    const ColumnPlace& at = table_.places[position];
    if (column.name.empty()) Fault(column, "has no name");
    if (!IsKnown(column.type)) {
      Fault(column, "is of the unknown type " + std::to_string(static_cast<int>(column.type)));
    }
    if (column.number >= table_.max_columns) {
      Fault(column, "has the number " + std::to_string(column.number) + " of " +
                        std::to_string(table_.max_columns));
    }
    if (!numbers_.insert(column.number).second) Fault(column, "has the number of another");
    if (column.type == ColumnType::kBoolean) return;
    if (!column.fixed_length) {
      if (at.variable_index >= table_.variable_columns ||
          !variable_.insert(at.variable_index).second) {
        Fault(column, "has no place of its own among the variable columns");
      }
      return;
    }
    const std::size_t end = at.fixed_offset + FixedSize(column);
    const auto next = fixed_.lower_bound(at.fixed_offset);
    const bool below = next != fixed_.end() && next->first < end;
    const bool above = next != fixed_.begin() && std::prev(next)->second > at.fixed_offset;
    if (below || above) Fault(column, "lies over another in the rows");
    fixed_.emplace(at.fixed_offset, end);
  }

 private:
  void Fault(const Column& column, const std::string& what) {
    context_.report.Fault(place_, table_.page, {}, "column '" + column.name + "' " + what,
                          Remedy::kRestore);
  }

  const CheckContext& context_;
  const FindingPlace& place_;
  const TableDefinition& table_;
  std::set<std::uint16_t> numbers_, variable_;
  std::map<std::size_t, std::size_t> fixed_;  // start, end
};

}  // namespace

void CheckDefinition(const CheckContext& context, const FindingPlace& place,
                     const TableDefinition& table) {
  ColumnCheck columns(context, place, table);
  for (std::size_t i = 0; i < table.columns.size(); ++i) columns.Check(i);
  for (std::size_t i = 0; i < table.physical_indexes.size(); ++i) {
    const PhysicalIndex& index = table.physical_indexes[i];
    const bool known = std::all_of(index.parts.begin(), index.parts.end(), [&](const auto& part) {
      return std::any_of(table.columns.begin(), table.columns.end(),
                         [&](const Column& column) { return column.number == part.column_number; });
    });
    if (known && !index.parts.empty()) continue;
    context.report.Fault(place.WithIndex(IndexName(table, i)), table.page, {},
                         "the index is over columns that the table does not have",
                         Remedy::kRebuildIndex);
  }
}

std::string IndexName(const TableDefinition& table, std::size_t physical) {
  const auto logical =
      std::find_if(table.logical_indexes.begin(), table.logical_indexes.end(),
                   [&](const LogicalIndex& index) { return index.physical == physical; });
  return logical != table.logical_indexes.end() ? logical->name
                                                : "number " + std::to_string(physical);
}

}  // namespace tenora::access
