#include "platform/runtime/files.h"

#include <gtest/gtest.h>

#include "platform/runtime/error.h"
#include "support/test_files.h"

namespace tenora {
namespace {

TEST(Files, UnderstandsStoredPathsWithBackslashes) {
  EXPECT_EQ(NativePath("/srv/agency\\Templates\\Receipt.rtf"), "/srv/agency/Templates/Receipt.rtf");
  EXPECT_EQ(NativePath("/srv\\\\agency"), "/srv/agency");
}

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

TEST(Files, ErrorsNameTheFile) {
  const test::ScratchFolder folder;
  for (const auto& path : {folder / "missing.rtf", folder.path()}) {
    try {
      ReadWholeFile(path);
      ADD_FAILURE() << path;
    } catch (const RuntimeError& error) {
      EXPECT_NE(std::string(error.description()).find(path.string()), std::string::npos);
    }
  }
}

}  // namespace
}  // namespace tenora
