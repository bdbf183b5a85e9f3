#include "startup/worker_processes.h"

#include <signal.h>
#include <spawn.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <thread>

#include "platform/runtime/error.h"

namespace tenora {
namespace {

constexpr std::chrono::milliseconds kBetweenLooks{100};
// One that ends as soon as it is started must not keep the machine busy.
constexpr std::chrono::seconds kBeforeAnew{2};

// This process blocks the signals that it waits for; a worker begins with none blocked. It has a
// process group of its own: Ctrl-C on the terminal, and whatever else is sent to ours, comes to it
// through us, once. A second one would end it in the middle of a letter.
pid_t Start(const std::vector<std::string>& arguments) {
  std::vector<char*> argv;
  for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
  argv.push_back(nullptr);
  posix_spawnattr_t attributes;
  ::posix_spawnattr_init(&attributes);
  sigset_t none;
  ::sigemptyset(&none);
  ::posix_spawnattr_setsigmask(&attributes, &none);
  ::posix_spawnattr_setpgroup(&attributes, 0);
  ::posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETPGROUP);
  pid_t pid = 0;
  const int failure =
      ::posix_spawn(&pid, "/proc/self/exe", nullptr, &attributes, argv.data(), environ);
  ::posix_spawnattr_destroy(&attributes);
  if (failure == 0) return pid;
  throw StandardError(error_number::kDeviceIoError,
                      std::string("no worker can be started: ") + std::strerror(failure));
}

}  // namespace

int RunProcesses(unsigned count, const std::vector<std::string>& arguments,
                 const std::function<bool()>& stop_asked, std::ostream& errors) {
  std::vector<pid_t> running;
  for (unsigned i = 0; i < count; ++i) running.push_back(Start(arguments));
  bool told = false;
  int status = 0;
  unsigned lost = 0;
  auto begin_anew = std::chrono::steady_clock::time_point();
  while (!running.empty() || (lost > 0 && !told)) {
    if (stop_asked() && !told) {
      told = true;
      for (const pid_t pid : running) ::kill(pid, SIGTERM);
    }
    int ended = 0;
    const pid_t pid = ::waitpid(-1, &ended, WNOHANG);
    if (pid > 0) {
      std::erase(running, pid);
      if (WIFEXITED(ended)) {
        status = std::max(status, WEXITSTATUS(ended));
      } else {
        errors << "Worker process " << pid << " was ended by signal " << WTERMSIG(ended)
               << std::endl;
        ++lost;
        begin_anew = std::chrono::steady_clock::now() + kBeforeAnew;
      }
      continue;
    }
    if (lost > 0 && !told && std::chrono::steady_clock::now() >= begin_anew) {
      for (; lost > 0; --lost) running.push_back(Start(arguments));
    }
    std::this_thread::sleep_for(kBetweenLooks);
  }
  return status;
}

void EndWith(int parent) {
  ::prctl(PR_SET_PDEATHSIG, SIGTERM);
  // It may have ended before.
  if (::getppid() != parent) ::raise(SIGTERM);
}

}  // namespace tenora
