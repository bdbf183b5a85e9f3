#include "letters/branch_folders.h"

#include <algorithm>
#include <system_error>

#include "platform/runtime/safe_file_name.h"

namespace tenora {
namespace {

namespace fs = std::filesystem;

constexpr const char* kBranches = "Branches";

}  // namespace

fs::path BranchFolder(const fs::path& data_folder, const std::string& branch) {
  return data_folder / kBranches / DistinctFileName(branch);
}

std::vector<fs::path> BranchFolders(const fs::path& data_folder) {
  std::vector<fs::path> folders;
  std::error_code error;
  for (fs::directory_iterator entry(data_folder / kBranches, error), end; !error && entry != end;
       entry.increment(error)) {
    std::error_code unknown;
    if (entry->is_directory(unknown)) folders.push_back(entry->path());
  }
  std::ranges::sort(folders);
  return folders;
}

}  // namespace tenora
