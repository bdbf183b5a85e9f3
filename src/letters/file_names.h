// The folders that recipients' letters are kept in.
#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>

#include "platform/runtime/safe_file_name.h"

namespace tenora {

// The longest name of a generated letter's file, in bytes: leaves space for "(123456).rtf" behind.
inline constexpr std::size_t kLongestGeneratedTitle = kLongestFileName - 16;

// The sub-folder of the data folder for a recipient's letters: as SafeFileName, and never one of
// the data folder's own names, so that a tenant called "Templates" does not fill the template
// library.
std::string RecipientFolderName(std::string_view recipient_name);

// The folder that version 1.0 saved this recipient's letters in, where it is another one: for names
// with characters that Windows forbids, and names of its devices. Letters are still found there,
// new ones are not saved there. Empty for the other names. It is never another recipient's folder.
std::string EarlierRecipientFolderName(std::string_view recipient_name);

// Whether a path below the data folder is that of a letter in the folder of this recipient, and
// nothing else.
bool IsInFolderOf(std::string_view recipient_name, const std::filesystem::path& file);

// The path of RecipientFolderName's folder, made when missing. Raises the errors of FileError, 76
// where the data folder itself is missing, and 75 where there is a link in the folder's place:
// letters do not leave the data folder.
std::filesystem::path MakeRecipientFolder(const std::filesystem::path& data_folder,
                                          std::string_view recipient_name);

// What to ask before a file is called `used` where somebody typed `typed`.
std::string FileNameQuestion(std::string_view typed, std::string_view used);

}  // namespace tenora
