#include "platform/access/check/long_value_check.h"

#include "platform/access/read/long_value.h"

namespace tenora::access {

LongValueCheck::LongValueCheck(const CheckContext& context, const FindingPlace& place,
                               const TableDefinition& table)
    : context_(context),
      place_(place),
      table_(table),
      user_(context.ledger.AddUser("the long values of table '" + place.table + "'")) {
  for (const LongValueMaps& maps : table.long_values) {
    const std::string name = "the long values of column " + std::to_string(maps.column_number);
    const UsageMap owned = context.ledger.ReadMap(maps.owned_pages, name, place);
    const UsageMap free = context.ledger.ReadMap(maps.free_pages, name + " with free space", place);
    for (std::uint32_t page = owned.NextFrom(0); page != PageBuffer::kNone;
         page = owned.NextFrom(page + 1)) {
      if (context.ledger.Claim(page, user_, place)) pages_.push_back(page);
    }
    for (std::uint32_t page = free.NextFrom(0); page != PageBuffer::kNone;
         page = free.NextFrom(page + 1)) {
      if (owned.Contains(page)) continue;
      context.report.Fault(
          place, page, {},
          "the page is listed as having free space for " + name + ", but does not belong to them",
          Remedy::kRestore);
    }
  }
}

void LongValueCheck::CheckRow(const Row& row, RowPointer home, std::uint32_t page) {
  for (std::size_t i = 0; i < table_.columns.size(); ++i) {
    const Column& column = table_.columns[i];
    if (column.type != ColumnType::kMemo && column.type != ColumnType::kOle) continue;
    try {
      const Bytes field = StoredBytes(row, table_, i);
      if (field.empty()) continue;
      if (field.size() < kLongValueHead) throw Corruption(page, "a long value's head is too short");
      CheckValue(field, column, home);
    } catch (const Corruption& corruption) {
      all_followed_ = false;
      context_.report.Fault(place_, home,
                            "column '" + column.name + "', page " +
                                std::to_string(corruption.page()) + ": " + corruption.what(),
                            Remedy::kRestore);
    }
  }
}

void LongValueCheck::CheckValue(Bytes field, const Column& column, RowPointer home) {
  const std::uint32_t head = Load32(field.data());
  const std::size_t length = head & kLongValueLength;
  RowPointer piece = RowPointer::Load(&field[4]);
  std::size_t found = 0;
  if ((head & kLongValueInline) != 0) {
    found = field.size() - kLongValueHead;
  } else if (length == 0) {
    return;
  } else if ((head & kLongValueSingle) != 0) {
    found = Reach(piece).size();
  } else {
    while (piece.page != 0) {
      const Bytes bytes = Reach(piece);
      if (bytes.size() < 4) throw Corruption(piece.page, "a piece of a long value is too short");
      found += bytes.size() - 4;
      piece = RowPointer::Load(bytes.data());
    }
  }
  if (found == length) return;
  context_.report.Fault(place_, home,
                        "column '" + column.name + "' should have " + std::to_string(length) +
                            " bytes, but " + std::to_string(found) + " are there",
                        Remedy::kRestore);
}

Bytes LongValueCheck::Reach(RowPointer piece) {
  const std::string name = "piece " + std::to_string(piece.row) + " of a long value ";
  if (!context_.ledger.IsClaimedBy(piece.page, user_)) {
    throw Corruption(piece.page, name + "is on a page that does not hold the table's long values");
  }
  context_.file.Read(piece.page, page_);
  const DataPage::Slot slot = DataPage(context_.file.layout(), page_).Row(piece.row);
  if (slot.hidden && slot.overflow) throw Corruption(piece.page, name + "is deleted");
  if (!reached_.insert(piece.page << 8 | piece.row).second) {
    throw Corruption(piece.page, name + "is referenced a second time");
  }
  return slot.bytes;
}

void LongValueCheck::CheckAllReached(bool all_read) {
  // Pieces may belong to a deleted column, or to a row that could not be read.
  const bool may_have_others =
      !all_read || !all_followed_ || table_.max_columns > table_.columns.size();
  for (const std::uint32_t number : pages_) {
    try {
      context_.file.Read(number, page_);
      const DataPage data(context_.file.layout(), page_);
      if (page_.owner() != kLongValueOwner) {
        throw Corruption(number,
                         "the page is listed for long values, but is not marked as one of them");
      }
      CheckFreeBytes(context_, place_, page_, data);
      for (std::size_t row = 0; row < data.row_count() && !may_have_others; ++row) {
        const DataPage::Slot slot = data.Row(row);
        if ((slot.hidden && slot.overflow) ||
            reached_.contains(number << 8 | static_cast<std::uint32_t>(row))) {
          continue;
        }
        context_.report.Fault(place_, number, static_cast<std::uint32_t>(row),
                              "the piece of a long value belongs to no row", Remedy::kCompact);
      }
    } catch (const Corruption& corruption) {
      context_.report.Fault(place_, corruption, Remedy::kRestore);
    }
  }
}

}  // namespace tenora::access
