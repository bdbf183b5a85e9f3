// Where head office keeps the letters of branches on a server.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace tenora {

// The folder of a branch's letters in the data folder of head office; no two branches share one.
std::filesystem::path BranchFolder(const std::filesystem::path& data_folder,
                                   const std::string& branch);
// The folders of branches that are there.
std::vector<std::filesystem::path> BranchFolders(const std::filesystem::path& data_folder);

}  // namespace tenora
