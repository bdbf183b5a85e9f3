#include "platform/access/database_file.h"

#include <unicode/unistr.h>

#include <stdexcept>
#include <unordered_map>

#include "platform/access/catalogue.h"
#include "platform/access/database_writer.h"
#include "platform/access/memory_file.h"
#include "platform/access/row_cursor.h"

namespace tenora::access {
namespace {

// Names are equal when they differ only in letter case, of any alphabet.
std::string FoldedName(std::string_view name) {
  std::string folded;
  icu::UnicodeString::fromUTF8({name.data(), static_cast<std::int32_t>(name.size())})
      .foldCase()
      .toUTF8String(folded);
  return folded;
}

class StoredTable final : public Table {
 public:
  explicit StoredTable(TableData data)
      : data_(std::make_shared<const TableData>(std::move(data))) {}

  const std::string& name() const override { return data_->name; }
  const std::vector<Column>& columns() const override { return data_->definition.columns; }
  const std::vector<Index>& indexes() const override { return data_->definition.indexes; }
  std::int64_t row_count() const override { return data_->definition.row_count; }
  std::unique_ptr<RowCursor> Rows() const override { return OpenCursor(data_); }

 private:
  std::shared_ptr<const TableData> data_;
};

class StoredDatabase final : public DatabaseFile {
 public:
  explicit StoredDatabase(std::shared_ptr<const PageFile> file)
      : file_(std::move(file)), catalogue_(ReadCatalogue(file_)) {
    for (std::size_t i = 0; i < catalogue_.size(); ++i) {
      by_name_.try_emplace(FoldedName(catalogue_[i].name), i);
    }
    tables_.resize(catalogue_.size());
  }

  const std::filesystem::path& path() const override { return file_->path(); }
  Format format() const override { return file_->header().format; }

  std::vector<std::string> TableNames() const override {
    std::vector<std::string> names;
    for (const CatalogueEntry& entry : catalogue_) {
      if (!entry.system) names.push_back(entry.name);
    }
    return names;
  }

  const Table* FindTable(std::string_view name) const override {
    const auto found = by_name_.find(FoldedName(name));
    if (found == by_name_.end()) return nullptr;
    std::unique_ptr<Table>& table = tables_[found->second];
    if (table == nullptr) table = Load(catalogue_[found->second]);
    return table.get();
  }

 private:
  std::unique_ptr<Table> Load(const CatalogueEntry& entry) const {
    return NamingDamage(file_->path(), entry.name, [&] {
      return std::make_unique<StoredTable>(TableData{
          file_, entry.name,
          ReadTableDefinition(*file_, TextCodec(file_->header()), entry.definition_page)});
    });
  }

  std::shared_ptr<const PageFile> file_;
  std::vector<CatalogueEntry> catalogue_;
  std::unordered_map<std::string, std::size_t> by_name_;
  mutable std::vector<std::unique_ptr<Table>> tables_;  // as they are first asked for
};

std::shared_ptr<DatabaseFile> OpenPages(const std::shared_ptr<const PageFile>& file) {
  try {
    return std::make_shared<StoredDatabase>(file);
  } catch (const std::invalid_argument& unknown_code_page) {
    throw UnrecognizedFormat(file->path(), unknown_code_page.what());
  }
}

}  // namespace

std::shared_ptr<DatabaseFile> DatabaseFile::Open(const std::filesystem::path& path) {
  // What a crashed writer left must not be read.
  RecoverDatabase(path);
  return OpenPages(PageFile::Open(path));
}

std::shared_ptr<DatabaseFile> OpenBytes(std::vector<std::byte> bytes,
                                        const std::filesystem::path& name) {
  return OpenPages(PageFile::OfBytes(std::move(bytes), name));
}

}  // namespace tenora::access
