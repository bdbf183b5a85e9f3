#include "platform/access/write/free_space.h"

#include "platform/access/read/usage_map.h"

namespace tenora::access {
namespace {

// In bytes. A page on which a row does not fit leaves the map when it has less free space than
// kFull, and is listed again when it has kHasSpace. The gap keeps pages from moving in and out of
// the map.
constexpr std::size_t kFull = 512;
constexpr std::size_t kHasSpace = 1024;
// Bounds the search when many pages have only a little space.
constexpr int kMostTried = 8;

}  // namespace

RowPointer FreeSpace::Add(Bytes row, std::uint16_t flags) {
  const UsageMap candidates(pages_, with_space_);
  PageBuffer found;
  std::uint32_t number = candidates.NextFrom(0);
  for (int tried = 0; number != PageBuffer::kNone && tried < kMostTried; ++tried) {
    // A map written by another program may list a page that is not for these rows.
    pages_.Read(number, found);
    if (found.type() == PageType::kData && found.owner() == owner_ &&
        maps_.Contains(owned_, number)) {
      DataPageEditor page(pages_, number, owner_);
      if (page.HasSpaceFor(row.size())) {
        const std::uint8_t slot = page.Add(row, flags);
        page.Save();
        return {number, slot};
      }
      if (page.Free() < kFull) maps_.Remove(with_space_, number);
    }
    number = candidates.NextFrom(number + 1);
  }
  DataPageEditor page(pages_, NewPage(), owner_);
  const std::uint8_t slot = page.Add(row, flags);
  page.Save();
  return {page.number(), slot};
}

std::uint32_t FreeSpace::NewPage() {
  const std::uint32_t number = maps_.Allocate();
  DataPageEditor::Format(pages_, number, owner_);
  maps_.Add(owned_, number);
  maps_.Add(with_space_, number);
  return number;
}

void FreeSpace::NoteFreed(const DataPageEditor& page) {
  if (page.Free() >= kHasSpace && !maps_.Contains(with_space_, page.number())) {
    maps_.Add(with_space_, page.number());
  }
}

}  // namespace tenora::access
