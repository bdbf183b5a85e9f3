#include "platform/access/check/relationship_check.h"

#include <algorithm>

#include "platform/access/read/row_cursor.h"
#include "platform/runtime/text.h"

namespace tenora::access {
namespace {

constexpr const char* kTable = "MSysRelationships";
constexpr std::size_t kMost = 255;

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

std::string NameOf(const Relationship& relationship) {
  return "relationship '" + relationship.name + "'";
}

// A row with a null refers to none.
KeyList::Handler AddTo(KeyHashes& hashes) {
  return [&hashes](std::string_view key, RowPointer, bool has_null) {
    if (!has_null) hashes.Add(key);
  };
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
    const std::size_t most =
        context_.related_keys / (2 * std::max<std::size_t>(relationships_.size(), 1));
    for (Checked& checked : relationships_) Start(checked, most);
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
  const std::string name = NameOf(checked.relationship);
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
  checked.columns = std::move(columns);
  checked.referenced_columns = std::move(referenced_columns);
  return checked;
}

void RelationshipCheck::Start(Checked& checked, std::size_t most) const {
  if (checked.columns.parts.empty()) return;
  checked.hashes = std::make_unique<KeyHashes>(most);
  checked.referenced_hashes = std::make_unique<KeyHashes>(most);
  checked.keys = std::make_unique<KeyList>(checked.from->definition, checked.columns,
                                           context_.codec, AddTo(*checked.hashes));
  checked.referenced_keys =
      std::make_unique<KeyList>(checked.to->definition, checked.referenced_columns, context_.codec,
                                AddTo(*checked.referenced_hashes));
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

void RelationshipCheck::Run(const ReadAgain& read_again) {
  for (Checked& checked : relationships_) {
    if (checked.keys == nullptr) continue;
    try {
      Compare(checked, read_again);
    } catch (const Corruption& changed_since) {
      context_.report.Fault({checked.relationship.table, {}}, changed_since, Remedy::kRestore);
    }
    checked = {};
  }
}

void RelationshipCheck::Compare(Checked& checked, const ReadAgain& read_again) {
  const FindingPlace place{checked.relationship.table, {}};
  const KeyList &keys = *checked.keys, &referenced = *checked.referenced_keys;
  const std::string& reason = keys.reason().empty() ? referenced.reason() : keys.reason();
  if (!reason.empty())
    context_.report.NotChecked(place, NameOf(checked.relationship) + ": " + reason);
  // A referenced row whose key cannot be encoded might be the one that seems to be missing.
  if (!referenced.reason().empty()) return;
  const auto too_many = [&] {
    context_.report.NotChecked(
        place, NameOf(checked.relationship) + ": the tables have too many keys to compare them");
  };
  if (checked.hashes->parts() > 1 || checked.referenced_hashes->parts() > 1) {
    // Now there is the room of all relationships for this one.
    checked.hashes = std::make_unique<KeyHashes>(context_.related_keys / 2);
    checked.referenced_hashes = std::make_unique<KeyHashes>(context_.related_keys / 2);
    if (!Collect(checked, read_again)) return too_many();
  }
  const std::uint64_t parts = std::max(checked.hashes->parts(), checked.referenced_hashes->parts());
  checked.hashes->Reduce(parts);
  checked.referenced_hashes->Reduce(parts);
  ComparePart(checked, read_again);
  for (std::uint64_t part = 1; part < parts; ++part) {
    checked.hashes = std::make_unique<KeyHashes>(part, parts);
    checked.referenced_hashes = std::make_unique<KeyHashes>(part, parts);
    if (!Collect(checked, read_again)) return too_many();
    ComparePart(checked, read_again);
  }
}

bool RelationshipCheck::Collect(Checked& checked, const ReadAgain& read_again) {
  if (--readings_left_ < 0) return false;
  KeyList keys(checked.from->definition, checked.columns, context_.codec, AddTo(*checked.hashes));
  read_again(*checked.from, keys);
  KeyList referenced(checked.to->definition, checked.referenced_columns, context_.codec,
                     AddTo(*checked.referenced_hashes));
  read_again(*checked.to, referenced);
  return true;
}

void RelationshipCheck::ComparePart(Checked& checked, const ReadAgain& read_again) {
  checked.hashes->Sort();
  checked.referenced_hashes->Sort();
  if (checked.referenced_hashes->HasAllOf(*checked.hashes)) return;
  const auto report = [&](std::string_view key, RowPointer row, bool has_null) {
    const KeyHashes& there = *checked.referenced_hashes;
    if (has_null || !there.Concerns(key) || there.Has(key)) return;
    context_.report.Fault({checked.relationship.table, {}}, row,
                          NameOf(checked.relationship) + ": the row refers to a row of table '" +
                              checked.relationship.referenced + "' that is missing",
                          Remedy::kCorrectRows);
  };
  KeyList rows(checked.from->definition, checked.columns, context_.codec, report);
  read_again(*checked.from, rows);
}

}  // namespace tenora::access
