// A page: 2048 bytes (Jet 3) or 4096 (Jet 4, ACE). The whole file consists of pages, numbered from
// 0; the first byte of each is its type. A pointer to a row has four bytes: the row's slot, then
// the page number in three bytes.
//
// A data page stores rows from its end towards its start:
//
//   0  type (1), always 1, free bytes (2)
//   4  owner: page of the table's definition, or "LVAL" for long values
//      number of rows (2), then an offset (2) for each     <- Layout::data_row_count
//      …free space…
//      last row … row 1, row 0                             <- ends at the end of the page
//
// A row ends where the row before it starts. The top bits of its offset are flags: 8000 a table
// scan skips the row, 4000 an overflow row, which holds only a pointer to where the row is now. The
// row pointed to has 8000; a deleted row has both.
#pragma once

#include <array>
#include <cstdint>

#include "platform/access/format/bytes.h"
#include "platform/access/format/layout.h"

namespace tenora::access {

enum class PageType : std::uint8_t {
  kHeader = 0,
  kData = 1,
  kTableDefinition = 2,
  kIndexNode = 3,
  kIndexLeaf = 4,
  kUsageMap = 5,
  kDroppedDefinition = 8,  // of a dropped table; its pages stay until the file is compacted
};

// "LVAL", the owner of pages that hold long values.
inline constexpr std::uint32_t kLongValueOwner = 0x4C41564C;

struct RowPointer {
  std::uint32_t page = 0;
  std::uint8_t row = 0;

  static RowPointer Load(const std::byte* at) { return {Load24(at + 1), Load8(at)}; }
  void Store(std::byte* at) const {
    at[0] = std::byte{row};
    Store24(at + 1, page);
  }
  bool operator==(const RowPointer&) const = default;
};

// A page read into memory; PageFile::Read fills it.
struct PageBuffer {
  static constexpr std::uint32_t kNone = 0xFFFFFFFF;

  std::uint32_t number = kNone;
  std::size_t size = 0;
  alignas(16) std::array<std::byte, kLargestPage> bytes;

  PageType type() const { return static_cast<PageType>(bytes[0]); }
  std::uint32_t owner() const { return Load32(&bytes[4]); }
};

// The rows of a data page; bounds are checked on access.
class DataPage {
 public:
  struct Slot {
    Bytes bytes;
    bool hidden = false;    // skipped by a table scan
    bool overflow = false;  // together with `hidden`: deleted
  };

  // Raises Corruption when the page is not a data page or its offset table extends beyond it.
  DataPage(const Layout& layout, const PageBuffer& page);

  std::size_t row_count() const { return row_count_; }
  // Raises Corruption when there is no such row or it extends beyond the page.
  Slot Row(std::size_t row) const {
    if (row >= row_count_) throw NoSuchRow(row);
    const std::uint16_t entry = Load16(offsets_ + 2 * row);
    const std::size_t start = entry & kRowOffset;
    const std::size_t end =
        row == 0 ? page_->size
                 : static_cast<std::size_t>(Load16(offsets_ + 2 * row - 2) & kRowOffset);
    if (start < first_row_ || start > end || end > page_->size) throw Outside(row);
    return {Bytes(page_->bytes).subspan(start, end - start), (entry & kRowHidden) != 0,
            (entry & kRowOverflow) != 0};
  }

 private:
  Corruption NoSuchRow(std::size_t row) const;
  Corruption Outside(std::size_t row) const;

  const PageBuffer* page_;
  const std::byte* offsets_;
  std::size_t row_count_;
  std::size_t first_row_;  // the lowest offset at which a row may start
};

}  // namespace tenora::access
