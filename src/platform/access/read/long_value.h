// A long value: the content of a memo or OLE column. The row keeps twelve bytes,
//
//   0  length, with its kind in the two top bits
//   4  pointer to a row on a long value page, then four bytes of no meaning to a reader
//
// and the kind says where the content is: behind the twelve bytes (inline), a whole row of a long
// value page (single), or a chain of rows, each starting with a pointer to the next (0 ends it).
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

  // The content of the value whose bytes in the row, on page `page`, are `field`. It stays until
  // the next call or as long as the field. Raises Corruption for a broken or endless chain.
  Bytes Read(Bytes field, std::uint32_t page);

 private:
  Bytes RowAt(RowPointer pointer);
  Bytes ReadChain(RowPointer pointer, std::size_t length);

  const PageFile& file_;
  PageBuffer page_;
  std::vector<std::byte> content_;  // of a chain
};

}  // namespace tenora::access
