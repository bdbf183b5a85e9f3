// Adds pages to usage maps and takes them out (usage_map.h describes the bytes), and gives out the
// file's pages: those that its own map calls free first, then new ones at its end.
#pragma once

#include "platform/access/storage/changed_pages.h"

namespace tenora::access {

class UsageMapEditor {
 public:
  explicit UsageMapEditor(ChangedPages& pages) : pages_(pages) {}

  // All raise Corruption for a map that cannot be.
  bool Contains(RowPointer map, std::uint32_t page) const;
  // A map that is too short for the page begins later or becomes an indirect one.
  void Add(RowPointer map, std::uint32_t page);
  void Remove(RowPointer map, std::uint32_t page);

  // A page of zeros, in no map.
  std::uint32_t Allocate();
  // Gives a page, which must be in no other map, back to the file. False when the file's map has no
  // place for it.
  bool Release(std::uint32_t page);

 private:
  struct Row {
    std::size_t start = 0;  // on the map's page
    Bytes bytes;            // until the buffer is read into again
    bool indirect = false;
  };
  // Where a page's bit is.
  struct Bit {
    std::uint32_t on_page = 0;  // 0: the map has no place for it
    std::size_t byte = 0;
    std::byte mask{0};
  };
  Row Find(RowPointer map, PageBuffer& buffer) const;
  Bit BitOf(RowPointer map, std::uint32_t page) const;
  void Set(const Bit& bit, bool value);
  void MakeRoom(RowPointer map, std::uint32_t page);
  bool MoveWindow(RowPointer map, std::uint32_t page);
  void MakeIndirect(RowPointer map);
  std::uint32_t AddBitmapPage(RowPointer map, std::uint32_t page, std::uint32_t bitmap);
  std::uint32_t FindFree() const;
  void MarkAppended(std::uint32_t page);

  ChangedPages& pages_;
};

}  // namespace tenora::access
