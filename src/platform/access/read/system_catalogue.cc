#include "platform/access/read/system_catalogue.h"

#include <unicode/unistr.h>

#include <algorithm>

#include "platform/access/read/row_cursor.h"
#include "platform/runtime/text.h"

namespace tenora::access {
namespace {

constexpr const char* kName = "MSysObjects";
constexpr std::int64_t kTableType = 1;
constexpr std::int64_t kSystemFlags = 0x80000002;
constexpr std::int64_t kPageOfId = 0x00FFFFFF;

std::size_t ColumnNamed(const TableDefinition& table, std::string_view name, ColumnType type) {
  const auto found = std::find_if(
      table.columns.begin(), table.columns.end(),
      [&](const Column& column) { return EqualsNoCase(column.name, name) && column.type == type; });
  if (found == table.columns.end()) {
    throw Corruption(table.page, "the catalogue has no column '" + std::string(name) + "'");
  }
  return static_cast<std::size_t>(found - table.columns.begin());
}

// Names are equal when they differ only in letter case, of any alphabet.
std::string FoldedName(std::string_view name) {
  std::string folded;
  icu::UnicodeString::fromUTF8({name.data(), static_cast<std::int32_t>(name.size())})
      .foldCase()
      .toUTF8String(folded);
  return folded;
}

}  // namespace

SystemCatalogue::SystemCatalogue(const std::shared_ptr<const PageFile>& file) {
  NamingCorruption(file->path(), kName, [&] {
    table_ = ReadTable(file, kName, kCataloguePage);
    const std::size_t id = ColumnNamed(table_->definition, "Id", ColumnType::kLong);
    const std::size_t name = ColumnNamed(table_->definition, "Name", ColumnType::kText);
    const std::size_t type = ColumnNamed(table_->definition, "Type", ColumnType::kInteger);
    const std::size_t flags = ColumnNamed(table_->definition, "Flags", ColumnType::kLong);
    for (const auto rows = OpenCursor(table_); rows->Next();) {
      if (rows->Integer(type) != kTableType) continue;
      CatalogueEntry& entry = tables_.emplace_back();
      entry.name = rows->Text(name);
      entry.row = rows->place();
      entry.definition_page = static_cast<std::uint32_t>(rows->Integer(id) & kPageOfId);
      entry.system = (rows->Integer(flags) & kSystemFlags) != 0 ||
                     StartsWithNoCase(entry.name, "MSys") || entry.name.starts_with('~');
      by_folded_name_.try_emplace(FoldedName(entry.name), tables_.size() - 1);
    }
  });
}

const CatalogueEntry* SystemCatalogue::Find(std::string_view name) const {
  const auto found = by_folded_name_.find(FoldedName(name));
  return found == by_folded_name_.end() ? nullptr : &tables_[found->second];
}

std::vector<std::byte> SystemCatalogue::StoredProperties(const CatalogueEntry& entry) const {
  const auto& columns = table_->definition.columns;
  const auto found = std::ranges::find_if(columns, [](const Column& column) {
    return EqualsNoCase(column.name, "LvProp") && column.type == ColumnType::kOle;
  });
  if (found == columns.end()) return {};
  const auto row = OpenCursorAt(table_, {entry.row});
  if (!row->Next()) return {};
  const Bytes stored = row->Bytes(static_cast<std::size_t>(found - columns.begin()));
  return {stored.begin(), stored.end()};
}

}  // namespace tenora::access
