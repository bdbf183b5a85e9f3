// A table in a file: rows come from memory, through its indexes in the file, or in one pass over
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
#include "platform/query/cache/file_reader.h"
#include "platform/query/cache/table_source.h"

namespace tenora::query {

class FileTable : public TableSource {
 public:
  // Of a table in the reader's file, under its own name or that of a link to it; a small one is
  // read into memory at once. Raises what reading it raises.
  FileTable(const access::Table& table, std::shared_ptr<FileReader> reader,
            const std::string& name);
  // Of rows that the caller has read.
  FileTable(const std::vector<access::Column>& columns, std::shared_ptr<CachedTable> rows);
  // The same table for the reader of a later state of the file in which it has not changed.
  std::shared_ptr<FileTable> For(std::shared_ptr<FileReader> reader) const;

  void Hold(std::shared_ptr<CachedTable> rows) { rows_ = std::move(rows); }

  CachedTable& Load() override;
  // As access::Table::FindIndex.
  const access::IndexPath* FindIndex(const std::vector<std::size_t>& columns) override;
  FoundRows FindRows(const std::vector<std::size_t>& columns, std::span<const Value> values,
                     ColumnMask used) override;
  const access::IndexPath* FindRangeIndex(std::size_t column) override;
  std::shared_ptr<CachedTable> FindRange(std::size_t column, const access::KeyRange& range,
                                         ColumnMask used) override;
  std::unique_ptr<TableStream> Stream() override;
  bool Streams() const override;

 private:
  const access::Table& Find(const access::DatabaseFile& file) const;
  const access::IndexPath* PathIn(const access::Table& table,
                                  const std::vector<std::size_t>& columns);

  const access::IndexPath* RangePathIn(const access::Table& table, std::size_t column);
  // Reads rows that `open`, given the table and how many rows are worth it, gives a cursor over;
  // null where it gives none.
  template <typename Opening>
  std::shared_ptr<CachedTable> ReadFound(ColumnMask used, const Opening& open);
  // Forgets the paths of an earlier state of the file.
  void KeepPathsOfNow();

  std::string stored_name_;  // in the file
  std::uint32_t page_count_ = 0;
  std::shared_ptr<FileReader> reader_;
  std::int64_t spent_ = 0;  // on look-ups, in rows that reading the table would have brought
  bool streamed_ = false;
  // What was found in the file as it was opened for the time `paths_opened_`, by columns.
  std::map<std::vector<std::size_t>, std::optional<access::IndexPath>> paths_;
  std::map<std::size_t, std::optional<access::IndexPath>> range_paths_;
  int paths_opened_ = 0;
};

}  // namespace tenora::query
