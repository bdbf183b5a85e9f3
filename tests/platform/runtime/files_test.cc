#include "platform/runtime/files.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <functional>

#include "platform/runtime/error.h"
#include "support/errors.h"
#include "support/test_files.h"

namespace tenora {
namespace {

TEST(Files, WritesWholeOrNotAtAll) {
  const test::ScratchFolder folder;
  const auto path = folder / "letter.rtf";
  WriteWholeFile(path, "one");
  WriteWholeFile(path, "two");
  EXPECT_EQ(ReadWholeFile(path), "two");
  EXPECT_FALSE(WriteNewFile(path, "three"));
  EXPECT_EQ(ReadWholeFile(path), "two");
  EXPECT_TRUE(WriteNewFile(folder / "letter(1).rtf", "three"));
  EXPECT_THROW(WriteWholeFile(folder / "absent" / "x", "y"), RuntimeError);
  std::filesystem::create_directory(folder / "taken");
  EXPECT_THROW(WriteWholeFile(folder / "taken", "y"), RuntimeError);
  const auto entries = std::distance(std::filesystem::directory_iterator(folder.path()), {});
  EXPECT_EQ(entries, 3) << "a scratch file stayed behind";
}

TEST(Files, AreNotReadBeyondTheLimitHoweverLargeTheyClaimToBe) {
  const test::ScratchFolder folder;
  WriteWholeFile(folder / "two", std::string(2 << 20, 'x'));
  EXPECT_EQ(ReadWholeFile(folder / "two", 2 << 20).size(), 2U << 20);
  for (const auto& path : {folder / "two", std::filesystem::path("/dev/zero")}) {
    EXPECT_EQ(test::ErrorOf([&] { ReadWholeFile(path, 1 << 20); }),
              "75 - Path/File access error: " + path.string() + " is larger than 1 MB");
  }
  // A pipe that nobody writes to does not hold the program up.
  ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
  EXPECT_EQ(ReadWholeFile(folder / "pipe"), "");
}

// What another user can put in the place of a log or a lock, and what then becomes of a file that
// it leads to.
TEST(Files, OpenedForWritingInPlaceLeadNowhereElse) {
  const test::ScratchFolder folder;
  const struct {
    const char* what;
    std::function<void(const std::filesystem::path& own, const std::filesystem::path& victim)>
        plant;
    int reason;  // 0: the file is opened
  } cases[] = {
      {"nothing", [](const auto&, const auto&) {}, 0},
      {"a file", [](const auto& own, const auto&) { WriteWholeFile(own, "x"); }, 0},
      {"a link", [](const auto& own, const auto& victim) { create_symlink(victim, own); }, ELOOP},
      {"a link to nothing", [](const auto& own, const auto&) { create_symlink("/nowhere/x", own); },
       ELOOP},
      {"a hard link", [](const auto& own, const auto& victim) { create_hard_link(victim, own); },
       EMLINK},
      {"a pipe", [](const auto& own, const auto&) { ::mkfifo(own.c_str(), 0666); }, ENXIO},
      {"a device", [](const auto& own, const auto&) { create_symlink("/dev/null", own); }, ELOOP},
  };
  for (const auto& planted : cases) {
    SCOPED_TRACE(planted.what);
    const auto own = folder / planted.what / "own", victim = folder / planted.what / "victim";
    std::filesystem::create_directory(own.parent_path());
    WriteWholeFile(victim, "precious");
    ASSERT_EQ(::chmod(victim.c_str(), 0640), 0);
    planted.plant(own, victim);
    const int fd = OpenOwnFile(own, O_WRONLY | O_APPEND | O_CREAT, 0666);
    EXPECT_EQ(fd < 0 ? errno : 0, planted.reason);
    if (fd >= 0) ::close(fd);
    // What is written whole takes the place of whatever is there.
    WriteWholeFile(own, "own");
    EXPECT_EQ(ReadWholeFile(own), "own");
    EXPECT_TRUE(std::filesystem::is_regular_file(std::filesystem::symlink_status(own)));
    EXPECT_EQ(ReadWholeFile(victim), "precious");
    EXPECT_EQ(std::filesystem::status(victim).permissions(), std::filesystem::perms(0640));
  }
}

// Links of the administrator and of this user are part of the set-up; only the superuser can make
// the others for this test.
TEST(Files, FoldersAreNotMadeThroughALinkOfAnotherUser) {
  const test::ScratchFolder folder;
  std::filesystem::create_directory(folder / "elsewhere");
  std::filesystem::create_symlink(folder / "elsewhere", folder / "Printed");
  EXPECT_FALSE(IsForeignLink(folder / "Printed"));
  EXPECT_NO_THROW(MakeFolder(folder / "Printed"));
  EXPECT_FALSE(IsForeignLink(folder / "elsewhere"));
  if (::geteuid() != 0) GTEST_SKIP() << "cannot make a link of another user";
  constexpr uid_t kSomebody = 12345;
  ASSERT_EQ(::lchown((folder / "Printed").c_str(), kSomebody, kSomebody), 0);
  EXPECT_TRUE(IsForeignLink(folder / "Printed"));
  EXPECT_THAT(test::ErrorOf([&] { MakeFolder(folder / "Printed"); }),
              testing::HasSubstr((folder / "Printed").string() + " is a link that another user"));
  // Whoever owns the folder decides what is in it.
  ASSERT_EQ(::chown(folder.path().c_str(), kSomebody, kSomebody), 0);
  EXPECT_FALSE(IsForeignLink(folder / "Printed"));
}

TEST(Files, ErrorsNameTheFile) {
  const test::ScratchFolder folder;
  for (const auto& path : {folder / "missing.rtf", folder.path()}) {
    const std::string error = test::ErrorOf([&] { ReadWholeFile(path); });
    EXPECT_NE(error.find(path.string()), std::string::npos) << error;
  }
}

}  // namespace
}  // namespace tenora
