// A table's rows in memory, column by column, with indexes over the columns that statements look
// up.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/access/database_file.h"
#include "platform/query/values/sqlite_value.h"

namespace tenora::query {

using RowNumber = std::uint32_t;
inline constexpr RowNumber kNoRow = 0xFFFFFFFF;

class CachedColumn {
 public:
  CachedColumn(const access::Column& column, std::int64_t expected_rows);

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
  // Ask the processor for what Integer, Double and Bytes of this row read. Rows of one value lie
  // far apart, and waiting for them one after the other is most of a look-up's time. A text's place
  // must have arrived before its bytes can be asked for.
  void PrefetchPlace(RowNumber row) const;
  void PrefetchBytes(RowNumber row) const;
  void Append(access::RowCursor& cursor, std::size_t column);
  // Gives back what growing has reserved too much.
  void ShrinkToFit();

  std::uint64_t Hash(RowNumber row) const;
  // Whether two rows, neither of them null, have one value as lookups compare.
  bool Equal(RowNumber left, RowNumber right) const;

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

// The rows of one column by value. Rows of equal value stand together, so that walking them touches
// neither the column nor the rows between.
class LookupIndex {
 public:
  LookupIndex(const CachedColumn& column, RowNumber rows);

  // The rows of the value that has this hash and for one of whose rows `equal` holds, in the
  // table's order.
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
    std::uint32_t end = 0;          // in rows_, one behind the last
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
  // Reads all rows that the cursor walks, about `expected_rows` of them. Raises what reading the
  // file raises.
  CachedTable(std::string name, const std::vector<access::Column>& columns,
              std::int64_t expected_rows, access::RowCursor& rows);

  const std::string& name() const { return name_; }
  const std::vector<CachedColumn>& columns() const { return columns_; }
  RowNumber rows() const { return rows_; }

  // Whether rows can be looked up by this column's value.
  bool CanLookUp(std::size_t column) const;
  // About how many rows share one value of the column.
  double RowsPerValue(std::size_t column);
  // The rows with this value; they stay where they are. The index is made on first use.
  std::span<const RowNumber> Matches(std::size_t column, std::int64_t value);
  std::span<const RowNumber> Matches(std::size_t column, std::string_view value);

 private:
  const LookupIndex& IndexOf(std::size_t column);

  std::string name_;
  std::vector<CachedColumn> columns_;
  RowNumber rows_ = 0;
  std::vector<std::optional<LookupIndex>> indexes_;
  std::vector<double> rows_per_value_;  // 0 while not known
};

}  // namespace tenora::query
