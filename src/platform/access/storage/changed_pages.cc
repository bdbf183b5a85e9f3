#include "platform/access/storage/changed_pages.h"

#include <algorithm>
#include <set>

namespace tenora::access {
namespace {

constexpr std::uint64_t kLargestFile = 0x80000000;
constexpr std::size_t kOwner = 4;  // of a data page

// The first pages of the definitions of the tables to which such pages belong. A definition's
// further pages and those of usage maps and long values do not tell; of a table that is changed,
// others do.
std::set<std::uint32_t> TablesOf(const Journal& journal,
                                 const std::vector<AppendedPage>& appended) {
  std::set<std::uint32_t> tables;
  const auto add = [&](std::uint32_t number, Bytes page) {
    const auto type = static_cast<PageType>(page[0]);
    if (type == PageType::kTableDefinition) tables.insert(number);
    if (type == PageType::kData) tables.insert(Load32(&page[kOwner]));
  };
  for (const JournalPage& page : journal.pages) add(page.number, page.after);
  for (const AppendedPage& page : appended) add(page.number, page.bytes);
  return tables;
}

}  // namespace

ChangedPages::ChangedPages(const std::filesystem::path& path, StorageFile& file)
    : PageFile(path, file), old_length_(size()) {}

std::size_t ChangedPages::ReadAt(std::uint64_t offset, std::span<std::byte> into,
                                 std::uint32_t number) const {
  const auto changed = pages_.find(number);
  if (changed != pages_.end()) {
    const std::size_t count = std::min(into.size(), changed->second.now.size());
    std::copy_n(changed->second.now.begin(), count, into.begin());
    return count;
  }
  return PageFile::ReadAt(offset, into, number);
}

std::span<std::byte> ChangedPages::Change(std::uint32_t number) {
  const auto found = pages_.find(number);
  if (found != pages_.end()) return found->second.now;
  PageBuffer page;
  Read(number, page);
  ChangedPage& changed = pages_[number];
  changed.before.assign(page.bytes.begin(),
                        page.bytes.begin() + static_cast<std::ptrdiff_t>(page.size));
  changed.now = changed.before;
  return changed.now;
}

std::uint32_t ChangedPages::Append() {
  const std::size_t page_size = layout().page_size;
  if (size() + page_size >= kLargestFile) {
    throw RuntimeError(engine_error::kDiskFull,
                       "Not enough space on disk. '" + path().string() +
                           "' would exceed two gigabytes, the maximum size of a database.",
                       "DAO.Database");
  }
  const std::uint32_t number = page_count();
  pages_[number].now.resize(page_size);
  AddPages(1);
  return number;
}

CommitStates ChangedPages::Commit(ExclusiveAccess& access,
                                  std::map<std::uint32_t, std::string> tables) {
  Journal journal;
  journal.page_size = static_cast<std::uint32_t>(layout().page_size);
  journal.old_length = old_length_;
  journal.new_length = size();
  std::vector<std::byte> start(kHeaderSize);
  start.resize(ReadAt(0, start, 0));
  journal.identity = DatabaseIdentity(start);
  std::vector<AppendedPage> appended;
  for (const auto& [number, page] : pages_) {
    if (page.before.empty()) {
      appended.push_back({number, page.now});
    } else if (page.before != page.now) {
      journal.pages.push_back({number, page.before, page.now});
    }
  }
  if (journal.pages.empty() && appended.empty()) return {};
  const std::set<std::uint32_t> changed = TablesOf(journal, appended);
  std::erase_if(tables, [&](const auto& table) { return !changed.contains(table.first); });
  return access.Commit(journal, appended, tables);
}

}  // namespace tenora::access
