#include "platform/access/write/long_value_writer.h"

#include <algorithm>

#include "platform/access/read/long_value.h"
#include "platform/access/write/free_space.h"

namespace tenora::access {
namespace {

constexpr std::size_t kMostInline = 64;
// The most content on a page, besides its header and the offset of its only row.
constexpr std::size_t kMostInRow = kJet4Layout.page_size - kJet4Layout.data_row_offsets - 2;
constexpr std::size_t kNextPiece = 4;

}  // namespace

std::size_t LongValueWriter::SizeInRow(std::size_t length) {
  return kLongValueHead + (length <= kMostInline ? length : 0);
}

std::vector<std::byte> LongValueWriter::Store(const LongValueMaps& maps, Bytes content) {
  std::vector<std::byte> head(SizeInRow(content.size()));
  const auto length = static_cast<std::uint32_t>(content.size());
  if (content.size() <= kMostInline) {
    Store32(head.data(), length | kLongValueInline);
    std::ranges::copy(content, head.begin() + kLongValueHead);
    return head;
  }
  if (content.size() <= kMostInRow) {
    Store32(head.data(), length | kLongValueSingle);
    AddRow(maps, content).Store(&head[4]);
    return head;
  }
  Store32(head.data(), length);
  // From the last piece to the first, since each has a pointer to the next.
  constexpr std::size_t kPiece = kMostInRow - kNextPiece;
  RowPointer next;
  std::vector<std::byte> row;
  for (std::size_t end = content.size(); end > 0;) {
    const std::size_t start = (end - 1) / kPiece * kPiece;
    row.assign(kNextPiece, std::byte{0});
    next.Store(row.data());
    const Bytes piece = content.subspan(start, end - start);
    row.insert(row.end(), piece.begin(), piece.end());
    next = AddRow(maps, row);
    end = start;
  }
  next.Store(&head[4]);
  return head;
}

RowPointer LongValueWriter::AddRow(const LongValueMaps& maps, Bytes row) {
  return FreeSpace(pages_, maps.owned_pages, maps.free_pages, kLongValueOwner).Add(row, 0);
}

void LongValueWriter::Free(const LongValueMaps& maps, Bytes field) {
  if (field.size() < kLongValueHead) return;
  const std::uint32_t head = Load32(field.data());
  std::size_t left = head & kLongValueLength;
  if (left == 0 || (head & kLongValueInline) != 0) return;
  const bool chain = (head & kLongValueSingle) == 0;
  RowPointer at = RowPointer::Load(&field[4]);
  while (left > 0) {
    DataPageEditor page(pages_, at.page, kLongValueOwner);
    // A deleted piece has no bytes any more, which ends a chain that is a loop.
    const Bytes row = page.Row(at.row);
    if (row.size() <= (chain ? kNextPiece : 0)) {
      throw Corruption(at.page, "a long value is truncated");
    }
    const RowPointer next = chain ? RowPointer::Load(row.data()) : RowPointer{};
    const std::size_t piece = row.size() - (chain ? kNextPiece : 0);
    left -= std::min(left, piece);
    page.Delete(at.row);
    page.Save();
    FreeSpace(pages_, maps.owned_pages, maps.free_pages, kLongValueOwner).NoteFreed(page);
    if (left > 0 && next.page == 0) throw Corruption(at.page, "a long value is truncated");
    at = next;
  }
}

}  // namespace tenora::access
