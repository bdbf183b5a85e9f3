#include "startup/stop_signals.h"

#include <unistd.h>

#include <string_view>

#include "platform/runtime/scratch_cleanup.h"

namespace tenora {
namespace {

// Its handler does nothing; delivering it interrupts a blocked read.
constexpr int kNudge = SIGUSR1;
// Wakes the waiting thread to its end.
constexpr int kEnd = SIGUSR2;
constexpr int kStatusOfInterrupted = 130;
constexpr timespec kBetweenNudges{.tv_sec = 0, .tv_nsec = 50'000'000};

void Say(std::string_view text) {
  // A failure cannot be reported anywhere.
  static_cast<void>(!::write(STDERR_FILENO, text.data(), text.size()));
}

}  // namespace

StopSignals::StopSignals(bool silent) : silent_(silent) {
  ::sigemptyset(&watched_);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP, kEnd}) ::sigaddset(&watched_, signal);
  ::pthread_sigmask(SIG_BLOCK, &watched_, &mask_before_);
  struct sigaction nudge {};
  nudge.sa_handler = [](int) {};  // without SA_RESTART: the read gives up
  ::sigaction(kNudge, &nudge, &nudge_before_);
  struct sigaction ignore {};
  ignore.sa_handler = SIG_IGN;
  ::sigaction(SIGPIPE, &ignore, &pipe_before_);
  thread_ = std::thread([this] { Wait(); });
}

StopSignals::~StopSignals() {
  ending_ = true;
  ::pthread_kill(thread_.native_handle(), kEnd);
  thread_.join();
  ::sigaction(kNudge, &nudge_before_, nullptr);
  ::sigaction(SIGPIPE, &pipe_before_, nullptr);
  ::pthread_sigmask(SIG_SETMASK, &mask_before_, nullptr);
}

void StopSignals::Wait() {
  while (!ending_) {
    int signal = 0;
    if (!asked_) {
      if (::sigwait(&watched_, &signal) != 0 || signal == kEnd) continue;
      asked_ = true;
      if (silent_) continue;
      // A terminal shows "^C" on the line.
      if (::isatty(STDERR_FILENO) == 1) Say("\n");
      Say("Stopping after the current letter; once more to stop immediately.\n");
    } else if ((signal = ::sigtimedwait(&watched_, nullptr, &kBetweenNudges)) > 0) {
      if (signal == kEnd) continue;
      RemoveOpenScratchFiles();
      ::_exit(kStatusOfInterrupted);
    }
    // Repeatedly: the read may begin just after the first signal.
    if (asked_ && reading_) ::pthread_kill(main_, kNudge);
  }
}

}  // namespace tenora
