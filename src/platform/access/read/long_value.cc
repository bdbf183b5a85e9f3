#include "platform/access/read/long_value.h"

#include <algorithm>
#include <string>

namespace tenora::access {

Bytes LongValueReader::Read(Bytes field, std::uint32_t page) {
  if (field.empty()) return {};
  if (field.size() < kLongValueHead) throw Corruption(page, "a long value's head is too short");
  const std::uint32_t head = Load32(field.data());
  const std::size_t length = head & kLongValueLength;
  if (length == 0) return {};
  if (length > file_.size()) {
    throw Corruption(
        page, "a long value of " + std::to_string(length) + " bytes is longer than the file");
  }
  if ((head & kLongValueInline) != 0) {
    if (length > field.size() - kLongValueHead) {
      throw Corruption(page, "a long value is longer than its row");
    }
    return field.subspan(kLongValueHead, length);
  }
  const RowPointer pointer = RowPointer::Load(&field[4]);
  if ((head & kLongValueSingle) == 0) return ReadChain(pointer, length);
  const Bytes row = RowAt(pointer);
  if (row.size() < length) throw Corruption(pointer.page, "a long value is truncated");
  return row.first(length);
}

Bytes LongValueReader::RowAt(RowPointer pointer) {
  file_.Read(pointer.page, page_);
  const DataPage page(file_.layout(), page_);
  if (page_.owner() != kLongValueOwner) {
    throw Corruption(pointer.page, "expected a page of long values");
  }
  return page.Row(pointer.row).bytes;
}

Bytes LongValueReader::ReadChain(RowPointer pointer, std::size_t length) {
  content_.clear();
  // A chain that returns to an earlier piece is endless. Comparing with the piece at the last power
  // of two steps (Brent's algorithm) finds that within three rounds of the loop.
  RowPointer remembered = pointer;
  std::size_t steps = 0, remember_at = 1;
  while (content_.size() < length) {
    const Bytes row = RowAt(pointer);
    if (row.size() < 4) throw Corruption(pointer.page, "a piece of a long value is too short");
    const Bytes piece = row.subspan(4);
    const std::size_t count = std::min(piece.size(), length - content_.size());
    content_.insert(content_.end(), piece.begin(),
                    piece.begin() + static_cast<std::ptrdiff_t>(count));
    if (content_.size() == length) break;
    const RowPointer next = RowPointer::Load(row.data());
    if (next.page == 0) throw Corruption(pointer.page, "a long value is truncated");
    if (next == remembered)
      throw Corruption(pointer.page, "the pieces of a long value form a loop");
    if (++steps == remember_at) {
      remembered = next;
      remember_at *= 2;
    }
    pointer = next;
  }
  return content_;
}

}  // namespace tenora::access
