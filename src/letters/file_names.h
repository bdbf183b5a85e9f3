// The folders that recipients' letters are kept in.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace tenora {

// The sub-folder of the data folder for a recipient's letters: as SafeFileName, and never one of
// the data folder's own names, so that a tenant called "Templates" does not fill the template
// library.
std::string RecipientFolderName(std::string_view recipient_name);

// That folder's path, made when missing. Raises the errors of FileError, and 75 where there is a
// link in its place: letters do not leave the data folder.
std::filesystem::path MakeRecipientFolder(const std::filesystem::path& data_folder,
                                          std::string_view recipient_name);

}  // namespace tenora
