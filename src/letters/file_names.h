// Names of people and letters made into names of folders and files.
#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>

namespace tenora {

// What a file system takes as one name, in bytes.
inline constexpr std::size_t kLongestFileName = 255;

// A name that stays in its folder and that every system sharing the folder can open. Ordinary names
// stay as they are. Separators become "-"; blanks around it and trailing dots go, as the package's
// own machines drop them; control characters and leading dots become "_". A name that had to be
// changed or shortened (at a character) gets "~" and eight hexadecimal digits of the whole name's
// hash appended, so that two such names stay different.
std::string SafeFileName(std::string_view name, std::size_t longest = kLongestFileName);

// The sub-folder of the data folder for a recipient's letters: as SafeFileName, and never one of
// the data folder's own names, so that a tenant called "Templates" does not fill the template
// library.
std::string RecipientFolderName(std::string_view recipient_name);

// That folder's path, made when missing. Raises the errors of FileError, and 75 where there is a
// link in its place: letters do not leave the data folder.
std::filesystem::path MakeRecipientFolder(const std::filesystem::path& data_folder,
                                          std::string_view recipient_name);

}  // namespace tenora
