// The indexes of a table definition, of two kinds. A physical index is a tree of index pages over
// one to ten columns. A logical index has a name and says what the index is for; several, as those
// of relationships, may share one physical index.
#pragma once

#include <cstdint>
#include <vector>

#include "platform/access/page_file.h"
#include "platform/access/text_codec.h"

namespace tenora::access {

struct PhysicalIndex {
  struct Part {
    std::uint16_t column_number = 0;
    bool descending = false;
  };
  std::vector<Part> parts;
  RowPointer owned_pages;  // a usage map
  std::uint32_t root_page = 0;
  std::uint8_t flags = 0;  // kIndexUnique and others
};

struct LogicalIndex {
  std::string name;
  std::uint32_t physical = 0;
  bool primary = false;
};

// Both readers leave `reader` behind what they read.
std::vector<PhysicalIndex> ReadPhysicalIndexes(const Layout& layout, std::uint32_t count,
                                               ByteReader& reader);
std::vector<LogicalIndex> ReadLogicalIndexes(const Layout& layout, std::uint32_t count,
                                             const TextCodec& codec, ByteReader& reader);

// The indexes as callers see them. One whose columns or physical index the table does not have is
// left out: it cannot be used, and the rows do not need it.
std::vector<Index> ResolveIndexes(const std::vector<LogicalIndex>& logical,
                                  const std::vector<PhysicalIndex>& physical,
                                  const std::vector<Column>& columns);

// A column or index name at the reader's place.
std::string ReadName(const Layout& layout, const TextCodec& codec, ByteReader& reader);

}  // namespace tenora::access
