#include "platform/access/write/free_space.h"

#include "platform/access/read/usage_map.h"

namespace tenora::access {
namespace {

// A page that cannot take a row and has less room than this is full; one with twice as much, after
// a row has gone, has room again. Without the gap pages would go in and out of the map.
constexpr std::size_t kFull = 512;
constexpr std::size_t kHasRoom = 1024;
// However many pages have a little room, an insertion looks at no more of them.
constexpr int kMostTried = 8;

}  // namespace

RowPointer FreeSpace::Add(Bytes row, std::uint16_t flags) {
  const UsageMap candidates(pages_, with_room_);
  PageBuffer found;
  std::uint32_t number = candidates.NextFrom(0);
  for (int tried = 0; number != PageBuffer::kNone && tried < kMostTried; ++tried) {
    // A map that another program wrote may name a page that is not for these rows.
    pages_.Read(number, found);
    if (found.type() == PageType::kData && found.owner() == owner_ &&
        maps_.Contains(owned_, number)) {
      DataPageEditor page(pages_, number, owner_);
      if (page.HasRoomFor(row.size())) {
        const std::uint8_t slot = page.Add(row, flags);
        page.Save();
        return {number, slot};
      }
      if (page.Free() < kFull) maps_.Remove(with_room_, number);
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
  maps_.Add(with_room_, number);
  return number;
}

void FreeSpace::NoteRoom(const DataPageEditor& page) {
  if (page.Free() >= kHasRoom && !maps_.Contains(with_room_, page.number())) {
    maps_.Add(with_room_, page.number());
  }
}

}  // namespace tenora::access
