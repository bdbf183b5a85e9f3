// Changes the rows of a data page. The page is split into its slots and written back without gaps,
// so that its free space is contiguous; slots keep their numbers, since row pointers refer to them.
#pragma once

#include <vector>

#include "platform/access/storage/changed_pages.h"

namespace tenora::access {

class DataPageEditor {
 public:
  // Raises Corruption for a page that is not a data page of `owner`. Nothing changes before Save.
  DataPageEditor(ChangedPages& pages, std::uint32_t number, std::uint32_t owner);
  // Initializes the page as an empty data page of `owner`.
  static void Format(ChangedPages& pages, std::uint32_t number, std::uint32_t owner);

  std::uint32_t number() const { return number_; }
  // Both raise Corruption for a slot that does not exist.
  Bytes Row(std::size_t slot) const { return At(slot).bytes; }
  std::uint16_t Flags(std::size_t slot) const { return At(slot).flags; }

  // Free space in bytes.
  std::size_t Free() const;
  // Whether a new row of that size fits, and there is a slot number left for it.
  bool HasSpaceFor(std::size_t size) const;
  bool CanReplace(std::size_t slot, std::size_t size) const;

  // Adds a row, for which there must be space, and returns its slot. `flags` is kRowHidden for the
  // target of an overflow pointer.
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
