#include "platform/access/format/index_page.h"

#include <algorithm>
#include <bit>
#include <tuple>

namespace tenora::access {
namespace {

constexpr std::size_t kFreeBytes = 2, kOwner = 4;
// Bytes of prefixes in all entries of a page: far more than valid pages have. Stops a page crafted
// to fill memory.
constexpr std::size_t kMostRepeated = 1 << 20;
constexpr std::size_t kRowSize = 4, kChildSize = 4;

std::size_t PointerSize(bool leaf) { return leaf ? kRowSize : kRowSize + kChildSize; }

std::uint32_t LoadHighFirst(const char* at) {
  std::uint32_t number = 0;
  for (int i = 0; i < 4; ++i) number = number << 8 | static_cast<unsigned char>(at[i]);
  return number;
}

void AppendHighFirst(std::uint32_t number, std::string& bytes) {
  for (int shift = 24; shift >= 0; shift -= 8) bytes += static_cast<char>(number >> shift);
}

std::string Whole(const IndexEntry& entry, bool leaf) {
  std::string bytes = entry.key;
  AppendHighFirst(entry.row.page << 8 | entry.row.row, bytes);
  if (!leaf) AppendHighFirst(entry.child, bytes);
  return bytes;
}

// entry.key holds the whole entry: moves the pointers at its end into their members.
void SplitEntry(bool leaf, std::uint32_t page, IndexEntry& entry) {
  const std::size_t pointers = PointerSize(leaf);
  if (entry.key.size() < pointers) throw Corruption(page, "an index entry is too short");
  const char* at = entry.key.data() + entry.key.size() - pointers;
  const std::uint32_t row = LoadHighFirst(at);
  entry.row = {row >> 8, static_cast<std::uint8_t>(row)};
  entry.child = leaf ? 0 : LoadHighFirst(at + kRowSize);
  entry.key.erase(entry.key.size() - pointers);
}

// Length of the prefix that all keys share. They are in order, so the first and the last have the
// shortest common prefix.
std::size_t SharedStart(const std::vector<IndexEntry>& entries) {
  if (entries.size() < 2) return 0;
  const std::string &first = entries.front().key, &last = entries.back().key;
  const auto [end, other] = std::mismatch(first.begin(), first.end(), last.begin(), last.end());
  return static_cast<std::size_t>(end - first.begin());
}

}  // namespace

std::strong_ordering Compare(const IndexEntry& entry, std::string_view key, RowPointer row) {
  if (const int order = std::string_view(entry.key).compare(key); order != 0) return order <=> 0;
  return std::tie(entry.row.page, entry.row.row) <=> std::tie(row.page, row.row);
}

void ReadIndexPage(const Layout& layout, const PageBuffer& bytes, IndexPage& page) {
  if (bytes.type() != PageType::kIndexLeaf && bytes.type() != PageType::kIndexNode) {
    std::string what = "expected an index page, found a page of type ";
    throw Corruption(bytes.number, what.append(std::to_string(static_cast<int>(bytes.type()))));
  }
  const std::byte* const start = bytes.bytes.data();
  page.leaf = bytes.type() == PageType::kIndexLeaf;
  page.owner = Load32(start + kOwner);
  page.previous = Load32(start + layout.index_page_previous);
  page.next = Load32(start + layout.index_page_previous + 4);
  page.tail = page.leaf ? 0 : Load32(start + layout.index_page_previous + 8);
  page.free_bytes = Load16(start + kFreeBytes);
  const std::byte* const shared = start + layout.index_page_prefix;
  const std::size_t prefix = layout.index_page_prefix_size == 1 ? Load8(shared) : Load16(shared);
  const std::string_view area(reinterpret_cast<const char*>(start) + layout.index_page_entries,
                              layout.page_size - layout.index_page_entries);
  std::size_t total = 0;
  for (std::size_t at = layout.index_page_ends; at < layout.index_page_entries; ++at) {
    total += static_cast<std::size_t>(std::popcount(Load8(start + at)));
  }
  page.entries.reserve(total);
  std::size_t count = 0, begin = 0, repeated = 0;
  for (std::size_t at = layout.index_page_ends; at < layout.index_page_entries; ++at) {
    for (std::uint8_t ends = Load8(start + at); ends != 0;
         ends = static_cast<std::uint8_t>(ends & (ends - 1))) {
      const std::size_t end =
          8 * (at - layout.index_page_ends) + static_cast<unsigned>(std::countr_zero(ends));
      if (end > area.size())
        throw Corruption(bytes.number, "an index entry extends beyond the page");
      if (count == page.entries.size()) page.entries.emplace_back();
      IndexEntry& entry = page.entries[count++];
      if (count == 1 && prefix > end) {
        throw Corruption(bytes.number,
                         "the shared prefix of the index entries is longer than the first entry");
      }
      entry.key.clear();
      if (count > 1) {
        if ((repeated += prefix) > kMostRepeated) {
          throw Corruption(bytes.number, "the shared prefix of the index entries is too long");
        }
        entry.key.append(area, 0, prefix);
      }
      entry.key.append(area, begin, end - begin);
      SplitEntry(page.leaf, bytes.number, entry);
      begin = end;
    }
  }
  page.entries.resize(count);
  page.unused_bytes = area.size() - begin;
}

bool ComposeIndexPage(const Layout& layout, const IndexPage& page, std::span<std::byte> bytes) {
  const std::size_t capacity = layout.page_size - layout.index_page_entries;
  std::size_t used = 0;
  for (const IndexEntry& entry : page.entries) used += entry.key.size() + PointerSize(page.leaf);
  std::size_t prefix = 0;
  if (used > capacity) {
    prefix = SharedStart(page.entries);
    used -= prefix * (page.entries.size() - 1);
    if (used > capacity || prefix == 0) return false;
  }
  std::byte* const start = bytes.data();
  std::fill(start, start + layout.page_size, std::byte{0});
  start[0] = static_cast<std::byte>(page.leaf ? PageType::kIndexLeaf : PageType::kIndexNode);
  start[1] = std::byte{1};
  Store16(start + kFreeBytes, capacity - used);
  Store32(start + kOwner, page.owner);
  Store32(start + layout.index_page_previous, page.previous);
  Store32(start + layout.index_page_previous + 4, page.next);
  Store32(start + layout.index_page_previous + 8, page.tail);
  Store16(start + layout.index_page_prefix, prefix);
  std::size_t end = 0;
  for (std::size_t i = 0; i < page.entries.size(); ++i) {
    const std::string entry = Whole(page.entries[i], page.leaf);
    const std::string_view kept = std::string_view(entry).substr(i == 0 ? 0 : prefix);
    std::memcpy(start + layout.index_page_entries + end, kept.data(), kept.size());
    end += kept.size();
    start[layout.index_page_ends + end / 8] |= std::byte{1} << (end % 8);
  }
  return true;
}

std::size_t LowerBound(const IndexPage& page, std::string_view key, RowPointer row) {
  const auto found =
      std::partition_point(page.entries.begin(), page.entries.end(),
                           [&](const IndexEntry& entry) { return Compare(entry, key, row) < 0; });
  return static_cast<std::size_t>(found - page.entries.begin());
}

std::uint32_t ChildFor(const IndexPage& node, std::string_view key, RowPointer row) {
  const std::size_t position = LowerBound(node, key, row);
  return position < node.entries.size() ? node.entries[position].child : node.tail;
}

}  // namespace tenora::access
