#include "platform/query/cache/file_table.h"

#include <algorithm>
#include <utility>

#include "platform/access/engine_error.h"

namespace tenora::query {
namespace {

// Reading a table of so few pages costs no more than a look-up or two.
constexpr std::uint32_t kSmallPages = 16;
// The pages of a table that is read for a single pass without being kept: above 32 MB.
constexpr std::uint32_t kLargePages = 8192;

// What a look-up costs, measured in rows that are read into memory in the same time: finding the
// place, and each row that is found.
constexpr std::int64_t kLookUpCost = 200, kFoundCost = 8;
// A table is read into memory when its look-ups have cost this much and an eighth of reading it:
// whoever goes on to ask for every row then loses that eighth.
constexpr std::int64_t kLeastSpent = 4000;
constexpr int kSpentShare = 8;

constexpr int kTriesOfLookUp = 50, kTriesOfTable = 3;

RuntimeError ChangedWhileRead(const std::string& table) {
  return RuntimeError(access::engine_error::kChangedByAnother,
                      "The database engine stopped the process because another user changed table "
                      "'" +
                          table + "' while it was read. Run the statement again.",
                      "DAO.Recordset");
}

class FileStream : public TableStream {
 public:
  FileStream(std::shared_ptr<FileReader> reader, std::unique_ptr<access::RowCursor> rows,
             std::string table)
      : reader_(std::move(reader)),
        rows_(std::move(rows)),
        table_(std::move(table)),
        opened_(reader_->opened()) {}

  bool Next() override {
    reader_->BeginStep();
    try {
      return rows_->Next();
    } catch (const RuntimeError&) {
      // A page may have gone to another table since.
      if (reader_->opened() != opened_) throw ChangedWhileRead(table_);
      throw;
    }
  }
  access::RowCursor& row() override { return *rows_; }

 private:
  std::shared_ptr<FileReader> reader_;
  std::unique_ptr<access::RowCursor> rows_;
  std::string table_;
  int opened_;
};

}  // namespace

FileTable::FileTable(const access::Table& table, std::shared_ptr<FileReader> reader,
                     const std::string& name)
    : TableSource(name, SourceColumns(table.columns()), table.row_count()),
      stored_name_(table.name()),
      page_count_(table.page_count()),
      reader_(std::move(reader)) {
  if (page_count_ > kSmallPages) return;
  rows_ = std::make_shared<CachedTable>(name, table.columns(), row_count(), *table.Rows());
}

FileTable::FileTable(const std::vector<access::Column>& columns, std::shared_ptr<CachedTable> rows)
    : TableSource(rows->name(), SourceColumns(columns), rows->rows()), stored_name_(rows->name()) {
  Hold(std::move(rows));
}

std::shared_ptr<FileTable> FileTable::For(std::shared_ptr<FileReader> reader) const {
  auto same = std::make_shared<FileTable>(*this);
  same->reader_ = std::move(reader);
  same->paths_.clear();
  same->range_paths_.clear();
  same->paths_opened_ = 0;
  return same;
}

// A statement that is translated for some columns cannot be run over others.
const access::Table& FileTable::Find(const access::DatabaseFile& file) const {
  const access::Table* const table = file.FindTable(stored_name_);
  if (table == nullptr || SourceColumns(table->columns()) != columns()) {
    throw ChangedWhileRead(name());
  }
  return *table;
}

CachedTable& FileTable::Load() {
  if (rows_ == nullptr) {
    rows_ = reader_->Read(kTriesOfTable, [&](const access::DatabaseFile& file) {
      const access::Table& table = Find(file);
      return std::make_shared<CachedTable>(name(), table.columns(), table.row_count(),
                                           *table.Rows());
    });
  }
  return *rows_;
}

// The numbers of indexes are valid only for the file as it was opened when they were found.
void FileTable::KeepPathsOfNow() {
  if (paths_opened_ == reader_->opened()) return;
  paths_.clear();
  range_paths_.clear();
  paths_opened_ = reader_->opened();
}

const access::IndexPath* FileTable::PathIn(const access::Table& table,
                                           const std::vector<std::size_t>& columns) {
  KeepPathsOfNow();
  auto known = paths_.find(columns);
  if (known == paths_.end()) known = paths_.emplace(columns, table.FindIndex(columns)).first;
  return known->second ? &*known->second : nullptr;
}

const access::IndexPath* FileTable::FindIndex(const std::vector<std::size_t>& columns) {
  return reader_->Read(kTriesOfLookUp, [&](const access::DatabaseFile& file) {
    return PathIn(Find(file), columns);
  });
}

const access::IndexPath* FileTable::RangePathIn(const access::Table& table, std::size_t column) {
  KeepPathsOfNow();
  auto known = range_paths_.find(column);
  if (known == range_paths_.end())
    known = range_paths_.emplace(column, table.FindRangeIndex(column)).first;
  return known->second ? &*known->second : nullptr;
}

const access::IndexPath* FileTable::FindRangeIndex(std::size_t column) {
  return reader_->Read(kTriesOfLookUp, [&](const access::DatabaseFile& file) {
    return RangePathIn(Find(file), column);
  });
}

template <typename Opening>
std::shared_ptr<CachedTable> FileTable::ReadFound(ColumnMask used, const Opening& open) {
  const std::int64_t left = kLeastSpent + row_count() / kSpentShare - spent_ - kLookUpCost;
  if (left < kFoundCost) return nullptr;
  const auto most = static_cast<std::size_t>(left / kFoundCost);
  std::shared_ptr<CachedTable> found;
  try {
    found = reader_->Read(kTriesOfLookUp, [&](const access::DatabaseFile& file) {
      const access::Table& table = Find(file);
      std::shared_ptr<CachedTable> rows;
      const std::unique_ptr<access::RowCursor> cursor = open(table, most);
      if (cursor == nullptr) return rows;
      rows = std::make_shared<CachedTable>(name(), table.columns(), 0, *cursor, used);
      return rows;
    });
  } catch (const RuntimeError& error) {
    // A corrupt index does not keep a statement from reading the table.
    if (error.number() != access::engine_error::kCorruptFile) throw;
  }
  spent_ += kLookUpCost + (found == nullptr ? left : kFoundCost * found->rows());
  return found;
}

FoundRows FileTable::FindRows(const std::vector<std::size_t>& columns,
                              std::span<const Value> values, ColumnMask used) {
  return {.table = ReadFound(used,
                             [&](const access::Table& table,
                                 std::size_t most) -> std::unique_ptr<access::RowCursor> {
                               const access::IndexPath* const path = PathIn(table, columns);
                               if (path == nullptr || path->columns != columns) return nullptr;
                               return table.FindRows(*path, values, most);
                             })};
}

std::shared_ptr<CachedTable> FileTable::FindRange(std::size_t column, const access::KeyRange& range,
                                                  ColumnMask used) {
  return ReadFound(
      used,
      [&](const access::Table& table, std::size_t most) -> std::unique_ptr<access::RowCursor> {
        const access::IndexPath* const path = RangePathIn(table, column);
        return path == nullptr ? nullptr : table.FindRange(*path, range, most);
      });
}

bool FileTable::Streams() const {
  return rows_ == nullptr && page_count_ > kLargePages && !streamed_;
}

std::unique_ptr<TableStream> FileTable::Stream() {
  if (!Streams()) return nullptr;
  streamed_ = true;
  reader_->BeginStep();
  return std::make_unique<FileStream>(reader_, Find(reader_->File()).Rows(), name());
}

}  // namespace tenora::query
