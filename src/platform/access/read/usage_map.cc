#include "platform/access/read/usage_map.h"

#include <bit>
#include <string>

namespace tenora::access {

UsageMap::UsageMap(const PageFile& file, RowPointer map, BeyondEnd beyond_end) {
  if (map.page == 0) return;
  bits_.resize((file.page_count() + 63) / 64);
  PageBuffer page;
  file.Read(map.page, page);
  const Bytes row = DataPage(file.layout(), page).Row(map.row).bytes;
  const std::uint8_t kind = row.empty() ? 0xFF : Load8(row.data());
  if (kind == 0 && row.size() >= kInlineMapBits) {
    Add(file, map.page, Load32(&row[1]), row.subspan(kInlineMapBits), beyond_end);
  } else if (kind == 1) {
    const std::uint64_t span = (file.layout().page_size - kBitmapPageBits) * 8;
    PageBuffer bitmap;
    for (std::size_t i = 0; 1 + 4 * (i + 1) <= row.size(); ++i) {
      const std::uint32_t number = Load32(&row[1 + 4 * i]);
      if (number == 0) continue;
      if (number >= file.page_count() && beyond_end == BeyondEnd::kIgnored) continue;
      file.Read(number, bitmap);
      if (bitmap.type() != PageType::kUsageMap) {
        throw Corruption(number, "expected a bitmap page of a usage map");
      }
      Add(file, number, i * span, Bytes(bitmap.bytes).first(bitmap.size).subspan(kBitmapPageBits),
          beyond_end);
    }
  } else {
    throw Corruption(map.page, "row " + std::to_string(map.row) + " is not a usage map");
  }
}

void UsageMap::Add(const PageFile& file, std::uint32_t map_page, std::uint64_t first, Bytes bits,
                   BeyondEnd beyond_end) {
  for (std::size_t i = 0; i < bits.size(); ++i) {
    for (std::uint8_t byte = Load8(&bits[i]); byte != 0;
         byte = static_cast<std::uint8_t>(byte & (byte - 1))) {
      const std::uint64_t number = first + 8 * i + static_cast<unsigned>(std::countr_zero(byte));
      if (number >= file.page_count()) {
        if (beyond_end == BeyondEnd::kIgnored) return;
        throw Corruption(map_page, "the usage map names page " + std::to_string(number) +
                                       " beyond the end of the file, which is truncated at byte " +
                                       std::to_string(file.size()));
      }
      bits_[number / 64] |= std::uint64_t{1} << (number % 64);
    }
  }
}

std::vector<std::uint32_t> BitmapPages(const PageFile& file, RowPointer map,
                                       UsageMap::BeyondEnd beyond_end) {
  std::vector<std::uint32_t> pages;
  if (map.page == 0) return pages;
  PageBuffer page;
  file.Read(map.page, page);
  const Bytes row = DataPage(file.layout(), page).Row(map.row).bytes;
  if (row.empty() || Load8(row.data()) != 1) return pages;
  for (std::size_t i = 1; i + 4 <= row.size(); i += 4) {
    const std::uint32_t number = Load32(&row[i]);
    const bool ignored = number >= file.page_count() && beyond_end == UsageMap::BeyondEnd::kIgnored;
    if (number != 0 && !ignored) pages.push_back(number);
  }
  return pages;
}

std::uint32_t UsageMap::Count() const {
  std::uint32_t count = 0;
  for (const std::uint64_t word : bits_) count += static_cast<std::uint32_t>(std::popcount(word));
  return count;
}

std::uint32_t UsageMap::NextFrom(std::uint32_t from) const {
  std::size_t word = from / 64;
  if (word >= bits_.size()) return PageBuffer::kNone;
  std::uint64_t bits = bits_[word] & (~std::uint64_t{0} << (from % 64));
  while (bits == 0) {
    if (++word == bits_.size()) return PageBuffer::kNone;
    bits = bits_[word];
  }
  return static_cast<std::uint32_t>(word * 64 + static_cast<unsigned>(std::countr_zero(bits)));
}

}  // namespace tenora::access
