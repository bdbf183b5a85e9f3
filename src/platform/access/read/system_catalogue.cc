#include "platform/access/read/system_catalogue.h"

#include <unicode/unistr.h>

#include <algorithm>
#include <optional>

#include "platform/access/format/table_properties.h"
#include "platform/access/read/row_cursor.h"
#include "platform/runtime/text.h"

namespace tenora::access {
namespace {

constexpr const char* kName = "MSysObjects";
constexpr std::int64_t kTableType = 1, kServerTableType = 4, kQueryType = 5, kLinkedTableType = 6;
constexpr std::int64_t kSystemFlags = 0x80000002;
constexpr std::int64_t kPageOfId = 0x00FFFFFF;

std::optional<std::size_t> FindColumn(const TableDefinition& table, std::string_view name) {
  const auto found = std::ranges::find_if(
      table.columns, [&](const Column& column) { return EqualsNoCase(column.name, name); });
  if (found == table.columns.end()) return std::nullopt;
  return static_cast<std::size_t>(found - table.columns.begin());
}

std::size_t ColumnNamed(const TableDefinition& table, std::string_view name, ColumnType type) {
  const std::optional<std::size_t> found = FindColumn(table, name);
  if (!found || table.columns[*found].type != type) {
    throw Corruption(table.page, "the catalogue has no column '" + std::string(name) + "'");
  }
  return *found;
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
    const auto text = [&](RowCursor& rows, std::string_view column) {
      const std::optional<std::size_t> found = FindColumn(table_->definition, column);
      return found ? std::string(rows.Text(*found)) : std::string();
    };
    for (const auto rows = OpenCursor(table_); rows->Next();) {
      const std::int64_t kind = rows->Integer(type);
      CatalogueEntry entry;
      entry.name = rows->Text(name);
      entry.row = rows->place();
      entry.definition_page = static_cast<std::uint32_t>(rows->Integer(id) & kPageOfId);
      entry.system = (rows->Integer(flags) & kSystemFlags) != 0 ||
                     StartsWithNoCase(entry.name, "MSys") || entry.name.starts_with('~');
      if (kind == kLinkedTableType || kind == kServerTableType) {
        linked_tables_.push_back({entry.name, text(*rows, "ForeignName"), text(*rows, "Database"),
                                  text(*rows, "Connect")});
      }
      if (kind == kQueryType && !entry.system) queries_.push_back(entry.name);
      if (kind == kServerTableType) copied_definitions_.push_back(entry);
      if (kind != kTableType) continue;
      by_folded_name_.try_emplace(FoldedName(entry.name), tables_.size());
      tables_.push_back(std::move(entry));
    }
  });
}

const CatalogueEntry* SystemCatalogue::Find(std::string_view name) const {
  const auto found = by_folded_name_.find(FoldedName(name));
  return found == by_folded_name_.end() ? nullptr : &tables_[found->second];
}

std::shared_ptr<const TableData> SystemCatalogue::Read(const CatalogueEntry& entry) const {
  auto table = ReadTable(table_->file, entry.name, entry.definition_page);
  if (std::ranges::none_of(table->definition.columns, &Column::calculated)) return table;
  TableData typed = *table;
  const TableProperties properties = ReadTableProperties(
      StoredProperties(entry), TextCodec(table_->file->header()), table->definition);
  for (std::size_t i = 0; i < typed.definition.columns.size(); ++i) {
    Column& column = typed.definition.columns[i];
    if (column.calculated) column.type = properties.columns[i].result_type.value_or(column.type);
  }
  return std::make_shared<const TableData>(std::move(typed));
}

std::vector<std::byte> SystemCatalogue::StoredProperties(const CatalogueEntry& entry) const {
  const std::optional<std::size_t> column = FindColumn(table_->definition, "LvProp");
  if (!column || table_->definition.columns[*column].type != ColumnType::kOle) return {};
  const auto row = OpenCursorAt(table_, {entry.row});
  if (!row->Next()) return {};
  const Bytes stored = row->Bytes(*column);
  return {stored.begin(), stored.end()};
}

}  // namespace tenora::access
