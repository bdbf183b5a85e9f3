#include "letters/file_names.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <set>
#include <string>

#include "platform/runtime/safe_file_name.h"
#include "platform/runtime/text.h"
#include "support/test_files.h"

namespace tenora {
namespace {

std::string Repeat(std::string_view text, int count) {
  std::string result;
  while (count-- > 0) result += text;
  return result;
}

TEST(RecipientFolderName, TurnsHostileNamesIntoOneFolderInPlace) {
  const std::string names[] = {
      ".",
      "..",
      "...",
      "",
      "   ",
      "../../etc/passwd",
      "/etc",
      "..\\..\\x",
      ".hidden",
      "a\nb\tc",
      "a\x7f",
      std::string("nul\0byte", 8),
      "broken \xff utf-8",
      "bell\xc2\x85",
      Repeat("x", 300),
      Repeat("x", 299) + "y",
      Repeat("ā", 200),
      Repeat("名", 85) + "x",
      "what?",
      "what*",
      "con",
      "aux.rtf",
      "Templates",
      "OWNER TEMPLATES",
      "property.mdb",
  };
  const test::ScratchFolder scratch;
  std::filesystem::create_directory(scratch / "data");
  std::set<std::string> folders;
  for (const std::string& name : names) {
    const std::string folder = RecipientFolderName(name);
    SCOPED_TRACE(folder);
    EXPECT_LE(folder.size(), kLongestFileName);
    EXPECT_TRUE(IsValidUtf8(folder));
    EXPECT_TRUE(folders.insert(folder).second) << "shared by two recipients";
    EXPECT_TRUE(std::filesystem::create_directory(scratch / "data" / folder));
  }
  // All of them are in the data folder and nowhere else.
  const auto entries = std::filesystem::directory_iterator(scratch / "data");
  EXPECT_EQ(std::distance(begin(entries), end(entries)), std::ssize(names));
  const auto beside = std::filesystem::directory_iterator(scratch.path());
  EXPECT_EQ(std::distance(begin(beside), end(beside)), 1);
}

// What version 1.0 called the folder, which is on the disks of those who used it.
TEST(EarlierRecipientFolderName, IsVersion1sWhereItWasAnother) {
  const struct {
    std::string name;
    const char* earlier;
  } cases[] = {
      {"Jane Smith", ""},
      {"Smith/Jones", ""},
      {"..", ""},
      {"a\nb", ""},
      {"Templates", ""},
      {"Ann: why?", "Ann: why?"},
      {"  \"Nest\" Trust * . ", "\"Nest\" Trust *"},
      {"Smith/Jones <x>|", "Smith-Jones <x>|"},
      {"Con", "Con"},
      {".a:", "_a:~13fef73e"},
      {Repeat("x", 300) + ":", ""},
  };
  for (const auto& expected : cases) {
    EXPECT_EQ(EarlierRecipientFolderName(expected.name), expected.earlier) << expected.name;
  }
}

}  // namespace
}  // namespace tenora
