// A usage map: a set of pages, one bit each. A table has two, the pages it owns and those of them
// with room; the file has one of its free pages. A map is a row on a data page, named by a row
// pointer. Its first byte is its kind:
//
//   0  inline     first page (4), then bits, low bit first
//   1  indirect   page numbers (4 each, 0 for none) of bitmap pages; a bitmap page is of type 5,
//                 its bits start at byte 4 and go on where the bitmap page before it stopped
#pragma once

#include <cstdint>
#include <vector>

#include "platform/access/page_file.h"

namespace tenora::access {

inline constexpr std::size_t kInlineMapBits = 5;  // where the bits start in an inline map
inline constexpr std::size_t kBitmapPageBits = 4;

class UsageMap {
 public:
  UsageMap() = default;
  // A pointer to page 0 names no map: the set is empty. Raises Damage for a map that cannot be or
  // that has a page behind the end of the file.
  UsageMap(const PageFile& file, RowPointer map);

  // The first page of the set at or behind `from`; PageBuffer::kNone when there is none.
  std::uint32_t NextFrom(std::uint32_t from) const;

 private:
  void Add(const PageFile& file, std::uint32_t map_page, std::uint64_t first, Bytes bits);

  std::vector<std::uint64_t> bits_;
};

}  // namespace tenora::access
