#include "letters/template_library.h"

#include <algorithm>
#include <system_error>

#include "platform/runtime/error.h"
#include "platform/runtime/file_lookup.h"
#include "platform/runtime/files.h"
#include "platform/runtime/text.h"

namespace tenora {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kExtension = ".rtf";

// File names of a folder in no order; empty when it cannot be read.
std::vector<std::string> FileNames(const fs::path& folder) {
  std::vector<std::string> names;
  std::error_code error;
  for (fs::directory_iterator entry(folder, error), end; !error && entry != end;
       entry.increment(error)) {
    std::error_code unknown_type;
    if (!entry->is_directory(unknown_type)) names.push_back(entry->path().filename().string());
  }
  return names;
}

bool LeadsOut(const fs::path& relative) {
  return relative.is_absolute() || relative.empty() || *relative.begin() == "..";
}

}  // namespace

std::vector<std::string> TemplateLibrary::Names(std::string_view folder) const {
  std::vector<std::string> names;
  for (const std::string& file : FileNames(FindIgnoringCase(data_folder_ / folder))) {
    if (file.size() > kExtension.size() && EndsWithNoCase(file, kExtension)) {
      names.push_back(file.substr(0, file.size() - kExtension.size()));
    }
  }
  std::ranges::sort(names, {},
                    [](const std::string& name) { return std::make_pair(ToUpper(name), name); });
  return names;
}

fs::path TemplateLibrary::PathOf(std::string_view folder, std::string_view name) const {
  const fs::path inside = NativePath(std::string(name).append(kExtension));
  if (LeadsOut(inside)) {
    throw StandardError(
        error_number::kPathFileAccess,
        std::string(name).append(" is not in the folder ") + (data_folder_ / folder).string());
  }
  return FindIgnoringCase(data_folder_ / folder / inside);
}

}  // namespace tenora
