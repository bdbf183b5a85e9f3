#include "platform/runtime/scratch_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <random>
#include <string>

#include "platform/runtime/error.h"
#include "platform/runtime/files.h"

namespace tenora {

ScratchFile::ScratchFile(const std::filesystem::path& folder, const std::filesystem::path& named) {
  std::random_device random;
  do {
    path_ = folder / (".tenora-" + std::to_string(random()));
    fd_ = ::open(path_.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
  } while (fd_ < 0 && errno == EEXIST);
  if (fd_ < 0) throw FileError(errno, named);
  // What the system made of the mode, the user's mask and the folder's rules applied. To ask for
  // the mask itself would change it for the other threads' files.
  struct stat status {};
  mode_ = ::fstat(fd_, &status) == 0 ? status.st_mode & 0777 : 0600;
  // Where modes are unknown the file has the one its file system gives to all.
  static_cast<void>(::fchmod(fd_, 0600));
}

void ScratchFile::TakeMode() const { static_cast<void>(::fchmod(fd_, mode_)); }

ScratchFile::~ScratchFile() {
  // Those who wrote have synced where it matters: closing tells nothing new.
  ::close(fd_);
  if (!path_.empty()) ::unlink(path_.c_str());
}

void ScratchFile::Replace(const std::filesystem::path& target) {
  TakeMode();
  if (::rename(path_.c_str(), target.c_str()) != 0) throw FileError(errno, target);
  path_.clear();
}

// Hard links are unknown to FAT and to some servers, and so may be the renaming flag.
std::optional<bool> ScratchFile::TakeFreeName(const std::filesystem::path& target) {
  TakeMode();
  if (::renameat2(AT_FDCWD, path_.c_str(), AT_FDCWD, target.c_str(), RENAME_NOREPLACE) == 0) {
    path_.clear();
    return true;
  }
  if (errno == EEXIST) return false;
  if (::link(path_.c_str(), target.c_str()) == 0) return true;  // our own name is taken away later
  if (errno == EEXIST) return false;
  return std::nullopt;
}

}  // namespace tenora
