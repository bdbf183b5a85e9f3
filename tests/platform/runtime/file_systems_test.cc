// Saving on file systems that lack files without a name, hard links or the renaming that never
// replaces, as memory sticks and some servers do.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "platform/runtime/error.h"
#include "platform/runtime/files.h"
#include "support/test_files.h"

namespace {

struct FileSystem {
  bool unnamed_files = false;
  bool renames_without_replacing = true;
  bool links = true;
  bool modes = true;
  int syncs_until_full = 1000;
};
FileSystem file_system;

int Fail(int reason) {
  errno = reason;
  return -1;
}

}  // namespace

// Override the C library's.
extern "C" int renameat2(int from_folder, const char* from, int to_folder, const char* to,
                         unsigned flags) noexcept {
  if (!file_system.renames_without_replacing) return Fail(EINVAL);
  return static_cast<int>(::syscall(SYS_renameat2, from_folder, from, to_folder, to, flags));
}

extern "C" int link(const char* from, const char* to) noexcept {
  if (!file_system.links) return Fail(EPERM);
  return static_cast<int>(::syscall(SYS_linkat, AT_FDCWD, from, AT_FDCWD, to, 0));
}

extern "C" int linkat(int from_folder, const char* from, int to_folder, const char* to,
                      int flags) noexcept {
  if (!file_system.unnamed_files) return Fail(ENOENT);
  return static_cast<int>(::syscall(SYS_linkat, from_folder, from, to_folder, to, flags));
}

extern "C" int fchmod(int fd, mode_t mode) noexcept {
  if (!file_system.modes) return Fail(EPERM);
  return static_cast<int>(::syscall(SYS_fchmod, fd, mode));
}

extern "C" int fsync(int fd) {
  if (file_system.syncs_until_full-- <= 0) return Fail(ENOSPC);
  return static_cast<int>(::syscall(SYS_fsync, fd));
}

namespace tenora {
namespace {

std::ptrdiff_t Entries(const test::ScratchFolder& folder) {
  return std::distance(std::filesystem::directory_iterator(folder.path()), {});
}

class FileSystems : public testing::TestWithParam<FileSystem> {
 protected:
  FileSystems() { file_system = GetParam(); }
  ~FileSystems() override { file_system = {}; }
};

TEST_P(FileSystems, SaveNewFilesAndNeverReplaceOne) {
  const test::ScratchFolder folder;
  const auto path = folder / "letter.rtf";
  EXPECT_TRUE(WriteNewFile(path, "one"));
  EXPECT_FALSE(WriteNewFile(path, "two"));
  EXPECT_EQ(ReadWholeFile(path), "one");
  EXPECT_EQ(Entries(folder), 1) << "a scratch file stayed behind";
}

TEST_P(FileSystems, KeepNothingOfAFileThatDoesNotFit) {
  const test::ScratchFolder folder;
  const bool in_place = !file_system.renames_without_replacing && !file_system.links;
  // Full only after the scratch files, where the file is written once more.
  file_system.syncs_until_full = in_place ? 2 : 0;
  EXPECT_THROW(WriteNewFile(folder / "letter.rtf", "one"), RuntimeError);
  EXPECT_EQ(Entries(folder), 0);
}

INSTANTIATE_TEST_SUITE_P(Kinds, FileSystems,
                         testing::Values(FileSystem{.unnamed_files = true}, FileSystem{},
                                         FileSystem{.renames_without_replacing = false},
                                         FileSystem{.links = false, .modes = false},
                                         FileSystem{.renames_without_replacing = false,
                                                    .links = false}));

}  // namespace
}  // namespace tenora
