#include "letters/file_names.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <system_error>

#include "platform/runtime/error.h"
#include "platform/runtime/files.h"
#include "platform/runtime/text.h"

namespace tenora {
namespace {

constexpr std::array<std::string_view, 6> kDataFolderNames{
    "Templates", "Owner Templates", "Cheque", "Check", "Printed", "property.mdb"};

bool IsControl(char32_t c) { return c < 0x20 || (c >= 0x7F && c < 0xA0); }

// FNV-1a: the same on every machine and in every version, since folders are found again by it.
std::uint32_t Hash(std::string_view text) {
  std::uint32_t hash = 0x811C9DC5U;
  for (const char c : text) hash = (hash ^ static_cast<unsigned char>(c)) * 0x01000193U;
  return hash;
}

// Cuts between characters, but possibly before a combining mark.
std::string_view CutTo(std::string_view text, std::size_t bytes) {
  if (text.size() <= bytes) return text;
  while (bytes > 0 && (static_cast<unsigned char>(text[bytes]) & 0xC0U) == 0x80) --bytes;
  return text.substr(0, bytes);
}

std::string WithHash(std::string_view bent, std::string_view name, std::size_t longest) {
  std::array<char, 16> suffix{};
  const int length = std::snprintf(suffix.data(), suffix.size(), "~%08x", Hash(name));
  std::string result(CutTo(bent, longest - static_cast<std::size_t>(length)));
  return result.append(suffix.data());
}

}  // namespace

std::string SafeFileName(std::string_view name, std::size_t longest) {
  bool bent = false;
  std::string safe;
  for (std::string_view rest = name; !rest.empty();) {
    const char32_t c = TakeCodePoint(rest);
    if (c == U'/' || c == U'\\') {
      safe += '-';
    } else if (IsControl(c)) {
      safe += '_';
      bent = true;
    } else {
      AppendUtf8(safe, c);
    }
  }
  safe.erase(0, std::min(safe.find_first_not_of(' '), safe.size()));
  const std::size_t dots = std::min(safe.find_first_not_of('.'), safe.size());
  std::fill_n(safe.begin(), dots, '_');
  safe.erase(safe.find_last_not_of(". ") + 1);
  bent = bent || dots > 0 || safe.empty() || safe.size() > longest;
  return bent ? WithHash(safe, name, longest) : safe;
}

std::string RecipientFolderName(std::string_view recipient_name) {
  const std::string safe = SafeFileName(recipient_name);
  const bool taken = std::ranges::any_of(
      kDataFolderNames, [&](std::string_view own) { return EqualsNoCase(own, safe); });
  return taken ? WithHash(safe, recipient_name, kLongestFileName) : safe;
}

std::filesystem::path MakeRecipientFolder(const std::filesystem::path& data_folder,
                                          std::string_view recipient_name) {
  const std::filesystem::path folder = data_folder / RecipientFolderName(recipient_name);
  std::error_code error;
  std::filesystem::create_directories(folder, error);
  if (error) throw FileError(error.value(), folder);
  if (std::filesystem::is_symlink(std::filesystem::symlink_status(folder, error))) {
    throw StandardError(error_number::kPathFileAccess,
                        folder.string() + " is a link; letters are kept in the data folder itself");
  }
  return folder;
}

}  // namespace tenora
