#include "platform/runtime/free_file_name.h"

#include <string>
#include <system_error>

#include "platform/runtime/error.h"

namespace tenora {

std::filesystem::path WriteUnderFreeName(
    const std::filesystem::path& wanted, std::string_view content, Durability durability,
    const std::function<bool(const std::filesystem::path&)>& accept) {
  std::filesystem::path path = wanted;
  for (long n = 1;; ++n) {
    std::error_code error;
    // The write fails if another program takes the name in between.
    const bool taken = std::filesystem::symlink_status(path, error).type() !=
                       std::filesystem::file_type::not_found;
    if (taken && error) throw FileError(error.value(), path);
    if (!taken && (!accept || accept(path)) && WriteNewFile(path, content, durability)) return path;
    path = wanted.parent_path() /
           (wanted.stem().string() + "(" + std::to_string(n) + ")" + wanted.extension().string());
  }
}

}  // namespace tenora
