// A table as statements read it: from memory, through its indexes in the file, or in one pass over
// the file. A few look-ups read the pages that they need; when so many have been made that reading
// the table once would have been no dearer, it is read into memory, and stays there while the file
// is unchanged.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "platform/access/database_file.h"
#include "platform/query/cache/cached_table.h"
#include "platform/query/cache/file_reader.h"

namespace tenora::query {

struct SourceColumn {
  explicit SourceColumn(const access::Column& column)
      : name(column.name),
        stored(column.type),
        type(TypeOf(column.type)),
        collation(&Collation::Of(column.sort_order)) {}

  // Whether rows can be found by equality in this column.
  bool CanLookUp() const { return type != Type::kDouble && type != Type::kBinary; }
  bool operator==(const SourceColumn&) const = default;

  std::string name;
  access::ColumnType stored;
  Type type;
  const Collation* collation;  // of its texts
};

// The rows of a table too large for memory, read as they are asked for.
class TableStream {
 public:
  TableStream(std::shared_ptr<FileReader> reader, std::unique_ptr<access::RowCursor> rows,
              std::string table);

  // Moves to the next row; false after the last one. Raises like access::RowCursor, and 3197 where
  // another program's change gets in the way.
  bool Next();
  access::RowCursor& row() { return *rows_; }

 private:
  std::shared_ptr<FileReader> reader_;
  std::unique_ptr<access::RowCursor> rows_;
  std::string table_;
  int opened_;
};

class TableSource {
 public:
  // Of a table in the reader's file; a small one is read into memory at once. Raises what reading
  // it raises.
  TableSource(const access::Table& table, std::shared_ptr<FileReader> reader);
  // Of rows that the caller has read.
  TableSource(const std::vector<access::Column>& columns, std::shared_ptr<CachedTable> rows);
  // The same table for the reader of a later state of the file in which it has not changed.
  std::shared_ptr<TableSource> For(std::shared_ptr<FileReader> reader) const;

  const std::string& name() const { return name_; }
  const std::vector<SourceColumn>& columns() const { return columns_; }
  // As the file says; an estimate.
  std::int64_t row_count() const { return row_count_; }

  // Null as long as the table is not in memory.
  CachedTable* rows() const { return rows_.get(); }
  // Reads it into memory, unless it is there. Raises what reading it raises.
  CachedTable& Load();
  void Hold(std::shared_ptr<CachedTable> rows) { rows_ = std::move(rows); }

  // As access::Table::FindIndex; null for none. Raises what opening the file raises.
  const access::IndexPath* FindIndex(const std::vector<std::size_t>& columns);
  // The rows with these values in the columns, which are those of a path that FindIndex gave, and
  // possibly a few others; null where the table is better read as a whole.
  std::shared_ptr<CachedTable> FindRows(const std::vector<std::size_t>& columns,
                                        std::span<const Value> values, ColumnMask used);
  // A pass over a table that is large and has not been read in such a pass before; null for all
  // others.
  std::unique_ptr<TableStream> Stream();
  // Whether the next pass over the table is a stream.
  bool Streams() const;

 private:
  const access::Table& Find(const access::DatabaseFile& file) const;
  const access::IndexPath* PathIn(const access::Table& table,
                                  const std::vector<std::size_t>& columns);

  std::string name_;
  std::vector<SourceColumn> columns_;
  std::int64_t row_count_ = 0;
  std::uint32_t page_count_ = 0;
  std::shared_ptr<FileReader> reader_;
  std::shared_ptr<CachedTable> rows_;
  std::int64_t spent_ = 0;  // on look-ups, in rows that reading the table would have brought
  bool streamed_ = false;
  // What was found in the file as it was opened for the time `paths_opened_`, by columns.
  std::map<std::vector<std::size_t>, std::optional<access::IndexPath>> paths_;
  int paths_opened_ = 0;
};

}  // namespace tenora::query
