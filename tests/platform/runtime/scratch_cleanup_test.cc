// Scratch files that have a name, as on the file system that file_systems_test.cc stands in for.
#include "platform/runtime/scratch_cleanup.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>

#include "platform/runtime/files.h"
#include "platform/runtime/scratch_file.h"
#include "support/test_files.h"

namespace tenora {
namespace {

using std::chrono::hours;
using testing::UnorderedElementsAre;

std::vector<std::string> FilesIn(const std::filesystem::path& folder) {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
    if (!entry.is_directory()) names.push_back(entry.path().filename().string());
  }
  return names;
}

void SetAge(const std::filesystem::path& path, hours age) {
  std::filesystem::last_write_time(path, std::filesystem::file_time_type::clock::now() - age);
}

// Runs a process that gets the signal while it writes a scratch file; how it ended.
int StatusAfter(int signal, const std::filesystem::path& folder, bool ignored) {
  const pid_t child = ::fork();
  if (child == 0) {
    if (ignored) std::signal(signal, SIG_IGN);
    RemoveScratchFilesAtSignals();
    const ScratchFile scratch(folder, folder / "letter.rtf");
    ::raise(signal);
    ::_exit(0);
  }
  int status = -1;
  ::waitpid(child, &status, 0);
  return status;
}

TEST(ScratchCleanup, SignalsEndTheProcessAndItsScratchFiles) {
  const struct {
    int signal;
    bool ignored;
    std::size_t left;
  } cases[] = {{SIGTERM, false, 0},
               {SIGINT, false, 0},
               {SIGHUP, false, 0},
               {SIGHUP, true, 1},
               {SIGKILL, false, 1}};
  for (const auto& end : cases) {
    SCOPED_TRACE(end.signal);
    const test::ScratchFolder folder;
    // Another process is writing it.
    WriteWholeFile(folder / ".tenora-1", "x");
    const int status = StatusAfter(end.signal, folder.path(), end.ignored);
    EXPECT_EQ(WIFSIGNALED(status) ? WTERMSIG(status) : 0, end.ignored ? 0 : end.signal);
    EXPECT_EQ(FilesIn(folder.path()).size(), 1 + end.left);
  }
}

TEST(ScratchCleanup, SweepsWhatKilledProcessesLeftAndNothingElse) {
  const test::ScratchFolder folder;
  ASSERT_TRUE(WIFSIGNALED(StatusAfter(SIGKILL, folder.path(), false)));
  SetAge(folder / FilesIn(folder.path()).front(), hours(48));
  const struct {
    const char* path;
    hours age;
    bool swept;
  } cases[] = {
      {"data/.tenora-1", hours(25), true},
      {"data/.tenora-2", hours(23), false},
      {"data/.tenora-3", hours(-48), false},  // of a machine whose clock is ahead
      {"data/Jane Smith/.tenora-4", hours(48), true},
      {"data/Jane Smith/deeper/.tenora-5", hours(48), false},
      {"data/Jane Smith/Notice.rtf", hours(48), false},
      {"data/.tenora-x", hours(48), false},
      {"data/.tenora-", hours(48), false},
      {"data/.tenora-12345678901", hours(48), false},
      {"data/tenora-1", hours(48), false},
  };
  for (const auto& file : cases) {
    std::filesystem::create_directories((folder / file.path).parent_path());
    WriteWholeFile(folder / file.path, "x");
    SetAge(folder / file.path, file.age);
  }
  WriteWholeFile(folder / "victim", "precious");
  SetAge(folder / "victim", hours(48));
  std::filesystem::create_symlink(folder / "victim", folder / "data/.tenora-6");
  // One that is being written, however long ago it was begun.
  const ScratchFile in_use(folder / "data", "letter.rtf");
  SetAge(in_use.path(), hours(48));

  ScratchSweep(folder / "data", {folder.path(), folder / "absent"}).Wait();
  for (const auto& file : cases) {
    EXPECT_EQ(std::filesystem::exists(folder / file.path), !file.swept) << file.path;
  }
  EXPECT_TRUE(std::filesystem::exists(in_use.path()));
  std::vector<std::string> beside;
  for (const auto& entry : std::filesystem::directory_iterator(folder.path())) {
    beside.push_back(entry.path().filename().string());
  }
  EXPECT_THAT(beside, UnorderedElementsAre("data", "victim")) << "left by the killed process";
}

}  // namespace
}  // namespace tenora
