// Checks the long values of one table: each value is complete, and each row on the pages of long
// values belongs to exactly one value.
#pragma once

#include <unordered_set>
#include <vector>

#include "platform/access/check/check_context.h"
#include "platform/access/format/row.h"

namespace tenora::access {

class LongValueCheck {
 public:
  // Claims the table's pages of long values. All arguments must outlive the check.
  LongValueCheck(const CheckContext& context, const FindingPlace& place,
                 const TableDefinition& table);

  // Checks the long values of a row that is on `page`; index entries refer to it as `home`.
  void CheckRow(const Row& row, RowPointer home, std::uint32_t page);
  // To be called after all rows: checks the pages and, if all rows could be read, for pieces that
  // no value refers to.
  void CheckAllReached(bool all_read);

 private:
  void CheckValue(Bytes field, const Column& column, RowPointer home);
  // The bytes of a piece. Raises Corruption when there is none, or when it has been referenced
  // before.
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
