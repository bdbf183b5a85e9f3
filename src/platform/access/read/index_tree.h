// Search and scan of an index: the B-tree of its pages below the root that the definition names.
#pragma once

#include <vector>

#include "platform/access/format/index_page.h"
#include "platform/access/storage/page_file.h"

namespace tenora::access {

// Trees have three or four levels in practice; a deeper one is a loop.
inline constexpr std::size_t kMostIndexLevels = 16;

// The pages from the root to the leaf in which an entry with this key and row is, or would be.
// Raises Corruption when the path does not end at a leaf.
std::vector<std::uint32_t> PathToLeaf(const PageFile& file, std::uint32_t root,
                                      std::string_view key, RowPointer row);

// A leaf in the middle of the index, empty only if the index is. Raises like PathToLeaf.
IndexPage MiddleLeaf(const PageFile& file, std::uint32_t root);

// Adds to `rows` those of the entries whose keys start with `key`, in the order of the entries;
// false, with `rows` incomplete, when there are more than `most`.
bool RowsWithKey(const PageFile& file, std::uint32_t root, std::string_view key, std::size_t most,
                 std::vector<RowPointer>& rows);

// The same for the entries from the key `low` to those that start with the key `high`.
bool RowsInRange(const PageFile& file, std::uint32_t root, std::string_view low,
                 std::string_view high, std::size_t most, std::vector<RowPointer>& rows);

// Scans the entries of an index in order. Raises Corruption for a page that is not an index page
// and for leaves that are linked in a loop.
class IndexWalk {
 public:
  // Starts at the first entry that does not sort before key and row; by default at the very first.
  IndexWalk(const PageFile& file, std::uint32_t root, std::string_view key = {},
            RowPointer row = {});

  // The next entry, null after the last one; valid until the next call.
  const IndexEntry* Next();
  // The leaf of the entry that Next() returned last.
  std::uint32_t leaf() const { return buffer_.number; }

 private:
  void Load(std::uint32_t page);

  const PageFile& file_;
  PageBuffer buffer_;
  IndexPage page_;
  std::size_t position_ = 0;
  std::uint32_t leaves_ = 0;
};

}  // namespace tenora::access
