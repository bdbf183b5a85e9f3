// A table as statements read it, wherever its rows come from: from memory, by look-ups, or in one
// pass.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/access/database_file.h"
#include "platform/query/cache/cached_table.h"
#include "platform/query/engine.h"

namespace tenora::query {

struct SourceColumn {
  explicit SourceColumn(const access::Column& column)
      : name(column.name),
        stored(column.type),
        type(TypeOf(column.type)),
        collation(&Collation::Of(column.sort_order)) {}

  // Whether rows can be found by equality in this column.
  bool CanLookUp() const { return type != Type::kDouble && !IsStoredAsBytes(type); }
  // Whether rows can be found by a range of values in this column.
  bool CanFindRange() const { return type >= Type::kInteger && type <= Type::kText; }
  bool operator==(const SourceColumn&) const = default;

  std::string name;
  access::ColumnType stored;
  Type type;
  const Collation* collation;  // of its texts
};

inline std::vector<SourceColumn> SourceColumns(const std::vector<access::Column>& columns) {
  return {columns.begin(), columns.end()};
}

// The rows of a table too large for memory, read as they are asked for.
class TableStream {
 public:
  virtual ~TableStream() = default;
  // Moves to the next row; false after the last one. Raises what reading the rows raises, and 3197
  // where another program's change gets in the way.
  virtual bool Next() = 0;
  virtual access::RowCursor& row() = 0;
};

// Rows that a look-up has found, among others or alone.
struct FoundRows {
  std::shared_ptr<CachedTable> table;
  // Whether the table holds the rows of many look-ups, and its own indexes tell them apart.
  bool shared = false;
};

class TableSource {
 public:
  virtual ~TableSource() = default;

  const std::string& name() const { return name_; }
  const std::vector<SourceColumn>& columns() const { return columns_; }
  // The names of further columns, which the login may not read.
  virtual std::span<const std::string> withheld() const { return {}; }
  // An estimate.
  std::int64_t row_count() const { return row_count_; }

  // Null as long as the table is not in memory.
  CachedTable* rows() const { return rows_.get(); }
  // Reads it into memory, unless it is there. Raises what reading it raises.
  virtual CachedTable& Load() = 0;

  // The way in which rows of given values in these columns or some of them are found, by its name;
  // null for none. Raises what opening the table raises.
  virtual const access::IndexPath* FindIndex(const std::vector<std::size_t>& columns) = 0;
  // The rows with these values in the columns, which are those of a path that FindIndex gave, and
  // possibly others; none where the table is better read as a whole.
  virtual FoundRows FindRows(const std::vector<std::size_t>& columns, std::span<const Value> values,
                             ColumnMask used) = 0;
  // The same for the values of one column from one to another; without a way, or where the table is
  // better read as a whole, null.
  virtual const access::IndexPath* FindRangeIndex(std::size_t /*column*/) { return nullptr; }
  virtual std::shared_ptr<CachedTable> FindRange(std::size_t /*column*/,
                                                 const access::KeyRange& /*range*/,
                                                 ColumnMask /*used*/) {
    return nullptr;
  }
  // A pass over a table that is large and has not been read in such a pass before; null for all
  // others.
  virtual std::unique_ptr<TableStream> Stream() = 0;
  // Whether the next pass over the table is a stream.
  virtual bool Streams() const = 0;

 protected:
  TableSource(std::string name, std::vector<SourceColumn> columns, std::int64_t row_count)
      : name_(std::move(name)), columns_(std::move(columns)), row_count_(row_count) {}
  TableSource(const TableSource&) = default;

  std::shared_ptr<CachedTable> rows_;

 private:
  std::string name_;
  std::vector<SourceColumn> columns_;
  std::int64_t row_count_;
};

// The tables that the statements of a connection can name: all rows are of one state of the data.
class TableStore {
 public:
  virtual ~TableStore() = default;
  // The table of this name; null if there is none. Raises what reading its definition raises.
  virtual std::shared_ptr<TableSource> Find(std::string_view name) = 0;
  // The saved query of this name; null if there is none. Raises what reading its definition raises.
  virtual std::shared_ptr<const access::SavedQuery> FindQuery(std::string_view) { return nullptr; }
  // Called after each step of a statement: what a pass holds to read on from row to row is released
  // meanwhile.
  virtual void EndStep() = 0;
};

}  // namespace tenora::query
