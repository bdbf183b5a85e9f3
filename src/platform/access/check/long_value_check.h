// The long values of one table: each value is whole, and each row on the pages of long values
// belongs to exactly one value.
#pragma once

#include <unordered_set>
#include <vector>

#include "platform/access/check/check_context.h"
#include "platform/access/format/row.h"

namespace tenora::access {

class LongValueCheck {
 public:
  // Claims the table's pages of long values.
  LongValueCheck(const CheckContext& context, const FindingPlace& place,
                 const TableDefinition& table);

  // The long values of a row that lies on `page`, as the index entries know it `home`.
  void CheckRow(const Row& row, RowPointer home, std::uint32_t page);
  // When all rows are checked: the pages, and, where `all_read`, the pieces that no value leads to.
  void CheckAllReached(bool all_read);

 private:
  void CheckValue(Bytes field, const Column& column, RowPointer home);
  // The piece's bytes; raises Corruption when there is none, or when a value has it already.
  Bytes Reach(RowPointer piece);

  const CheckContext& context_;
  const FindingPlace& place_;
  const TableDefinition& table_;
  PageLedger::User user_;
  std::vector<std::uint32_t> pages_;
  std::unordered_set<std::uint32_t> reached_;  // page << 8 | row
  bool all_followed_ = true;
  PageBuffer page_;
};

}  // namespace tenora::access
