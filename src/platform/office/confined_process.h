// Runs another program on data that nobody vouches for: in a session of its own with few rights,
// bounded in time, memory and what it writes.
#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace tenora::office {

struct ProcessLimits {
  std::chrono::milliseconds time{60'000};
  std::uint64_t memory = std::uint64_t{4} << 30;       // bytes of address space, for each process
  std::uint64_t file_size = std::uint64_t{512} << 20;  // bytes of each file that it writes
};

struct ProcessResult {
  enum class End { kExited, kKilledByLimit, kTimedOut, kStopped };
  End end = End::kExited;
  int status = 0;      // of kExited; 128 and the signal's number where a signal ended it
  std::string output;  // the first 64 KiB of standard output and standard error
};

// Runs the program with these arguments (its own name not among them) in the folder, which is also
// its home and its folder for temporary files; the rest of the environment is PATH and a UTF-8
// locale. Where the system allows, it sees no network. What it leaves running is killed. `stopped`
// is asked several times a second; true kills it. Raises the errors of FileError for a program that
// cannot be started.
ProcessResult RunConfined(const std::filesystem::path& program,
                          const std::vector<std::string>& arguments,
                          const std::filesystem::path& folder, const ProcessLimits& limits,
                          const std::function<bool()>& stopped = {});

}  // namespace tenora::office
