// Changes the rows of a data page. The page is taken apart into its slots and put together again
// without gaps, so that its free room is one piece; slots keep their numbers, which pointers name.
#pragma once

#include <vector>

#include "platform/access/storage/changed_pages.h"

namespace tenora::access {

class DataPageEditor {
 public:
  // Raises Corruption for what is no data page of `owner`. Changes nothing before Save.
  DataPageEditor(ChangedPages& pages, std::uint32_t number, std::uint32_t owner);
  // Makes the page an empty data page of `owner`.
  static void Format(ChangedPages& pages, std::uint32_t number, std::uint32_t owner);

  std::uint32_t number() const { return number_; }
  // Raise Corruption for a slot that is not there.
  Bytes Row(std::size_t slot) const { return At(slot).bytes; }
  std::uint16_t Flags(std::size_t slot) const { return At(slot).flags; }

  // Bytes free beside the rows and their offsets.
  std::size_t Free() const;
  // Whether the page has room for one more row of that size, and a slot to name it.
  bool HasRoomFor(std::size_t size) const;
  bool CanReplace(std::size_t slot, std::size_t size) const;

  // The slot of a new row; there must be room. `flags` are kRowHidden for the target of an
  // overflow row.
  std::uint8_t Add(Bytes row, std::uint16_t flags);
  void Replace(std::size_t slot, Bytes row, std::uint16_t flags);
  void Delete(std::size_t slot);

  void Save();

 private:
  struct Slot {
    std::uint16_t flags = 0;
    std::vector<std::byte> bytes;
  };
  const Slot& At(std::size_t slot) const;

  ChangedPages& pages_;
  std::uint32_t number_;
  std::vector<Slot> slots_;
};

}  // namespace tenora::access
