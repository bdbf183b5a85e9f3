// A table's rows in memory, column by column, with hash indexes on the columns that statements
// look up.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/access/database_file.h"
#include "platform/query/values/collation.h"
#include "platform/query/values/sqlite_value.h"

namespace tenora::query {

using RowNumber = std::uint32_t;
inline constexpr RowNumber kNoRow = 0xFFFFFFFF;

// Which columns of a table a statement reads: a bit for each, the last for all further ones.
using ColumnMask = std::uint64_t;
inline constexpr ColumnMask kAllColumns = ~ColumnMask{0};
inline bool IsUsed(ColumnMask used, std::size_t column) {
  constexpr std::size_t kLastBit = 63;
  return (used >> std::min(column, kLastBit) & 1) != 0;
}

// A row's location as a number, the same however the row was found.
inline std::uint32_t RowKey(access::RowId row) { return row.page << 8 | row.slot; }
inline access::RowId RowOfKey(std::uint32_t key) {
  return {key >> 8, static_cast<std::uint8_t>(key)};
}

class CachedColumn {
 public:
  CachedColumn(const access::Column& column, std::int64_t expected_rows);

  const std::string& name() const { return name_; }
  Type type() const { return type_; }
  const Collation& collation() const { return *collation_; }  // of its texts
  bool IsNull(RowNumber row) const { return row < nulls_.size() && nulls_[row]; }
  // Booleans, integers, currency and dates, as SQLite stores them.
  std::int64_t Integer(RowNumber row) const { return integers_[row]; }
  double Double(RowNumber row) const { return doubles_[row]; }
  // Text as UTF-8, or the bytes of a binary value or of a decimal.
  std::string_view Bytes(RowNumber row) const {
    const std::uint64_t start = row == 0 ? 0 : ends_[row - 1];
    return std::string_view(bytes_).substr(start, ends_[row] - start);
  }
  // Prefetch what Integer, Double and Bytes of this row read. Rows of equal value are far apart,
  // and cache misses on them are most of a look-up's time. A text's place must be in the cache
  // before its bytes can be prefetched.
  void PrefetchPlace(RowNumber row) const;
  void PrefetchBytes(RowNumber row) const;
  void Append(access::RowCursor& cursor, std::size_t column);
  // Makes the column null in as many rows: no statement reads it.
  void LeaveOut(RowNumber rows);
  // Releases the capacity that growing left unused.
  void ShrinkToFit();

  std::uint64_t Hash(RowNumber row) const;
  // Whether two rows, neither of them null, have equal values as look-ups compare them.
  bool Equal(RowNumber left, RowNumber right) const;

 private:
  void AppendBytes(std::string_view bytes);

  std::string name_;
  access::ColumnType column_type_;
  Type type_;
  const Collation* collation_;
  RowNumber rows_ = 0;
  std::vector<bool> nulls_;  // up to the last null; empty where there is none
  std::vector<std::int64_t> integers_;
  std::vector<double> doubles_;
  std::string bytes_;
  std::vector<std::uint64_t> ends_;  // in bytes_, one per row
};

// A hash index on one column. The numbers of rows with equal values are adjacent, so that walking
// them touches neither the column nor other rows.
class LookupIndex {
 public:
  LookupIndex(const CachedColumn& column, RowNumber rows);

  // The rows of the group with this hash whose first row satisfies `equal`, in table order.
  template <typename Equal>
  std::span<const RowNumber> Find(std::uint64_t hash, const Equal& equal) const {
    const std::uint32_t number = FindGroup(hash, equal);
    if (number == kNoGroup) return {};
    const Group& group = groups_[number];
    return std::span(rows_).subspan(group.end - group.count, group.count);
  }

 private:
  static constexpr std::uint32_t kNoGroup = 0xFFFFFFFF;

  struct Group {
    RowNumber first = 0;  // row
    RowNumber count = 0;
    std::uint32_t end = 0;          // in rows_, one past the last
    std::uint32_t next = kNoGroup;  // of the groups in the same chain
  };

  template <typename Equal>
  std::uint32_t FindGroup(std::uint64_t hash, const Equal& equal) const {
    std::uint32_t number = heads_[hash & (heads_.size() - 1)];
    while (number != kNoGroup && !equal(groups_[number].first)) number = groups_[number].next;
    return number;
  }

  std::vector<std::uint32_t> heads_;
  std::vector<Group> groups_;
  std::vector<RowNumber> rows_;
};

class CachedTable {
 public:
  // Reads all rows of the cursor; `expected_rows` is a hint for reserving memory. Columns that are
  // not used are null. Raises what reading the file raises.
  CachedTable(std::string name, const std::vector<access::Column>& columns,
              std::int64_t expected_rows, access::RowCursor& rows, ColumnMask used = kAllColumns);

  const std::string& name() const { return name_; }
  const std::vector<CachedColumn>& columns() const { return columns_; }
  RowNumber rows() const { return rows_; }
  std::uint32_t Key(RowNumber row) const { return ids_[row]; }

  // The estimated number of rows per distinct value of the column.
  double RowsPerValue(std::size_t column);
  // The rows with this value; the span stays valid. The index is built on first use.
  std::span<const RowNumber> Matches(std::size_t column, std::int64_t value);
  std::span<const RowNumber> Matches(std::size_t column, std::string_view value);

 private:
  const LookupIndex& IndexOf(std::size_t column);

  std::string name_;
  std::vector<CachedColumn> columns_;
  RowNumber rows_ = 0;
  std::vector<std::uint32_t> ids_;  // by row: RowKey
  std::vector<std::optional<LookupIndex>> indexes_;
  std::vector<double> rows_per_value_;  // 0 until estimated
};

}  // namespace tenora::query
