// A file that gets its name only when it is complete, and is deleted unless it does. Until then it
// has no name at all, so that whatever ends the process leaves nothing behind; where the file
// system has no such files it is in the same folder as ".tenora-" and a number, and locked. What a
// killed process leaves of those is removed by scratch_cleanup.h.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <optional>
#include <string_view>

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
  const std::filesystem::path& folder() const { return folder_; }
  // Where this process, and perhaps no other, can open the file until it takes a name.
  const std::filesystem::path& path() const { return path_; }

  // The file stays for its owner alone when it takes a name that is free.
  void KeepPrivate() { mode_ = 0600; }

  // Takes a name in the same folder. A file of that name is replaced by this one, which then has
  // its mode; of a link only the link is replaced. Raises as FileError.
  void Replace(const std::filesystem::path& target);
  // False when the name is taken, also by a file that another program creates at this moment.
  // Nothing where the file system cannot rename without replacing; errno then tells why.
  std::optional<bool> TakeFreeName(const std::filesystem::path& target);

 private:
  bool OpenUnnamed();
  bool OpenNamed();
  bool Link(const std::filesystem::path& target) const;
  void TakeTemporaryName(const std::filesystem::path& named);
  void CopyToNamedFile(const std::filesystem::path& named);
  void TakeMode() const;
  void TakeModeOf(const std::filesystem::path& replaced) const;

  std::filesystem::path folder_;
  std::filesystem::path path_;
  bool has_temporary_name_ = false;
  int fd_ = -1;
  mode_t mode_ = 0;  // of the user's new files
};

// Whether a file in a folder is called as scratch files are. Uses no memory, so that a signal
// handler may ask.
bool IsScratchFileName(std::string_view name);

}  // namespace tenora
