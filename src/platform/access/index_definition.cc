#include "platform/access/index_definition.h"

#include <algorithm>

namespace tenora::access {
namespace {

// False when a column is missing.
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

}  // namespace

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

}  // namespace tenora::access
