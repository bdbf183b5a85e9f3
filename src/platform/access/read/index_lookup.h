// Finds rows of a table by the values of columns that an index starts with.
#pragma once

#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "platform/access/database_file.h"
#include "platform/access/format/index_key.h"
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
  // As Table::FindRangeIndex.
  std::optional<IndexPath> FindRangeIndex(std::size_t column) const;
  // As FindRows, for Table::FindRange.
  std::optional<std::vector<RowPointer>> FindRange(const IndexPath& path, const KeyRange& range,
                                                   std::size_t most) const;

 private:
  PhysicalIndex Start(const PhysicalIndex& index, std::span<const std::size_t> columns) const;
  std::optional<double> RowsPerKey(const PhysicalIndex& index, const PhysicalIndex& start) const;
  // The same, and none for an index that cannot be read.
  std::optional<double> TryRowsPerKey(const PhysicalIndex& index, const PhysicalIndex& start) const;
  // The key of a value in the only column of an index. Raises NotEncodable and what EncodeField
  // raises.
  IndexKey KeyOf(const PhysicalIndex& start, std::size_t column, const Value& value) const;
  std::string NameOf(std::size_t number) const;

  std::shared_ptr<const TableData> table_;
  TextCodec codec_;
};

}  // namespace tenora::access
