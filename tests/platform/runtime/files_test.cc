#include "platform/runtime/files.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

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

TEST(Files, ErrorsNameTheFile) {
  const test::ScratchFolder folder;
  for (const auto& path : {folder / "missing.rtf", folder.path()}) {
    const std::string error = test::ErrorOf([&] { ReadWholeFile(path); });
    EXPECT_NE(error.find(path.string()), std::string::npos) << error;
  }
}

}  // namespace
}  // namespace tenora
