// What tells one state of a file from another.
#pragma once

#include <cstdint>
#include <filesystem>

namespace tenora::access {

struct FileState {
  std::uint64_t device = 0, inode = 0, size = 0;
  std::int64_t seconds = 0, nanoseconds = 0;  // of the last change

  bool operator==(const FileState&) const = default;
};

// The states right before the first page of a commit was written and right after the last, noted
// under its locks; `after` shows a time that no other write can show. All zero where that could not
// be had, or nothing was written.
struct CommitStates {
  FileState before, after;
};

// All zero when the file cannot be looked at.
FileState ReadFileState(const std::filesystem::path& path);

// Whether the last change lies so far back that one more would show another time: file systems
// count in steps of some milliseconds.
bool IsSettled(const FileState& state);

}  // namespace tenora::access
