// A usage map: a set of pages, one bit each. A table has two, the pages it owns and those of them
// with free space; the file has one of its free pages. A map is a row on a data page, identified by
// a row pointer. Its first byte is its kind:
//
//   0  inline     first page (4), then bits, low bit first
//   1  indirect   page numbers (4 each, 0 for none) of bitmap pages; a bitmap page is of type 5,
//                 its bits start at byte 4 and continue where those of the previous one end
#pragma once

#include <cstdint>
#include <vector>

#include "platform/access/storage/page_file.h"

namespace tenora::access {

inline constexpr std::size_t kInlineMapBits = 5;  // offset of the bits in an inline map
inline constexpr std::size_t kBitmapPageBits = 4;

// The map of the file's free pages; it also has bits for pages beyond the end of the file.
inline constexpr RowPointer kFreePagesMap{1, 0};

class UsageMap {
 public:
  // What to do with pages beyond the end of the file.
  enum class BeyondEnd { kCorrupt, kIgnored };

  UsageMap() = default;
  // A pointer to page 0 means no map: the set is empty. Raises Corruption for an invalid map or one
  // with pages beyond the end of the file.
  UsageMap(const PageFile& file, RowPointer map, BeyondEnd beyond_end = BeyondEnd::kCorrupt);

  // The first page of the set from `from` on; PageBuffer::kNone when there is none.
  std::uint32_t NextFrom(std::uint32_t from) const;
  std::uint32_t Count() const;
  bool Contains(std::uint32_t page) const {
    return page / 64 < bits_.size() && (bits_[page / 64] >> page % 64 & 1) != 0;
  }

 private:
  void Add(const PageFile& file, std::uint32_t map_page, std::uint64_t first, Bytes bits,
           BeyondEnd beyond_end);

  std::vector<std::uint64_t> bits_;
};

// The bitmap pages of an indirect map; none for an inline one. Raises Corruption like UsageMap.
std::vector<std::uint32_t> BitmapPages(
    const PageFile& file, RowPointer map,
    UsageMap::BeyondEnd beyond_end = UsageMap::BeyondEnd::kCorrupt);

}  // namespace tenora::access
