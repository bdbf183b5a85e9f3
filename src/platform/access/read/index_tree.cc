#include "platform/access/read/index_tree.h"

namespace tenora::access {

std::vector<std::uint32_t> PathToLeaf(const PageFile& file, std::uint32_t root,
                                      std::string_view key, RowPointer row) {
  std::vector<std::uint32_t> path;
  PageBuffer buffer;
  IndexPage page;
  std::uint32_t number = root;
  for (;;) {
    if (path.size() == kMostIndexLevels) throw Corruption(root, "the index has too many levels");
    path.push_back(number);
    file.Read(number, buffer);
    ReadIndexPage(file.layout(), buffer, page);
    if (page.leaf) return path;
    number = ChildFor(page, key, row);
  }
}

IndexPage MiddleLeaf(const PageFile& file, std::uint32_t root) {
  PageBuffer buffer;
  IndexPage page;
  std::uint32_t number = root;
  for (std::size_t level = 0; level < kMostIndexLevels; ++level) {
    file.Read(number, buffer);
    ReadIndexPage(file.layout(), buffer, page);
    if (page.leaf) return page;
    number = page.entries.empty() ? page.tail : page.entries[page.entries.size() / 2].child;
  }
  throw Corruption(root, "the index has too many levels");
}

bool RowsWithKey(const PageFile& file, std::uint32_t root, std::string_view key, std::size_t most,
                 std::vector<RowPointer>& rows) {
  return RowsInRange(file, root, key, key, most, rows);
}

bool RowsInRange(const PageFile& file, std::uint32_t root, std::string_view low,
                 std::string_view high, std::size_t most, std::vector<RowPointer>& rows) {
  const auto within = [high](std::string_view key) { return key < high || key.starts_with(high); };
  IndexWalk walk(file, root, low);
  for (const IndexEntry* entry = walk.Next(); entry != nullptr && within(entry->key);
       entry = walk.Next()) {
    if (rows.size() == most) return false;
    rows.push_back(entry->row);
  }
  return true;
}

IndexWalk::IndexWalk(const PageFile& file, std::uint32_t root, std::string_view key, RowPointer row)
    : file_(file) {
  Load(PathToLeaf(file, root, key, row).back());
  position_ = LowerBound(page_, key, row);
}

void IndexWalk::Load(std::uint32_t page) {
  if (leaves_++ == file_.page_count())
    throw Corruption(page, "the leaves of the index are linked in a loop");
  file_.Read(page, buffer_);
  ReadIndexPage(file_.layout(), buffer_, page_);
  if (!page_.leaf) throw Corruption(page, "expected a leaf of the index");
  position_ = 0;
}

const IndexEntry* IndexWalk::Next() {
  while (position_ == page_.entries.size()) {
    if (page_.next == 0) return nullptr;
    Load(page_.next);
  }
  return &page_.entries[position_++];
}

}  // namespace tenora::access
