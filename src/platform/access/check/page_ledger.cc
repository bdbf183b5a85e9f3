#include "platform/access/check/page_ledger.h"

#include <algorithm>

namespace tenora::access {

PageLedger::PageLedger(const PageFile& file, CheckReport& report)
    : file_(file), report_(report), names_{"nothing"}, users_(file.page_count()) {
  const User header = AddUser("the file's header");
  maps_user_ = AddUser("the usage maps");
  Claim(0, header, {});
}

PageLedger::User PageLedger::AddUser(std::string name) {
  names_.push_back(std::move(name));
  return static_cast<User>(names_.size() - 1);
}

bool PageLedger::Claim(std::uint32_t page, User user, const FindingPlace& place) {
  if (page >= users_.size()) {
    report_.Fault(place, page, {}, "the page is beyond the end of the file", Remedy::kRestore);
    return false;
  }
  if (users_[page] != 0) {
    report_.Fault(place, page, {},
                  "the page is owned twice: by " + names_[users_[page]] + " and by " + names_[user],
                  Remedy::kRestore);
    return false;
  }
  users_[page] = user;
  return true;
}

bool PageLedger::IsClaimedBy(std::uint32_t page, User user) const {
  return page < users_.size() && users_[page] == user;
}

UsageMap PageLedger::ReadMap(RowPointer map, const std::string& name, const FindingPlace& place,
                             UsageMap::BeyondEnd beyond_end) {
  if (map.page == 0) return {};
  if (!maps_.insert(map.page << 8 | map.row).second) {
    report_.Fault(place, map, "the usage map of " + name + " is already used for something else",
                  Remedy::kRestore);
    return {};
  }
  try {
    if (!IsClaimedBy(map.page, maps_user_) && !Claim(map.page, maps_user_, place)) return {};
    const User bitmap = AddUser("the usage map of " + name);
    for (const std::uint32_t page : BitmapPages(file_, map, beyond_end)) {
      if (!Claim(page, bitmap, place)) return {};
    }
    return UsageMap(file_, map, beyond_end);
  } catch (const Corruption& corruption) {
    report_.Fault(place, corruption.page(), {},
                  "the usage map of " + name + ": " + corruption.what(), Remedy::kRestore);
    return {};
  }
}

void PageLedger::CheckAllClaimed() {
  const UsageMap free =
      ReadMap(kFreePagesMap, "the file's free pages", {}, UsageMap::BeyondEnd::kIgnored);
  PageBuffer page;
  std::vector<std::uint32_t> unused;
  for (std::uint32_t number = 0; number < users_.size(); ++number) {
    const bool is_free = free.Contains(number);
    if (is_free != (users_[number] != 0)) continue;
    if (is_free) {
      report_.Fault({}, number, {},
                    "the page is listed as free, but is owned by " + names_[users_[number]] +
                        "; the next write may overwrite it",
                    Remedy::kRestore);
      continue;
    }
    try {
      file_.Read(number, page);
      if (IsLeftOver(page)) continue;
      if (page.type() != PageType::kData || page.owner() == kLongValueOwner) {
        unused.push_back(number);
        continue;
      }
      report_.Fault({}, number, {}, "the page of rows is in use, but nothing owns it",
                    Remedy::kRestore);
    } catch (const Corruption& corruption) {
      report_.Fault({}, corruption, Remedy::kRestore);
    }
  }
  NoteUnused(unused);
}

// A long value on one of these that a row still refers to is reported with the row, and so are the
// rows of a definition that the catalogue has lost.
void PageLedger::NoteUnused(const std::vector<std::uint32_t>& pages) {
  if (pages.empty()) return;
  const std::string which =
      pages.size() == 1 ? "the page is"
                        : "this and other pages, " + std::to_string(pages.size()) + " in all, are";
  report_.Note({}, pages.front(), which + " space that nobody uses; no rows are concerned");
}

bool PageLedger::IsDropped(std::uint32_t page) {
  if (page == 0 || page >= file_.page_count()) return false;
  file_.Read(page, other_);
  return other_.type() == PageType::kDroppedDefinition;
}

bool PageLedger::HasNoRows(const PageBuffer& page) const {
  const DataPage data(file_.layout(), page);
  for (std::size_t row = 0; row < data.row_count(); ++row) {
    const DataPage::Slot slot = data.Row(row);
    if (!slot.hidden || !slot.overflow) return false;
  }
  return true;
}

bool PageLedger::IsBlank(const PageBuffer& page) {
  return std::ranges::all_of(Bytes(page.bytes).first(page.size),
                             [](std::byte byte) { return byte == std::byte{0}; });
}

// What remains of a dropped table until the file is compacted: its definition, the pages that name
// it as their owner, and pages on which all rows (its usage maps) are deleted. And pages that were
// added to the file but never used.
bool PageLedger::IsLeftOver(const PageBuffer& page) {
  switch (page.type()) {
    case PageType::kDroppedDefinition:
      return true;
    case PageType::kData:
      return IsDropped(page.owner()) || HasNoRows(page);
    case PageType::kIndexLeaf:
    case PageType::kIndexNode:
      return IsDropped(page.owner());
    case PageType::kHeader:
      return IsBlank(page);
    default:
      return false;
  }
}

}  // namespace tenora::access
