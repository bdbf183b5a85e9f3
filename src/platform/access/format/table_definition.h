// A table's definition: its columns, indexes and usage maps. It starts on a page of type 2 that the
// system catalogue names and continues in a chain of further pages (bytes 4 to 7 of each name the
// next; the content of the further ones starts at byte 8). In order:
//
//   the fixed part                           Layout::tdef_*
//   a record for each physical index         Layout::index_head_size
//   a record for each column                 Layout::column_*
//   the name of each column
//   physical indexes, logical indexes, index names
//   for each long value column its number and two usage maps, terminated by FFFF
//
// There are two kinds of index. A physical index is a B-tree over one to ten columns. A logical
// index has a name and a purpose; several, such as those of relationships, may share one physical
// index.
//
// A deleted column has no record any more, but keeps its bit in the null mask and its position
// among the variable columns of the rows: the numbers of other columns do not change.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/access/format/page.h"
#include "platform/access/format/text_codec.h"

namespace tenora::access {

// Where a row stores a column.
struct ColumnPlace {
  std::uint16_t variable_index = 0;  // among the variable columns
  std::uint16_t fixed_offset = 0;    // from the end of the row's column count
  std::uint8_t flags = 0;
  std::uint8_t more_flags = 0;  // Jet 4
};

// The usage maps of the pages that store the content of a long value column.
struct LongValueMaps {
  std::uint16_t column_number = 0;
  RowPointer owned_pages;
  RowPointer free_pages;
};

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

struct TableDefinition {
  std::uint32_t page = 0;
  std::vector<std::uint32_t> further_pages;  // on which the definition continues
  std::uint32_t row_count = 0;
  std::int32_t last_auto_number = 0;
  bool counts_up = true;               // false: AutoNumber values are random
  std::uint16_t max_columns = 0;       // deleted ones included
  std::uint16_t variable_columns = 0;  // deleted ones included; 0: rows have no variable part
  std::vector<Column> columns;
  std::vector<ColumnPlace> places;  // one for each column
  std::vector<PhysicalIndex> physical_indexes;
  std::vector<LogicalIndex> logical_indexes;
  std::vector<Index> indexes;
  std::vector<LongValueMaps> long_values;
  RowPointer owned_pages;  // usage maps
  RowPointer free_pages;
};

// `bytes` is the first page of the definition, number `page`, followed by the content of the
// further ones. Raises Corruption for an invalid definition. Leaves further_pages empty.
TableDefinition ParseTableDefinition(const Layout& layout, const TextCodec& codec,
                                     std::uint32_t page, Bytes bytes);

}  // namespace tenora::access
