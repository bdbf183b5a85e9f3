// The template library on disk: RTF files in folders under the data folder.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace tenora {

// The four letter kinds; the first two are also folders of the data folder.
inline constexpr std::string_view kTemplates = "Templates";
inline constexpr std::string_view kOwnerTemplates = "Owner Templates";
inline constexpr std::string_view kTenantLetter = "Tenant Letter";
inline constexpr std::string_view kOwnerLetter = "Owner Letter";

class TemplateLibrary {
 public:
  explicit TemplateLibrary(std::filesystem::path data_folder)
      : data_folder_(std::move(data_folder)) {}

  const std::filesystem::path& data_folder() const { return data_folder_; }

  // Names of the ".rtf" files of a folder, without the extension, in alphabetical order with letter
  // case ignored. Empty when there are none or no such folder.
  std::vector<std::string> Names(std::string_view folder) const;

  // The file of a template; a name may lead into sub-folders of its folder, written with either
  // separator. Where no file is called exactly so, one that differs in letter case only is taken,
  // as FindIgnoringCase does. Raises 75 (Path/File access error) for a name that leads out of the
  // folder; whether the file exists is not looked at.
  std::filesystem::path PathOf(std::string_view folder, std::string_view name) const;

 private:
  std::filesystem::path data_folder_;
};

}  // namespace tenora
