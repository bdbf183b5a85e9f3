// Scratch files that have a name (scratch_file.h) hold letters and must not outlive the process
// that writes them: they are removed when a signal ends it and, where nothing could be done at its
// end, by the next one.
#pragma once

#include <filesystem>
#include <thread>
#include <vector>

namespace tenora {

// Removes the named scratch files that this process writes. The system knows which they are, so
// that a signal handler may call this.
void RemoveOpenScratchFiles() noexcept;

// From now on SIGINT, SIGTERM and SIGHUP do so before they end the process. One that the process
// was started to ignore stays ignored.
void RemoveScratchFilesAtSignals();

// Removes, beside other work, the scratch files that killed processes have left: those that no
// process has locked and that nobody has written to for a day, since a lock may not be seen from
// another machine.
class ScratchSweep {
 public:
  // Looks through a folder with the folders directly in it, and through the others.
  ScratchSweep(std::filesystem::path with_subfolders, std::vector<std::filesystem::path> others);
  // Goes on until the sweep is destroyed or the folders are done.
  ~ScratchSweep() = default;

  // Returns when the folders are done.
  void Wait() { thread_.join(); }

 private:
  std::jthread thread_;
};

}  // namespace tenora
