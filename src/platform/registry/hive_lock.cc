#include "platform/registry/hive_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <thread>

#include "platform/registry/registry.h"

namespace tenora::registry {
namespace {

constexpr std::chrono::seconds kPatience(30);
constexpr std::chrono::milliseconds kPause(2);

int OpenLockFile(const std::filesystem::path& path, bool shared) {
  // Writable where possible: locks over a network file system need that.
  const int fd = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
  if (fd >= 0) {
    // Fails for another owner's file, which has got its mode from its owner.
    if (shared) ::fchmod(fd, 0644);
    return fd;
  }
  return ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
}

}  // namespace

HiveLock::HiveLock(const std::filesystem::path& hive_file, bool shared) : status_(kAccessDenied) {
  fd_ = OpenLockFile(hive_file.string() + ".lock", shared);
  if (fd_ < 0) return;
  const auto give_up = std::chrono::steady_clock::now() + kPatience;
  while (::flock(fd_, LOCK_EX | LOCK_NB) != 0) {
    if (errno != EWOULDBLOCK && errno != EINTR) return;
    if (std::chrono::steady_clock::now() > give_up) {
      status_ = kSharingViolation;
      return;
    }
    std::this_thread::sleep_for(kPause);
  }
  status_ = kSuccess;
}

HiveLock::~HiveLock() {
  if (fd_ >= 0) ::close(fd_);
}

}  // namespace tenora::registry
