#include "platform/access/check_relationships.h"

#include <algorithm>

#include "platform/access/row_cursor.h"
#include "platform/runtime/text.h"

namespace tenora::access {
namespace {

constexpr const char* kTable = "MSysRelationships";
constexpr std::int64_t kNotEnforced = 2;
constexpr std::size_t kMost = 1000;

const DefinedTable* Named(const std::vector<DefinedTable>& tables, std::string_view name) {
  const auto found = std::find_if(tables.begin(), tables.end(), [&](const DefinedTable& table) {
    return EqualsNoCase(table.name, name);
  });
  return found == tables.end() ? nullptr : &*found;
}

const Column* ColumnNamed(const TableDefinition& table, std::string_view name) {
  const auto found = std::find_if(table.columns.begin(), table.columns.end(),
                                  [&](const Column& c) { return EqualsNoCase(c.name, name); });
  return found == table.columns.end() ? nullptr : &*found;
}

}  // namespace

RelationshipCheck::RelationshipCheck(const CheckContext& context,
                                     std::shared_ptr<const PageFile> file,
                                     const std::vector<DefinedTable>& tables)
    : context_(context), tables_(tables) {
  try {
    ReadAll(file);
  } catch (const RuntimeError&) {
    // The rows of MSysRelationships are checked as every table's, which names the fault.
    context_.report.NotChecked({kTable, {}}, "the relationships: they cannot be read");
  }
  for (auto& [name, relationship] : relationships_) Prepare(relationship);
}

void RelationshipCheck::ReadAll(const std::shared_ptr<const PageFile>& file) {
  const DefinedTable* const table = Named(tables_, kTable);
  if (table == nullptr) return;
  constexpr std::string_view kNames[] = {
      "szRelationship",     "szObject", "szColumn", "szReferencedObject",
      "szReferencedColumn", "grbit",    "icolumn"};
  std::vector<std::size_t> at;
  for (const std::string_view name : kNames) {
    const Column* const column = ColumnNamed(table->definition, name);
    if (column == nullptr) return;
    at.push_back(static_cast<std::size_t>(column - table->definition.columns.data()));
  }
  const auto rows =
      OpenCursor(std::make_shared<TableData>(TableData{file, table->name, table->definition}));
  while (rows->Next() && relationships_.size() < kMost) {
    if ((rows->Integer(at[5]) & kNotEnforced) != 0) continue;
    std::string name(rows->Text(at[0]));
    Relationship& relationship = relationships_[name];
    relationship.name = std::move(name);
    relationship.table = rows->Text(at[1]);
    relationship.referenced_table = rows->Text(at[3]);
    Pair& pair = relationship.columns[rows->Integer(at[6])];
    pair.column = rows->Text(at[2]);
    pair.referenced_column = rows->Text(at[4]);
  }
}

void RelationshipCheck::Prepare(Relationship& relationship) {
  relationship.from = Named(tables_, relationship.table);
  relationship.to = Named(tables_, relationship.referenced_table);
  // A table kept in another file is none of this one's.
  if (relationship.from == nullptr || relationship.to == nullptr) return;
  const FindingPlace place{relationship.table, {}};
  const std::string name = "relationship '" + relationship.name + "'";
  PhysicalIndex columns, referenced_columns;
  for (const auto& [order, pair] : relationship.columns) {
    const Column* const column = ColumnNamed(relationship.from->definition, pair.column);
    const Column* const other = ColumnNamed(relationship.to->definition, pair.referenced_column);
    if (column == nullptr || other == nullptr) {
      context_.report.Fault(place, {}, {}, name + " is over columns that the tables do not have",
                            Remedy::kCorrectRows);
      return;
    }
    if (column->type != other->type || column->sort_order != other->sort_order) {
      context_.report.NotChecked(place, name + ": its columns are of different types");
      return;
    }
    columns.parts.push_back({column->number, false});
    referenced_columns.parts.push_back({other->number, false});
  }
  relationship.keys =
      std::make_unique<KeyList>(relationship.from->definition, columns, context_.codec);
  relationship.referenced_keys =
      std::make_unique<KeyList>(relationship.to->definition, referenced_columns, context_.codec);
}

std::vector<KeyList*> RelationshipCheck::WantedOf(const DefinedTable& table) const {
  std::vector<KeyList*> wanted;
  for (const auto& [name, relationship] : relationships_) {
    if (relationship.keys == nullptr) continue;
    if (relationship.from == &table) wanted.push_back(relationship.keys.get());
    if (relationship.to == &table) wanted.push_back(relationship.referenced_keys.get());
  }
  return wanted;
}

void RelationshipCheck::Run() {
  for (auto& [name, relationship] : relationships_) {
    if (relationship.keys != nullptr) Compare(relationship);
  }
}

void RelationshipCheck::Compare(Relationship& relationship) {
  const FindingPlace place{relationship.table, {}};
  const std::string name = "relationship '" + relationship.name + "'";
  KeyList &keys = *relationship.keys, &referenced = *relationship.referenced_keys;
  const std::string& reason = keys.reason().empty() ? referenced.reason() : keys.reason();
  if (!reason.empty()) context_.report.NotChecked(place, name + ": " + reason);
  // A row without a key among those referred to might be the one that seems to be missing.
  if (!referenced.reason().empty()) return;
  keys.Sort();
  referenced.Sort();
  auto at = referenced.entries().begin();
  const auto end = referenced.entries().end();
  for (const KeyList::Entry& row : keys.entries()) {
    if (row.has_null) continue;
    while (at != end && at->key < row.key) ++at;
    if (at != end && at->key == row.key) continue;
    context_.report.Fault(place, row.row,
                          name + ": the row refers to a row of table '" +
                              relationship.referenced_table + "' that is missing",
                          Remedy::kCorrectRows);
  }
}

}  // namespace tenora::access
