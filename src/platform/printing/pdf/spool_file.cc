#include "platform/printing/pdf/spool_file.h"

#include <unistd.h>

#include <cerrno>
#include <system_error>

#include "platform/runtime/error.h"
#include "platform/runtime/files.h"
#include "platform/runtime/text.h"

namespace tenora::printing {
namespace {

constexpr std::size_t kLongestStem = 120;
constexpr int kMostNumbers = 100000;

const std::filesystem::path& Made(const std::filesystem::path& folder) {
  std::error_code failure;
  std::filesystem::create_directories(folder, failure);
  if (failure) throw FileError(failure.value(), folder);
  return folder;
}

}  // namespace

SpoolFile::SpoolFile(const std::filesystem::path& folder) : file_(Made(folder), folder) {}

void SpoolFile::Replace(const std::filesystem::path& target) {
  Sync(target);
  file_.Replace(target);
}

std::filesystem::path SpoolFile::TakeFreeName(const std::string& stem) {
  const std::filesystem::path folder = file_.path().parent_path();
  std::filesystem::path target = folder / (stem + ".pdf");
  Sync(target);
  for (int number = 1; number <= kMostNumbers; ++number) {
    const std::optional<bool> taken = file_.TakeFreeName(target);
    if (!taken) break;
    if (*taken) return target;
    target = folder / (stem + "(" + std::to_string(number) + ").pdf");
  }
  throw FileError(errno, target);
}

// A server may tell only now that its disk is full.
void SpoolFile::Sync(const std::filesystem::path& target) const {
  if (::fsync(file_.descriptor()) != 0) throw FileError(errno, target);
}

std::string SafeStem(std::string_view title) {
  std::string stem;
  while (!title.empty()) {
    const char32_t c = TakeCodePoint(title);
    const bool control = c < 0x20 || (c >= 0x7F && c < 0xA0);
    const bool reserved = c < 0x80 && std::string_view("/\\:*?\"<>|").find(static_cast<char>(c)) !=
                                          std::string_view::npos;
    AppendUtf8(stem, control || reserved ? U'_' : c);
  }
  std::string_view rest = TrimBlanks(stem);
  rest.remove_prefix(std::min(rest.find_first_not_of(". "), rest.size()));
  rest = BoundedUtf8(rest, kLongestStem);
  while (!rest.empty() && (rest.back() == ' ' || rest.back() == '.')) rest.remove_suffix(1);
  return rest.empty() ? "Document" : std::string(rest);
}

std::string_view BoundedUtf8(std::string_view text, std::size_t bytes) {
  if (text.size() <= bytes) return text;
  while (bytes > 0 && (static_cast<unsigned char>(text[bytes]) & 0xC0) == 0x80) --bytes;
  return text.substr(0, bytes);
}

}  // namespace tenora::printing
