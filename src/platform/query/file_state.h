// What tells one state of a file from another.
#pragma once

#include <cstdint>
#include <filesystem>

namespace tenora::query {

struct FileState {
  std::uint64_t device = 0, inode = 0, size = 0;
  std::int64_t seconds = 0, nanoseconds = 0;  // of the last change

  bool operator==(const FileState&) const = default;
};

// All zero when the file cannot be looked at.
FileState ReadFileState(const std::filesystem::path& path);

// Whether the last change lies so far back that one more would show another time: file systems
// count in steps of some milliseconds.
bool IsSettled(const FileState& state);

}  // namespace tenora::query
