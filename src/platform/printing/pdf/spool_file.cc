#include "platform/printing/pdf/spool_file.h"

#include <unistd.h>

#include <cerrno>

#include "platform/runtime/error.h"
#include "platform/runtime/files.h"

namespace tenora::printing {
namespace {

constexpr int kMostNumbers = 100000;

const std::filesystem::path& Made(const std::filesystem::path& folder) {
  MakeFolder(folder);
  return folder;
}

}  // namespace

SpoolFile::SpoolFile(const std::filesystem::path& folder) : file_(Made(folder), folder) {}

void SpoolFile::Replace(const std::filesystem::path& target) {
  Sync(target);
  file_.Replace(target);
}

std::filesystem::path SpoolFile::TakeFreeName(const std::string& stem) {
  std::filesystem::path target = folder() / (stem + ".pdf");
  Sync(target);
  for (int number = 1; number <= kMostNumbers; ++number) {
    const std::optional<bool> taken = file_.TakeFreeName(target);
    if (!taken) break;
    if (*taken) return target;
    target = folder() / (stem + "(" + std::to_string(number) + ").pdf");
  }
  throw FileError(errno, target);
}

// A network file system may report a full disk only here.
void SpoolFile::Sync(const std::filesystem::path& target) const {
  if (::fsync(file_.descriptor()) != 0) throw FileError(errno, target);
}

}  // namespace tenora::printing
