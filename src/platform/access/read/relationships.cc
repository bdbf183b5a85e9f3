#include "platform/access/read/relationships.h"

#include <algorithm>
#include <map>

#include "platform/runtime/text.h"

namespace tenora::access {
namespace {

constexpr std::int64_t kNotEnforced = 0x02;
constexpr std::int64_t kCascades = 0x100 | 0x1000;  // updates, deletions

std::size_t ColumnNamed(const TableData& table, std::string_view name) {
  const auto found = std::ranges::find_if(table.definition.columns, [&](const Column& column) {
    return EqualsNoCase(column.name, name);
  });
  if (found == table.definition.columns.end()) {
    throw Corruption(table.definition.page,
                     "the table of relationships has no column '" + std::string(name) + "'");
  }
  return static_cast<std::size_t>(found - table.definition.columns.begin());
}

}  // namespace

std::vector<Relationship> ReadRelationships(const std::shared_ptr<const TableData>& table) {
  const std::size_t name = ColumnNamed(*table, "szRelationship");
  const std::size_t flags = ColumnNamed(*table, "grbit");
  const std::size_t position = ColumnNamed(*table, "icolumn");
  const std::size_t referring = ColumnNamed(*table, "szObject");
  const std::size_t column = ColumnNamed(*table, "szColumn");
  const std::size_t referenced = ColumnNamed(*table, "szReferencedObject");
  const std::size_t referenced_column = ColumnNamed(*table, "szReferencedColumn");
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
