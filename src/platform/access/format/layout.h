// Offsets and sizes, per format. Jet 4 and ACE share one layout; Jet 3 has smaller pages and
// narrower fields. Everything is in bytes, offsets from the start of the page or record named.
// Readers and writers take every number that differs between formats from here.
#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/access/schema.h"

namespace tenora::access {

struct Layout {
  std::size_t page_size;

  // Data page: type, 1, free space, owner, [Jet 4: four unknown bytes,] row count, row offsets.
  std::size_t data_row_count;
  std::size_t data_row_offsets;

  // Row: column count, fixed columns, variable columns, end and starts of the variable columns in
  // reverse, [Jet 3: jump table,] variable column count, null mask.
  std::size_t row_count_size;  // width of the counts and offsets within a row: 1 or 2

  // Table definition, first page.
  std::size_t tdef_rows;
  std::size_t tdef_auto_number;  // last value assigned
  std::size_t tdef_auto_flags;   // bit 0: sequential, not random; offset 0 where there are no flags
  std::size_t
      tdef_max_columns;  // highest number of columns ever, variable columns ever, columns now
  std::size_t tdef_index_count;  // logical indexes, then physical ones
  std::size_t tdef_owned_pages;
  std::size_t tdef_free_pages;
  std::size_t tdef_first_index;  // end of the fixed part: one record per physical index

  std::size_t index_head_size;  // of each record at tdef_first_index

  // Column record.
  std::size_t column_size;
  std::size_t column_number;
  std::size_t column_variable_index;
  std::size_t column_precision;
  std::size_t column_scale;
  std::size_t column_sort_order;  // of text; 0 where columns have none
  std::size_t column_flags;
  std::size_t column_fixed_offset;
  std::size_t column_length;

  std::size_t name_length_size;  // of column and index names: 1 or 2, in bytes of the name

  // Physical index record.
  std::size_t index_size;
  std::size_t index_columns;
  std::size_t index_owned_pages;
  std::size_t index_root;
  std::size_t index_flags;

  // Logical index record.
  std::size_t logical_size;
  std::size_t logical_physical;
  std::size_t logical_type;

  // Index page: type, 1, free bytes, owner, [Jet 4: four unknown bytes,] and these.
  std::size_t index_page_previous;  // then the next page, then a node's tail child, 4 each
  std::size_t index_page_prefix;
  std::size_t index_page_prefix_size;
  std::size_t index_page_ends;  // bit mask: where entries end
  std::size_t index_page_entries;
};

inline constexpr Layout kJet3Layout{
    .page_size = 2048,
    .data_row_count = 8,
    .data_row_offsets = 10,
    .row_count_size = 1,
    .tdef_rows = 12,
    .tdef_auto_number = 16,
    .tdef_auto_flags = 0,
    .tdef_max_columns = 21,
    .tdef_index_count = 27,
    .tdef_owned_pages = 35,
    .tdef_free_pages = 39,
    .tdef_first_index = 43,
    .index_head_size = 8,
    .column_size = 18,
    .column_number = 1,
    .column_variable_index = 3,
    .column_precision = 9,
    .column_scale = 10,
    .column_sort_order = 0,
    .column_flags = 13,
    .column_fixed_offset = 14,
    .column_length = 16,
    .name_length_size = 1,
    .index_size = 39,
    .index_columns = 0,
    .index_owned_pages = 30,
    .index_root = 34,
    .index_flags = 38,
    .logical_size = 20,
    .logical_physical = 4,
    .logical_type = 19,
    .index_page_previous = 8,
    .index_page_prefix = 20,
    .index_page_prefix_size = 1,
    .index_page_ends = 22,
    .index_page_entries = 0xF8,
};

inline constexpr Layout kJet4Layout{
    .page_size = 4096,
    .data_row_count = 12,
    .data_row_offsets = 14,
    .row_count_size = 2,
    .tdef_rows = 16,
    .tdef_auto_number = 20,
    .tdef_auto_flags = 24,
    .tdef_max_columns = 41,
    .tdef_index_count = 47,
    .tdef_owned_pages = 55,
    .tdef_free_pages = 59,
    .tdef_first_index = 63,
    .index_head_size = 12,
    .column_size = 25,
    .column_number = 5,
    .column_variable_index = 7,
    .column_precision = 11,
    .column_scale = 12,
    .column_sort_order = 11,
    .column_flags = 15,
    .column_fixed_offset = 21,
    .column_length = 23,
    .name_length_size = 2,
    .index_size = 52,
    .index_columns = 4,
    .index_owned_pages = 34,
    .index_root = 38,
    .index_flags = 46,
    .logical_size = 28,
    .logical_physical = 8,
    .logical_type = 23,
    .index_page_previous = 12,
    .index_page_prefix = 24,
    .index_page_prefix_size = 2,
    .index_page_ends = 27,
    .index_page_entries = 0x1E0,
};

inline constexpr std::size_t kLargestPage = 4096;

// The longest row that the engine stores in Jet 4 and ACE, though a few bytes more would fit.
inline constexpr std::size_t kLargestRow = 4060;

inline constexpr const Layout& LayoutOf(Format format) {
  return format == Format::kJet3 ? kJet3Layout : kJet4Layout;
}

// The same in every format.
inline constexpr std::size_t kTdefNextPage = 4;
inline constexpr std::size_t kTdefContinuation =
    8;  // where the definition continues on further pages
inline constexpr std::size_t kTdefAutoNumber = 20;       // Jet 4
inline constexpr std::size_t kTdefIndexEntries = 4;      // in each index head
inline constexpr std::size_t kColumnMoreFlags = 16;      // Jet 4
inline constexpr std::uint8_t kColumnCompressed = 0x01;  // of those
inline constexpr std::uint8_t kColumnCalculated = 0xC0;
inline constexpr std::size_t kIndexColumnSlots = 10;
inline constexpr std::uint16_t kNoColumn = 0xFFFF;

inline constexpr std::uint8_t kColumnFixed = 0x01;
inline constexpr std::uint8_t kColumnNullable = 0x02;
inline constexpr std::uint8_t kColumnAutoNumber = 0x04;
inline constexpr std::uint8_t kColumnAutoGuid = 0x40;

inline constexpr std::uint8_t kAutoCountsUp = 0x01;

inline constexpr std::uint8_t kIndexAscending = 0x01;
inline constexpr std::uint8_t kIndexUnique = 0x01;
inline constexpr std::uint8_t kIndexLeavesOutNulls = 0x02;
inline constexpr std::uint8_t kIndexRequired = 0x08;
inline constexpr std::uint8_t kLogicalPrimary = 0x01;

inline constexpr std::uint16_t kRowHidden = 0x8000;
inline constexpr std::uint16_t kRowOverflow = 0x4000;
inline constexpr std::uint16_t kRowOffset = 0x1FFF;
inline constexpr std::uint16_t kRowDeleted = kRowHidden | kRowOverflow;

// The definition of MSysObjects, the system catalogue, always starts on this page.
inline constexpr std::uint32_t kCataloguePage = 2;

}  // namespace tenora::access
