// An index page: a leaf's entries lead to rows, a node's to pages of the level below. The entries
// of a page lie one after another behind a bit mask of where each ends:
//
//   0  type (3 node, 4 leaf), always 1, free bytes (2)
//   4  owner: page of the table's definition
//      previous page, next page of the same level, tail child (4 each, 0 for none)
//      bytes that all entries start with and only the first one keeps (2)
//      mask: bit n is set where an entry ends, n bytes behind the first one's start
//      entries: key, row pointer (4) and, on a node, child (4); the pointers high byte first
//
// Entries sort by key, then by row. A node's entry repeats the last entry found below its child;
// what sorts behind all of a node's entries is below the tail child, which has no entry.
#pragma once

#include <compare>
#include <cstdint>
#include <vector>

#include "platform/access/format/index_key.h"
#include "platform/access/format/page.h"

namespace tenora::access {

struct IndexEntry {
  IndexKey key;
  RowPointer row;
  std::uint32_t child = 0;  // of a node
};

// How an entry sorts beside one of this key and row.
std::strong_ordering Compare(const IndexEntry& entry, std::string_view key, RowPointer row);
inline std::strong_ordering operator<=>(const IndexEntry& left, const IndexEntry& right) {
  return Compare(left, right.key, right.row);
}

struct IndexPage {
  bool leaf = true;
  std::uint32_t owner = 0;
  std::uint32_t previous = 0, next = 0;  // 0: none
  std::uint32_t tail = 0;                // of a node
  std::size_t free_bytes = 0;            // as the page says
  std::size_t unused_bytes = 0;          // as its entries leave
  std::vector<IndexEntry> entries;
};

// Replaces `page`. Raises Corruption for a page that is no index page, an entry that runs out of it
// or is too short, entries the page has no room for. Neither order nor links are checked.
void ReadIndexPage(const Layout& layout, const PageBuffer& bytes, IndexPage& page);

// Puts the page into `bytes`, which are one page long; entries must be in order. The bytes that the
// entries share are written once where they would not fit otherwise. False when they do not fit at
// all; `bytes` are then as before.
bool ComposeIndexPage(const Layout& layout, const IndexPage& page, std::span<std::byte> bytes);

// The position of the first entry that does not sort before key and row; entries.size() when all
// do.
std::size_t LowerBound(const IndexPage& page, std::string_view key, RowPointer row);

// The page of the level below where an entry of this key and row belongs.
std::uint32_t ChildFor(const IndexPage& node, std::string_view key, RowPointer row);

}  // namespace tenora::access
