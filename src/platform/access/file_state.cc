#include "platform/access/file_state.h"

#include <sys/stat.h>
#include <time.h>

namespace tenora::access {

FileState ReadFileState(const std::filesystem::path& path) {
  struct stat status {};
  if (::stat(path.c_str(), &status) != 0) return {};
  return {.device = status.st_dev,
          .inode = status.st_ino,
          .size = static_cast<std::uint64_t>(status.st_size),
          .seconds = status.st_mtim.tv_sec,
          .nanoseconds = status.st_mtim.tv_nsec};
}

bool IsSettled(const FileState& state) {
  constexpr std::int64_t kNanosecondsPerSecond = 1'000'000'000;
  constexpr std::int64_t kStep = 50'000'000;
  timespec now{};
  ::clock_gettime(CLOCK_REALTIME, &now);
  if (now.tv_sec - state.seconds > 1) return true;
  const std::int64_t age =
      (now.tv_sec - state.seconds) * kNanosecondsPerSecond + (now.tv_nsec - state.nanoseconds);
  return age > kStep;
}

}  // namespace tenora::access
