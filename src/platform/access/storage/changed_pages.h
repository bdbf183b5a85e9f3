// The file as a transaction sees it: the pages on disk under those that it has changed and those it
// has added, all in memory until the commit. Readers of the room work on it as on any PageFile.
#pragma once

#include <map>
#include <vector>

#include "platform/access/storage/exclusive_access.h"
#include "platform/access/storage/page_file.h"

namespace tenora::access {

class ChangedPages final : public PageFile {
 public:
  // Raises what PageFile::Open raises for what is no database.
  ChangedPages(const std::filesystem::path& path, StorageFile& file);

  // The bytes of a page, to be changed; they stay in place as long as this object. Raises
  // Corruption for a page behind the end.
  std::span<std::byte> Change(std::uint32_t number);
  // A new page of zeros at the end of the file. Raises 3026 (disk full) when the file would outgrow
  // the two gigabytes that the engine opens.
  std::uint32_t Append();

  bool changed() const { return !pages_.empty(); }
  CommitStates Commit(ExclusiveAccess& access);

 private:
  struct ChangedPage {
    std::vector<std::byte> before;  // none for an added page
    std::vector<std::byte> now;
  };

  std::size_t ReadAt(std::uint64_t offset, std::span<std::byte> into,
                     std::uint32_t number) const override;

  std::uint64_t old_length_;
  std::map<std::uint32_t, ChangedPage> pages_;
};

}  // namespace tenora::access
