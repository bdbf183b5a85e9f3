// One table: its definition, its pages and rows, the rows that moved away, its long values and its
// indexes.
#pragma once

#include <memory>
#include <unordered_set>
#include <vector>

#include "platform/access/check/check_context.h"
#include "platform/access/check/key_list.h"
#include "platform/access/check/long_value_check.h"

namespace tenora::access {

class TableCheck {
 public:
  // `wanted` gets the keys of all rows too, for the relationships; may be empty.
  TableCheck(const CheckContext& context, std::string name, const TableDefinition& table,
             std::vector<KeyList*> wanted);

  void Run();

 private:
  void ClaimPages();
  bool IsForOtherUse(std::uint32_t number);
  void CheckPage(std::uint32_t number);
  void CheckSlot(const DataPage& data, std::size_t slot);
  // The row that an overflow pointer leads to, and the page it is on. Raises Corruption.
  Bytes Follow(Bytes pointer, RowPointer home, std::uint32_t& page);
  void CheckRow(const Row& row, RowPointer home, std::uint32_t page);
  void CheckMovedRows();
  void CheckCounts();
  void CheckIndexes();

  const CheckContext& context_;
  FindingPlace place_;
  const TableDefinition& table_;
  PageLedger::User user_;
  LongValueCheck long_values_;
  std::vector<std::unique_ptr<KeyList>> keys_;  // one for each physical index
  std::vector<KeyList*> wanted_;                // those and the caller's
  std::vector<std::uint32_t> pages_;            // of rows
  PageBuffer page_, moved_page_;
  std::vector<RowPointer> moved_;              // rows that some pointer should lead to
  std::unordered_set<std::uint32_t> reached_;  // page << 8 | row of those that one does
  std::uint64_t rows_ = 0;
  bool all_read_ = true;  // every row could be
  std::int32_t highest_auto_number_ = 0;
};

}  // namespace tenora::access
