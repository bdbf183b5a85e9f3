#include "platform/access/check_table.h"

#include "platform/access/check_definition.h"
#include "platform/access/check_index.h"

namespace tenora::access {
namespace {

// Far more than the format allows: a definition made to keep the checker busy is cut off here.
constexpr std::size_t kMostIndexes = 128;

}  // namespace

TableCheck::TableCheck(const CheckContext& context, std::string name, const TableDefinition& table,
                       std::vector<KeyList*> wanted)
    : context_(context),
      place_{std::move(name), {}},
      table_(table),
      user_(context.ledger.AddUser("the rows of table '" + place_.table + "'")),
      long_values_(context, place_, table),
      wanted_(std::move(wanted)) {
  for (const PhysicalIndex& index : table.physical_indexes) {
    if (keys_.size() == kMostIndexes) break;
    keys_.push_back(std::make_unique<KeyList>(table, index, context.codec));
    wanted_.push_back(keys_.back().get());
  }
}

void TableCheck::Run() {
  CheckDefinition(context_, place_, table_);
  ClaimPages();
  for (const std::uint32_t page : pages_) {
    try {
      CheckPage(page);
    } catch (const Damage& damage) {
      all_read_ = false;
      context_.report.Fault(place_, damage, Remedy::kRestore);
    }
  }
  CheckMovedRows();
  CheckCounts();
  long_values_.CheckAllReached(all_read_);
  CheckIndexes();
}

void TableCheck::ClaimPages() {
  const UsageMap owned = context_.ledger.ReadMap(table_.owned_pages, "the rows", place_);
  const UsageMap free = context_.ledger.ReadMap(table_.free_pages, "the rows with room", place_);
  for (std::uint32_t page = owned.NextFrom(0); page != PageBuffer::kNone;
       page = owned.NextFrom(page + 1)) {
    if (!IsForOtherUse(page) && context_.ledger.Claim(page, user_, place_)) pages_.push_back(page);
  }
  for (std::uint32_t page = free.NextFrom(0); page != PageBuffer::kNone;
       page = free.NextFrom(page + 1)) {
    if (owned.Contains(page)) continue;
    context_.report.Fault(place_, page, {},
                          "the page is said to have room for the table's rows, but the table does "
                          "not own it",
                          Remedy::kRestore);
  }
}

// Old files count a table's index pages and long values among its own; who uses them claims them.
bool TableCheck::IsForOtherUse(std::uint32_t number) {
  try {
    context_.file.Read(number, page_);
  } catch (const Damage&) {
    return false;
  }
  return page_.type() == PageType::kIndexNode || page_.type() == PageType::kIndexLeaf ||
         (page_.type() == PageType::kData && page_.owner() == kLongValueOwner);
}

void TableCheck::CheckPage(std::uint32_t number) {
  context_.file.Read(number, page_);
  // Given to the table, but not used yet.
  if (page_.type() == PageType::kHeader && page_.owner() == 0) return;
  const DataPage data(context_.file.layout(), page_);
  if (page_.owner() != table_.page) {
    throw Damage(number,
                 "the table owns the page, but the page says that it belongs to the table "
                 "defined on page " +
                     std::to_string(page_.owner()));
  }
  CheckFreeBytes(context_, place_, page_, data);
  for (std::size_t slot = 0; slot < data.row_count(); ++slot) {
    try {
      CheckSlot(data, slot);
    } catch (const Damage& damage) {
      all_read_ = false;
      std::string what = damage.what();
      if (damage.page() != number) what = "page " + std::to_string(damage.page()) + ": " + what;
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
    if (pointer.size() < 4) throw Damage(from.page, "the pointer of a row that moved is too short");
    const RowPointer target = RowPointer::Load(pointer.data());
    const std::string name = "row " + std::to_string(target.row) + ", where the row moved to, ";
    if (!context_.ledger.IsClaimedBy(target.page, user_)) {
      throw Damage(target.page, name + "is on a page that the table does not own");
    }
    context_.file.Read(target.page, moved_page_);
    const DataPage::Slot slot = DataPage(context_.file.layout(), moved_page_).Row(target.row);
    if (slot.hidden && slot.overflow) throw Damage(target.page, name + "is deleted");
    // A row reached before ends every circle, too.
    if (!reached_.insert(target.page << 8 | target.row).second) {
      throw Damage(target.page, name + "is where another row moved to already");
    }
    if (!slot.overflow) {
      if (!slot.hidden) throw Damage(target.page, name + "stands there in its own right");
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
    context_.report.Fault(place_, row, "the row moved here from another page, but none leads to it",
                          Remedy::kRestore);
  }
}

void TableCheck::CheckCounts() {
  if (rows_ != table_.row_count) {
    context_.report.Fault(place_, table_.page, {},
                          "the definition says that the table has " +
                              std::to_string(table_.row_count) + " rows, but there are " +
                              std::to_string(rows_),
                          Remedy::kRestore);
  }
  if (table_.counts_up && highest_auto_number_ > table_.last_auto_number) {
    context_.report.Fault(place_, table_.page, {},
                          "the last automatic number is " +
                              std::to_string(table_.last_auto_number) + ", but a row has " +
                              std::to_string(highest_auto_number_) +
                              "; new rows would get numbers that are taken",
                          Remedy::kRestore);
  }
}

void TableCheck::CheckIndexes() {
  if (table_.physical_indexes.size() > kMostIndexes) {
    context_.report.Fault(place_, table_.page, {}, "the table has more indexes than can be",
                          Remedy::kRestore);
  }
  for (std::size_t i = 0; i < keys_.size(); ++i) {
    keys_[i]->Sort();
    IndexCheck(context_, place_.WithIndex(IndexName(table_, i)), table_, table_.physical_indexes[i],
               *keys_[i])
        .Run();
    keys_[i].reset();
  }
}

}  // namespace tenora::access
