// Keeps other processes from changing a hive between reading and replacing its file. Readers need
// no lock, since a file is only ever replaced whole.
#pragma once

#include <filesystem>

namespace tenora::registry {

class HiveLock {
 public:
  // Waits half a minute for another holder. A shared lock file can be used by every user.
  HiveLock(const std::filesystem::path& hive_file, bool shared);
  ~HiveLock();
  HiveLock(const HiveLock&) = delete;
  HiveLock& operator=(const HiveLock&) = delete;

  // kSuccess when the lock is held, else kAccessDenied or kSharingViolation.
  int status() const { return status_; }

 private:
  int fd_ = -1;
  int status_;
};

}  // namespace tenora::registry
