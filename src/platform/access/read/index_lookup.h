// Finds rows of a table by the values of columns that an index starts with.
#pragma once

#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "platform/access/database_file.h"
#include "platform/access/read/table_data.h"

namespace tenora::access {

class IndexLookup {
 public:
  explicit IndexLookup(std::shared_ptr<const TableData> table);

  // As Table::FindIndex.
  std::optional<IndexPath> FindIndex(std::span<const std::size_t> columns) const;
  // The rows in the order in which a scan finds them; none as Table::FindRows. Raises Corruption.
  std::optional<std::vector<RowPointer>> FindRows(const IndexPath& path,
                                                  std::span<const Value> values,
                                                  std::size_t most) const;

 private:
  PhysicalIndex Start(const PhysicalIndex& index, std::span<const std::size_t> columns) const;
  std::optional<double> RowsPerKey(const PhysicalIndex& index, const PhysicalIndex& start) const;
  std::string NameOf(std::size_t number) const;

  std::shared_ptr<const TableData> table_;
  TextCodec codec_;
};

}  // namespace tenora::access
