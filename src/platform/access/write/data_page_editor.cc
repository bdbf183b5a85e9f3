#include "platform/access/write/data_page_editor.h"

#include <algorithm>

namespace tenora::access {
namespace {

// A row pointer has one byte for the slot number.
constexpr std::size_t kMostSlots = 255;
constexpr std::size_t kFreeBytes = 2;
constexpr std::size_t kOwner = 4;

}  // namespace

DataPageEditor::DataPageEditor(ChangedPages& pages, std::uint32_t number, std::uint32_t owner)
    : pages_(pages), number_(number) {
  PageBuffer page;
  pages.Read(number, page);
  const DataPage data(pages.layout(), page);
  if (page.owner() != owner) {
    throw Corruption(number, "the page belongs to " + std::to_string(page.owner()) + ", not to " +
                                 std::to_string(owner));
  }
  for (std::size_t i = 0; i < data.row_count(); ++i) {
    const DataPage::Slot row = data.Row(i);
    Slot& slot = slots_.emplace_back();
    slot.flags = static_cast<std::uint16_t>((row.hidden ? kRowHidden : 0) |
                                            (row.overflow ? kRowOverflow : 0));
    if (slot.flags != kRowDeleted) slot.bytes.assign(row.bytes.begin(), row.bytes.end());
  }
  // This is how Save writes a page without rows.
  if (slots_.size() == 1 && slots_[0].flags == kRowDeleted) slots_.clear();
}

void DataPageEditor::Format(ChangedPages& pages, std::uint32_t number, std::uint32_t owner) {
  const std::span<std::byte> bytes = pages.Change(number);
  std::ranges::fill(bytes, std::byte{0});
  bytes[0] = static_cast<std::byte>(PageType::kData);
  bytes[1] = std::byte{1};
  Store16(&bytes[kFreeBytes], bytes.size() - pages.layout().data_row_offsets);
  Store32(&bytes[kOwner], owner);
}

const DataPageEditor::Slot& DataPageEditor::At(std::size_t slot) const {
  if (slot < slots_.size()) return slots_[slot];
  throw Corruption(number_, "row " + std::to_string(slot) +
                                " does not exist, the number of rows on the page is " +
                                std::to_string(slots_.size()));
}

std::size_t DataPageEditor::Free() const {
  std::size_t used = pages_.layout().data_row_offsets + 2 * slots_.size();
  for (const Slot& slot : slots_) used += slot.bytes.size();
  return pages_.layout().page_size - used;
}

bool DataPageEditor::HasSpaceFor(std::size_t size) const {
  return slots_.size() < kMostSlots && size + 2 <= Free();
}

bool DataPageEditor::CanReplace(std::size_t slot, std::size_t size) const {
  return size <= Free() + At(slot).bytes.size();
}

std::uint8_t DataPageEditor::Add(Bytes row, std::uint16_t flags) {
  Slot& slot = slots_.emplace_back();
  slot.flags = flags;
  slot.bytes.assign(row.begin(), row.end());
  return static_cast<std::uint8_t>(slots_.size() - 1);
}

void DataPageEditor::Replace(std::size_t slot, Bytes row, std::uint16_t flags) {
  slots_[slot].flags = flags;
  slots_[slot].bytes.assign(row.begin(), row.end());
}

void DataPageEditor::Delete(std::size_t slot) {
  slots_[slot] = {kRowDeleted, {}};
  // Reuse slots at the end, else a page with much traffic runs out. Nothing refers to deleted rows.
  while (!slots_.empty() && slots_.back().flags == kRowDeleted) slots_.pop_back();
}

void DataPageEditor::Save() {
  // Other readers read a row from a data page even if it has no slots.
  if (slots_.empty()) slots_.push_back({kRowDeleted, {}});
  const std::span<std::byte> bytes = pages_.Change(number_);
  const Layout& layout = pages_.layout();
  std::size_t end = bytes.size();
  std::byte* offset = &bytes[layout.data_row_offsets];
  // The rows are copies, so they can be placed in any order.
  for (const Slot& slot : slots_) {
    end -= slot.bytes.size();
    std::ranges::copy(slot.bytes, bytes.begin() + static_cast<std::ptrdiff_t>(end));
    Store16(offset, end | slot.flags);
    offset += 2;
  }
  std::fill(offset, bytes.data() + end, std::byte{0});
  Store16(&bytes[layout.data_row_count], slots_.size());
  Store16(&bytes[kFreeBytes], Free());
}

}  // namespace tenora::access
