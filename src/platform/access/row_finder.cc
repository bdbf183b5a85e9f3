#include "platform/access/row_finder.h"

#include <algorithm>

#include "platform/access/index_tree.h"

namespace tenora::access {
namespace {

constexpr std::size_t kMostOverflows = 8;

StoredField AsStored(const Field& field) {
  return {field.has_value(), field ? Bytes(*field) : Bytes()};
}

}  // namespace

LocatedRow RowFinder::Locate(RowPointer row) const {
  LocatedRow located;
  located.home = row;
  PageBuffer page;
  RowPointer at = row;
  for (;;) {
    table_->file->Read(at.page, page);
    const DataPage data(table_->file->layout(), page);
    const bool home = located.hops.empty();
    const bool there = page.owner() == table_->definition.page && at.row < data.row_count();
    const DataPage::Slot slot = there ? data.Row(at.row) : DataPage::Slot{{}, true, true};
    if (home && slot.hidden) {
      throw RuntimeError(engine_error::kRecordDeleted,
                         "Record is deleted. Table '" + table_->name + "'.", "DAO.Recordset");
    }
    if (slot.hidden && slot.overflow) throw Damage(at.page, "an overflow row is deleted");
    if (!slot.overflow) {
      located.bytes.assign(slot.bytes.begin(), slot.bytes.end());
      return located;
    }
    if (slot.bytes.size() < 4) throw Damage(at.page, "an overflow pointer is too short");
    if (located.hops.size() == kMostOverflows) {
      throw Damage(at.page, "an overflow row runs in a circle");
    }
    at = RowPointer::Load(slot.bytes.data());
    located.hops.push_back(at);
  }
}

StoredRow RowFinder::Read(RowPointer row) const {
  const LocatedRow located = Locate(row);
  return StoredRow::Split(table_->file->layout(), table_->definition, located.bytes,
                          located.place().page);
}

std::vector<RowPointer> RowFinder::All() const {
  std::vector<RowPointer> rows;
  for (const auto cursor = OpenCursor(table_); cursor->Next();) rows.push_back(cursor->place());
  return rows;
}

// An index that the table does not have, to compare by its keys.
PhysicalIndex RowFinder::IndexOver(const std::vector<std::size_t>& columns) const {
  PhysicalIndex index;
  for (const std::size_t column : columns) {
    index.parts.push_back({table_->definition.columns[column].number, false});
  }
  return index;
}

// The rows that the index with the longest start among the columns has for these fields; false when
// there is none.
bool RowFinder::Candidates(const std::vector<std::size_t>& columns,
                           const std::vector<Field>& fields, std::vector<RowPointer>& rows) const {
  PhysicalIndex best;
  for (const PhysicalIndex& index : table_->definition.physical_indexes) {
    PhysicalIndex start = index;
    const auto given = [&](const PhysicalIndex::Part& part) {
      const auto column = std::ranges::find_if(columns, [&](std::size_t position) {
        return table_->definition.columns[position].number == part.column_number;
      });
      if (column == columns.end()) return false;
      // What an index leaves out cannot be found through it.
      return fields[static_cast<std::size_t>(column - columns.begin())].has_value() ||
             (index.flags & kIndexLeavesOutNulls) == 0;
    };
    const auto end = std::ranges::find_if_not(start.parts, given);
    start.parts.erase(end, start.parts.end());
    if (start.parts.size() > best.parts.size()) best = start;
  }
  if (best.parts.empty()) return false;
  try {
    IndexKeyEncoder encoder(table_->definition, best, codec_);
    std::vector<StoredField> picked;
    for (const std::size_t column : encoder.columns()) {
      const auto place = std::ranges::find(columns, column) - columns.begin();
      picked.push_back(AsStored(fields[static_cast<std::size_t>(place)]));
    }
    IndexKey key;
    encoder.Encode(picked, key);
    IndexWalk walk(*table_->file, best.root_page, key);
    for (const IndexEntry* entry = walk.Next();
         entry != nullptr && std::string_view(entry->key).starts_with(key); entry = walk.Next()) {
      rows.push_back(entry->row);
    }
    return true;
  } catch (const NotEncodable&) {
    return false;
  }
}

std::vector<RowPointer> RowFinder::Find(const std::vector<std::size_t>& columns,
                                        const std::vector<Field>& fields) const {
  std::vector<RowPointer> candidates;
  if (columns.empty() || !Candidates(columns, fields, candidates)) candidates = All();
  std::vector<StoredField> wanted;
  for (const Field& field : fields) wanted.push_back(AsStored(field));
  const auto equal = [&](const StoredRow& row) {
    const std::vector<StoredField> found = row.Pick(columns);
    for (std::size_t i = 0; i < columns.size(); ++i) {
      if (found[i].present != wanted[i].present) return false;
      if (std::ranges::equal(found[i].bytes, wanted[i].bytes)) continue;
      // Texts may be equal though their bytes are not; what has no key equals only itself.
      try {
        const PhysicalIndex one = IndexOver({columns[i]});
        IndexKeyEncoder encoder(table_->definition, one, codec_);
        IndexKey left, right;
        encoder.Encode({&found[i], 1}, left);
        encoder.Encode({&wanted[i], 1}, right);
        if (left != right) return false;
      } catch (const NotEncodable&) {
        return false;
      }
    }
    return true;
  };
  std::erase_if(candidates, [&](RowPointer row) { return !equal(Read(row)); });
  return candidates;
}

}  // namespace tenora::access
