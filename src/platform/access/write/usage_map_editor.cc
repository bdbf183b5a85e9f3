#include "platform/access/write/usage_map_editor.h"

#include <algorithm>
#include <bit>
#include <optional>
#include <string>

#include "platform/access/read/usage_map.h"

namespace tenora::access {
namespace {

constexpr std::uint8_t kIndirect = 1;

std::uint32_t PagesPerBitmap(const Layout& layout) {
  return static_cast<std::uint32_t>((layout.page_size - kBitmapPageBits) * 8);
}

bool IsSet(Bytes bits, std::size_t bit) {
  return (bits[bit / 8] & std::byte{1} << bit % 8) != std::byte{0};
}

// First and last set bit.
std::optional<std::pair<std::uint32_t, std::uint32_t>> Extent(Bytes bits) {
  std::optional<std::pair<std::uint32_t, std::uint32_t>> extent;
  for (std::uint32_t i = 0; i < bits.size() * 8; ++i) {
    if (!IsSet(bits, i)) continue;
    extent = {extent ? extent->first : i, i};
  }
  return extent;
}

}  // namespace

UsageMapEditor::Row UsageMapEditor::Find(RowPointer map, PageBuffer& buffer) const {
  pages_.Read(map.page, buffer);
  const Bytes row = DataPage(pages_.layout(), buffer).Row(map.row).bytes;
  const std::uint8_t kind = row.empty() ? 0xFF : Load8(row.data());
  if (kind > kIndirect || row.size() <= kInlineMapBits) {
    throw Corruption(map.page, "row " + std::to_string(map.row) + " is not a usage map");
  }
  return {static_cast<std::size_t>(row.data() - buffer.bytes.data()), row, kind == kIndirect};
}

UsageMapEditor::Bit UsageMapEditor::BitOf(RowPointer map, std::uint32_t page) const {
  PageBuffer buffer;
  const Row row = Find(map, buffer);
  std::uint32_t on_page = map.page, bit = 0;
  std::size_t bits_start = 0;
  if (row.indirect) {
    const std::uint32_t span = PagesPerBitmap(pages_.layout());
    const std::size_t entry = 1 + 4 * std::size_t{page / span};
    if (entry + 4 > row.bytes.size()) return {};
    on_page = Load32(&row.bytes[entry]);
    if (on_page == 0) return {};
    PageBuffer bitmap;
    pages_.Read(on_page, bitmap);
    if (bitmap.type() != PageType::kUsageMap) {
      throw Corruption(on_page, "expected a bitmap page of a usage map");
    }
    bits_start = kBitmapPageBits;
    bit = page % span;
  } else {
    const std::uint32_t first = Load32(&row.bytes[1]);
    if (page < first || page - first >= (row.bytes.size() - kInlineMapBits) * 8) return {};
    bits_start = row.start + kInlineMapBits;
    bit = page - first;
  }
  return {on_page, bits_start + bit / 8, std::byte{1} << bit % 8};
}

void UsageMapEditor::Set(const Bit& bit, bool value) {
  std::byte& byte = pages_.Change(bit.on_page)[bit.byte];
  byte = value ? byte | bit.mask : byte & ~bit.mask;
}

bool UsageMapEditor::Contains(RowPointer map, std::uint32_t page) const {
  const Bit bit = BitOf(map, page);
  if (bit.on_page == 0) return false;
  PageBuffer buffer;
  pages_.Read(bit.on_page, buffer);
  return (buffer.bytes[bit.byte] & bit.mask) != std::byte{0};
}

void UsageMapEditor::Add(RowPointer map, std::uint32_t page) {
  if (BitOf(map, page).on_page == 0) Extend(map, page);
  Set(BitOf(map, page), true);
}

void UsageMapEditor::Remove(RowPointer map, std::uint32_t page) {
  if (Contains(map, page)) Set(BitOf(map, page), false);
}

void UsageMapEditor::Extend(RowPointer map, std::uint32_t page) {
  PageBuffer buffer;
  if (!Find(map, buffer).indirect) {
    if (Shift(map, page)) return;
    MakeIndirect(map);
    if (BitOf(map, page).on_page != 0) return;
  }
  AddBitmapPage(map, page, Allocate());
}

// Shifts the first page of an inline map; false when its pages are too far apart for that.
bool UsageMapEditor::Shift(RowPointer map, std::uint32_t page) {
  PageBuffer buffer;
  const Row row = Find(map, buffer);
  const std::uint32_t first = Load32(&row.bytes[1]);
  const Bytes old_bits = row.bytes.subspan(kInlineMapBits);
  const auto extent = Extent(old_bits);
  const std::uint32_t lowest = extent ? std::min(first + extent->first, page) : page;
  const std::uint32_t highest = extent ? std::max(first + extent->second, page) : page;
  const std::uint32_t new_first = lowest / 8 * 8;
  if (highest - new_first >= old_bits.size() * 8) return false;
  const std::span<std::byte> moved = pages_.Change(map.page).subspan(row.start, row.bytes.size());
  Store32(&moved[1], new_first);
  std::ranges::fill(moved.subspan(kInlineMapBits), std::byte{0});
  for (std::uint32_t i = 0; i < old_bits.size() * 8; ++i) {
    if (IsSet(old_bits, i)) Set(BitOf(map, first + i), true);
  }
  return true;
}

void UsageMapEditor::MakeIndirect(RowPointer map) {
  PageBuffer buffer;
  const Row row = Find(map, buffer);
  const std::uint32_t first = Load32(&row.bytes[1]);
  const Bytes old_bits = row.bytes.subspan(kInlineMapBits);
  const std::span<std::byte> changed = pages_.Change(map.page).subspan(row.start, row.bytes.size());
  std::ranges::fill(changed, std::byte{0});
  changed[0] = std::byte{kIndirect};
  for (std::uint32_t i = 0; i < old_bits.size() * 8; ++i) {
    if (IsSet(old_bits, i)) Add(map, first + i);
  }
}

// Makes `bitmap` the bitmap page of an indirect map that has the bit of `page`; returns the first
// page that it covers.
std::uint32_t UsageMapEditor::AddBitmapPage(RowPointer map, std::uint32_t page,
                                            std::uint32_t bitmap) {
  PageBuffer buffer;
  const Row row = Find(map, buffer);
  const std::uint32_t place = page / PagesPerBitmap(pages_.layout());
  const std::size_t entry = 1 + 4 * std::size_t{place};
  if (entry + 4 > row.bytes.size()) {
    throw Corruption(map.page, "row " + std::to_string(map.row) + " is too short for page " +
                                   std::to_string(page));
  }
  const std::span<std::byte> bytes = pages_.Change(bitmap);
  bytes[0] = static_cast<std::byte>(PageType::kUsageMap);
  bytes[1] = std::byte{1};
  Store32(&pages_.Change(map.page)[row.start + entry], bitmap);
  return place * PagesPerBitmap(pages_.layout());
}

std::uint32_t UsageMapEditor::FindFree() const {
  PageBuffer buffer;
  const Row row = Find(kFreePagesMap, buffer);
  const auto first_in = [&](Bytes bits, std::uint64_t first) {
    for (std::size_t i = 0; i < bits.size(); ++i) {
      if (bits[i] == std::byte{0}) continue;
      const std::uint64_t page =
          first + 8 * i + static_cast<unsigned>(std::countr_zero(Load8(&bits[i])));
      return page < pages_.page_count() ? static_cast<std::uint32_t>(page) : PageBuffer::kNone;
    }
    return PageBuffer::kNone;
  };
  if (!row.indirect) return first_in(row.bytes.subspan(kInlineMapBits), Load32(&row.bytes[1]));
  PageBuffer bitmap;
  for (std::size_t i = 0; 1 + 4 * (i + 1) <= row.bytes.size(); ++i) {
    const std::uint32_t number = Load32(&row.bytes[1 + 4 * i]);
    if (number == 0) continue;
    pages_.Read(number, bitmap);
    const std::uint32_t page =
        first_in(Bytes(bitmap.bytes).first(bitmap.size).subspan(kBitmapPageBits),
                 std::uint64_t{i} * PagesPerBitmap(pages_.layout()));
    if (page != PageBuffer::kNone) return page;
  }
  return PageBuffer::kNone;
}

std::uint32_t UsageMapEditor::Allocate() {
  const std::uint32_t found = FindFree();
  if (found == PageBuffer::kNone) {
    const std::uint32_t page = pages_.Append();
    MarkAppended(page);
    return page;
  }
  // The first pages are never free; trusting such a map would overwrite the system catalogue.
  if (found <= kCataloguePage)
    throw Corruption(kFreePagesMap.page,
                     "the map of free pages lists a page of the system catalogue");
  Set(BitOf(kFreePagesMap, found), false);
  std::ranges::fill(pages_.Change(found), std::byte{0});
  return found;
}

// The map of free pages already has set bits for pages beyond the end of the file.
void UsageMapEditor::MarkAppended(std::uint32_t page) {
  const Bit bit = BitOf(kFreePagesMap, page);
  if (bit.on_page != 0) return Set(bit, false);
  PageBuffer buffer;
  const Row row = Find(kFreePagesMap, buffer);
  if (row.indirect) {
    const std::uint32_t bitmap = pages_.Append();
    const std::uint32_t first = AddBitmapPage(kFreePagesMap, page, bitmap);
    const std::span<std::byte> bits = pages_.Change(bitmap).subspan(kBitmapPageBits);
    for (std::size_t i = 0; i < bits.size() * 8; ++i) {
      if (first + i > bitmap) bits[i / 8] |= std::byte{1} << i % 8;
    }
    return;
  }
  // No page of the file is free, otherwise it would have been allocated: the map can start anew
  // here. Pages before its first one are in use.
  if (page < Load32(&row.bytes[1])) return;
  const std::span<std::byte> map =
      pages_.Change(kFreePagesMap.page).subspan(row.start, row.bytes.size());
  Store32(&map[1], page / 8 * 8);
  std::ranges::fill(map.subspan(kInlineMapBits), std::byte{0xFF});
  map[kInlineMapBits] = std::byte{0xFF} << (page % 8 + 1);
}

bool UsageMapEditor::Release(std::uint32_t page) {
  const Bit bit = BitOf(kFreePagesMap, page);
  if (bit.on_page == 0) return false;
  Set(bit, true);
  return true;
}

}  // namespace tenora::access
