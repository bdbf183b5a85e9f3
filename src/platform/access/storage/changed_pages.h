// The database as a transaction sees it: its changed and appended pages, held in memory until the
// commit, over the pages on disk. Readers use it like any other PageFile.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "platform/access/storage/exclusive_access.h"
#include "platform/access/storage/page_file.h"

namespace tenora::access {

class ChangedPages final : public PageFile {
 public:
  // `file` must outlive the object. Raises what PageFile::Open raises for a file that is not a
  // database.
  ChangedPages(const std::filesystem::path& path, StorageFile& file);

  // The bytes of a page, to be modified; valid as long as this object. Raises Corruption for a page
  // beyond the end.
  std::span<std::byte> Change(std::uint32_t number);
  // Appends a page of zeros and returns its number. Raises 3026 (disk full) when the file would
  // exceed 2 GB, the most that the engine opens.
  std::uint32_t Append();

  bool changed() const { return !pages_.empty(); }
  // `tables` are those that may have been changed, by the first page of their definition.
  CommitStates Commit(ExclusiveAccess& access, std::map<std::uint32_t, std::string> tables);

 private:
  struct ChangedPage {
    std::vector<std::byte> before;  // empty for an appended page
    std::vector<std::byte> now;
  };

  std::size_t ReadAt(std::uint64_t offset, std::span<std::byte> into,
                     std::uint32_t number) const override;

  std::uint64_t old_length_;
  std::map<std::uint32_t, ChangedPage> pages_;
};

}  // namespace tenora::access
