#include "platform/access/catalogue.h"

#include <algorithm>

#include "platform/access/row_cursor.h"
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
    throw Damage(table.page, "the catalogue has no column '" + std::string(name) + "'");
  }
  return static_cast<std::size_t>(found - table.columns.begin());
}

std::shared_ptr<const TableData> OpenCatalogue(const std::shared_ptr<const PageFile>& file) {
  return std::make_shared<const TableData>(TableData{
      file, kName, ReadTableDefinition(*file, TextCodec(file->header()), kCataloguePage)});
}

}  // namespace

std::vector<CatalogueEntry> ReadCatalogue(const std::shared_ptr<const PageFile>& file) {
  return NamingDamage(file->path(), kName, [&] {
    const auto table = OpenCatalogue(file);
    const std::size_t id = ColumnNamed(table->definition, "Id", ColumnType::kLong);
    const std::size_t name = ColumnNamed(table->definition, "Name", ColumnType::kText);
    const std::size_t type = ColumnNamed(table->definition, "Type", ColumnType::kInteger);
    const std::size_t flags = ColumnNamed(table->definition, "Flags", ColumnType::kLong);
    std::vector<CatalogueEntry> entries;
    for (const auto rows = OpenCursor(table); rows->Next();) {
      if (rows->Integer(type) != kTableType) continue;
      CatalogueEntry& entry = entries.emplace_back();
      entry.name = rows->Text(name);
      entry.row = rows->place();
      entry.definition_page = static_cast<std::uint32_t>(rows->Integer(id) & kPageOfId);
      entry.system = (rows->Integer(flags) & kSystemFlags) != 0 ||
                     StartsWithNoCase(entry.name, "MSys") || entry.name.starts_with('~');
    }
    return entries;
  });
}

std::vector<std::byte> ReadStoredProperties(const std::shared_ptr<const PageFile>& file,
                                            const CatalogueEntry& entry) {
  const auto table = OpenCatalogue(file);
  const auto& columns = table->definition.columns;
  const auto found = std::ranges::find_if(columns, [](const Column& column) {
    return EqualsNoCase(column.name, "LvProp") && column.type == ColumnType::kOle;
  });
  if (found == columns.end()) return {};
  const auto row = OpenCursorAt(table, {entry.row});
  if (!row->Next()) return {};
  const Bytes stored = row->Bytes(static_cast<std::size_t>(found - columns.begin()));
  return {stored.begin(), stored.end()};
}

}  // namespace tenora::access
