#include "platform/runtime/scratch_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <random>
#include <string>

#include "platform/runtime/error.h"
#include "platform/runtime/files.h"

namespace tenora {
namespace {

constexpr std::string_view kPrefix = ".tenora-";
constexpr std::size_t kMostDigits = 10;

std::filesystem::path NewName(const std::filesystem::path& folder) {
  std::random_device random;
  return folder / std::string(kPrefix).append(std::to_string(random()));
}

// Copies the whole of one file to the start of another; false, with errno set, when it cannot.
bool Copy(int from, int to) {
  std::array<char, 1 << 16> buffer{};
  for (off_t offset = 0;;) {
    const ssize_t got = ::pread(from, buffer.data(), buffer.size(), offset);
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) return got == 0;
    for (ssize_t done = 0; done < got;) {
      const ssize_t count =
          ::pwrite(to, buffer.data() + done, static_cast<std::size_t>(got - done), offset + done);
      if (count < 0 && errno != EINTR) return false;
      done += std::max<ssize_t>(count, 0);
    }
    offset += got;
  }
}

// The mode for a file that may be of another group than the one whose mode it is to have: the
// group then gets no more than everybody.
mode_t ForAnotherGroup(mode_t mode) { return (mode & 0707) | (mode & ((mode & 07) << 3)); }

}  // namespace

bool IsScratchFileName(std::string_view name) {
  if (!name.starts_with(kPrefix)) return false;
  name.remove_prefix(kPrefix.size());
  return !name.empty() && name.size() <= kMostDigits &&
         name.find_first_not_of("0123456789") == std::string_view::npos;
}

ScratchFile::ScratchFile(const std::filesystem::path& folder, const std::filesystem::path& named)
    : folder_(folder.empty() ? "." : folder) {
  if (!OpenUnnamed() && !OpenNamed()) throw FileError(errno, named);
  // The mode that the system gave the file by umask and default ACLs. Reading the umask itself
  // would change it for files of other threads.
  struct stat status {};
  mode_ = ::fstat(fd_, &status) == 0 ? status.st_mode & 0777 : 0600;
  // Ignored where the file system has no modes.
  static_cast<void>(::fchmod(fd_, 0600));
}

bool ScratchFile::OpenUnnamed() {
  fd_ = ::open(folder_.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0666);
  if (fd_ < 0) return false;
  path_ = "/proc/self/fd/" + std::to_string(fd_);
  // It can be named only through its number.
  if (::access(path_.c_str(), F_OK) == 0) return true;
  ::close(fd_);
  return false;
}

bool ScratchFile::OpenNamed() {
  do {
    path_ = NewName(folder_);
    fd_ = ::open(path_.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
  } while (fd_ < 0 && errno == EEXIST);
  has_temporary_name_ = fd_ >= 0;
  // Tells the clean-up of another process that the file is in use. Where it cannot be had, the
  // file's age does.
  if (has_temporary_name_) static_cast<void>(::flock(fd_, LOCK_EX | LOCK_NB));
  return has_temporary_name_;
}

void ScratchFile::TakeMode() const { static_cast<void>(::fchmod(fd_, mode_)); }

void ScratchFile::TakeModeOf(const std::filesystem::path& replaced) const {
  struct stat old {
  }, own{};
  const bool both = ::lstat(replaced.c_str(), &old) == 0 && ::fstat(fd_, &own) == 0;
  if (!both || !S_ISREG(old.st_mode)) return TakeMode();
  const mode_t mode = old.st_mode & 0777;
  const bool same_group =
      own.st_gid == old.st_gid || ::fchown(fd_, static_cast<uid_t>(-1), old.st_gid) == 0;
  static_cast<void>(::fchmod(fd_, same_group ? mode : ForAnotherGroup(mode)));
}

ScratchFile::~ScratchFile() {
  // By name first: the lock keeps others from taking the file for one left behind.
  if (has_temporary_name_) ::unlink(path_.c_str());
  // Writers have synced where it matters, so errors of close tell nothing new.
  ::close(fd_);
}

bool ScratchFile::Link(const std::filesystem::path& target) const {
  return ::linkat(AT_FDCWD, path_.c_str(), AT_FDCWD, target.c_str(), AT_SYMLINK_FOLLOW) == 0;
}

void ScratchFile::TakeTemporaryName(const std::filesystem::path& named) {
  static_cast<void>(::flock(fd_, LOCK_EX | LOCK_NB));
  std::filesystem::path name;
  bool linked = false;
  do {
    name = NewName(folder_);
    linked = Link(name);
  } while (!linked && errno == EEXIST);
  if (!linked) return CopyToNamedFile(named);
  path_ = name;
  has_temporary_name_ = true;
}

// For systems on which a file without a name cannot be given one. The descriptor's number remains.
void ScratchFile::CopyToNamedFile(const std::filesystem::path& named) {
  const int unnamed = fd_;
  bool copied = OpenNamed();
  if (copied) static_cast<void>(::fchmod(fd_, 0600));
  copied =
      copied && Copy(unnamed, fd_) && ::fsync(fd_) == 0 && ::dup3(fd_, unnamed, O_CLOEXEC) >= 0;
  const int reason = errno;
  if (fd_ >= 0) ::close(fd_);
  fd_ = unnamed;
  if (!copied) throw FileError(reason, named);
}

void ScratchFile::Replace(const std::filesystem::path& target) {
  TakeModeOf(target);
  if (!has_temporary_name_) {
    if (Link(target)) return;
    TakeTemporaryName(target);
    TakeModeOf(target);
  }
  if (::rename(path_.c_str(), target.c_str()) != 0) throw FileError(errno, target);
  has_temporary_name_ = false;
}

// FAT and some servers support neither hard links nor the rename flag.
std::optional<bool> ScratchFile::TakeFreeName(const std::filesystem::path& target) {
  TakeMode();
  if (!has_temporary_name_) {
    if (Link(target)) return true;
    if (errno == EEXIST) return false;
    CopyToNamedFile(target);
    TakeMode();
  }
  if (::renameat2(AT_FDCWD, path_.c_str(), AT_FDCWD, target.c_str(), RENAME_NOREPLACE) == 0) {
    has_temporary_name_ = false;
    return true;
  }
  if (errno == EEXIST) return false;
  if (::link(path_.c_str(), target.c_str()) == 0)
    return true;  // the temporary name is removed later
  if (errno == EEXIST) return false;
  return std::nullopt;
}

}  // namespace tenora
