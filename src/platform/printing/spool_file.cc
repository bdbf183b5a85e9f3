#include "platform/printing/spool_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <system_error>

#include "platform/runtime/error.h"
#include "platform/runtime/files.h"
#include "platform/runtime/text.h"

namespace tenora::printing {
namespace {

constexpr std::size_t kLongestStem = 120;
constexpr int kMostNumbers = 100000;

// For file systems without links, as on memory sticks; leaves errno as the failure's reason.
bool RenameToFree(const std::filesystem::path& from, const std::filesystem::path& to) {
  return ::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0;
}

}  // namespace

SpoolFile::SpoolFile(const std::filesystem::path& folder) {
  std::error_code failure;
  std::filesystem::create_directories(folder, failure);
  if (failure) throw FileError(failure.value(), folder);
  std::string name = (folder / ".tenora-XXXXXX").string();
  fd_ = ::mkostemp(name.data(), O_CLOEXEC);
  if (fd_ < 0) throw FileError(errno, folder);
  path_ = name;
}

SpoolFile::~SpoolFile() {
  if (fd_ >= 0) ::close(fd_);
  if (!path_.empty()) ::unlink(path_.c_str());
}

void SpoolFile::Replace(const std::filesystem::path& target) {
  const mode_t mask = ::umask(0);
  ::umask(mask);
  // File systems without permissions refuse the first call; the file is as readable as all of
  // theirs.
  static_cast<void>(::fchmod(fd_, 0666 & ~mask));
  if (::fsync(fd_) != 0 || ::rename(path_.c_str(), target.c_str()) != 0) {
    throw FileError(errno, target);
  }
  path_.clear();
}

std::filesystem::path SpoolFile::TakeFreeName(const std::string& stem) {
  const std::filesystem::path folder = path_.parent_path();
  std::filesystem::path target = folder / (stem + ".pdf");
  const mode_t mask = ::umask(0);
  ::umask(mask);
  static_cast<void>(::fchmod(fd_, 0666 & ~mask));
  for (int number = 1; number <= kMostNumbers; ++number) {
    // A link never replaces a file, also not one that another program makes at this moment.
    if (::link(path_.c_str(), target.c_str()) == 0) return target;
    if (errno != EEXIST && RenameToFree(path_, target)) {
      path_.clear();
      return target;
    }
    if (errno != EEXIST) break;
    target = folder / (stem + "(" + std::to_string(number) + ").pdf");
  }
  throw FileError(errno, target);
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
