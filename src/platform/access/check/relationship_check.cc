#include "platform/access/check/relationship_check.h"

#include <algorithm>

#include "platform/access/read/row_cursor.h"
#include "platform/runtime/text.h"

namespace tenora::access {
namespace {

constexpr const char* kTable = "MSysRelationships";
constexpr std::size_t kMost = 255;  // each needs memory for the keys of two tables

const TableData* Named(const std::vector<std::shared_ptr<const TableData>>& tables,
                       std::string_view name) {
  const auto found = std::ranges::find_if(
      tables, [&](const auto& table) { return EqualsNoCase(table->name, name); });
  return found == tables.end() ? nullptr : found->get();
}

const Column* ColumnNamed(const TableDefinition& table, std::string_view name) {
  const auto found = std::find_if(table.columns.begin(), table.columns.end(),
                                  [&](const Column& c) { return EqualsNoCase(c.name, name); });
  return found == table.columns.end() ? nullptr : &*found;
}

}  // namespace

RelationshipCheck::RelationshipCheck(const CheckContext& context,
                                     const std::vector<std::shared_ptr<const TableData>>& tables)
    : context_(context), tables_(tables) {
  const auto table = std::ranges::find_if(
      tables_, [](const auto& candidate) { return EqualsNoCase(candidate->name, kTable); });
  if (table == tables_.end()) return;
  const auto not_read = [&](const std::exception& reason) {
    context_.report.NotChecked({kTable, {}}, std::string("the relationships: ") + reason.what());
  };
  try {
    for (Relationship& relationship : ReadRelationships(*table)) {
      if (relationships_.size() < kMost) relationships_.push_back(Prepare(std::move(relationship)));
    }
  } catch (const Corruption& reason) {
    not_read(reason);
  } catch (const RuntimeError& reason) {
    not_read(reason);
  }
}

RelationshipCheck::Checked RelationshipCheck::Prepare(Relationship relationship) {
  Checked checked;
  checked.relationship = std::move(relationship);
  checked.from = Named(tables_, checked.relationship.table);
  checked.to = Named(tables_, checked.relationship.referenced);
  // Tables in other files are not checked.
  if (checked.from == nullptr || checked.to == nullptr) return checked;
  const FindingPlace place{checked.relationship.table, {}};
  const std::string name = "relationship '" + checked.relationship.name + "'";
  PhysicalIndex columns, referenced_columns;
  for (const auto& [column_name, other_name] : checked.relationship.columns) {
    const Column* const column = ColumnNamed(checked.from->definition, column_name);
    const Column* const other = ColumnNamed(checked.to->definition, other_name);
    if (column == nullptr || other == nullptr) {
      context_.report.Fault(place, {}, {}, name + " refers to columns that the tables do not have",
                            Remedy::kCorrectRows);
      return checked;
    }
    if (column->type != other->type || column->sort_order != other->sort_order) {
      context_.report.NotChecked(place, name + ": its columns have different types");
      return checked;
    }
    columns.parts.push_back({column->number, false});
    referenced_columns.parts.push_back({other->number, false});
  }
  checked.keys = std::make_unique<KeyList>(checked.from->definition, columns, context_.codec);
  checked.referenced_keys =
      std::make_unique<KeyList>(checked.to->definition, referenced_columns, context_.codec);
  return checked;
}

std::vector<KeyList*> RelationshipCheck::WantedOf(const TableData& table) const {
  std::vector<KeyList*> wanted;
  for (const Checked& checked : relationships_) {
    if (checked.keys == nullptr) continue;
    if (checked.from == &table) wanted.push_back(checked.keys.get());
    if (checked.to == &table) wanted.push_back(checked.referenced_keys.get());
  }
  return wanted;
}

void RelationshipCheck::Run() {
  for (Checked& checked : relationships_) {
    if (checked.keys != nullptr) Compare(checked);
  }
}

void RelationshipCheck::Compare(Checked& checked) {
  const FindingPlace place{checked.relationship.table, {}};
  const std::string name = "relationship '" + checked.relationship.name + "'";
  KeyList &keys = *checked.keys, &referenced = *checked.referenced_keys;
  const std::string& reason = keys.reason().empty() ? referenced.reason() : keys.reason();
  if (!reason.empty()) context_.report.NotChecked(place, name + ": " + reason);
  // A referenced row whose key cannot be encoded might be the one that seems to be missing.
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
                              checked.relationship.referenced + "' that is missing",
                          Remedy::kCorrectRows);
  }
}

}  // namespace tenora::access
