#include "platform/access/storage/changed_pages.h"

#include <algorithm>

namespace tenora::access {
namespace {

constexpr std::uint64_t kLargestFile = 0x80000000;

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

CommitStates ChangedPages::Commit(ExclusiveAccess& access) {
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
  return access.Commit(journal, appended);
}

}  // namespace tenora::access
