// A table's rows in memory, column by column, with indexes over the columns that statements look
// up.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/access/database_file.h"
#include "platform/query/storage.h"

namespace tenora::query {

using RowNumber = std::uint32_t;
inline constexpr RowNumber kNoRow = 0xFFFFFFFF;

class MirrorColumn {
 public:
  MirrorColumn(const access::Column& column, std::int64_t expected_rows);

  const std::string& name() const { return name_; }
  Type type() const { return type_; }
  bool IsNull(RowNumber row) const { return row < nulls_.size() && nulls_[row]; }
  // Booleans, whole numbers, money and dates, in the form SQLite holds them.
  std::int64_t Integer(RowNumber row) const { return integers_[row]; }
  double Double(RowNumber row) const { return doubles_[row]; }
  // Text as UTF-8, or bytes.
  std::string_view Bytes(RowNumber row) const {
    const std::uint64_t start = row == 0 ? 0 : ends_[row - 1];
    return std::string_view(bytes_).substr(start, ends_[row] - start);
  }
  void Append(access::RowCursor& cursor, std::size_t column);
  // Gives back what growing has reserved too much.
  void ShrinkToFit();

  std::uint64_t Hash(RowNumber row) const;

 private:
  void AppendInteger(access::RowCursor& cursor, std::size_t column);
  void AppendDouble(access::RowCursor& cursor, std::size_t column);
  void AppendBytes(std::string_view bytes);

  std::string name_;
  access::ColumnType column_type_;
  Type type_;
  RowNumber rows_ = 0;
  std::vector<bool> nulls_;  // up to the last null; empty where there is none
  std::vector<std::int64_t> integers_;
  std::vector<double> doubles_;
  std::string bytes_;
  std::vector<std::uint64_t> ends_;  // in bytes_, one a row
};

// The rows of one column by value: chains of rows of equal hash, each in the table's order.
class LookupIndex {
 public:
  LookupIndex(const MirrorColumn& column, RowNumber rows);
  RowNumber First(std::uint64_t hash) const { return heads_[hash & (heads_.size() - 1)]; }
  RowNumber Next(RowNumber row) const { return next_[row]; }

 private:
  std::vector<RowNumber> heads_, next_;
};

class MirrorTable {
 public:
  // Reads all rows. Raises what reading the file raises.
  explicit MirrorTable(const access::Table& table);

  const std::string& name() const { return name_; }
  const std::vector<MirrorColumn>& columns() const { return columns_; }
  RowNumber rows() const { return rows_; }

  // Whether rows can be looked up by this column's value.
  bool CanLookUp(std::size_t column) const;
  // About how many rows share one value of the column.
  double RowsPerValue(std::size_t column);
  // The rows with this value: the first one, then the others. The index is made on first use.
  RowNumber FirstMatch(std::size_t column, std::int64_t value);
  RowNumber FirstMatch(std::size_t column, std::string_view value);
  RowNumber NextMatch(std::size_t column, RowNumber row, std::int64_t value) const;
  RowNumber NextMatch(std::size_t column, RowNumber row, std::string_view value) const;

 private:
  const LookupIndex& IndexOf(std::size_t column);

  std::string name_;
  std::vector<MirrorColumn> columns_;
  RowNumber rows_ = 0;
  std::vector<std::optional<LookupIndex>> indexes_;
  std::vector<double> rows_per_value_;  // 0 while not known
};

}  // namespace tenora::query
