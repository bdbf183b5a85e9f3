#include "platform/access/index_editor.h"

#include <algorithm>
#include <array>

namespace tenora::access {
namespace {

std::size_t SizeOf(const IndexEntry& entry) { return entry.key.size() + 8; }

// The same content in two pages: the entries from `from` on, those before `to`.
std::vector<IndexEntry> Piece(const std::vector<IndexEntry>& entries, std::size_t from,
                              std::size_t to) {
  return {entries.begin() + static_cast<std::ptrdiff_t>(from),
          entries.begin() + static_cast<std::ptrdiff_t>(to)};
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
    throw Damage(page, "the index page belongs to the table defined on page " +
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
  if (content.entries.empty()) throw Damage(index_.root_page, "a page of the index is empty");
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
  if (!Write(page, content)) throw Damage(page, "an index page holds more than fits on it");
}

void IndexEditor::Insert(const IndexKey& key, RowPointer row) {
  Path path = Descend(key, row);
  Level& leaf = path.back();
  std::vector<IndexEntry>& entries = leaf.content.entries;
  const auto place = entries.begin() + static_cast<std::ptrdiff_t>(leaf.position);
  if (place != entries.end() && Compare(*place, key, row) == 0) {
    throw Damage(leaf.page, "the index has an entry for the row already");
  }
  entries.insert(place, {key, row, 0});
  Settle(path, path.size() - 1);
}

void IndexEditor::Remove(const IndexKey& key, RowPointer row) {
  Path path = Descend(key, row);
  Level& leaf = path.back();
  std::vector<IndexEntry>& entries = leaf.content.entries;
  const auto place = entries.begin() + static_cast<std::ptrdiff_t>(leaf.position);
  if (place == entries.end() || Compare(*place, key, row) != 0) {
    throw Damage(leaf.page, "the index has no entry for the row");
  }
  entries.erase(place);
  if (entries.empty() && path.size() > 1) return RemovePage(path, path.size() - 1);
  Settle(path, path.size() - 1);
}

// Writes a page whose entries have changed, and whatever follows from that above it.
void IndexEditor::Settle(Path& path, std::size_t level) {
  if (Write(path[level].page, path[level].content)) return RefreshParent(path, level);
  if (level == 0) {
    MoveRootDown(path);
    level = 1;
  }
  Split(path, level);
}

// The parent's entry repeats the last one below.
void IndexEditor::RefreshParent(Path& path, std::size_t level) {
  if (level == 0) return;
  Level& parent = path[level - 1];
  if (parent.position >= parent.content.entries.size()) return;
  IndexEntry& repeated = parent.content.entries[parent.position];
  const IndexEntry last = LastBelow(path[level].content);
  if (Compare(repeated, last.key, last.row) == 0) return;
  repeated.key = last.key;
  repeated.row = last.row;
  Settle(path, level - 1);
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
  // Rising keys fill page after page.
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
  const std::size_t point = count < 2 ? 0 : SplitPoint(full);
  IndexPage left = full.content, right = full.content;
  left.entries = Piece(full.content.entries, 0, point);
  right.entries = Piece(full.content.entries, point, count);
  left.tail = 0;
  if (point == 0 || !Fits(left) || !Fits(right)) {
    throw NotEncodable("the keys are too long for a page of the index");
  }
  const std::uint32_t right_page = AllocatePage();
  left.next = right_page;
  right.previous = full.page;
  Write(full.page, left);
  Write(right_page, right);
  Relink(right.next, &IndexPage::previous, right_page);

  Level& parent = path[level - 1];
  std::vector<IndexEntry>& entries = parent.content.entries;
  IndexEntry separator = left.entries.back();
  separator.child = full.page;
  if (parent.position >= entries.size()) {
    parent.content.tail = right_page;
  } else {
    IndexEntry& behind = entries[parent.position];
    behind = LastBelow(right);
    behind.child = right_page;
  }
  entries.insert(entries.begin() + static_cast<std::ptrdiff_t>(parent.position),
                 std::move(separator));
  Settle(path, level - 1);
}

void IndexEditor::RemovePage(Path& path, std::size_t level) {
  const Level& empty = path[level];
  Relink(empty.content.previous, &IndexPage::next, empty.content.next);
  Relink(empty.content.next, &IndexPage::previous, empty.content.previous);
  ReleasePage(empty.page);
  IndexPage& parent = path[level - 1].content;
  const std::size_t position = path[level - 1].position;
  if (position < parent.entries.size()) {
    parent.entries.erase(parent.entries.begin() + static_cast<std::ptrdiff_t>(position));
  } else if (parent.entries.empty()) {
    parent.tail = 0;
  } else {
    parent.tail = parent.entries.back().child;
    parent.entries.pop_back();
  }
  SettleAfterLoss(path, level - 1);
}

// A node that has lost a child may have no entry left.
void IndexEditor::SettleAfterLoss(Path& path, std::size_t level) {
  Level& node = path[level];
  if (!node.content.entries.empty()) {
    // What was the last entry may be the tail now: the way down is no longer of use.
    node.position = std::min(node.position, node.content.entries.size());
    return Settle(path, level);
  }
  if (level == 0) return CollapseRoot(node);
  if (node.content.tail == 0) return RemovePage(path, level);
  Level& parent = path[level - 1];
  if (parent.position >= parent.content.entries.size() && !parent.content.entries.empty()) {
    return JoinLeftSibling(path, level);
  }
  IndexEntry only = LastBelow(Read(node.content.tail));
  only.child = node.content.tail;
  node.content.tail = 0;
  node.content.entries.push_back(std::move(only));
  Settle(path, level);
}

// The root takes over its only child, however many levels that saves.
void IndexEditor::CollapseRoot(Level& root) {
  while (!root.content.leaf && root.content.entries.empty()) {
    const std::uint32_t child = root.content.tail;
    root.content = child == 0 ? IndexPage{} : Read(child);
    root.content.owner = table_;
    if (child != 0) ReleasePage(child);
  }
  if (!Write(root.page, root.content)) {
    throw Damage(root.page, "an index page holds more than fits on it");
  }
}

// A last node with no child but its tail gives it to the node on its left, which becomes the last.
void IndexEditor::JoinLeftSibling(Path& path, std::size_t level) {
  const Level& node = path[level];
  IndexPage& parent = path[level - 1].content;
  const std::uint32_t left_page = parent.entries.back().child;
  IndexPage left = Read(left_page);
  if (left.leaf || left.tail != 0) {
    throw Damage(left_page, "a node inside the index has a tail");
  }
  left.tail = node.content.tail;
  left.next = node.content.next;
  if (!Write(left_page, left)) throw Damage(left_page, "an index page holds more than fits on it");
  Relink(node.content.next, &IndexPage::previous, left_page);
  ReleasePage(node.page);
  parent.tail = left_page;
  parent.entries.pop_back();
  path[level - 1].position = parent.entries.size();
  SettleAfterLoss(path, level - 1);
}

std::uint32_t IndexEditor::AllocatePage() {
  const std::uint32_t page = maps_.Allocate();
  maps_.Add(index_.owned_pages, page);
  return page;
}

void IndexEditor::ReleasePage(std::uint32_t page) {
  std::ranges::fill(pages_.Change(page), std::byte{0});
  // One that the file cannot take back stays with the index, blank.
  if (maps_.Release(page)) maps_.Remove(index_.owned_pages, page);
}

}  // namespace tenora::access
