#include "platform/runtime/scratch_cleanup.h"

#include <fcntl.h>
#include <limits.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <csignal>
#include <stop_token>
#include <string_view>
#include <system_error>
#include <utility>

#include "platform/runtime/scratch_file.h"

namespace tenora {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kDescriptors = "/proc/self/fd/";
constexpr int kMostDescriptors = 1024;
constexpr std::chrono::hours kLeftBehindAfter(24);

void EndBySignal(int signal) {
  RemoveOpenScratchFiles();
  ::raise(signal);  // its action is the system's again
}

bool IsOld(const struct stat& status) {
  const auto written = std::chrono::system_clock::from_time_t(status.st_mtim.tv_sec);
  return std::chrono::system_clock::now() - written > kLeftBehindAfter;
}

void RemoveIfLeftBehind(const fs::path& path) {
  struct stat named {
  }, opened{};
  if (::lstat(path.c_str(), &named) != 0 || !S_ISREG(named.st_mode) || !IsOld(named)) return;
  // For reading only: what this process has open for writing is its own.
  const int fd = ::open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
  if (fd < 0) return;
  // Where there are no locks, the age decides.
  const bool in_use = ::flock(fd, LOCK_SH | LOCK_NB) != 0 && errno == EWOULDBLOCK;
  const bool same = ::fstat(fd, &opened) == 0 && opened.st_ino == named.st_ino &&
                    opened.st_dev == named.st_dev && IsOld(opened);
  if (!in_use && same) ::unlink(path.c_str());
  ::close(fd);
}

// Calls `use` with each entry of the folder, if it can be read.
template <typename Use>
void ForEntries(const fs::path& folder, const std::stop_token& stop, Use&& use) {
  std::error_code error;
  for (fs::directory_iterator entry(folder, error), end;
       !error && entry != end && !stop.stop_requested(); entry.increment(error)) {
    use(*entry);
  }
}

void Sweep(const fs::path& folder, const std::stop_token& stop) {
  ForEntries(folder, stop, [](const fs::directory_entry& entry) {
    if (IsScratchFileName(entry.path().filename().native())) RemoveIfLeftBehind(entry.path());
  });
}

void SweepWithSubfolders(const fs::path& folder, const std::stop_token& stop) {
  Sweep(folder, stop);
  ForEntries(folder, stop, [&](const fs::directory_entry& entry) {
    std::error_code unknown;
    if (entry.is_directory(unknown)) Sweep(entry.path(), stop);
  });
}

}  // namespace

void RemoveOpenScratchFiles() noexcept {
  const int reason = errno;
  std::array<char, 32> link{};
  std::array<char, PATH_MAX> path{};
  kDescriptors.copy(link.data(), kDescriptors.size());
  for (int fd = 0; fd < kMostDescriptors; ++fd) {
    const int flags = ::fcntl(fd, F_GETFL);
    if (flags < 0 || (flags & O_ACCMODE) != O_RDWR) continue;
    *std::to_chars(link.data() + kDescriptors.size(), link.end() - 1, fd).ptr = '\0';
    const ssize_t length = ::readlink(link.data(), path.data(), path.size() - 1);
    if (length <= 0) continue;
    path[static_cast<std::size_t>(length)] = '\0';
    const std::string_view whole(path.data(), static_cast<std::size_t>(length));
    const std::size_t name = whole.rfind('/') + 1;
    if (name > 0 && IsScratchFileName(whole.substr(name))) ::unlink(path.data());
  }
  errno = reason;
}

void RemoveScratchFilesAtSignals() {
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    struct sigaction before {};
    if (::sigaction(signal, nullptr, &before) != 0 || before.sa_handler == SIG_IGN) continue;
    struct sigaction end {};
    end.sa_handler = EndBySignal;
    end.sa_flags = static_cast<int>(SA_RESETHAND);
    ::sigaction(signal, &end, nullptr);
  }
}

ScratchSweep::ScratchSweep(fs::path with_subfolders, std::vector<fs::path> others)
    : thread_([with_subfolders = std::move(with_subfolders),
               others = std::move(others)](const std::stop_token& stop) {
        for (const fs::path& folder : others) Sweep(folder, stop);
        SweepWithSubfolders(with_subfolders, stop);
      }) {}

}  // namespace tenora
