#include "platform/access/read/row_finder.h"

#include <algorithm>
#include <limits>
#include <optional>

#include "platform/access/read/index_tree.h"

namespace tenora::access {
namespace {

constexpr std::size_t kMostOverflows = 8;

StoredField AsStored(const Field& field) {
  return {field.has_value(), field ? Bytes(*field) : Bytes()};
}

// Compares fields of one column with a wanted one as the engine does. Texts may be equal though
// their bytes differ: their index keys tell. A value without a key equals only itself.
class FieldMatcher {
 public:
  FieldMatcher(const TableDefinition& table, std::size_t column, StoredField wanted,
               const TextCodec& codec)
      : column_(column), wanted_(wanted) {
    PhysicalIndex index;
    index.parts.push_back({table.columns[column].number, false});
    try {
      encoder_.emplace(table, index, codec);
      encoder_->Encode({&wanted_, 1}, wanted_key_);
    } catch (const NotEncodable&) {
      encoder_.reset();
    }
  }

  std::size_t column() const { return column_; }

  bool Matches(StoredField found) {
    if (found.present != wanted_.present) return false;
    if (std::ranges::equal(found.bytes, wanted_.bytes)) return true;
    if (!encoder_) return false;
    try {
      encoder_->Encode({&found, 1}, key_);
    } catch (const NotEncodable&) {
      return false;
    }
    return key_ == wanted_key_;
  }

 private:
  std::size_t column_;
  StoredField wanted_;
  std::optional<IndexKeyEncoder> encoder_;  // none: the wanted value has no key
  IndexKey wanted_key_, key_;
};

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
    if (slot.hidden && slot.overflow) throw Corruption(at.page, "an overflow row is deleted");
    if (!slot.overflow) {
      located.bytes.assign(slot.bytes.begin(), slot.bytes.end());
      return located;
    }
    if (slot.bytes.size() < 4) throw Corruption(at.page, "an overflow pointer is too short");
    if (located.hops.size() == kMostOverflows) {
      throw Corruption(at.page, "overflow pointers form a loop");
    }
    at = RowPointer::Load(slot.bytes.data());
    located.hops.push_back(at);
  }
}

StoredRow RowFinder::Split(const LocatedRow& row) const {
  return StoredRow::Split(table_->file->layout(), table_->definition, row.bytes, row.place().page);
}

std::vector<RowPointer> RowFinder::All() const {
  std::vector<RowPointer> rows;
  for (const auto cursor = OpenCursor(table_); cursor->Next();) rows.push_back(cursor->place());
  return rows;
}

// The rows that the most suitable index, the one whose longest prefix is among the columns, has for
// these fields; false when there is none.
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
      // An index that ignores nulls cannot find them.
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
    return RowsWithKey(*table_->file, best.root_page, key, std::numeric_limits<std::size_t>::max(),
                       rows);
  } catch (const NotEncodable&) {
    return false;
  }
}

std::vector<RowPointer> RowFinder::Find(const std::vector<std::size_t>& columns,
                                        const std::vector<Field>& fields) const {
  std::vector<RowPointer> candidates;
  if (columns.empty() || !Candidates(columns, fields, candidates)) candidates = All();
  std::vector<FieldMatcher> matchers;
  for (std::size_t i = 0; i < columns.size(); ++i) {
    matchers.emplace_back(table_->definition, columns[i], AsStored(fields[i]), codec_);
  }
  std::erase_if(candidates, [&](RowPointer place) {
    const StoredRow row = Split(Locate(place));
    return !std::ranges::all_of(matchers, [&](FieldMatcher& matcher) {
      return matcher.Matches(AsStored(row.fields[matcher.column()]));
    });
  });
  return candidates;
}

}  // namespace tenora::access
