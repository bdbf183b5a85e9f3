#include "letters/file_names.h"

#include <algorithm>
#include <array>
#include <system_error>

#include "platform/runtime/error.h"
#include "platform/runtime/files.h"
#include "platform/runtime/safe_file_name.h"
#include "platform/runtime/text.h"

namespace tenora {
namespace {

constexpr std::array<std::string_view, 6> kDataFolderNames{
    "Templates", "Owner Templates", "Cheque", "Check", "Printed", "property.mdb"};

}  // namespace

std::string RecipientFolderName(std::string_view recipient_name) {
  const std::string safe = SafeFileName(recipient_name);
  const bool taken = std::ranges::any_of(
      kDataFolderNames, [&](std::string_view own) { return EqualsNoCase(own, safe); });
  return taken ? FileNameWithHash(recipient_name) : safe;
}

std::string EarlierRecipientFolderName(std::string_view recipient_name) {
  std::string earlier = FileNameOfVersion1(recipient_name);
  return earlier == SafeFileName(recipient_name) ? std::string() : earlier;
}

bool IsInFolderOf(std::string_view recipient_name, const std::filesystem::path& file) {
  const std::string own = file.filename().string();
  const std::string folder = file.parent_path().string();
  const bool inside = !folder.empty() && (folder == RecipientFolderName(recipient_name) ||
                                          folder == EarlierRecipientFolderName(recipient_name));
  return inside && own != "." && own != ".." && own.ends_with(".rtf");
}

std::filesystem::path MakeRecipientFolder(const std::filesystem::path& data_folder,
                                          std::string_view recipient_name) {
  const std::filesystem::path folder = data_folder / RecipientFolderName(recipient_name);
  RequireFolder(data_folder);
  std::error_code error;
  std::filesystem::create_directory(folder, error);
  if (error) throw FileError(error.value(), folder);
  if (std::filesystem::is_symlink(std::filesystem::symlink_status(folder, error))) {
    throw StandardError(error_number::kPathFileAccess,
                        folder.string() + " is a link; letters are kept in the data folder itself");
  }
  return folder;
}

std::string FileNameQuestion(std::string_view typed, std::string_view used) {
  std::string fault = FileNameFault(typed);
  if (fault.empty()) fault = TrimBlanks(typed).empty() ? "it is blank" : "it is too long";
  return "\"" + std::string(typed) + "\" cannot be the name of a file on every system: " + fault +
         ".\r\nIt will be called \"" + std::string(used) + "\". Use this name?";
}

}  // namespace tenora
