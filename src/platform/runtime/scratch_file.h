// A file that gets its name only when it is complete. Until then it is in the same folder under a
// temporary name, ".tenora-" and a number, and it is deleted unless it has taken a name.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <optional>

namespace tenora {

class ScratchFile {
 public:
  // A new empty file, for its owner alone until it takes a name: letters are private. Raises the
  // errors of FileError, which name `named`.
  ScratchFile(const std::filesystem::path& folder, const std::filesystem::path& named);
  ScratchFile(const ScratchFile&) = delete;
  ScratchFile& operator=(const ScratchFile&) = delete;
  ~ScratchFile();

  // For writing; belongs to this object.
  int descriptor() const { return fd_; }
  const std::filesystem::path& path() const { return path_; }

  // Takes a name in the same folder, also one that is another file's. Raises as FileError.
  void Replace(const std::filesystem::path& target);
  // False when the name is taken, also by a file that another program creates at this moment.
  // Nothing where the file system cannot rename without replacing; errno then tells why.
  std::optional<bool> TakeFreeName(const std::filesystem::path& target);

 private:
  void TakeMode() const;

  std::filesystem::path path_;  // empty once the name is taken
  int fd_ = -1;
  mode_t mode_ = 0;  // of the user's new files
};

}  // namespace tenora
