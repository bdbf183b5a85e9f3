#include "platform/spelling/spelling.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/runtime/error.h"
#include "platform/runtime/files.h"
#include "support/errors.h"
#include "support/test_files.h"

namespace tenora::spelling {
namespace {

using testing::Contains;
using testing::ElementsAre;

TEST(NearestLanguage, PrefersTheSpellingOfTheReadersCountry) {
  const std::vector<std::string> all{"de_DE", "en_AU", "en_GB", "en_US"};
  const struct {
    std::string wanted;
    std::vector<std::string> installed;
    std::string found;
  } cases[] = {
      {"en_NZ.UTF-8", all, "en_AU"}, {"en_NZ", {"en_GB", "en_US"}, "en_GB"},
      {"en-us", all, "en_US"},       {"en_IE@euro", all, "en_AU"},
      {"de_CH", all, "de_DE"},       {"fr_FR", {"de_DE", "en_US"}, "en_US"},
      {"", {"de_DE"}, "de_DE"},      {"en_NZ", {}, ""},
  };
  for (const auto& c : cases)
    EXPECT_EQ(NearestLanguage(c.wanted, c.installed), c.found) << c.wanted;
}

TEST(Speller, JudgesWordsAsAReaderWould) {
  const auto speller = Speller::Open({.language = "en_NZ", .user_words = {}, .folders = {}});
  EXPECT_EQ(speller->Language(), "en_AU");
  for (const char* right : {"colour", "Colour", "COLOUR", "“colour”", "(colour)", "tenant’s",
                            "well-known", "Maori", "Māori", "M\xC4\x81OrI2", "T00001",
                            "jane@example.org", "www.example", "", "--", "\xFF\xFE"})
    EXPECT_FALSE(speller->Misspelt(right)) << right;
  EXPECT_FALSE(speller->Misspelt(std::string(5000, 'x')));
  for (const char* wrong : {"recieve", "“recieve”", "Māhutq", "(teh"})
    EXPECT_TRUE(speller->Misspelt(wrong)) << wrong;
  EXPECT_THAT(speller->Suggestions("“recieve”"), Contains("receive"));
  EXPECT_THAT(MisspeltWords(*speller, "The\trecieve/teh http://exmple.xyz/abcq\u2014wrnog."),
              ElementsAre("recieve", "teh"));
}

TEST(Speller, KeepsTheUsersWordsBesideThoseOfOtherPrograms) {
  const test::ScratchFolder folder;
  const Options options{
      .language = "en_GB", .user_words = folder / "new" / "words.txt", .folders = {}};
  const auto first = Speller::Open(options);
  first->AddWord("Whaanga");
  const auto second = Speller::Open(options);
  second->AddWord("“Māhutq”");
  first->AddWord("kererq");
  EXPECT_EQ(ReadWholeFile(options.user_words), "Whaanga\nMāhutq\nkererq\n");
  EXPECT_FALSE(Speller::Open(options)->Misspelt("Māhutq"));
  EXPECT_FALSE(first->Misspelt("WHAANGA"));
  first->IgnoreAll("Xyzzq");
  EXPECT_FALSE(first->Misspelt("xyzzq"));
  EXPECT_TRUE(second->Misspelt("xyzzq"));
  // A damaged file of words is no reason not to check.
  WriteWholeFile(options.user_words, std::string("\xFF\xFE\r\n  good1ward \r\nqq") +
                                         std::string(3, '\0') + "\n" + std::string(9000, 'y'));
  const auto third = Speller::Open(options);
  EXPECT_TRUE(third->Misspelt("recieve"));
  third->AddWord("Whaanga");
  const std::string kept = ReadWholeFile(options.user_words);
  EXPECT_TRUE(kept.starts_with("\xFF\xFE\r\n  good1ward") && kept.ends_with("y\nWhaanga\n"));
  // Nor is one that cannot be read, which is not written over either.
  std::filesystem::remove(options.user_words);
  std::filesystem::create_directory(options.user_words);
  const auto fourth = Speller::Open(options);
  EXPECT_THROW(fourth->AddWord("Whaanga"), RuntimeError);
  EXPECT_FALSE(fourth->Misspelt("Whaanga"));
}

TEST(Speller, ReadsADictionaryInItsOwnEncoding) {
  const test::ScratchFolder folder;
  WriteWholeFile(folder / "xx_XX.aff", "SET ISO8859-1\nTRY aeiou\xE9\n");
  WriteWholeFile(folder / "xx_XX.dic", "1\ncaf\xE9\n");
  const Options options{.language = "xx_XX", .user_words = {}, .folders = {folder.path()}};
  const auto speller = Speller::Open(options);
  EXPECT_FALSE(speller->Misspelt("café"));
  EXPECT_TRUE(speller->Misspelt("cafe"));
  EXPECT_THAT(speller->Suggestions("cafe"), Contains("café"));
  EXPECT_TRUE(speller->Misspelt("日本"));
  EXPECT_THAT(speller->Suggestions("日本"), testing::IsEmpty());
  speller->AddWord("日本");
  EXPECT_FALSE(speller->Misspelt("日本"));

  std::filesystem::remove(folder / "xx_XX.dic");
  EXPECT_THAT(test::ErrorOf([&] { Speller::Open(options); }),
              testing::HasSubstr("no spelling dictionary"));
}

}  // namespace
}  // namespace tenora::spelling
