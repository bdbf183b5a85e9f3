#include "platform/query/cache/table_source.h"

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

std::vector<SourceColumn> SourceColumns(const std::vector<access::Column>& columns) {
  return {columns.begin(), columns.end()};
}

RuntimeError ChangedWhileRead(const std::string& table) {
  return RuntimeError(access::engine_error::kChangedByAnother,
                      "The database engine stopped the process because another user changed table "
                      "'" +
                          table + "' while it was read. Run the statement again.",
                      "DAO.Recordset");
}

}  // namespace

TableStream::TableStream(std::shared_ptr<FileReader> reader,
                         std::unique_ptr<access::RowCursor> rows, std::string table)
    : reader_(std::move(reader)),
      rows_(std::move(rows)),
      table_(std::move(table)),
      opened_(reader_->opened()) {}

bool TableStream::Next() {
  reader_->BeginStep();
  try {
    return rows_->Next();
  } catch (const RuntimeError&) {
    // A page may have gone to another table since.
    if (reader_->opened() != opened_) throw ChangedWhileRead(table_);
    throw;
  }
}

TableSource::TableSource(const access::Table& table, std::shared_ptr<FileReader> reader)
    : name_(table.name()),
      columns_(SourceColumns(table.columns())),
      row_count_(table.row_count()),
      page_count_(table.page_count()),
      reader_(std::move(reader)) {
  if (page_count_ > kSmallPages) return;
  rows_ = std::make_shared<CachedTable>(name_, table.columns(), row_count_, *table.Rows());
}

TableSource::TableSource(const std::vector<access::Column>& columns,
                         std::shared_ptr<CachedTable> rows)
    : name_(rows->name()),
      columns_(SourceColumns(columns)),
      row_count_(rows->rows()),
      rows_(std::move(rows)) {}

std::shared_ptr<TableSource> TableSource::For(std::shared_ptr<FileReader> reader) const {
  auto same = std::make_shared<TableSource>(*this);
  same->reader_ = std::move(reader);
  same->paths_.clear();
  same->paths_opened_ = 0;
  return same;
}

// A statement that is translated for some columns cannot be run over others.
const access::Table& TableSource::Find(const access::DatabaseFile& file) const {
  const access::Table* const table = file.FindTable(name_);
  if (table == nullptr || SourceColumns(table->columns()) != columns_) {
    throw ChangedWhileRead(name_);
  }
  return *table;
}

CachedTable& TableSource::Load() {
  if (rows_ == nullptr) {
    rows_ = reader_->Read(kTriesOfTable, [&](const access::DatabaseFile& file) {
      const access::Table& table = Find(file);
      return std::make_shared<CachedTable>(name_, table.columns(), table.row_count(),
                                           *table.Rows());
    });
  }
  return *rows_;
}

// The numbers of indexes are valid only for the file as it was opened when they were found.
const access::IndexPath* TableSource::PathIn(const access::Table& table,
                                             const std::vector<std::size_t>& columns) {
  if (paths_opened_ != reader_->opened()) paths_.clear();
  paths_opened_ = reader_->opened();
  auto known = paths_.find(columns);
  if (known == paths_.end()) known = paths_.emplace(columns, table.FindIndex(columns)).first;
  return known->second ? &*known->second : nullptr;
}

const access::IndexPath* TableSource::FindIndex(const std::vector<std::size_t>& columns) {
  return reader_->Read(kTriesOfLookUp, [&](const access::DatabaseFile& file) {
    return PathIn(Find(file), columns);
  });
}

std::shared_ptr<CachedTable> TableSource::FindRows(const std::vector<std::size_t>& columns,
                                                   std::span<const Value> values, ColumnMask used) {
  const std::int64_t left = kLeastSpent + row_count_ / kSpentShare - spent_ - kLookUpCost;
  if (left < kFoundCost) return nullptr;
  const auto most = static_cast<std::size_t>(left / kFoundCost);
  std::shared_ptr<CachedTable> found;
  try {
    found = reader_->Read(kTriesOfLookUp, [&](const access::DatabaseFile& file) {
      const access::Table& table = Find(file);
      const access::IndexPath* const path = PathIn(table, columns);
      std::shared_ptr<CachedTable> rows;
      if (path == nullptr || path->columns != columns) return rows;
      const auto cursor = table.FindRows(*path, values, most);
      if (cursor == nullptr) return rows;
      rows = std::make_shared<CachedTable>(name_, table.columns(), 0, *cursor, used);
      return rows;
    });
  } catch (const RuntimeError& error) {
    // A corrupt index does not keep a statement from reading the table.
    if (error.number() != access::engine_error::kCorruptFile) throw;
  }
  spent_ += kLookUpCost + (found == nullptr ? left : kFoundCost * found->rows());
  return found;
}

bool TableSource::Streams() const {
  return rows_ == nullptr && page_count_ > kLargePages && !streamed_;
}

std::unique_ptr<TableStream> TableSource::Stream() {
  if (!Streams()) return nullptr;
  streamed_ = true;
  reader_->BeginStep();
  return std::make_unique<TableStream>(reader_, Find(reader_->File()).Rows(), name_);
}

}  // namespace tenora::query
