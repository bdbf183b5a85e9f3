// A page of an index's B-tree: the entries of a leaf point to rows, those of a node to pages of the
// level below. They follow one another after a bit mask of where each ends:
//
//   0  type (3 node, 4 leaf), always 1, free bytes (2)
//   4  owner: page of the table's definition
//      previous page, next page of the same level, tail child (4 each, 0 for none)
//      length of the prefix that all entries share and only the first one stores (2; Jet 3: 1)
//      mask: bit n is set where an entry ends, n bytes after the start of the first one
//      entries: key, row pointer (4) and, on a node, child (4); the pointers big-endian
//
// Entries sort by key, then by row. A node's entry repeats the last entry below its child; what
// sorts after all of a node's entries is below the tail child, which has no entry.
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

// How an entry sorts relative to one with this key and row.
std::strong_ordering Compare(const IndexEntry& entry, std::string_view key, RowPointer row);
inline std::strong_ordering operator<=>(const IndexEntry& left, const IndexEntry& right) {
  return Compare(left, right.key, right.row);
}

struct IndexPage {
  bool leaf = true;
  std::uint32_t owner = 0;
  std::uint32_t previous = 0, next = 0;  // 0: none
  std::uint32_t tail = 0;                // of a node
  std::size_t free_bytes = 0;            // as recorded on the page
  std::size_t unused_bytes = 0;          // as computed from the entries
  std::vector<IndexEntry> entries;
};

// Sets `page`. Raises Corruption for a page that is not an index page, an entry that extends beyond
// the page or is too short, or a shared prefix that is too long. Order and links are not checked.
void ReadIndexPage(const Layout& layout, const PageBuffer& bytes, IndexPage& page);

// Writes the page to `bytes`, one page long; entries must be in order. The shared prefix is stored
// once only where the entries would not fit otherwise. False, with `bytes` unchanged, when they do
// not fit at all.
bool ComposeIndexPage(const Layout& layout, const IndexPage& page, std::span<std::byte> bytes);

// Position of the first entry that does not sort before key and row; entries.size() if there is
// none.
std::size_t LowerBound(const IndexPage& page, std::string_view key, RowPointer row);

// The page of the level below to which an entry with this key and row belongs.
std::uint32_t ChildFor(const IndexPage& node, std::string_view key, RowPointer row);

}  // namespace tenora::access
