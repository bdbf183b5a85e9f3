#include "platform/access/read/system_catalogue.h"

#include <unicode/unistr.h>

#include <algorithm>
#include <array>
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

// The kinds of queries, by the second digit of their flags.
constexpr std::array kQueryKinds = {
    QueryKind::kSelect,     QueryKind::kCrosstab,    QueryKind::kDelete,
    QueryKind::kUpdate,     QueryKind::kAppend,      QueryKind::kMakeTable,
    QueryKind::kDefinition, QueryKind::kPassThrough, QueryKind::kUnion};

QueryKind KindOf(std::int64_t flags) {
  const auto digit = static_cast<std::size_t>(flags >> 4 & 0xF);
  return digit < kQueryKinds.size() ? kQueryKinds[digit] : QueryKind::kSelect;
}

// Names are equal when they differ only in letter case, of any alphabet.
std::string FoldedName(std::string_view name) {
  std::string folded;
  icu::UnicodeString::fromUTF8({name.data(), static_cast<std::int32_t>(name.size())})
      .foldCase()
      .toUTF8String(folded);
  return folded;
}

template <typename Entry>
const Entry* FindNamed(const std::vector<Entry>& entries, std::string_view name) {
  const std::string folded = FoldedName(name);
  const auto found = std::ranges::find_if(
      entries, [&](const Entry& entry) { return FoldedName(entry.name) == folded; });
  return found == entries.end() ? nullptr : &*found;
}

}  // namespace

SystemCatalogue::SystemCatalogue(const std::shared_ptr<const PageFile>& file) {
  NamingCorruption(file->path(), kName, [&] {
    table_ = ReadTable(file, kName, kCataloguePage);
    const std::size_t id = RequireColumn(table_->definition, "Id", ColumnType::kLong);
    const std::size_t name = RequireColumn(table_->definition, "Name", ColumnType::kText);
    const std::size_t type = RequireColumn(table_->definition, "Type", ColumnType::kInteger);
    const std::size_t flags = RequireColumn(table_->definition, "Flags", ColumnType::kLong);
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
      if (kind == kQueryType) {
        queries_.push_back({.name = entry.name,
                            .id = static_cast<std::int32_t>(rows->Integer(id)),
                            .kind = KindOf(rows->Integer(flags)),
                            .system = entry.system});
      }
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

const QueryEntry* SystemCatalogue::FindQuery(std::string_view name) const {
  return FindNamed(queries_, name);
}

const LinkedTable* SystemCatalogue::FindLink(std::string_view name) const {
  return FindNamed(linked_tables_, name);
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
