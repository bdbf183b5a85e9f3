#include "platform/registry/registry.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>

#include "platform/registry/hive_file.h"
#include "platform/runtime/error.h"
#include "platform/runtime/files.h"
#include "platform/runtime/user_folders.h"

namespace tenora::registry {
namespace {

namespace fs = std::filesystem;

constexpr const char* kMachineFolder = "/etc/tenora";
constexpr const char* kMachineFile = "machine.settings";
constexpr const char* kUserFile = "user.settings";
// Far beyond any settings file; a larger one is something else that took its name.
constexpr off_t kLargestFile = 16 * 1024 * 1024;
constexpr std::chrono::seconds kLockTimeout(30);
constexpr std::chrono::milliseconds kLockPollInterval(2);

int StatusOf(const RuntimeError& error) {
  switch (error.number()) {
    case error_number::kFileNotFound:
      return kFileNotFound;
    case error_number::kDiskFull:
      return kDiskFull;
    default:
      return kAccessDenied;
  }
}

// Which file a text was read from, and in which state.
struct FileState {
  dev_t device;
  ino_t inode;
  off_t size;
  std::int64_t modified, changed;  // nanoseconds

  bool operator==(const FileState&) const = default;
};

FileState StateOf(const struct stat& status) {
  const auto nanoseconds = [](const timespec& time) {
    return std::int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
  };
  return {status.st_dev, status.st_ino, status.st_size, nanoseconds(status.st_mtim),
          nanoseconds(status.st_ctim)};
}

// Within this time of a change, another one may leave the file's times as they are. Where there are
// only whole seconds, it is the two seconds of FAT, else more than the kernel's tick.
std::chrono::nanoseconds TimeResolution(const FileState& state) {
  const bool whole_seconds = state.modified % 1'000'000'000 == 0;
  return whole_seconds ? std::chrono::seconds(2) : std::chrono::milliseconds(20);
}

class OpenFile {
 public:
  // Never waits for a writer of a named pipe. Opening also makes a network file system look at its
  // server, which asking for the file's times alone does not.
  explicit OpenFile(const fs::path& path)
      : fd_(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)) {}
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;
  ~OpenFile() {
    if (fd_ >= 0) ::close(fd_);
  }
  int descriptor() const { return fd_; }

  // Nothing when it cannot be read, or has become larger than `most` bytes.
  std::optional<std::string> Read(std::size_t most) const {
    std::string text;
    for (;;) {
      const std::size_t size = text.size();
      text.resize(size + kReadSize);
      const ssize_t got = ::read(fd_, text.data() + size, kReadSize);
      if (got < 0 && errno == EINTR) {
        text.resize(size);
        continue;
      }
      if (got < 0) return std::nullopt;
      text.resize(size + static_cast<std::size_t>(got));
      if (got == 0) return text;
      if (text.size() > most) return std::nullopt;
    }
  }

 private:
  static constexpr std::size_t kReadSize = 64 * 1024;
  int fd_;
};

// A hive's file and what was last read from it, which is used while the file is unchanged.
class HiveReader {
 public:
  explicit HiveReader(fs::path path) : path_(std::move(path)) {}
  const fs::path& path() const { return path_; }

  // The contents as they are on disk; a missing file is an empty hive. `hive` is null unless the
  // result is kSuccess.
  int Read(std::shared_ptr<const HiveFile>& hive) {
    auto file = std::make_unique<OpenFile>(path_);
    if (file->descriptor() < 0) {
      if (errno == ENOENT || errno == ENOTDIR) {
        hive = std::make_shared<const HiveFile>();
        return kSuccess;
      }
      return errno == ENXIO ? kDamaged : kAccessDenied;
    }
    struct stat status {};
    if (::fstat(file->descriptor(), &status) != 0) return kAccessDenied;
    if (!S_ISREG(status.st_mode) || status.st_size > kLargestFile) return kDamaged;
    const FileState state = StateOf(status);
    const std::lock_guard lock(mutex_);
    if (!IsCurrent(state)) {
      const int result = Load(std::move(file), state);
      if (result != kSuccess) return result;
    }
    hive = hive_;
    return kSuccess;
  }

 private:
  static std::chrono::nanoseconds AgeOf(const FileState& state) {
    return std::chrono::system_clock::now().time_since_epoch() -
           std::chrono::nanoseconds(state.modified);
  }

  // Whether what is kept is what the file holds. A file written in place twice at once may look
  // unchanged, so what was read right after a change is not used for longer than that takes.
  bool IsCurrent(const FileState& state) const {
    if (!hive_ || state != state_) return false;
    const std::chrono::nanoseconds age = AgeOf(state);
    return settled_ || (age >= age.zero() && age < TimeResolution(state));
  }

  int Load(std::unique_ptr<OpenFile> file, const FileState& state) {
    hive_ = nullptr;
    settled_ = AgeOf(state) >= TimeResolution(state);
    const std::optional<std::string> text = file->Read(kLargestFile);
    if (!text) return kAccessDenied;
    std::optional<HiveFile> parsed = HiveFile::Parse(*text);
    if (!parsed) return kDamaged;
    hive_ = std::make_shared<const HiveFile>(*std::move(parsed));
    state_ = state;
    file_ = std::move(file);
    return kSuccess;
  }

  const fs::path path_;
  std::mutex mutex_;
  std::shared_ptr<const HiveFile> hive_;  // null when nothing is kept
  FileState state_{};
  bool settled_ = false;  // whether the file was read when any further change would show
  // Kept open so that no file that replaces this one gets its inode number.
  std::unique_ptr<OpenFile> file_;
};

// Machine-wide settings are for every user, whatever the umask of the one who writes them first.
void LetEveryoneRead(const fs::path& path) {
  std::error_code ignored;
  fs::perms reading = fs::perms::group_read | fs::perms::others_read;
  if (fs::is_directory(path, ignored)) reading |= fs::perms::group_exec | fs::perms::others_exec;
  fs::permissions(path, reading, fs::perm_options::add, ignored);
}

// The lock file's descriptor; -1 with errno set when it cannot be opened.
int OpenLockFile(const std::filesystem::path& path, bool shared) {
  const int made = OpenOwnFile(path, O_RDWR | O_CREAT | O_EXCL, 0666);
  if (made >= 0) {
    if (shared) ::fchmod(made, 0644);
    return made;
  }
  if (errno != EEXIST) return -1;
  // Writable where possible: locks over a network file system need that.
  const int old = OpenOwnFile(path, O_RDWR);
  return old >= 0 || errno != EACCES ? old : OpenOwnFile(path, O_RDONLY);
}

// Keeps other processes from changing a hive between reading and replacing its file. Readers need
// no lock, since a file is only ever replaced whole.
class HiveLock {
 public:
  // Waits half a minute for another holder. A shared lock file can be used by every user.
  HiveLock(const fs::path& hive_file, bool shared) {
    fd_ = OpenLockFile(hive_file.string() + ".lock", shared);
    if (fd_ < 0) {
      if (errno == ELOOP || errno == EMLINK) status_ = kStoppedOnLink;
      return;
    }
    const auto give_up = std::chrono::steady_clock::now() + kLockTimeout;
    while (::flock(fd_, LOCK_EX | LOCK_NB) != 0) {
      if (errno != EWOULDBLOCK && errno != EINTR) return;
      if (std::chrono::steady_clock::now() > give_up) {
        status_ = kSharingViolation;
        return;
      }
      std::this_thread::sleep_for(kLockPollInterval);
    }
    status_ = kSuccess;
  }
  HiveLock(const HiveLock&) = delete;
  HiveLock& operator=(const HiveLock&) = delete;
  ~HiveLock() {
    if (fd_ >= 0) ::close(fd_);
  }

  // kSuccess when the lock is held, else kAccessDenied, kStoppedOnLink or kSharingViolation.
  int status() const { return status_; }

 private:
  int fd_ = -1;
  int status_ = kAccessDenied;
};

class FileRegistry : public Registry {
 public:
  FileRegistry(fs::path machine_file, fs::path user_file)
      : machine_(std::move(machine_file)), user_(std::move(user_file)) {}

  int Query(Hive hive, std::string_view key, std::string_view name,
            StoredValue& value) const override {
    std::shared_ptr<const HiveFile> contents;
    const int status = ReaderOf(hive).Read(contents);
    if (status != kSuccess) return status;
    const StoredValue* found = contents->Find(key, name);
    if (found == nullptr) return kFileNotFound;
    value = *found;
    return kSuccess;
  }

  int Set(Hive hive, std::string_view key, std::string_view name,
          const StoredValue& value) override {
    if (key.empty()) return kInvalidParameter;
    if (value.type == ValueType::kDword && value.bytes.size() != 4) return kInvalidParameter;
    const fs::path path = FileOf(hive);
    std::error_code error;
    const bool created = fs::create_directories(path.parent_path(), error);
    const bool shared = hive == Hive::kLocalMachine;
    if (created && shared) LetEveryoneRead(path.parent_path());
    // Looked at before the lock is taken, so that a user without rights never waits for one.
    if (::access(path.parent_path().c_str(), W_OK) != 0) return kAccessDenied;
    const HiveLock lock(path, shared);
    if (lock.status() != kSuccess) return lock.status();
    std::shared_ptr<const HiveFile> contents;
    const int status = ReaderOf(hive).Read(contents);
    if (status != kSuccess) return status;
    HiveFile changed = *contents;
    changed.Set(key, name, value);
    return Replace(path, shared, changed);
  }

  fs::path FileOf(Hive hive) const override { return ReaderOf(hive).path(); }

 private:
  HiveReader& ReaderOf(Hive hive) const { return hive == Hive::kLocalMachine ? machine_ : user_; }

  // Replaces the file behind a link rather than the link, if it is one of the user's own set-up.
  static int Replace(const fs::path& path, bool shared, const HiveFile& contents) {
    if (IsForeignLink(path)) return kStoppedOnLink;
    std::error_code error;
    const fs::path target = fs::weakly_canonical(path, error);
    if (error) return kAccessDenied;
    const bool is_new = !fs::exists(target, error);
    try {
      WriteWholeFile(target, contents.Text());
    } catch (const RuntimeError& failure) {
      return StatusOf(failure);
    }
    if (is_new && shared) LetEveryoneRead(target);
    return kSuccess;
  }

  mutable HiveReader machine_, user_;
};

}  // namespace

std::unique_ptr<Registry> Registry::Open(const fs::path& machine_folder,
                                         const fs::path& user_folder) {
  return std::make_unique<FileRegistry>(machine_folder / kMachineFile, user_folder / kUserFile);
}

std::unique_ptr<Registry> Registry::FromEnvironment() {
  const char* both = std::getenv("TENORA_SETTINGS");
  if (both != nullptr && *both != '\0') return Open(both, both);
  return Open(kMachineFolder, UserFolder("XDG_CONFIG_HOME", ".config") / "tenora");
}

}  // namespace tenora::registry
