#include "platform/access/table_definition.h"

#include <string>

namespace tenora::access {
namespace {

// The format's own limit is 255 columns with names of 64 characters and 32 indexes, which is less
// than this many pages; a longer chain is a loop.
constexpr std::size_t kMostPages = 64;
constexpr std::size_t kMostColumns = 255;

std::vector<std::byte> ReadChain(const PageFile& file, std::uint32_t first,
                                 std::vector<std::uint32_t>& further_pages) {
  std::vector<std::byte> bytes;
  PageBuffer page;
  std::uint32_t number = first;
  for (std::size_t pages = 0; number != 0; ++pages) {
    if (pages == kMostPages) throw Damage(first, "the table's definition does not end");
    file.Read(number, page);
    if (page.type() != PageType::kTableDefinition) {
      throw Damage(number, "a table definition is expected here, the page's type is " +
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

void ReadColumns(const Layout& layout, const TextCodec& codec, std::size_t count,
                 ByteReader& reader, TableDefinition& table) {
  for (std::size_t i = 0; i < count; ++i) {
    const std::byte* record = reader.Take(layout.column_size).data();
    Column& column = table.columns.emplace_back();
    const std::uint8_t flags = Load8(record + layout.column_flags);
    column.type = static_cast<ColumnType>(Load8(record));
    column.number = Load16(record + layout.column_number);
    column.fixed_length = (flags & kColumnFixed) != 0;
    column.auto_number = (column.type == ColumnType::kLong && (flags & kColumnAutoNumber) != 0) ||
                         (column.type == ColumnType::kGuid && (flags & kColumnAutoGuid) != 0);
    column.length = Load16(record + layout.column_length);
    if (column.type == ColumnType::kDecimal) {
      column.precision = Load8(record + layout.column_precision);
      column.scale = Load8(record + layout.column_scale);
    }
    if (column.type == ColumnType::kText && layout.column_sort_order != 0) {
      column.sort_order = Load32(record + layout.column_sort_order);
    }
    table.places.push_back({Load16(record + layout.column_variable_index),
                            Load16(record + layout.column_fixed_offset), flags,
                            layout.page_size == kJet4Layout.page_size
                                ? Load8(record + kColumnMoreFlags)
                                : std::uint8_t{0}});
  }
  for (Column& column : table.columns) column.name = ReadName(layout, codec, reader);
}

// Only writing needs them: a definition that ends without is none the worse for reading.
void ReadLongValueMaps(ByteReader& reader, TableDefinition& table) {
  constexpr std::size_t kRecord = 10;
  while (reader.left() >= kRecord) {
    const std::byte* record = reader.Take(kRecord).data();
    if (Load16(record) == kNoColumn) return;
    table.long_values.push_back(
        {Load16(record), RowPointer::Load(record + 2), RowPointer::Load(record + 6)});
  }
}

}  // namespace

TableDefinition ReadTableDefinition(const PageFile& file, const TextCodec& codec,
                                    std::uint32_t page) {
  const Layout& layout = file.layout();
  if (page == 0) throw Damage(0, "a table definition cannot be here");
  TableDefinition table;
  const std::vector<std::byte> bytes = ReadChain(file, page, table.further_pages);
  table.page = page;
  table.row_count = Load32(&bytes[layout.tdef_rows]);
  table.last_auto_number = static_cast<std::int32_t>(Load32(&bytes[layout.tdef_auto_number]));
  table.counts_up =
      layout.tdef_auto_flags == 0 || (Load8(&bytes[layout.tdef_auto_flags]) & kAutoCountsUp) != 0;
  table.max_columns = Load16(&bytes[layout.tdef_max_columns]);
  table.variable_columns = Load16(&bytes[layout.tdef_max_columns + 2]);
  const std::size_t columns = Load16(&bytes[layout.tdef_max_columns + 4]);
  const std::uint32_t logical = Load32(&bytes[layout.tdef_index_count]);
  const std::uint32_t physical = Load32(&bytes[layout.tdef_index_count + 4]);
  table.owned_pages = RowPointer::Load(&bytes[layout.tdef_owned_pages]);
  table.free_pages = RowPointer::Load(&bytes[layout.tdef_free_pages]);
  if (columns > kMostColumns) {
    throw Damage(page, "a table cannot have " + std::to_string(columns) + " columns");
  }
  ByteReader reader(bytes, page, "the table's definition");
  reader.Skip(layout.tdef_first_index);
  reader.Skip(std::size_t{physical} * layout.index_head_size);
  ReadColumns(layout, codec, columns, reader, table);
  table.physical_indexes = ReadPhysicalIndexes(layout, physical, reader);
  table.logical_indexes = ReadLogicalIndexes(layout, logical, codec, reader);
  table.indexes = ResolveIndexes(table.logical_indexes, table.physical_indexes, table.columns);
  ReadLongValueMaps(reader, table);
  return table;
}

}  // namespace tenora::access
