#include "platform/access/read/table_data.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "platform/runtime/text.h"

namespace tenora::access {
namespace {

// The format allows 255 columns with names of 64 characters and 32 indexes, which need fewer pages
// than this; a longer chain is a loop.
constexpr std::size_t kMostPages = 64;

// The definition's bytes from all its pages.
std::vector<std::byte> ReadChain(const PageFile& file, std::uint32_t first,
                                 std::vector<std::uint32_t>& further_pages) {
  std::vector<std::byte> bytes;
  PageBuffer page;
  std::uint32_t number = first;
  for (std::size_t pages = 0; number != 0; ++pages) {
    if (pages == kMostPages) throw Corruption(first, "the table's definition does not end");
    file.Read(number, page);
    if (page.type() != PageType::kTableDefinition) {
      throw Corruption(number, "expected a table definition, found a page of type " +
                                   std::to_string(static_cast<int>(page.type())));
    }
    const std::size_t start = pages == 0 ? 0 : kTdefContinuation;
    if (pages > 0) further_pages.push_back(number);
    bytes.insert(bytes.end(), page.bytes.begin() + static_cast<std::ptrdiff_t>(start),
                 page.bytes.begin() + static_cast<std::ptrdiff_t>(page.size));
    number = Load32(&page.bytes[kTdefNextPage]);
  }
  return bytes;
}

}  // namespace

std::shared_ptr<const TableData> ReadTable(std::shared_ptr<const PageFile> file, std::string name,
                                           std::uint32_t definition_page) {
  if (definition_page == 0) throw Corruption(0, "page 0 cannot hold a table definition");
  std::vector<std::uint32_t> further_pages;
  const std::vector<std::byte> bytes = ReadChain(*file, definition_page, further_pages);
  TableDefinition definition =
      ParseTableDefinition(file->layout(), TextCodec(file->header()), definition_page, bytes);
  definition.further_pages = std::move(further_pages);
  return std::make_shared<const TableData>(
      TableData{std::move(file), std::move(name), std::move(definition)});
}

std::optional<std::size_t> FindColumn(const TableDefinition& table, std::string_view name) {
  const auto found = std::ranges::find_if(
      table.columns, [&](const Column& column) { return EqualsNoCase(column.name, name); });
  if (found == table.columns.end()) return std::nullopt;
  return static_cast<std::size_t>(found - table.columns.begin());
}

std::size_t RequireColumn(const TableDefinition& table, std::string_view name, ColumnType type) {
  const std::optional<std::size_t> found = FindColumn(table, name);
  if (!found || table.columns[*found].type != type) {
    throw Corruption(table.page, "the table has no column '" + std::string(name) + "'");
  }
  return *found;
}

}  // namespace tenora::access
