// Preloaded into the built program: kills it at the step KILL_AT of its run log. A step is a write
// cut short in the middle, a write just done, or a sync just done.
#include <dlfcn.h>
#include <limits.h>
#include <signal.h>
#include <sys/types.h>
#include <unistd.h>

#include <array>
#include <cstddef>
#include <cstdlib>
#include <string>
#include <string_view>

namespace {

bool IsRunLog(int fd) {
  std::array<char, PATH_MAX> path{};
  const std::string link = "/proc/self/fd/" + std::to_string(fd);
  const ssize_t length = ::readlink(link.c_str(), path.data(), path.size());
  return length > 0 &&
         std::string_view(path.data(), static_cast<std::size_t>(length)).ends_with(".log");
}

// Whether this is the step to die at.
bool Reached() {
  static int left = std::atoi(std::getenv("KILL_AT"));
  return --left == 0;
}

template <typename Function>
Function* Original(const char* name) {
  return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

}  // namespace

extern "C" ssize_t write(int fd, const void* bytes, std::size_t count) {
  static auto* const original = Original<ssize_t(int, const void*, std::size_t)>("write");
  if (!IsRunLog(fd)) return original(fd, bytes, count);
  if (Reached()) {
    static_cast<void>(!original(fd, bytes, count / 2));
    ::raise(SIGKILL);
  }
  const ssize_t written = original(fd, bytes, count);
  if (Reached()) ::raise(SIGKILL);
  return written;
}

extern "C" int fdatasync(int fd) {
  static auto* const original = Original<int(int)>("fdatasync");
  const int result = original(fd);
  if (IsRunLog(fd) && Reached()) ::raise(SIGKILL);
  return result;
}
