// The file that a print job is drawn into, and the name it gets when it is complete.
#pragma once

#include <filesystem>
#include <string>

#include "platform/runtime/scratch_file.h"

namespace tenora::printing {

class SpoolFile {
 public:
  // A new file in this folder, which is created if missing. Raises the errors of FileError.
  explicit SpoolFile(const std::filesystem::path& folder);

  int descriptor() const { return file_.descriptor(); }
  const std::filesystem::path& folder() const { return file_.folder(); }
  // Where this process can read the file until it takes a name.
  const std::filesystem::path& path() const { return file_.path(); }

  // Takes the name, replacing a file of that name in the same folder. Raises as FileError.
  void Replace(const std::filesystem::path& target);
  // Takes "stem.pdf" or, where that is taken, "stem(1).pdf", "stem(2).pdf" …; returns the
  // path taken.
  std::filesystem::path TakeFreeName(const std::string& stem);

 private:
  void Sync(const std::filesystem::path& target) const;

  ScratchFile file_;
};

}  // namespace tenora::printing
