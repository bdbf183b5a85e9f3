// Inserts and removes the entries of an index. A page that overflows is split, which adds an entry
// to its parent; a page that becomes empty leaves the tree. The root page never moves, since the
// definition refers to it: when it overflows, its content moves one level down.
#pragma once

#include <vector>

#include "platform/access/read/index_tree.h"
#include "platform/access/write/usage_map_editor.h"

namespace tenora::access {

class IndexEditor {
 public:
  // `table` is the page of the table's definition. `pages` and `index` must outlive the editor.
  IndexEditor(ChangedPages& pages, const PhysicalIndex& index, std::uint32_t table)
      : pages_(pages), maps_(pages), index_(index), table_(table) {}

  // All four raise Corruption for a corrupt tree.
  bool HasKey(std::string_view key) const;
  // Whether another row has the key.
  bool HasKeyOfOther(std::string_view key, RowPointer row) const;
  void Insert(const IndexKey& key, RowPointer row);
  // Raises Corruption when there is no such entry.
  void Remove(const IndexKey& key, RowPointer row);

 private:
  struct Level {
    std::uint32_t page = 0;
    IndexPage content;
    std::size_t position = 0;  // of the child on the path, or of the entry on a leaf
  };
  using Path = std::vector<Level>;

  Path Descend(const IndexKey& key, RowPointer row) const;
  IndexPage Read(std::uint32_t page) const;
  IndexEntry LastBelow(IndexPage content) const;
  bool Fits(const IndexPage& content) const;
  bool Write(std::uint32_t page, const IndexPage& content);
  void Relink(std::uint32_t page, std::uint32_t IndexPage::*link, std::uint32_t to);

  void Store(Path& path, std::size_t level);
  void RefreshParent(Path& path, std::size_t level);
  void MoveRootDown(Path& path);
  void Split(Path& path, std::size_t level);
  std::size_t SplitPoint(const Level& level) const;

  void RemovePage(Path& path, std::size_t level);
  void StoreAfterRemoval(Path& path, std::size_t level);
  void CollapseRoot(Level& root);
  static std::uint32_t ChildAt(const IndexPage& parent, std::size_t position);
  void TakeFromLeft(Path& path, std::size_t level);
  void TakeFromRight(Path& path, std::size_t level);
  void Unlink(std::uint32_t page, const IndexPage& content);

  std::uint32_t AllocatePage();
  void ReleasePage(std::uint32_t page);

  ChangedPages& pages_;
  UsageMapEditor maps_;
  const PhysicalIndex& index_;
  std::uint32_t table_;
};

}  // namespace tenora::access
