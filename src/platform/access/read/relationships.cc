#include "platform/access/read/relationships.h"

#include <map>

namespace tenora::access {
namespace {

constexpr std::int64_t kNotEnforced = 0x02;
constexpr std::int64_t kCascades = 0x100 | 0x1000;  // updates, deletions

}  // namespace

std::vector<Relationship> ReadRelationships(const std::shared_ptr<const TableData>& table) {
  const TableDefinition& definition = table->definition;
  const std::size_t name = RequireColumn(definition, "szRelationship", ColumnType::kText);
  const std::size_t flags = RequireColumn(definition, "grbit", ColumnType::kLong);
  const std::size_t position = RequireColumn(definition, "icolumn", ColumnType::kLong);
  const std::size_t referring = RequireColumn(definition, "szObject", ColumnType::kText);
  const std::size_t column = RequireColumn(definition, "szColumn", ColumnType::kText);
  const std::size_t referenced = RequireColumn(definition, "szReferencedObject", ColumnType::kText);
  const std::size_t referenced_column =
      RequireColumn(definition, "szReferencedColumn", ColumnType::kText);
  struct Parts {
    Relationship relationship;
    std::map<std::int64_t, std::pair<std::string, std::string>> columns;
  };
  std::map<std::string, Parts> by_name;
  for (const auto rows = OpenCursor(table); rows->Next();) {
    if ((rows->Integer(flags) & kNotEnforced) != 0) continue;
    Parts& parts = by_name[std::string(rows->Text(name))];
    parts.relationship.name = rows->Text(name);
    parts.relationship.table = rows->Text(referring);
    parts.relationship.referenced = rows->Text(referenced);
    parts.relationship.cascades = (rows->Integer(flags) & kCascades) != 0;
    std::string own(rows->Text(column));
    parts.columns[rows->Integer(position)] = {std::move(own),
                                              std::string(rows->Text(referenced_column))};
  }
  std::vector<Relationship> relationships;
  for (auto& [key, parts] : by_name) {
    for (auto& [place, pair] : parts.columns) parts.relationship.columns.push_back(pair);
    relationships.push_back(std::move(parts.relationship));
  }
  return relationships;
}

}  // namespace tenora::access
