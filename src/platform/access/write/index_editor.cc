#include "platform/access/write/index_editor.h"

#include <algorithm>
#include <array>

namespace tenora::access {
namespace {

std::size_t SizeOf(const IndexEntry& entry) { return entry.key.size() + 8; }

std::vector<IndexEntry> Slice(const std::vector<IndexEntry>& entries, std::size_t from,
                              std::size_t to) {
  return {entries.begin() + static_cast<std::ptrdiff_t>(from),
          entries.begin() + static_cast<std::ptrdiff_t>(to)};
}

Corruption TooFull(std::uint32_t page) {
  return Corruption(page, "the entries of an index page do not fit on it");
}

}  // namespace

bool IndexEditor::HasKey(std::string_view key) const {
  IndexWalk walk(pages_, index_.root_page, key);
  const IndexEntry* entry = walk.Next();
  return entry != nullptr && entry->key == key;
}

bool IndexEditor::HasKeyOfOther(std::string_view key, RowPointer row) const {
  IndexWalk walk(pages_, index_.root_page, key);
  const IndexEntry* entry = walk.Next();
  if (entry != nullptr && entry->key == key && entry->row == row) entry = walk.Next();
  return entry != nullptr && entry->key == key;
}

IndexPage IndexEditor::Read(std::uint32_t page) const {
  PageBuffer buffer;
  pages_.Read(page, buffer);
  IndexPage content;
  ReadIndexPage(pages_.layout(), buffer, content);
  if (content.owner != table_) {
    throw Corruption(page, "the index page belongs to the table defined on page " +
                               std::to_string(content.owner));
  }
  return content;
}

IndexEditor::Path IndexEditor::Descend(const IndexKey& key, RowPointer row) const {
  Path path;
  for (const std::uint32_t page : PathToLeaf(pages_, index_.root_page, key, row)) {
    Level& level = path.emplace_back(Level{page, Read(page), 0});
    level.position = LowerBound(level.content, key, row);
  }
  return path;
}

IndexEntry IndexEditor::LastBelow(IndexPage content) const {
  for (std::size_t i = 0; i < kMostIndexLevels && content.tail != 0; ++i) {
    content = Read(content.tail);
  }
  if (content.entries.empty()) throw Corruption(index_.root_page, "a page of the index is empty");
  return content.entries.back();
}

bool IndexEditor::Fits(const IndexPage& content) const {
  std::array<std::byte, kLargestPage> scratch;
  return ComposeIndexPage(pages_.layout(), content, scratch);
}

bool IndexEditor::Write(std::uint32_t page, const IndexPage& content) {
  return ComposeIndexPage(pages_.layout(), content, pages_.Change(page));
}

void IndexEditor::Relink(std::uint32_t page, std::uint32_t IndexPage::*link, std::uint32_t to) {
  if (page == 0) return;
  IndexPage content = Read(page);
  content.*link = to;
  if (!Write(page, content)) throw TooFull(page);
}

void IndexEditor::Insert(const IndexKey& key, RowPointer row) {
  Path path = Descend(key, row);
  Level& leaf = path.back();
  std::vector<IndexEntry>& entries = leaf.content.entries;
  const auto place = entries.begin() + static_cast<std::ptrdiff_t>(leaf.position);
  if (place != entries.end() && Compare(*place, key, row) == 0) {
    throw Corruption(leaf.page, "the index has an entry for the row already");
  }
  entries.insert(place, {key, row, 0});
  Store(path, path.size() - 1);
}

void IndexEditor::Remove(const IndexKey& key, RowPointer row) {
  Path path = Descend(key, row);
  Level& leaf = path.back();
  std::vector<IndexEntry>& entries = leaf.content.entries;
  const auto place = entries.begin() + static_cast<std::ptrdiff_t>(leaf.position);
  if (place == entries.end() || Compare(*place, key, row) != 0) {
    throw Corruption(leaf.page, "the index has no entry for the row");
  }
  entries.erase(place);
  if (entries.empty() && path.size() > 1) return RemovePage(path, path.size() - 1);
  Store(path, path.size() - 1);
}

// Writes a page whose entries have changed and updates the levels above it.
void IndexEditor::Store(Path& path, std::size_t level) {
  if (Write(path[level].page, path[level].content)) return RefreshParent(path, level);
  if (level == 0) {
    MoveRootDown(path);
    level = 1;
  }
  Split(path, level);
}

// The nearest entry above that does not lead to a tail child repeats the last entry below it.
void IndexEditor::RefreshParent(Path& path, std::size_t level) {
  if (level == 0) return;
  Level& parent = path[level - 1];
  if (parent.position >= parent.content.entries.size()) return RefreshParent(path, level - 1);
  IndexEntry& repeated = parent.content.entries[parent.position];
  const IndexEntry last = LastBelow(path[level].content);
  if (Compare(repeated, last.key, last.row) == 0) return;
  repeated.key = last.key;
  repeated.row = last.row;
  Store(path, level - 1);
}

void IndexEditor::MoveRootDown(Path& path) {
  Level root;
  root.page = path[0].page;
  root.content.leaf = false;
  root.content.owner = table_;
  path[0].page = AllocatePage();
  root.content.tail = path[0].page;
  path.insert(path.begin(), std::move(root));
}

std::size_t IndexEditor::SplitPoint(const Level& level) const {
  const std::vector<IndexEntry>& entries = level.content.entries;
  // Ascending inserts fill page after page.
  const bool at_end = level.content.next == 0 && level.position + 1 == entries.size();
  if (at_end) return entries.size() - 1;
  std::size_t all = 0, left = 0, point = 0;
  for (const IndexEntry& entry : entries) all += SizeOf(entry);
  while (point + 1 < entries.size() && left < all / 2) left += SizeOf(entries[point++]);
  return std::max<std::size_t>(point, 1);
}

void IndexEditor::Split(Path& path, std::size_t level) {
  Level& full = path[level];
  const std::size_t count = full.content.entries.size();
  // Both halves of a node need an entry besides the tail child.
  const std::size_t fewest = full.content.leaf ? 1 : 2;
  const std::size_t point = count <= fewest ? 0 : std::max(SplitPoint(full), fewest);
  IndexPage left = full.content, right = full.content;
  left.entries = Slice(full.content.entries, 0, point);
  right.entries = Slice(full.content.entries, point, count);
  if (point == 0 || !Fits(left) || !Fits(right)) {
    throw NotEncodable("the keys are too long for a page of the index");
  }
  const std::uint32_t right_page = AllocatePage();
  IndexEntry separator = left.entries.back();
  if (!left.leaf) {
    left.tail = separator.child;
    left.entries.pop_back();
  }
  separator.child = full.page;
  left.next = right_page;
  right.previous = full.page;
  Write(full.page, left);
  Write(right_page, right);
  Relink(right.next, &IndexPage::previous, right_page);

  Level& parent = path[level - 1];
  std::vector<IndexEntry>& entries = parent.content.entries;
  if (parent.position >= entries.size()) {
    parent.content.tail = right_page;
  } else {
    IndexEntry& behind = entries[parent.position];
    behind = LastBelow(right);
    behind.child = right_page;
  }
  entries.insert(entries.begin() + static_cast<std::ptrdiff_t>(parent.position),
                 std::move(separator));
  Store(path, level - 1);
}

void IndexEditor::RemovePage(Path& path, std::size_t level) {
  Unlink(path[level].page, path[level].content);
  IndexPage& parent = path[level - 1].content;
  const std::size_t position = path[level - 1].position;
  if (position < parent.entries.size()) {
    parent.entries.erase(parent.entries.begin() + static_cast<std::ptrdiff_t>(position));
  } else {
    parent.tail = parent.entries.back().child;
    parent.entries.pop_back();
  }
  StoreAfterRemoval(path, level - 1);
}

// Removes a page from the links of its level and releases it.
void IndexEditor::Unlink(std::uint32_t page, const IndexPage& content) {
  Relink(content.previous, &IndexPage::next, content.next);
  Relink(content.next, &IndexPage::previous, content.previous);
  ReleasePage(page);
}

// A node that has lost a child may be left with nothing but its tail child.
void IndexEditor::StoreAfterRemoval(Path& path, std::size_t level) {
  Level& node = path[level];
  if (!node.content.entries.empty()) {
    node.position = std::min(node.position, node.content.entries.size());
    return Store(path, level);
  }
  if (level == 0) return CollapseRoot(node);
  if (path[level - 1].position == 0) {
    TakeFromRight(path, level);
  } else {
    TakeFromLeft(path, level);
  }
}

// The root takes over the content of its only child.
void IndexEditor::CollapseRoot(Level& root) {
  const std::uint32_t child = root.content.tail;
  root.content = Read(child);
  ReleasePage(child);
  if (!Write(root.page, root.content)) throw TooFull(root.page);
}

// The child of an entry, or the tail child after the last entry.
std::uint32_t IndexEditor::ChildAt(const IndexPage& parent, std::size_t position) {
  return position < parent.entries.size() ? parent.entries[position].child : parent.tail;
}

// A node with nothing but its tail child takes a child from its left sibling, or is merged into it
// when the sibling has none to spare.
void IndexEditor::TakeFromLeft(Path& path, std::size_t level) {
  Level& node = path[level];
  Level& parent = path[level - 1];
  const std::uint32_t left_page = ChildAt(parent.content, parent.position - 1);
  IndexPage left = Read(left_page);
  IndexEntry moved = LastBelow(left);
  moved.child = left.tail;
  std::vector<IndexEntry>& entries = parent.content.entries;
  if (left.entries.size() > 1) {
    node.content.entries.push_back(std::move(moved));
    IndexEntry separator = left.entries.back();
    left.tail = separator.child;
    left.entries.pop_back();
    separator.child = left_page;
    entries[parent.position - 1] = std::move(separator);
    if (!Write(left_page, left) || !Write(node.page, node.content)) throw TooFull(node.page);
    return Store(path, level - 1);
  }
  left.entries.push_back(std::move(moved));
  left.tail = node.content.tail;
  if (!Write(left_page, left)) throw TooFull(left_page);
  Unlink(node.page, node.content);
  if (parent.position < entries.size()) {
    entries[parent.position].child = left_page;
  } else {
    parent.content.tail = left_page;
  }
  entries.erase(entries.begin() + static_cast<std::ptrdiff_t>(parent.position - 1));
  --parent.position;
  StoreAfterRemoval(path, level - 1);
}

// The same with the right sibling, for the first node of its parent.
void IndexEditor::TakeFromRight(Path& path, std::size_t level) {
  Level& node = path[level];
  Level& parent = path[level - 1];
  const std::uint32_t right_page = ChildAt(parent.content, parent.position + 1);
  IndexPage right = Read(right_page);
  IndexEntry last = LastBelow(node.content);
  last.child = node.content.tail;
  node.content.entries.push_back(std::move(last));
  std::vector<IndexEntry>& entries = parent.content.entries;
  if (right.entries.size() > 1) {
    IndexEntry separator = right.entries.front();
    node.content.tail = separator.child;
    separator.child = node.page;
    right.entries.erase(right.entries.begin());
    entries[parent.position] = std::move(separator);
    if (!Write(right_page, right) || !Write(node.page, node.content)) throw TooFull(node.page);
    return Store(path, level - 1);
  }
  node.content.entries.push_back(right.entries.front());
  node.content.tail = right.tail;
  node.content.next = right.next;
  if (!Write(node.page, node.content)) throw TooFull(node.page);
  Unlink(right_page, right);
  entries.erase(entries.begin() + static_cast<std::ptrdiff_t>(parent.position));
  if (parent.position < entries.size()) {
    entries[parent.position].child = node.page;
  } else {
    parent.content.tail = node.page;
  }
  StoreAfterRemoval(path, level - 1);
}

std::uint32_t IndexEditor::AllocatePage() {
  const std::uint32_t page = maps_.Allocate();
  maps_.Add(index_.owned_pages, page);
  return page;
}

void IndexEditor::ReleasePage(std::uint32_t page) {
  std::ranges::fill(pages_.Change(page), std::byte{0});
  // A page that the map of free pages does not cover stays with the index, blank.
  if (maps_.Release(page)) maps_.Remove(index_.owned_pages, page);
}

}  // namespace tenora::access
