// An index as a whole: the tree of its pages, from the root page that the definition names.
#pragma once

#include <vector>

#include "platform/access/format/index_page.h"
#include "platform/access/storage/page_file.h"

namespace tenora::access {

// The format's trees have three or four levels; a deeper one is a loop.
inline constexpr std::size_t kMostIndexLevels = 16;

// The pages from the root down to the leaf where an entry of this key and row is or belongs. Raises
// Corruption when the way does not end at a leaf.
std::vector<std::uint32_t> PathToLeaf(const PageFile& file, std::uint32_t root,
                                      std::string_view key, RowPointer row);

// Walks an index from its first entry to its last. Raises Corruption for a page that is none of an
// index and for leaves that do not end.
class IndexWalk {
 public:
  // At the first entry that does not sort before key and row; by default the first of all.
  IndexWalk(const PageFile& file, std::uint32_t root, std::string_view key = {},
            RowPointer row = {});

  // The next entry, null behind the last. It stays until the next call.
  const IndexEntry* Next();
  // The leaf of the entry that Next() gave last.
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
