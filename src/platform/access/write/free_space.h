// Finds a data page with room for a new row, among those that a usage map says have some, or makes
// a new one.
#pragma once

#include "platform/access/write/data_page_editor.h"
#include "platform/access/write/usage_map_editor.h"

namespace tenora::access {

class FreeSpace {
 public:
  FreeSpace(ChangedPages& pages, RowPointer owned, RowPointer with_room, std::uint32_t owner)
      : pages_(pages), maps_(pages), owned_(owned), with_room_(with_room), owner_(owner) {}

  // Puts a row, which must fit on an empty page, on a page and says where it is.
  RowPointer Add(Bytes row, std::uint16_t flags);
  // Tells the map of a page that has lost a row, or part of one.
  void NoteRoom(const DataPageEditor& page);

 private:
  std::uint32_t NewPage();

  ChangedPages& pages_;
  UsageMapEditor maps_;
  RowPointer owned_;
  RowPointer with_room_;
  std::uint32_t owner_;
};

}  // namespace tenora::access
