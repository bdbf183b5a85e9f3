#include "platform/runtime/free_file_name.h"

#include <unicode/uchar.h>

#include <string>
#include <system_error>

#include "platform/runtime/error.h"
#include "platform/runtime/text.h"

namespace tenora {
namespace {

// As Windows compares names: character by character, in capitals.
bool SameButForCase(std::string_view left, std::string_view right) {
  if (!IsValidUtf8(left) || !IsValidUtf8(right)) return left == right;
  const auto capital = [](char32_t c) { return u_toupper(static_cast<UChar32>(c)); };
  while (!left.empty() && !right.empty()) {
    if (capital(TakeCodePoint(left)) != capital(TakeCodePoint(right))) return false;
  }
  return left.empty() && right.empty();
}

}  // namespace

bool NameTaken(const std::filesystem::path& path) {
  std::error_code error;
  const bool taken =
      std::filesystem::symlink_status(path, error).type() != std::filesystem::file_type::not_found;
  if (taken && error) throw FileError(error.value(), path);
  return taken;
}

std::filesystem::path WriteUnderFreeName(
    const std::filesystem::path& wanted, std::string_view content, Durability durability,
    const std::function<bool(const std::filesystem::path&)>& accept) {
  std::filesystem::path path = wanted;
  for (long n = 1;; ++n) {
    // The write fails if another program takes the name in between.
    if (!NameTaken(path) && (!accept || accept(path)) && WriteNewFile(path, content, durability))
      return path;
    path = wanted.parent_path() /
           (wanted.stem().string() + "(" + std::to_string(n) + ")" + wanted.extension().string());
  }
}

std::filesystem::path FileOfName(const std::filesystem::path& wanted) {
  namespace fs = std::filesystem;
  const std::string name = wanted.filename().string();
  fs::path found;
  std::error_code error;
  for (fs::directory_iterator entry(wanted.parent_path(), error), end; !error && entry != end;
       entry.increment(error)) {
    const std::string other = entry->path().filename().string();
    if (other == name) return entry->path();
    if (found.empty() && SameButForCase(other, name)) found = entry->path();
  }
  // In a folder that cannot be listed.
  return found.empty() && fs::exists(wanted, error) ? wanted : found;
}

}  // namespace tenora
