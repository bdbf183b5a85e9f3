#include "platform/access/format/table_definition.h"

#include <algorithm>

namespace tenora::access {
namespace {

constexpr std::size_t kMostColumns = 255;

// Only writing needs them, so a definition without them is valid for reading.
void ReadLongValueMaps(ByteReader& reader, TableDefinition& table) {
  constexpr std::size_t kRecord = 10;
  while (reader.left() >= kRecord) {
    const std::byte* record = reader.Take(kRecord).data();
    if (Load16(record) == kNoColumn) return;
    table.long_values.push_back(
        {Load16(record), RowPointer::Load(record + 2), RowPointer::Load(record + 6)});
  }
}

// False when the table does not have one of its columns.
bool Resolve(const PhysicalIndex& physical, const std::vector<Column>& columns, Index& index) {
  for (const PhysicalIndex::Part& part : physical.parts) {
    const auto column = std::find_if(columns.begin(), columns.end(), [&](const Column& candidate) {
      return candidate.number == part.column_number;
    });
    if (column == columns.end()) return false;
    index.columns.push_back({static_cast<std::size_t>(column - columns.begin()), part.descending});
  }
  return !index.columns.empty();
}

// The name of a column or index.
std::string ReadName(const Layout& layout, const TextCodec& codec, ByteReader& reader) {
  const std::size_t size = layout.name_length_size == 1 ? reader.U8() : reader.U16();
  std::string buffer;
  return std::string(codec.Decode(reader.Take(size), buffer));
}

std::vector<PhysicalIndex> ReadPhysicalIndexes(const Layout& layout, std::uint32_t count,
                                               ByteReader& reader) {
  std::vector<PhysicalIndex> indexes;
  for (std::uint32_t i = 0; i < count; ++i) {
    const std::byte* record = reader.Take(layout.index_size).data();
    PhysicalIndex& index = indexes.emplace_back();
    for (std::size_t slot = 0; slot < kIndexColumnSlots; ++slot) {
      const std::byte* part = record + layout.index_columns + 3 * slot;
      if (Load16(part) == kNoColumn) continue;
      index.parts.push_back({Load16(part), (Load8(part + 2) & kIndexAscending) == 0});
    }
    index.owned_pages = RowPointer::Load(record + layout.index_owned_pages);
    index.root_page = Load32(record + layout.index_root);
    index.flags = Load8(record + layout.index_flags);
  }
  return indexes;
}

std::vector<LogicalIndex> ReadLogicalIndexes(const Layout& layout, std::uint32_t count,
                                             const TextCodec& codec, ByteReader& reader) {
  std::vector<LogicalIndex> indexes;
  for (std::uint32_t i = 0; i < count; ++i) {
    const std::byte* record = reader.Take(layout.logical_size).data();
    LogicalIndex& index = indexes.emplace_back();
    index.physical = Load32(record + layout.logical_physical);
    index.primary = Load8(record + layout.logical_type) == kLogicalPrimary;
  }
  for (LogicalIndex& index : indexes) index.name = ReadName(layout, codec, reader);
  return indexes;
}

// The indexes as callers see them. One whose columns or physical index the table does not have is
// left out: it cannot be used, and reading rows does not need it.
std::vector<Index> ResolveIndexes(const std::vector<LogicalIndex>& logical,
                                  const std::vector<PhysicalIndex>& physical,
                                  const std::vector<Column>& columns) {
  std::vector<Index> indexes;
  for (const LogicalIndex& record : logical) {
    if (record.physical >= physical.size()) continue;
    const PhysicalIndex& tree = physical[record.physical];
    Index index;
    if (!Resolve(tree, columns, index)) continue;
    index.name = record.name;
    index.primary = record.primary;
    index.unique = record.primary || (tree.flags & kIndexUnique) != 0;
    indexes.push_back(std::move(index));
  }
  return indexes;
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
    const bool text = column.type == ColumnType::kText || column.type == ColumnType::kMemo;
    if (text && layout.column_sort_order != 0) {
      column.sort_order = Load32(record + layout.column_sort_order);
    }
    const std::uint8_t more_flags = layout.page_size == kJet4Layout.page_size
                                        ? Load8(record + kColumnMoreFlags)
                                        : std::uint8_t{0};
    column.calculated = (more_flags & kColumnCalculated) == kColumnCalculated;
    table.places.push_back({Load16(record + layout.column_variable_index),
                            Load16(record + layout.column_fixed_offset), flags, more_flags});
  }
  for (Column& column : table.columns) column.name = ReadName(layout, codec, reader);
}

}  // namespace

TableDefinition ParseTableDefinition(const Layout& layout, const TextCodec& codec,
                                     std::uint32_t page, Bytes bytes) {
  if (bytes.size() < layout.tdef_first_index)
    throw Corruption(page, "the table's definition ends too early");
  TableDefinition table;
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
    throw Corruption(page, "a table cannot have " + std::to_string(columns) + " columns");
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
