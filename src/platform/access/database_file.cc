#include "platform/access/database_file.h"

#include <stdexcept>

#include "platform/access/database_writer.h"
#include "platform/access/read/index_lookup.h"
#include "platform/access/read/query_definitions.h"
#include "platform/access/read/row_cursor.h"
#include "platform/access/read/system_catalogue.h"
#include "platform/access/read/usage_map.h"
#include "platform/access/storage/lock_file.h"

namespace tenora::access {
namespace {

constexpr const char* kQueryTable = "MSysQueries";

class StoredTable final : public Table {
 public:
  explicit StoredTable(std::shared_ptr<const TableData> data)
      : data_(std::move(data)), lookup_(data_) {}

  const std::string& name() const override { return data_->name; }
  const std::vector<Column>& columns() const override { return data_->definition.columns; }
  const std::vector<Index>& indexes() const override { return data_->definition.indexes; }
  std::int64_t row_count() const override { return data_->definition.row_count; }
  std::unique_ptr<RowCursor> Rows() const override { return OpenCursor(data_); }
  std::uint32_t page_count() const override {
    return NamingCorruption(data_->file->path(), data_->name, [&] {
      std::uint32_t pages = UsageMap(*data_->file, data_->definition.owned_pages).Count();
      for (const LongValueMaps& column : data_->definition.long_values) {
        pages += LongValuePages(column);
      }
      return pages;
    });
  }

  std::optional<IndexPath> FindIndex(std::span<const std::size_t> columns) const override {
    return lookup_.FindIndex(columns);
  }

  std::unique_ptr<RowCursor> FindRows(const IndexPath& path, std::span<const Value> values,
                                      std::size_t most) const override {
    std::optional<std::vector<RowPointer>> rows = NamingCorruption(
        data_->file->path(), data_->name, [&] { return lookup_.FindRows(path, values, most); });
    if (!rows) return nullptr;
    return OpenCursorAt(data_, *std::move(rows));
  }

  std::optional<IndexPath> FindRangeIndex(std::size_t column) const override {
    return lookup_.FindRangeIndex(column);
  }

  std::unique_ptr<RowCursor> FindRange(const IndexPath& path, const KeyRange& range,
                                       std::size_t most) const override {
    std::optional<std::vector<RowPointer>> rows = NamingCorruption(
        data_->file->path(), data_->name, [&] { return lookup_.FindRange(path, range, most); });
    if (!rows) return nullptr;
    return OpenCursorAt(data_, *std::move(rows));
  }

 private:
  // A damaged map is told of by those who need it: reading the rows does not.
  std::uint32_t LongValuePages(const LongValueMaps& column) const {
    try {
      return UsageMap(*data_->file, column.owned_pages).Count();
    } catch (const Corruption&) {
      return 0;
    }
  }

  std::shared_ptr<const TableData> data_;
  IndexLookup lookup_;
};

class StoredDatabase final : public DatabaseFile {
 public:
  explicit StoredDatabase(std::shared_ptr<const PageFile> file)
      : file_(std::move(file)), catalogue_(file_), tables_(catalogue_.tables().size()) {}
  // For a file that is read from the disk: announces it to those who have it open.
  void Announce() { lock_file_ = LockFile::JoinOthers(disk_, path()); }

  const std::filesystem::path& path() const override { return file_->path(); }
  Format format() const override { return file_->header().format; }
  std::uint32_t sort_order() const override { return file_->header().sort_order; }

  std::vector<std::string> TableNames() const override {
    std::vector<std::string> names;
    for (const CatalogueEntry& entry : catalogue_.tables()) {
      if (!entry.system) names.push_back(entry.name);
    }
    return names;
  }

  std::vector<LinkedTable> LinkedTables() const override { return catalogue_.linked_tables(); }

  std::vector<QuerySummary> Queries() const override {
    std::vector<QuerySummary> queries;
    for (const QueryEntry& entry : catalogue_.queries()) {
      if (!entry.system) queries.push_back({.name = entry.name, .kind = entry.kind});
    }
    return queries;
  }

  const Table* FindTable(std::string_view name) const override {
    const CatalogueEntry* const entry = catalogue_.Find(name);
    if (entry == nullptr) return nullptr;
    std::unique_ptr<Table>& table =
        tables_[static_cast<std::size_t>(entry - catalogue_.tables().data())];
    if (table == nullptr) {
      table = NamingCorruption(file_->path(), entry->name, [&] {
        return std::make_unique<StoredTable>(catalogue_.Read(*entry));
      });
    }
    return table.get();
  }

  std::optional<LinkedTable> FindLink(std::string_view name) const override {
    const LinkedTable* const link = catalogue_.FindLink(name);
    return link == nullptr ? std::nullopt : std::optional(*link);
  }

  std::optional<SavedQuery> FindQuery(std::string_view name) const override {
    const QueryEntry* const entry = catalogue_.FindQuery(name);
    if (entry == nullptr) return std::nullopt;
    return NamingCorruption(file_->path(), kQueryTable, [&] {
      const CatalogueEntry* const definitions = catalogue_.Find(kQueryTable);
      if (definitions == nullptr) throw Corruption(kCataloguePage, "the file has no such table");
      return ReadQuery(catalogue_.Read(*definitions), *entry);
    });
  }

 private:
  std::shared_ptr<const PageFile> file_;
  SystemCatalogue catalogue_;
  mutable std::vector<std::unique_ptr<Table>> tables_;  // each read when first asked for
  DiskStorage disk_;
  std::unique_ptr<LockFile> lock_file_;
};

std::shared_ptr<StoredDatabase> OpenPages(const std::shared_ptr<const PageFile>& file) {
  try {
    return std::make_shared<StoredDatabase>(file);
  } catch (const std::invalid_argument& unknown_code_page) {
    throw UnrecognizedFormat(file->path(), unknown_code_page.what());
  }
}

}  // namespace

std::shared_ptr<DatabaseFile> DatabaseFile::Open(const std::filesystem::path& path) {
  // A half-written change that a crashed writer left must not be read.
  RecoverDatabase(path);
  auto database = OpenPages(PageFile::Open(path));
  database->Announce();
  return database;
}

std::shared_ptr<DatabaseFile> DatabaseFile::OpenBytes(std::vector<std::byte> bytes,
                                                      const std::filesystem::path& name) {
  return OpenPages(PageFile::OfBytes(std::move(bytes), name));
}

}  // namespace tenora::access
