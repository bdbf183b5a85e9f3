#include "platform/access/storage/file_storage.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <time.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace tenora::access {
namespace {

// Reasons of our own besides the system's.
std::string TextOf(int reason) {
  if (reason == ELOOP) return "it is a symbolic link, which is not followed here";
  if (reason == EMLINK) return "the file has a second name, a hard link";
  return std::generic_category().message(reason);
}

// The current time, at a resolution that network file systems keep too. The kernel stamps writes
// with the time of a clock tick; this time is between two ticks.
timespec TimeBetweenTicks() {
  constexpr long kStep = 100, kApart = 1000;  // nanoseconds
  timespec now{}, tick{};
  do {
    ::clock_gettime(CLOCK_REALTIME_COARSE, &tick);
    ::clock_gettime(CLOCK_REALTIME, &now);
  } while (now.tv_sec == tick.tv_sec && now.tv_nsec - tick.tv_nsec < kApart);
  now.tv_nsec -= now.tv_nsec % kStep;
  return now;
}

struct flock SystemLock(LockKind kind, ByteRange bytes) {
  struct flock lock {};
  lock.l_type = static_cast<short>(kind == LockKind::kExclusive ? F_WRLCK
                                   : kind == LockKind::kShared  ? F_RDLCK
                                                                : F_UNLCK);
  lock.l_whence = SEEK_SET;
  lock.l_start = static_cast<off_t>(bytes.offset);
  lock.l_len = static_cast<off_t>(bytes.length);
  return lock;
}

class OpenDiskFile final : public StorageFile {
 public:
  OpenDiskFile(int fd, std::filesystem::path path) : fd_(fd), path_(std::move(path)) {}
  ~OpenDiskFile() override { ::close(fd_); }
  OpenDiskFile(const OpenDiskFile&) = delete;
  OpenDiskFile& operator=(const OpenDiskFile&) = delete;

  int fd() const { return fd_; }

  struct stat Status(const char* what) const {
    struct stat status {};
    if (::fstat(fd_, &status) != 0) throw StorageError(errno, path_, what);
    return status;
  }

  std::uint64_t Size() override {
    return static_cast<std::uint64_t>(Status("measure the file").st_size);
  }

  std::size_t Read(std::uint64_t offset, std::span<std::byte> into) override {
    std::size_t done = 0;
    while (done < into.size()) {
      const ssize_t count =
          ::pread(fd_, into.data() + done, into.size() - done, static_cast<off_t>(offset + done));
      if (count < 0 && errno == EINTR) continue;
      if (count < 0) throw StorageError(errno, path_, "read");
      if (count == 0) break;
      done += static_cast<std::size_t>(count);
    }
    return done;
  }

  void Write(std::uint64_t offset, Bytes bytes) override {
    while (!bytes.empty()) {
      const ssize_t count = ::pwrite(fd_, bytes.data(), bytes.size(), static_cast<off_t>(offset));
      if (count < 0 && errno == EINTR) continue;
      if (count < 0) throw StorageError(errno, path_, "write");
      offset += static_cast<std::uint64_t>(count);
      bytes = bytes.subspan(static_cast<std::size_t>(count));
    }
  }

  void Truncate(std::uint64_t size) override {
    while (::ftruncate(fd_, static_cast<off_t>(size)) != 0) {
      if (errno != EINTR) throw StorageError(errno, path_, "shorten");
    }
  }

  void Sync() override {
    // fdatasync writes the length too, but not the modification time.
    while (::fdatasync(fd_) != 0) {
      if (errno != EINTR) throw StorageError(errno, path_, "sync");
    }
  }

  bool TryLock(LockKind kind, ByteRange bytes) override {
    // An open file description lock, not one of the process: it excludes other users in the same
    // process and is not lost when a library closes another descriptor of the file.
    struct flock lock = SystemLock(kind, bytes);
    while (::fcntl(fd_, F_OFD_SETLK, &lock) != 0) {
      if (errno == EAGAIN || errno == EACCES) return false;
      if (errno != EINTR) throw StorageError(errno, path_, "lock");
    }
    return true;
  }

  std::optional<ByteRange> OtherLock(LockKind kind, ByteRange bytes) override {
    struct flock lock = SystemLock(kind, bytes);
    while (::fcntl(fd_, F_OFD_GETLK, &lock) != 0) {
      if (errno != EINTR) throw StorageError(errno, path_, "look for locks in");
    }
    if (lock.l_type == F_UNLCK) return std::nullopt;
    return ByteRange{static_cast<std::uint64_t>(lock.l_start),
                     static_cast<std::uint64_t>(lock.l_len)};
  }

  FileState State() override {
    // What the client of a network file system has cached may be seconds old.
    struct statx status {};
    constexpr int kFlags = AT_EMPTY_PATH | AT_STATX_FORCE_SYNC;
    if (::statx(fd_, "", kFlags, STATX_BASIC_STATS, &status) != 0) return {};
    return {.device = ::makedev(status.stx_dev_major, status.stx_dev_minor),
            .inode = status.stx_ino,
            .size = status.stx_size,
            .seconds = status.stx_mtime.tv_sec,
            .nanoseconds = status.stx_mtime.tv_nsec};
  }

  FileState MarkChanged() override {
    const timespec mark = TimeBetweenTicks();
    const timespec times[] = {{.tv_sec = 0, .tv_nsec = UTIME_OMIT}, mark};
    // Fails for anyone but the owner of the file.
    if (::futimens(fd_, times) != 0) return {};
    const FileState state = State();
    const bool exact = state.seconds == mark.tv_sec && state.nanoseconds == mark.tv_nsec;
    return exact ? state : FileState();
  }

  bool IsAt(const std::filesystem::path& path) override {
    struct stat named {};
    if (::lstat(path.c_str(), &named) != 0) {
      if (errno == ENOENT) return false;
      throw StorageError(errno, path, "look up");
    }
    const struct stat own = Status("look up");
    return own.st_dev == named.st_dev && own.st_ino == named.st_ino;
  }

 private:
  int fd_;
  std::filesystem::path path_;
};

// A pipe or device could block, or swallow what is written.
std::unique_ptr<OpenDiskFile> RequireFile(std::unique_ptr<OpenDiskFile> file,
                                          const std::filesystem::path& path) {
  const mode_t mode = file->Status("open").st_mode;
  if (!S_ISREG(mode)) throw StorageError(S_ISDIR(mode) ? EISDIR : EINVAL, path, "open");
  return file;
}

void RequireOneName(const OpenDiskFile& file, const std::filesystem::path& path) {
  if (file.Status("open").st_nlink > 1) throw StorageError(EMLINK, path, "open");
}

}  // namespace

StorageError::StorageError(int reason, const std::filesystem::path& path, const char* what)
    : std::runtime_error(std::string("Cannot ") + what + " '" + path.string() +
                         "': " + TextOf(reason)),
      reason_(reason),
      path_(path) {}

std::unique_ptr<StorageFile> DiskStorage::Open(const std::filesystem::path& path, Mode mode) {
  // Whoever writes has resolved the links, since the journal lies beside the file itself.
  const int access = mode == Mode::kRead ? O_RDONLY : O_RDWR | O_NOFOLLOW;
  const int fd = ::open(path.c_str(), access | O_CLOEXEC | O_NONBLOCK);
  if (fd < 0 && (errno == ENOENT || errno == ENOTDIR)) return nullptr;
  if (fd < 0) throw StorageError(errno, path, "open");
  auto file = RequireFile(std::make_unique<OpenDiskFile>(fd, path), path);
  if (mode == Mode::kReadWriteOneName) RequireOneName(*file, path);
  return file;
}

std::unique_ptr<StorageFile> DiskStorage::Create(const std::filesystem::path& path,
                                                 const std::filesystem::path& like) {
  // Anyone with write access to the folder could redirect the writing: by a symbolic link, which
  // is not followed, or by a hard link.
  constexpr int kFlags = O_RDWR | O_CLOEXEC | O_NONBLOCK | O_NOFOLLOW;
  int made = -1;
  while (made < 0) {
    const int old = ::open(path.c_str(), kFlags);
    if (old >= 0) {
      auto file = RequireFile(std::make_unique<OpenDiskFile>(old, path), path);
      RequireOneName(*file, path);
      return file;
    }
    if (errno != ENOENT) throw StorageError(errno, path, "open");
    // Only a file that is made here gets a mode.
    made = ::open(path.c_str(), kFlags | O_CREAT | O_EXCL, 0600);
    if (made < 0 && errno != EEXIST) throw StorageError(errno, path, "create");
  }
  auto file = std::make_unique<OpenDiskFile>(made, path);
  struct stat model {};
  if (::stat(like.c_str(), &model) != 0) throw StorageError(errno, like, "look up");
  // Only the superuser can make it the owner's. If the group cannot be set either, members of the
  // model's group who are not in ours may have no access; the mode is the model's in any case.
  if (::fchown(made, model.st_uid, model.st_gid) != 0 &&
      ::fchown(made, static_cast<uid_t>(-1), model.st_gid) != 0) {
    errno = 0;
  }
  if (::fchmod(made, model.st_mode & 0666) != 0) throw StorageError(errno, path, "create");
  return file;
}

void DiskStorage::Remove(const std::filesystem::path& path) {
  if (::unlink(path.c_str()) != 0 && errno != ENOENT) throw StorageError(errno, path, "remove");
}

bool DiskStorage::Rename(const std::filesystem::path& from, const std::filesystem::path& to) {
  if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return true;
  if (errno == EEXIST) return false;
  // Some network file systems cannot do both in one step.
  struct stat taken {};
  if (errno != EINVAL && errno != ENOSYS) throw StorageError(errno, from, "rename");
  if (::lstat(to.c_str(), &taken) == 0) return false;
  if (::rename(from.c_str(), to.c_str()) != 0) throw StorageError(errno, from, "rename");
  return true;
}

void DiskStorage::SyncFolder(const std::filesystem::path& folder) {
  const int fd = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (fd < 0) throw StorageError(errno, folder, "open");
  const OpenDiskFile closing(fd, folder);
  while (::fsync(fd) != 0) {
    if (errno == EINTR) continue;
    // Some network file systems do not support this; their servers sync entries themselves.
    if (errno == EINVAL || errno == ENOTSUP) return;
    throw StorageError(errno, folder, "sync");
  }
}

}  // namespace tenora::access
