#include "letters/unsaved_store.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <memory>
#include <optional>
#include <string>

#include "platform/runtime/files.h"
#include "support/errors.h"
#include "support/test_files.h"

namespace tenora {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

UnsavedLetter Letter(const std::string& title, int minute = 0) {
  return {.title = title,
          .recipient = "Jane\\Smith\r\n",
          .kind = "Tenant Letter",
          .tenant_code = "T00001",
          .receipt_number = -7,
          .path = "/data/Jane = Smith/Notice.rtf",
          .saved = FileStamp{.time = -123456789012345, .size = 1U << 20},
          .program_folder = "/agency",
          .kept = Date::FromCalendar(2026, 11, 21, 9, minute, 59),
          .text = "{\\rtf1\nfirst line\n\nsecond line}"};
}

class UnsavedStoreTest : public ::testing::Test {
 protected:
  std::vector<std::string> Titles(UnsavedStore& store, std::string_view program = "/agency") {
    std::vector<std::string> titles;
    for (const auto& left : store.FindLeft(program)) titles.push_back(left.letter.title);
    return titles;
  }
  std::vector<fs::path> Sessions() const {
    std::vector<fs::path> sessions;
    for (const auto& entry : fs::directory_iterator(folder_)) sessions.push_back(entry.path());
    return sessions;
  }
  static mode_t ModeOf(const fs::path& path) {
    struct stat status {};
    EXPECT_EQ(::stat(path.c_str(), &status), 0) << path;
    return status.st_mode & 07777;
  }

  test::ScratchFolder scratch_;
  fs::path folder_ = scratch_ / "state/unsaved";
};

TEST_F(UnsavedStoreTest, LeavesWhatAnEndedProgramKeptToOneOtherProgramOnly) {
  auto ended = std::make_unique<UnsavedStore>(folder_);
  ended->Keep(1, Letter("first"));
  ended->Keep(2, Letter("second", 5));
  ended->Keep(3, Letter("saved"));
  ended->Keep(1, Letter("first again"));
  ended->Drop(3);
  UnsavedStore running(folder_), next(folder_), later(folder_);
  running.Keep(1, Letter("being written"));
  EXPECT_THAT(Titles(next), IsEmpty()) << "programs that run keep theirs";
  ended.reset();
  EXPECT_THAT(Titles(next, "/another agency"), IsEmpty());
  EXPECT_THAT(Titles(next), ElementsAre("second", "first again"));
  EXPECT_THAT(Titles(later), IsEmpty()) << "two programs must not recover the same letter";
  EXPECT_THAT(Titles(next), ElementsAre("second", "first again"));

  const auto left = next.FindLeft("/agency");
  EXPECT_EQ(WriteUnsavedLetter(left[1].letter), WriteUnsavedLetter(Letter("first again")));
  EXPECT_EQ(left[1].letter.recipient, Letter("").recipient);
  EXPECT_EQ(left[1].letter.saved, Letter("").saved);
  EXPECT_EQ(left[1].letter.text, Letter("").text);
  next.Discard(left[0]);
  EXPECT_THAT(Titles(next), ElementsAre("first again"));
  next.Discard(left[1]);
  EXPECT_THAT(Sessions(), ElementsAre(testing::_)) << "that of the running program";
}

TEST_F(UnsavedStoreTest, IsForItsUserAlone) {
  fs::create_directories(folder_);
  fs::permissions(folder_, fs::perms::all);
  UnsavedStore store(folder_);
  store.Keep(1, Letter("private"));
  EXPECT_EQ(ModeOf(folder_), 0700U);
  for (const auto& entry : fs::recursive_directory_iterator(folder_)) {
    EXPECT_EQ(ModeOf(entry.path()), entry.is_directory() ? 0700U : 0600U) << entry.path();
  }
  const fs::path elsewhere = scratch_ / "elsewhere";
  fs::create_directories(elsewhere);
  fs::create_directory_symlink(elsewhere, scratch_ / "link");
  UnsavedStore led_astray(scratch_ / "link");
  EXPECT_EQ(test::NumberOf([&] { led_astray.Keep(1, Letter("private")); }), 75);
  EXPECT_TRUE(fs::is_empty(elsewhere));
}

// What cannot be read is neither offered nor lost, and does not hide the rest.
TEST_F(UnsavedStoreTest, PassesOverWhatItCannotRead) {
  auto ended = std::make_unique<UnsavedStore>(folder_);
  ended->Keep(1, Letter("good"));
  ended.reset();
  const fs::path session = Sessions().at(0);
  const std::string good = ReadWholeFile(session / "1.letter");
  const std::string damaged[] = {"", "{\\rtf1}", good.substr(0, 60), good.substr(1),
                                 "Tenora unsaved letter, version 1\nkept=2026-99-99 00:00:00\n\n"};
  int number = 10;
  for (const std::string& content : damaged) {
    WriteWholeFile(session / (std::to_string(number++) + ".letter"), content);
  }
  WriteWholeFile(scratch_ / "secret", good);
  fs::create_symlink(scratch_ / "secret", session / "20.letter");
  UnsavedStore next(folder_);
  const auto left = next.FindLeft("/agency");
  ASSERT_EQ(left.size(), 1U);
  EXPECT_EQ(left[0].letter.title, "good");
  next.Discard(left[0]);
  EXPECT_TRUE(fs::exists(session / "10.letter"));
}

}  // namespace
}  // namespace tenora
