// Ctrl-C and similar signals as a request to stop between two letters instead of in the middle of
// one.
#pragma once

#include <pthread.h>
#include <signal.h>

#include <atomic>
#include <thread>

namespace tenora {

class StopSignals {
 public:
  // From now on SIGINT, SIGTERM and SIGHUP request a stop; a second one ends the process at once.
  // SIGPIPE is ignored, so that a closed output does not end the process in the middle of a letter.
  // Must be made on the main thread, before any other thread. The first one is answered on standard
  // error, but for `silent`.
  explicit StopSignals(bool silent = false);
  // Restores the previous handling of the signals.
  ~StopSignals();
  StopSignals(const StopSignals&) = delete;
  StopSignals& operator=(const StopSignals&) = delete;

  bool Asked() const { return asked_; }

  // While it lives, a signal also interrupts a read of the main thread, so that a question on the
  // terminal is cancelled.
  class InterruptsReads {
   public:
    explicit InterruptsReads(StopSignals& signals) : signals_(signals) { signals_.reading_ = true; }
    ~InterruptsReads() { signals_.reading_ = false; }
    InterruptsReads(const InterruptsReads&) = delete;
    InterruptsReads& operator=(const InterruptsReads&) = delete;

   private:
    StopSignals& signals_;
  };

 private:
  void Wait();

  const bool silent_;
  std::atomic<bool> asked_ = false, reading_ = false, ending_ = false;
  const pthread_t main_ = ::pthread_self();
  sigset_t watched_{}, mask_before_{};
  struct sigaction nudge_before_ {
  }, pipe_before_{};
  std::thread thread_;
};

}  // namespace tenora
