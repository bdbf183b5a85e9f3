// Ctrl-C and its kin as a wish that is asked for between two letters, rather than an end in the
// middle of one.
#pragma once

#include <pthread.h>
#include <signal.h>

#include <atomic>
#include <thread>

namespace tenora {

class StopSignals {
 public:
  // Nor does a reader of our output that goes away end a letter in the middle: SIGPIPE is ignored.
  // From now on SIGINT, SIGTERM and SIGHUP ask for a stop; a second one ends the process at once.
  // Make it on the main thread, before any other thread.
  StopSignals();
  // The signals do again what they did before.
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

  std::atomic<bool> asked_ = false, reading_ = false, ending_ = false;
  const pthread_t main_ = ::pthread_self();
  sigset_t watched_{}, mask_before_{};
  struct sigaction nudge_before_ {
  }, pipe_before_{};
  std::thread thread_;
};

}  // namespace tenora
