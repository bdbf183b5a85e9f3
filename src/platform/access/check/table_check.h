// Checks one table: its definition, its pages and rows, rows that moved to another page, its long
// values and its indexes.
#pragma once

#include <memory>
#include <unordered_set>
#include <vector>

#include "platform/access/check/check_context.h"
#include "platform/access/check/index_check.h"
#include "platform/access/check/key_list.h"
#include "platform/access/check/long_value_check.h"

namespace tenora::access {

class TableCheck {
 public:
  // `wanted` are further lists, those of relationships, that get the keys of all rows.
  TableCheck(const CheckContext& context, std::string name, const TableDefinition& table,
             std::vector<KeyList*> wanted);

  void Run();
  // After Run: adds the rows once more, as far as they were found sound. Raises Corruption when
  // they are no longer.
  void ReadAgain(KeyList& keys);

 private:
  void ClaimPages();
  bool IsForOtherUse(std::uint32_t number);
  void CheckPage(std::uint32_t number);
  void CheckSlot(const DataPage& data, std::size_t slot);
  // The row to which an overflow pointer leads; sets `page` to the page it is on. Raises
  // Corruption.
  Bytes Follow(Bytes pointer, RowPointer home, std::uint32_t& page);
  void CheckRow(const Row& row, RowPointer home, std::uint32_t page);
  void CheckMovedRows();
  void CheckCounts();
  void CheckIndexes();
  // For an index whose entries are not those of the rows of a large table: finds out which.
  void CheckInParts(IndexCheck& check, const PhysicalIndex& index);
  KeyList KeysOf(const PhysicalIndex& index, RowPart part);

  const CheckContext& context_;
  FindingPlace place_;
  const TableDefinition& table_;
  PageLedger::User user_;
  LongValueCheck long_values_;
  std::vector<std::unique_ptr<KeyList>>
      keys_;                          // one for each physical index; sums of a large table
  std::vector<KeyList*> wanted_;      // those and the caller's
  std::vector<std::uint32_t> pages_;  // of rows
  PageBuffer page_, moved_page_;
  std::vector<RowPointer> moved_;              // rows to which an overflow pointer should lead
  std::unordered_set<std::uint32_t> reached_;  // those to which one does, as page << 8 | row
  // What raised Corruption; rows as page << 8 | row.
  std::unordered_set<std::uint32_t> unread_pages_, unread_rows_;
  std::uint64_t rows_ = 0;
  bool all_read_ = true;  // every row could be read
  std::int32_t highest_auto_number_ = 0;
};

}  // namespace tenora::access
