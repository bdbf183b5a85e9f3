// A long value: the content of a memo or OLE column. The row has twelve bytes:
//
//   0  length, with the kind in the two top bits
//   4  pointer to a row on a long value page, then four bytes that readers ignore
//
// The kind says where the content is: after the twelve bytes (inline), in a row of a long value
// page (single), or in a chain of rows, each starting with a pointer to the next (0 in the last).
#pragma once

#include <vector>

#include "platform/access/storage/page_file.h"

namespace tenora::access {

inline constexpr std::size_t kLongValueHead = 12;
inline constexpr std::uint32_t kLongValueInline = 0x80000000;
inline constexpr std::uint32_t kLongValueSingle = 0x40000000;
inline constexpr std::uint32_t kLongValueLength = 0x3FFFFFFF;

class LongValueReader {
 public:
  explicit LongValueReader(const PageFile& file) : file_(file) {}

  // The content of the long value whose bytes in a row on page `page` are `field`; valid until the
  // next call and as long as `field`. Raises Corruption for a broken or endless chain.
  Bytes Read(Bytes field, std::uint32_t page);

 private:
  Bytes RowAt(RowPointer pointer);
  Bytes ReadChain(RowPointer pointer, std::size_t length);

  const PageFile& file_;
  PageBuffer page_;
  std::vector<std::byte> content_;  // of a chain
};

}  // namespace tenora::access
