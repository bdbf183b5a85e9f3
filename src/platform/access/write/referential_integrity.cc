#include "platform/access/write/referential_integrity.h"

#include <algorithm>

#include "platform/access/read/row_finder.h"
#include "platform/runtime/text.h"

namespace tenora::access {
namespace {

// The positions of columns by name. Raises Corruption for one that the table does not have.
std::vector<std::size_t> Positions(const TableDefinition& table,
                                   const std::vector<std::string>& names) {
  std::vector<std::size_t> positions;
  for (const std::string& name : names) {
    const auto found = std::ranges::find_if(
        table.columns, [&](const Column& column) { return EqualsNoCase(column.name, name); });
    if (found == table.columns.end()) {
      throw Corruption(table.page, "a relationship refers to a missing column '" + name + "'");
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

RuntimeError RelatedError(int number, const std::string& text) {
  return RuntimeError(number, text, "DAO.Recordset");
}

bool HasNull(const std::vector<Field>& fields) {
  return std::ranges::any_of(fields, [](const Field& field) { return !field; });
}

}  // namespace

RuntimeError ReferentialIntegrity::Missing(const std::string& table) const {
  return NotUpdatable(table_->name, "the related table '" + table + "' is not in the file");
}

void ReferentialIntegrity::RequireReferenced(const StoredRow* before, const StoredRow& after) {
  for (const Relationship& relationship : context_.relationships()) {
    if (!EqualsNoCase(relationship.table, table_->name)) continue;
    const auto own = Positions(table_->definition, ReferringColumns(relationship));
    const std::vector<Field> fields = Fields(after, own);
    if (HasNull(fields) || (before != nullptr && Fields(*before, own) == fields)) continue;
    const auto other = context_.Load(relationship.referenced);
    if (other == nullptr) throw Missing(relationship.referenced);
    const auto referenced = Positions(other->definition, ReferencedColumns(relationship));
    // A row may refer to itself.
    if (EqualsNoCase(relationship.referenced, table_->name) &&
        Fields(after, referenced) == fields) {
      continue;
    }
    if (!RowFinder(other, context_.codec()).Find(referenced, fields).empty()) continue;
    throw RelatedError(
        engine_error::kRelatedRecordRequired,
        "You cannot add or change a record because a related record is required in table '" +
            relationship.referenced + "'.");
  }
}

void ReferentialIntegrity::RequireUnreferenced(const StoredRow& before, const StoredRow* after,
                                               RowPointer place) {
  for (const Relationship& relationship : context_.relationships()) {
    if (!EqualsNoCase(relationship.referenced, table_->name)) continue;
    const auto own = Positions(table_->definition, ReferencedColumns(relationship));
    const std::vector<Field> fields = Fields(before, own);
    if (HasNull(fields) || (after != nullptr && Fields(*after, own) == fields)) continue;
    const auto other = context_.Load(relationship.table);
    if (other == nullptr) throw Missing(relationship.table);
    const auto referring = Positions(other->definition, ReferringColumns(relationship));
    std::vector<RowPointer> rows = RowFinder(other, context_.codec()).Find(referring, fields);
    if (EqualsNoCase(relationship.table, table_->name)) std::erase(rows, place);
    if (rows.empty()) continue;
    if (relationship.cascades) {
      throw NotUpdatable(table_->name, "the relationship '" + relationship.name +
                                           "' cascades the change to table '" + relationship.table +
                                           "', which is not supported");
    }
    throw RelatedError(engine_error::kRelatedRecordsExist,
                       "The record cannot be deleted or changed because table '" +
                           relationship.table + "' includes related records.");
  }
}

}  // namespace tenora::access
