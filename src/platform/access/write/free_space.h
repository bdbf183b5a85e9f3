// Free-space search: finds a data page with space for a new row, among those that a usage map
// lists, or allocates a new one.
#pragma once

#include "platform/access/write/data_page_editor.h"
#include "platform/access/write/usage_map_editor.h"

namespace tenora::access {

class FreeSpace {
 public:
  FreeSpace(ChangedPages& pages, RowPointer owned, RowPointer with_space, std::uint32_t owner)
      : pages_(pages), maps_(pages), owned_(owned), with_space_(with_space), owner_(owner) {}

  // Stores a row, which must fit on an empty page, and returns its place.
  RowPointer Add(Bytes row, std::uint16_t flags);
  // Updates the map for a page on which a row was deleted or shortened.
  void NoteFreed(const DataPageEditor& page);

 private:
  std::uint32_t NewPage();

  ChangedPages& pages_;
  UsageMapEditor maps_;
  RowPointer owned_;
  RowPointer with_space_;
  std::uint32_t owner_;
};

}  // namespace tenora::access
