// Saving on file systems that lack files without a name, hard links or the renaming that never
// replaces, as memory sticks and some servers do.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstdio>

#include "platform/runtime/error.h"
#include "platform/runtime/files.h"
#include "support/test_files.h"

namespace {

struct FileSystem {
  bool unnamed_files = false;
  bool names_unnamed_files = true;
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
extern "C" int open(const char* path, int flags, ...) {
  if (!file_system.unnamed_files && (flags & O_TMPFILE) == O_TMPFILE) return Fail(EOPNOTSUPP);
  va_list rest;
  va_start(rest, flags);
  const auto mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(rest, mode_t) : 0;
  va_end(rest);
  return static_cast<int>(::syscall(SYS_openat, AT_FDCWD, path, flags, mode));
}

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
  if (!file_system.names_unnamed_files) return Fail(ENOENT);
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
  // Full only when the file is written for the last time.
  const bool in_place = !file_system.renames_without_replacing && !file_system.links;
  file_system.syncs_until_full = (in_place ? 1 : 0) + (file_system.names_unnamed_files ? 0 : 1);
  EXPECT_THROW(WriteNewFile(folder / "letter.rtf", "one"), RuntimeError);
  EXPECT_EQ(Entries(folder), 0);
}

TEST_P(FileSystems, ReplaceAFileAndKeepItsModeWhereThereAreModes) {
  const test::ScratchFolder folder;
  const auto path = folder / "letter.rtf";
  WriteWholeFile(path, "one");
  ASSERT_EQ(::chmod(path.c_str(), 0640), 0);
  WriteWholeFile(path, "two");
  EXPECT_EQ(ReadWholeFile(path), "two");
  struct stat status {};
  ASSERT_EQ(::stat(path.c_str(), &status), 0);
  EXPECT_TRUE(!file_system.modes || (status.st_mode & 0777) == 0640) << status.st_mode;
  EXPECT_EQ(Entries(folder), 1) << "a scratch file stayed behind";
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, FileSystems,
    testing::Values(FileSystem{.unnamed_files = true},
                    FileSystem{.unnamed_files = true, .names_unnamed_files = false},
                    FileSystem{.unnamed_files = true,
                               .names_unnamed_files = false,
                               .renames_without_replacing = false,
                               .links = false},
                    FileSystem{}, FileSystem{.renames_without_replacing = false},
                    FileSystem{.links = false, .modes = false},
                    FileSystem{.renames_without_replacing = false, .links = false}));

}  // namespace
}  // namespace tenora
