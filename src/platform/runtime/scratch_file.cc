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
  // The mode that the system gave the file by umask and default ACLs. Reading the umask itself
  // would change it for files of other threads.
  struct stat status {};
  mode_ = ::fstat(fd_, &status) == 0 ? status.st_mode & 0777 : 0600;
  // Ignored where the file system has no modes.
  static_cast<void>(::fchmod(fd_, 0600));
}

void ScratchFile::TakeMode() const { static_cast<void>(::fchmod(fd_, mode_)); }

ScratchFile::~ScratchFile() {
  // Writers have synced where it matters, so errors of close tell nothing new.
  ::close(fd_);
  if (!path_.empty()) ::unlink(path_.c_str());
}

void ScratchFile::Replace(const std::filesystem::path& target) {
  TakeMode();
  if (::rename(path_.c_str(), target.c_str()) != 0) throw FileError(errno, target);
  path_.clear();
}

// FAT and some servers support neither hard links nor the rename flag.
std::optional<bool> ScratchFile::TakeFreeName(const std::filesystem::path& target) {
  TakeMode();
  if (::renameat2(AT_FDCWD, path_.c_str(), AT_FDCWD, target.c_str(), RENAME_NOREPLACE) == 0) {
    path_.clear();
    return true;
  }
  if (errno == EEXIST) return false;
  if (::link(path_.c_str(), target.c_str()) == 0)
    return true;  // the temporary name is removed later
  if (errno == EEXIST) return false;
  return std::nullopt;
}

}  // namespace tenora
