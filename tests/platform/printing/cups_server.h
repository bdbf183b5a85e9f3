// Runs a real print server for the test: configuration and socket in a scratch folder, a queue
// whose printer is a folder.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

#include "support/test_files.h"

namespace tenora::test {

class CupsServer {
 public:
  // The default queue is "Office"; "Closed" takes no jobs, "Trays" has a driver with settings.
  // `problem()` says why it does not run.
  CupsServer();
  ~CupsServer();
  CupsServer(const CupsServer&) = delete;
  CupsServer& operator=(const CupsServer&) = delete;

  const std::string& problem() const { return problem_; }
  std::filesystem::path socket() const { return folder_ / "cups.sock"; }

  struct Job {
    std::string title;
    std::filesystem::path file;
    std::string options;  // "copies=2 sides=…"
  };
  // Waits until this many jobs are printed, or too long.
  std::vector<Job> WaitForJobs(std::size_t count) const;

 private:
  void WriteConfiguration() const;
  void WriteBackend() const;
  bool Answers() const;

  ScratchFolder folder_;
  pid_t process_ = -1;
  std::string problem_;
};

}  // namespace tenora::test
