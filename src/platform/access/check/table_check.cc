#include "platform/access/check/table_check.h"

#include <algorithm>
#include <map>
#include <set>

#include "platform/access/check/index_check.h"
#include "platform/access/format/calculated_value.h"

namespace tenora::access {
namespace {

// Far more than the format allows: stops a definition crafted to keep the checker busy.
constexpr std::size_t kMostIndexes = 128;

bool IsKnown(ColumnType type) {
  const auto number = static_cast<int>(type);
  return (number >= 1 && number <= 12) || (number >= 15 && number <= 20);
}

// Checks columns one after another: numbers and positions must be unique. A fault puts all rows in
// doubt.
class ColumnCheck {
 public:
  ColumnCheck(const CheckContext& context, const FindingPlace& place, const TableDefinition& table)
      : context_(context), place_(place), table_(table) {}

  void Check(std::size_t position) {
    const Column& column = table_.columns[position];
    const ColumnPlace& at = table_.places[position];
    if (column.name.empty()) Fault(column, "has no name");
    if (!IsKnown(column.type)) {
      context_.report.NotChecked(place_, "the values of column '" + column.name + "': its type " +
                                             std::to_string(static_cast<int>(column.type)) +
                                             " is not known");
    }
    if (column.number >= table_.max_columns) {
      Fault(column, "has the number " + std::to_string(column.number) + " of at most " +
                        std::to_string(table_.max_columns));
    }
    if (!numbers_.insert(column.number).second) Fault(column, "has the same number as another");
    if (column.type == ColumnType::kBoolean) return;
    if (!column.fixed_length) {
      if (at.variable_index >= table_.variable_columns ||
          !variable_.insert(at.variable_index).second) {
        Fault(column, "has no position of its own among the variable columns");
      }
      return;
    }
    const std::size_t end = at.fixed_offset + FixedSize(column);
    const auto next = fixed_.lower_bound(at.fixed_offset);
    const bool below = next != fixed_.end() && next->first < end;
    const bool above = next != fixed_.begin() && std::prev(next)->second > at.fixed_offset;
    if (below || above) Fault(column, "overlaps another in the rows");
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

std::string IndexName(const TableDefinition& table, std::size_t physical) {
  const auto logical =
      std::find_if(table.logical_indexes.begin(), table.logical_indexes.end(),
                   [&](const LogicalIndex& index) { return index.physical == physical; });
  return logical != table.logical_indexes.end() ? logical->name
                                                : "number " + std::to_string(physical);
}

// Checks the definition.
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
                         "the index refers to columns that the table does not have",
                         Remedy::kRebuildIndex);
  }
}

}  // namespace

TableCheck::TableCheck(const CheckContext& context, std::string name, const TableDefinition& table,
                       std::vector<KeyList*> wanted)
    : context_(context),
      place_{std::move(name), {}},
      table_(table),
      user_(context.ledger.AddUser("the rows of table '" + place_.table + "'")),
      long_values_(context, place_, table),
      wanted_(std::move(wanted)) {}

void TableCheck::Run() {
  CheckDefinition(context_, place_, table_);
  ClaimPages();
  const bool large = pages_.size() > context_.pages_with_keys;
  for (const PhysicalIndex& index : table_.physical_indexes) {
    if (keys_.size() == kMostIndexes) break;
    keys_.push_back(std::make_unique<KeyList>(table_, index, context_.codec,
                                              large ? KeyList::Keep::kSum : KeyList::Keep::kKeys));
    wanted_.push_back(keys_.back().get());
  }
  for (const std::uint32_t page : pages_) {
    try {
      CheckPage(page);
    } catch (const Corruption& corruption) {
      all_read_ = false;
      unread_pages_.insert(page);
      context_.report.Fault(place_, corruption, Remedy::kRestore);
    }
  }
  CheckMovedRows();
  CheckCounts();
  long_values_.CheckAllReached(all_read_);
  CheckIndexes();
}

void TableCheck::ClaimPages() {
  const UsageMap owned = context_.ledger.ReadMap(table_.owned_pages, "the rows", place_);
  const UsageMap free =
      context_.ledger.ReadMap(table_.free_pages, "the rows with free space", place_);
  for (std::uint32_t page = owned.NextFrom(0); page != PageBuffer::kNone;
       page = owned.NextFrom(page + 1)) {
    if (!IsForOtherUse(page) && context_.ledger.Claim(page, user_, place_)) pages_.push_back(page);
  }
  for (std::uint32_t page = free.NextFrom(0); page != PageBuffer::kNone;
       page = free.NextFrom(page + 1)) {
    if (owned.Contains(page)) continue;
    context_.report.Fault(
        place_, page, {},
        "the page is listed as having free space for the table's rows, but the table does "
        "not own it",
        Remedy::kRestore);
  }
}

// In old files a table also owns the pages of its indexes and long values; those claim them.
bool TableCheck::IsForOtherUse(std::uint32_t number) {
  try {
    context_.file.Read(number, page_);
  } catch (const Corruption&) {
    return false;
  }
  return page_.type() == PageType::kIndexNode || page_.type() == PageType::kIndexLeaf ||
         (page_.type() == PageType::kData && page_.owner() == kLongValueOwner);
}

void TableCheck::CheckPage(std::uint32_t number) {
  context_.file.Read(number, page_);
  // Allocated to the table, but not used yet.
  if (page_.type() == PageType::kHeader && page_.owner() == 0) return;
  const DataPage data(context_.file.layout(), page_);
  if (page_.owner() != table_.page) {
    throw Corruption(number,
                     "the table owns the page, but the page says that it belongs to the table "
                     "defined on page " +
                         std::to_string(page_.owner()));
  }
  CheckFreeBytes(context_, place_, page_, data);
  for (std::size_t slot = 0; slot < data.row_count(); ++slot) {
    try {
      CheckSlot(data, slot);
    } catch (const Corruption& corruption) {
      all_read_ = false;
      unread_rows_.insert(number << 8 | static_cast<std::uint32_t>(slot));
      std::string what = corruption.what();
      if (corruption.page() != number)
        what = "page " + std::to_string(corruption.page()) + ": " + what;
      context_.report.Fault(place_, number, static_cast<std::uint32_t>(slot), std::move(what),
                            Remedy::kRestore);
    }
  }
}

void TableCheck::CheckSlot(const DataPage& data, std::size_t position) {
  const RowPointer home{page_.number, static_cast<std::uint8_t>(position)};
  const DataPage::Slot slot = data.Row(position);
  if (slot.hidden) {
    if (!slot.overflow) moved_.push_back(home);
    return;
  }
  ++rows_;
  std::uint32_t page = home.page;
  const Bytes bytes = slot.overflow ? Follow(slot.bytes, home, page) : slot.bytes;
  CheckRow(Row(context_.file.layout(), table_, bytes, page), home, page);
}

Bytes TableCheck::Follow(Bytes pointer, RowPointer home, std::uint32_t& page) {
  RowPointer from = home;
  for (;;) {
    if (pointer.size() < 4)
      throw Corruption(from.page, "the pointer of a row that moved is too short");
    const RowPointer target = RowPointer::Load(pointer.data());
    const std::string name = "row " + std::to_string(target.row) + ", where the row moved to, ";
    if (!context_.ledger.IsClaimedBy(target.page, user_)) {
      throw Corruption(target.page, name + "is on a page that the table does not own");
    }
    context_.file.Read(target.page, moved_page_);
    const DataPage::Slot slot = DataPage(context_.file.layout(), moved_page_).Row(target.row);
    if (slot.hidden && slot.overflow) throw Corruption(target.page, name + "is deleted");
    // This also ends every loop of pointers.
    if (!reached_.insert(target.page << 8 | target.row).second) {
      throw Corruption(target.page, name + "is already the target of another row");
    }
    if (!slot.overflow) {
      if (!slot.hidden) throw Corruption(target.page, name + "is a row of its own");
      page = target.page;
      return slot.bytes;
    }
    from = target;
    pointer = slot.bytes;
  }
}

void TableCheck::CheckRow(const Row& row, RowPointer home, std::uint32_t page) {
  for (std::size_t i = 0; i < table_.columns.size(); ++i) {
    const Column& column = table_.columns[i];
    const Bytes stored = StoredBytes(row, table_, i);
    if (column.calculated && column.type != ColumnType::kMemo) CalculatedContent(stored, page);
    if (column.auto_number && column.type == ColumnType::kLong && stored.size() >= 4) {
      highest_auto_number_ = std::max(highest_auto_number_, Load<std::int32_t>(stored.data()));
    }
  }
  for (KeyList* const keys : wanted_) keys->Add(home, row);
  long_values_.CheckRow(row, home, page);
}

void TableCheck::CheckMovedRows() {
  if (!all_read_) return;
  for (const RowPointer row : moved_) {
    if (reached_.contains(row.page << 8 | row.row)) continue;
    context_.report.Fault(place_, row,
                          "the row was moved here from another page, but no row points to it",
                          Remedy::kRestore);
  }
}

void TableCheck::CheckCounts() {
  if (rows_ != table_.row_count) {
    const std::string counts = "the definition says that the table has " +
                               std::to_string(table_.row_count) + " rows, but there are " +
                               std::to_string(rows_);
    // The engine does not always count a row that it adds; one that it counted must be there.
    if (rows_ > table_.row_count) {
      context_.report.Note(place_, table_.page, counts + "; no rows are concerned");
    } else {
      context_.report.Fault(place_, table_.page, {}, counts, Remedy::kRestore);
    }
  }
  if (table_.counts_up && highest_auto_number_ > table_.last_auto_number) {
    context_.report.Fault(place_, table_.page, {},
                          "the last AutoNumber value is " +
                              std::to_string(table_.last_auto_number) + ", but a row has " +
                              std::to_string(highest_auto_number_) +
                              "; new rows would get duplicate values",
                          Remedy::kRestore);
  }
}

void TableCheck::CheckIndexes() {
  if (table_.physical_indexes.size() > kMostIndexes) {
    context_.report.Fault(place_, table_.page, {}, "the table has too many indexes",
                          Remedy::kRestore);
  }
  for (std::size_t i = 0; i < keys_.size(); ++i) {
    keys_[i]->Sort();
    IndexCheck check(context_, place_.WithIndex(IndexName(table_, i)), table_,
                     table_.physical_indexes[i], *keys_[i]);
    check.Run();
    if (keys_[i]->is_sum() && check.Differs()) {
      try {
        CheckInParts(check, table_.physical_indexes[i]);
      } catch (const Corruption& changed_since) {
        context_.report.Fault(place_, changed_since, Remedy::kRestore);
      }
    }
    keys_[i].reset();
  }
}

void TableCheck::CheckInParts(IndexCheck& check, const PhysicalIndex& index) {
  const std::uint64_t parts = rows_ / context_.rows_of_part + 1;
  for (std::uint64_t part = 0; part < parts; ++part) {
    check.CompareEntries(KeysOf(index, {RowPart::By::kRow, part, parts}));
  }
  for (std::uint64_t part = 0; check.unique() && part < parts; ++part) {
    check.CheckUnique(KeysOf(index, {RowPart::By::kKey, part, parts}));
  }
}

// The sorted keys of the rows of a part.
KeyList TableCheck::KeysOf(const PhysicalIndex& index, RowPart part) {
  KeyList keys(table_, index, context_.codec, KeyList::Keep::kKeys, part);
  ReadAgain(keys);
  keys.Sort();
  return keys;
}

void TableCheck::ReadAgain(KeyList& keys) {
  constexpr int kMostOverflows = 8;
  const auto add = [&](const DataPage& data, std::size_t position) {
    const RowPointer home{page_.number, static_cast<std::uint8_t>(position)};
    if (unread_rows_.contains(home.page << 8 | home.row)) return;
    DataPage::Slot slot = data.Row(position);
    if (slot.hidden) return;
    std::uint32_t page = home.page;
    for (int steps = 0; slot.overflow; ++steps) {
      // It was sound when it was first read.
      if (steps == kMostOverflows || slot.bytes.size() < 4) {
        throw Corruption(home.page, "the row has changed since it was read");
      }
      const RowPointer target = RowPointer::Load(slot.bytes.data());
      context_.file.Read(target.page, moved_page_);
      page = target.page;
      slot = DataPage(context_.file.layout(), moved_page_).Row(target.row);
    }
    keys.Add(home, Row(context_.file.layout(), table_, slot.bytes, page));
  };
  for (const std::uint32_t number : pages_) {
    if (unread_pages_.contains(number)) continue;
    context_.file.Read(number, page_);
    if (page_.owner() != table_.page) continue;  // blank
    const DataPage data(context_.file.layout(), page_);
    for (std::size_t slot = 0; slot < data.row_count(); ++slot) add(data, slot);
  }
}

}  // namespace tenora::access
