// Adds pages to usage maps and removes them (usage_map.h describes the bytes), and allocates pages
// of the file: first those that its map of free pages lists, then new ones at its end.
#pragma once

#include "platform/access/storage/changed_pages.h"

namespace tenora::access {

class UsageMapEditor {
 public:
  explicit UsageMapEditor(ChangedPages& pages) : pages_(pages) {}

  // All raise Corruption for an invalid map.
  bool Contains(RowPointer map, std::uint32_t page) const;
  // An inline map that does not reach the page is shifted or becomes an indirect one.
  void Add(RowPointer map, std::uint32_t page);
  void Remove(RowPointer map, std::uint32_t page);

  // Allocates a page of zeros that is in no map.
  std::uint32_t Allocate();
  // Returns a page, which must be in no other map, to the file's free pages. False when their map
  // does not cover it.
  bool Release(std::uint32_t page);

 private:
  struct Row {
    std::size_t start = 0;  // on the map's page
    Bytes bytes;            // valid until the buffer is read into again
    bool indirect = false;
  };
  // The position of a page's bit.
  struct Bit {
    std::uint32_t on_page = 0;  // 0: the map does not cover the page
    std::size_t byte = 0;
    std::byte mask{0};
  };
  Row Find(RowPointer map, PageBuffer& buffer) const;
  Bit BitOf(RowPointer map, std::uint32_t page) const;
  void Set(const Bit& bit, bool value);
  void Extend(RowPointer map, std::uint32_t page);
  bool Shift(RowPointer map, std::uint32_t page);
  void MakeIndirect(RowPointer map);
  std::uint32_t AddBitmapPage(RowPointer map, std::uint32_t page, std::uint32_t bitmap);
  std::uint32_t FindFree() const;
  void MarkAppended(std::uint32_t page);

  ChangedPages& pages_;
};

}  // namespace tenora::access
