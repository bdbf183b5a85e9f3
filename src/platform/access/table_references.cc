// The part of TableEditor that keeps relationships: no row refers to one that is missing.
#include <algorithm>

#include "platform/access/table_editor.h"
#include "platform/runtime/text.h"

namespace tenora::access {
namespace {

// The positions of columns by name. Raises Damage for one the table does not have.
std::vector<std::size_t> Positions(const TableDefinition& table,
                                   const std::vector<std::string>& names) {
  std::vector<std::size_t> positions;
  for (const std::string& name : names) {
    const auto found = std::ranges::find_if(
        table.columns, [&](const Column& column) { return EqualsNoCase(column.name, name); });
    if (found == table.columns.end()) {
      throw Damage(table.page, "a relationship is over a missing column '" + name + "'");
    }
    positions.push_back(static_cast<std::size_t>(found - table.columns.begin()));
  }
  return positions;
}

std::vector<std::string> ReferringColumns(const Relationship& relationship) {
  std::vector<std::string> names;
  for (const auto& [referring, referenced] : relationship.columns) names.push_back(referring);
  return names;
}

std::vector<std::string> ReferencedColumns(const Relationship& relationship) {
  std::vector<std::string> names;
  for (const auto& [referring, referenced] : relationship.columns) names.push_back(referenced);
  return names;
}

std::vector<Field> Fields(const StoredRow& row, const std::vector<std::size_t>& columns) {
  std::vector<Field> fields;
  for (const std::size_t column : columns) fields.push_back(row.fields[column]);
  return fields;
}

bool HasNull(const std::vector<Field>& fields) {
  return std::ranges::any_of(fields, [](const Field& field) { return !field; });
}

}  // namespace

void TableEditor::RequireReferenced(const Plan& plan) {
  for (const Relationship& relationship : context_.relationships()) {
    if (!EqualsNoCase(relationship.table, name())) continue;
    const auto own = Positions(table_->definition, ReferringColumns(relationship));
    const std::vector<Field> fields = Fields(*plan.row, own);
    if (HasNull(fields) || (plan.before && Fields(*plan.before, own) == fields)) continue;
    const auto other = context_.Load(relationship.referenced);
    if (other == nullptr) Refuse("the table '" + relationship.referenced + "' is not here");
    const auto referenced = Positions(other->definition, ReferencedColumns(relationship));
    // A row may refer to itself.
    if (EqualsNoCase(relationship.referenced, name()) && Fields(*plan.row, referenced) == fields) {
      continue;
    }
    if (!RowFinder(other, context_.codec()).Find(referenced, fields).empty()) continue;
    throw Error(
        engine_error::kRelatedRecordRequired,
        "You cannot add or change a record because a related record is required in table '" +
            relationship.referenced + "'.");
  }
}

void TableEditor::RequireUnreferenced(const Plan& plan, RowPointer place) {
  for (const Relationship& relationship : context_.relationships()) {
    if (!EqualsNoCase(relationship.referenced, name())) continue;
    const auto own = Positions(table_->definition, ReferencedColumns(relationship));
    const std::vector<Field> fields = Fields(*plan.before, own);
    if (HasNull(fields) || (plan.row && Fields(*plan.row, own) == fields)) continue;
    const auto other = context_.Load(relationship.table);
    if (other == nullptr) Refuse("the table '" + relationship.table + "' is not here");
    const auto referring = Positions(other->definition, ReferringColumns(relationship));
    std::vector<RowPointer> rows = RowFinder(other, context_.codec()).Find(referring, fields);
    if (EqualsNoCase(relationship.table, name())) std::erase(rows, place);
    if (rows.empty()) continue;
    if (relationship.cascades) {
      Refuse("the relationship '" + relationship.name + "' carries the change on to table '" +
             relationship.table + "', which is not done here");
    }
    throw Error(engine_error::kRelatedRecordsExist,
                "The record cannot be deleted or changed because table '" + relationship.table +
                    "' includes related records.");
  }
}

}  // namespace tenora::access
