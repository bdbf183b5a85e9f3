#include "platform/runtime/safe_file_name.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/runtime/text.h"

namespace tenora {
namespace {

using testing::MatchesRegex;

std::string Repeat(std::string_view text, int count) {
  std::string result;
  while (count-- > 0) result += text;
  return result;
}

TEST(SafeFileName, GivesANameThatEverySystemCanOpen) {
  constexpr const char* kUnchanged = nullptr;
  const struct {
    std::string name;
    const char* safe;  // "#" stands for a hash
  } cases[] = {
      {"Jane Smith", kUnchanged},
      {"O'Brien & Sons (2nd)", kUnchanged},
      {"Māhuta, Ngā", kUnchanged},
      {"J. R. Hartley", kUnchanged},
      {"名前", kUnchanged},
      {"a~1234", kUnchanged},
      {Repeat("x", 255), kUnchanged},
      // Substitutes that keep a name readable.
      {"Rent/Water\\Gas", "Rent-Water-Gas"},
      {"Notice: rent", "Notice- rent"},
      {"C:notice", "C-notice"},
      {"The \"Nest\"", "The `Nest`"},
      // What Windows drops.
      {"Smith Ltd.", "Smith Ltd"},
      {"  Smith . ", "Smith"},
      // Forbidden characters.
      {"why?", "why_#"},
      {"a*b<c>d|e", "a_b_c_d_e#"},
      {"a\nb\x7F", "a_b_#"},
      {std::string("nul\0byte", 8), "nul_byte#"},
      {"bell\u0085", "bell_#"},
      // Names of this and the parent folder, hidden files, nothing at all.
      {".", "_#"},
      {"..", "__#"},
      {"../../etc", "__-..-etc#"},
      {".hidden", "_hidden#"},
      {"", "#"},
      {" . ", "_#"},
      // Devices, also with an extension or blanks, but not words that begin like them.
      {"CON", "_CON#"},
      {"nul", "_nul#"},
      {"Aux.rtf", "_Aux.rtf#"},
      {"prn .old.rtf", "_prn .old.rtf#"},
      {"COM1", "_COM1#"},
      {"lpt9.txt", "_lpt9.txt#"},
      {"COM\u00B2", "_COM\u00B2#"},
      {"CONOUT$", "_CONOUT$#"},
      {"Conrad", kUnchanged},
      {"COM10", kUnchanged},
      {"Lptx", kUnchanged},
      {"a CON", kUnchanged},
  };
  for (const auto& c : cases) {
    const std::string safe = SafeFileName(c.name);
    std::string expected = c.safe == kUnchanged ? c.name : c.safe;
    if (!expected.ends_with('#')) {
      EXPECT_EQ(safe, expected);
      continue;
    }
    expected.pop_back();
    EXPECT_EQ(safe.substr(0, expected.size()), expected);
    EXPECT_THAT(safe.substr(expected.size()), MatchesRegex("~[0-9a-f]{8}")) << safe;
  }
}

TEST(FileNameFault, SaysWhatNotEverySystemCanOpen) {
  const struct {
    std::string name;
    const char* fault;
  } cases[] = {
      {"Rent review 3.4 (2nd)", ""},
      {" Māhuta, Ngā ", ""},
      {Repeat("x", 255), ""},
      {"Rent: 3/4? Why?", "it contains : / ?"},
      {"a\nb", "it contains characters that cannot be seen"},
      {".hidden", "it begins with a dot"},
      {"Notice.", "it ends in a dot"},
      {"Notice. ", "it ends in a dot"},
      {"nul.old", "Windows keeps this name for a device"},
      {Repeat("x", 256), "it is too long"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(FileNameFault(c.name), c.fault) << c.name;
    EXPECT_EQ(SafeFileName(c.name) == TrimBlanks(c.name), *c.fault == '\0') << c.name;
  }
}

TEST(SafeFileName, KeepsNamesApartThatOneSubstituteWouldJoin) {
  const char* const pairs[][2] = {
      {"what?", "what*"}, {"CON", "_CON"}, {".a", "_a"}, {"a\n", "a_"}, {"?", "*"}};
  for (const auto& [one, other] : pairs) EXPECT_NE(SafeFileName(one), SafeFileName(other));
  EXPECT_NE(SafeFileName(Repeat("x", 300)), SafeFileName(Repeat("x", 299) + "y"));
}

TEST(DistinctFileName, IsNoOtherNamesWhateverThatIs) {
  std::set<std::string> names;
  const auto add = [&](const std::string& name) {
    const std::string file = DistinctFileName(name);
    EXPECT_TRUE(names.insert(file).second) << name << " is " << file;
    return file;
  };
  EXPECT_EQ(add("North"), "North");
  EXPECT_EQ(add("North~1"), "North~1");
  for (const char* const name : {"trail", "trail.", "trail?", "a/b", "a-b"}) {
    // As a name of its own it is disguised once more.
    std::string file = add(name);
    for (int i = 0; i < 2 && file != name; ++i) file = add(file);
  }
}

TEST(SafeFileName, CutsAtACharacterAndIsTheSameEveryTime) {
  for (const std::size_t longest : {255U, 120U, 40U}) {
    const std::string cut = SafeFileName(Repeat("ā", 200), longest);
    EXPECT_LE(cut.size(), longest);
    EXPECT_GE(cut.size(), longest - 1);
    EXPECT_TRUE(IsValidUtf8(cut));
  }
  EXPECT_EQ(SafeFileName(Repeat("x", 300)), Repeat("x", 246) + "~970138f5");
}

}  // namespace
}  // namespace tenora
