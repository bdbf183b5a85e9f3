// Records which user owns each page of the file. Every user claims its pages; a page claimed twice,
// a claimed page that is listed as free, and a page that nobody claims are faults.
#pragma once

#include <string>
#include <unordered_set>
#include <vector>

#include "platform/access/check/check_report.h"
#include "platform/access/read/usage_map.h"
#include "platform/access/storage/page_file.h"

namespace tenora::access {

class PageLedger {
 public:
  PageLedger(const PageFile& file, CheckReport& report);

  // A user of pages; `name` as in "the rows of table 'owner'".
  using User = std::uint32_t;
  User AddUser(std::string name);

  // Reports a fault and returns false when the page is not in the file or claimed already.
  bool Claim(std::uint32_t page, User user, const FindingPlace& place);
  bool IsClaimedBy(std::uint32_t page, User user) const;

  // Reads a usage map and claims the pages on which it is stored. Reports a fault and returns an
  // empty set for a map that is invalid or already used for something else.
  UsageMap ReadMap(RowPointer map, const std::string& name, const FindingPlace& place,
                   UsageMap::BeyondEnd beyond_end = UsageMap::BeyondEnd::kCorrupt);

  // To be called when everything is claimed: compares with the file's map of free pages.
  void CheckAllClaimed();

 private:
  void NoteUnused(const std::vector<std::uint32_t>& pages);
  static bool IsBlank(const PageBuffer& page);
  bool IsLeftOver(const PageBuffer& page);
  bool IsDropped(std::uint32_t page);
  bool HasNoRows(const PageBuffer& page) const;

  const PageFile& file_;
  CheckReport& report_;
  std::vector<std::string> names_;
  std::vector<User> users_;                 // of each page; 0: none
  std::unordered_set<std::uint32_t> maps_;  // page << 8 | row
  User maps_user_ = 0;
  PageBuffer other_;
};

}  // namespace tenora::access
