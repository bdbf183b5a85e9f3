// A fingerprint of a file's state, to notice that another program has changed it.
#pragma once

#include <cstdint>
#include <filesystem>

namespace tenora::access {

struct FileState {
  std::uint64_t device = 0, inode = 0, size = 0;
  std::int64_t seconds = 0, nanoseconds = 0;  // of the last modification

  bool operator==(const FileState&) const = default;
};

// The states just before a commit wrote its first page and just after it wrote its last, taken
// under its locks; `after` has a modification time that no other write can have. All zero when it
// could not be determined or nothing was written.
struct CommitStates {
  FileState before, after;
};

// All zero when the file cannot be examined.
FileState ReadFileState(const std::filesystem::path& path);

// Whether the last modification is old enough that another one would get a different time: file
// systems record time in steps of some milliseconds.
bool IsSettled(const FileState& state);

}  // namespace tenora::access
