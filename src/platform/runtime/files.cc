#include "platform/runtime/files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <optional>

#include "platform/runtime/error.h"
#include "platform/runtime/scratch_file.h"

namespace tenora {
namespace {

class FileDescriptor {
 public:
  explicit FileDescriptor(int fd) : fd_(fd) {}
  FileDescriptor(const FileDescriptor&) = delete;
  FileDescriptor& operator=(const FileDescriptor&) = delete;
  ~FileDescriptor() {
    if (fd_ >= 0) ::close(fd_);
  }
  int get() const { return fd_; }

 private:
  int fd_;
};

void WriteAll(int fd, std::string_view content, const std::filesystem::path& path) {
  while (!content.empty()) {
    const ssize_t written = ::write(fd, content.data(), content.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) throw FileError(errno, path);
    content.remove_prefix(static_cast<std::size_t>(written));
  }
}

void Sync(int fd, Durability durability, const std::filesystem::path& path) {
  if (durability == Durability::kSynced && ::fsync(fd) != 0) throw FileError(errno, path);
}

// The name is in the folder, which is synced by itself. A folder that cannot be, as some systems'
// cannot, keeps the name as it keeps any other.
void SyncName(const std::filesystem::path& path, Durability durability) {
  if (durability != Durability::kSynced) return;
  const FileDescriptor folder(
      ::open(path.parent_path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (folder.get() >= 0) static_cast<void>(::fsync(folder.get()));
}

// Creates the file under its final name and removes it again when it cannot be written completely;
// only a crash can leave an incomplete file. False when the name is taken.
bool CreateInPlace(const std::filesystem::path& path, std::string_view content,
                   Durability durability) {
  const FileDescriptor fd(::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
  if (fd.get() < 0 && errno == EEXIST) return false;
  if (fd.get() < 0) throw FileError(errno, path);
  try {
    WriteAll(fd.get(), content, path);
    Sync(fd.get(), durability, path);
  } catch (...) {
    ::unlink(path.c_str());
    throw;
  }
  return true;
}

// A scratch file of this content in the target's folder.
class FilledScratchFile : public ScratchFile {
 public:
  FilledScratchFile(const std::filesystem::path& target, std::string_view content,
                    Durability durability)
      : ScratchFile(target.parent_path(), target) {
    WriteAll(descriptor(), content, target);
    Sync(descriptor(), durability, target);
  }
};

}  // namespace

RuntimeError FileError(int errno_value, const std::filesystem::path& path) {
  switch (errno_value) {
    case ENOENT:
      return StandardError(error_number::kFileNotFound, path.string());
    case ENOTDIR:
      return StandardError(error_number::kPathNotFound, path.string());
    case EACCES:
    case EPERM:
    case EROFS:
      return StandardError(error_number::kPermissionDenied, path.string());
    case ENOSPC:
    case EDQUOT:
    case EFBIG:
      return StandardError(error_number::kDiskFull, path.string());
    case EIO:
      return StandardError(error_number::kDeviceIoError, path.string());
    case ELOOP:
      return StandardError(error_number::kPathFileAccess,
                           path.string() + " is a link, which is not followed here");
    default:
      return StandardError(error_number::kPathFileAccess,
                           path.string() + " (" + std::strerror(errno_value) + ")");
  }
}

std::filesystem::path NativePath(std::string_view path) {
  std::string native(path);
  for (char& c : native) {
    if (c == '\\') c = '/';
  }
  return std::filesystem::path(native).lexically_normal();
}

std::string ReadWholeFile(const std::filesystem::path& path, std::size_t most) {
  const auto refuse_larger_than_most = [&](std::size_t size) {
    if (size <= most) return;
    throw StandardError(error_number::kPathFileAccess,
                        path.string() + " is larger than " + std::to_string(most >> 20) + " MB");
  };
  // Reading a pipe without a writer returns nothing instead of blocking.
  const FileDescriptor fd(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  if (fd.get() < 0 || ::fcntl(fd.get(), F_SETFL, 0) != 0) throw FileError(errno, path);
  struct stat status {};
  if (::fstat(fd.get(), &status) != 0) throw FileError(errno, path);
  if (S_ISDIR(status.st_mode)) throw FileError(EISDIR, path);
  const auto size = static_cast<std::size_t>(std::max<off_t>(status.st_size, 0));
  refuse_larger_than_most(size);
  std::string content(size + 1, '\0');
  std::size_t filled = 0;
  // Files that grow or report no size are bounded as well.
  for (;;) {
    refuse_larger_than_most(filled);
    const ssize_t count = ::read(fd.get(), content.data() + filled, content.size() - filled);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) throw FileError(errno, path);
    if (count == 0) break;
    filled += static_cast<std::size_t>(count);
    if (filled == content.size()) content.resize(content.size() * 2);
  }
  content.resize(filled);
  return content;
}

void WriteWholeFile(const std::filesystem::path& path, std::string_view content) {
  FilledScratchFile(path, content, Durability::kSynced).Replace(path);
}

void WritePrivateFile(const std::filesystem::path& path, std::string_view content) {
  FilledScratchFile file(path, content, Durability::kSynced);
  file.KeepPrivate();
  file.Replace(path);
}

bool WriteNewFile(const std::filesystem::path& path, std::string_view content,
                  Durability durability) {
  FilledScratchFile scratch(path, content, durability);
  const std::optional<bool> taken = scratch.TakeFreeName(path);
  if (!(taken ? *taken : CreateInPlace(path, content, durability))) return false;
  SyncName(path, durability);
  return true;
}

int OpenOwnFile(const std::filesystem::path& path, int flags, mode_t mode) {
  const int fd = ::open(path.c_str(), flags | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, mode);
  if (fd < 0) return -1;
  struct stat status {};
  if (::fstat(fd, &status) == 0 && S_ISREG(status.st_mode) && status.st_nlink <= 1) return fd;
  const int reason = S_ISREG(status.st_mode) ? EMLINK : EINVAL;
  ::close(fd);
  errno = reason;
  return -1;
}

bool IsForeignLink(const std::filesystem::path& path) {
  struct stat link {
  }, folder{};
  if (::lstat(path.c_str(), &link) != 0 || !S_ISLNK(link.st_mode)) return false;
  if (link.st_uid == 0 || link.st_uid == ::geteuid()) return false;
  const std::filesystem::path in = path.has_parent_path() ? path.parent_path() : ".";
  return ::stat(in.c_str(), &folder) != 0 || folder.st_uid != link.st_uid;
}

void MakeFolder(const std::filesystem::path& folder) {
  std::error_code failure;
  std::filesystem::create_directories(folder, failure);
  if (failure) throw FileError(failure.value(), folder);
  if (!IsForeignLink(folder)) return;
  throw StandardError(
      error_number::kPathFileAccess,
      folder.string() + " is a link that another user has made; nothing is written through it");
}

void RequireFolder(const std::filesystem::path& folder) {
  std::error_code unknown;
  if (std::filesystem::is_directory(folder, unknown)) return;
  throw StandardError(error_number::kPathNotFound, folder.string());
}

void MakeSubfolder(const std::filesystem::path& folder) {
  RequireFolder(folder.parent_path());
  MakeFolder(folder);
}

bool RenameWithoutReplacing(const std::filesystem::path& from, const std::filesystem::path& to) {
  if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return true;
  if (errno == EEXIST) return false;
  // Some file systems (network shares above all) cannot do both in one step.
  if (errno != EINVAL && errno != ENOSYS) throw FileError(errno, from);
  std::error_code error;
  if (std::filesystem::symlink_status(to, error).type() != std::filesystem::file_type::not_found) {
    return false;
  }
  if (::rename(from.c_str(), to.c_str()) != 0) throw FileError(errno, from);
  return true;
}

void SyncFiles(const std::filesystem::path& folder) {
  const FileDescriptor fd(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (fd.get() < 0 || ::syncfs(fd.get()) != 0) throw FileError(errno, folder);
}

// File systems in user space count as such: most are of remote storage.
bool IsOnNetwork(const std::filesystem::path& folder) {
  constexpr std::array<unsigned long, 8> kRemote{
      0x6969 /* NFS */,      0xFF534D42 /* CIFS */, 0xFE534D42 /* SMB 2 */, 0x517B /* SMB */,
      0x65735546 /* FUSE */, 0x00C36400 /* Ceph */, 0x01021997 /* 9P */,    0x5346414F /* AFS */};
  struct statfs system {};
  if (::statfs(folder.c_str(), &system) != 0) return true;
  return std::ranges::find(kRemote, static_cast<unsigned long>(system.f_type)) != kRemote.end();
}

}  // namespace tenora
