// Finds rows of a table by the values of columns, through an index where there is a suitable one.
#pragma once

#include <memory>
#include <vector>

#include "platform/access/format/row.h"
#include "platform/access/read/row_cursor.h"

namespace tenora::access {

// A row's bytes and where they are.
struct LocatedRow {
  RowPointer home;               // the slot that indexes point to
  std::vector<RowPointer> hops;  // targets of its overflow pointers; the last one has the bytes
  std::vector<std::byte> bytes;

  RowPointer place() const { return hops.empty() ? home : hops.back(); }
};

class RowFinder {
 public:
  RowFinder(std::shared_ptr<const TableData> table, const TextCodec& codec)
      : table_(std::move(table)), codec_(codec) {}

  // Raises Corruption for a broken chain of pointers, RuntimeError 3167 for a deleted row.
  LocatedRow Locate(RowPointer row) const;
  StoredRow Split(const LocatedRow& row) const;
  std::vector<RowPointer> All() const;
  // The rows whose columns, given as positions, equal these fields as the engine compares them.
  std::vector<RowPointer> Find(const std::vector<std::size_t>& columns,
                               const std::vector<Field>& fields) const;

 private:
  bool Candidates(const std::vector<std::size_t>& columns, const std::vector<Field>& fields,
                  std::vector<RowPointer>& rows) const;

  std::shared_ptr<const TableData> table_;
  const TextCodec& codec_;
};

}  // namespace tenora::access
