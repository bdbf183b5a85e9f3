#include "output/spell_checker.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/dialogs/scripted_dialogs.h"
#include "platform/runtime/error.h"

namespace tenora {
namespace {

using testing::ElementsAre;

TEST(SpellChecker, TakesCodesAndPunctuationOutOfTheWords) {
  const struct {
    std::string text;
    std::vector<std::string> words;
  } cases[] = {
      {"Tenant's (rent), 2-room\r\nflat_", {"Tenants", "rent", "2-room", "flat"}},
      {"Dear <<Tenant Name>>, see <<?Why?>>", {"Dear", "", "see", ""}},
      {"a<<X>>b <<X>>c", {"ab", "c"}},
      {"open <<code and \"more\"!?", {"open", "<<code", "and", "more"}},
      {"<<A>><<B>>", {""}},
  };
  for (const auto& c : cases) EXPECT_EQ(SpellChecker::WordList(c.text), c.words) << c.text;
}

TEST(SpellChecker, ReplacesEverywhereButInCodesAndEnds) {
  const struct {
    std::string text, word, replacement, result;
  } cases[] = {
      {"teh TEH tehran", "teh", "the", "the the theran"},
      {"aaa", "a", "aa", "aaaaaa"},
      {"addres <<Property Address 1>> Addres", "addres", "address",
       "address <<Property Address 1>> address"},
      {"x<<addres>>addres", "addres", "y", "x<<addres>>y"},
      {"one\r\nteh\r\nteh", "teh", "the", "one\r\nthe\r\nthe"},
      {"nothing", "teh", "the", "nothing"},
      {"nothing", "", "the", "nothing"},
  };
  for (const auto& c : cases) {
    RichTextBox editor;
    editor.SetText(c.text);
    editor.Select(1, 2);
    SpellChecker::ReplaceAll(editor, c.word, c.replacement);
    EXPECT_EQ(editor.Text(), c.result);
    EXPECT_EQ(editor.SelStart(), 1);
    EXPECT_EQ(editor.SelLength(), 2);
  }
}

struct Check {
  explicit Check(const std::string& text) { editor.SetText(text); }
  void Run(const std::vector<SpellChecker::Choice>& choices) {
    SpellChecker checker(dialogs, [] {
      return spelling::Speller::Open({.language = "en_GB", .user_words = {}, .folders = {}});
    });
    checker.AskForWord = [&](const std::string& word, spelling::Speller& speller) {
      if (word == "xyzzq") speller.IgnoreAll(word);
      asked.push_back(word);
      return choices.at(asked.size() - 1);
    };
    checker.ShowWaitCursor = [&](bool on) { waiting = on; };
    checker.SpellCheck(editor);
    EXPECT_FALSE(waiting);
  }
  ScriptedDialogs dialogs;
  RichTextBox editor;
  std::vector<std::string> asked;
  bool waiting = false;
};

TEST(SpellChecker, AsksOncePerOccurrenceAndCorrectsAllAtTheFirst) {
  Check check("Teh house, teh “recieve” and xyzzq Xyzzq <<Tneant Nmae>>.");
  check.Run({{"The"}, {""}, {"receive"}, {""}});
  EXPECT_THAT(check.asked, ElementsAre("Teh", "teh", "recieve", "xyzzq"));
  EXPECT_EQ(check.editor.Text(), "The house, The “receive” and xyzzq Xyzzq <<Tneant Nmae>>.");
  EXPECT_THAT(check.dialogs.Texts(), ElementsAre("Spell check complete"));

  Check stopped("teh recieve");
  stopped.Run({{.replacement = {}, .stop = true}});
  EXPECT_THAT(stopped.asked, ElementsAre("teh"));
  EXPECT_THAT(stopped.dialogs.Texts(), testing::IsEmpty());
}

TEST(SpellChecker, NamesWhatKeptItFromChecking) {
  ScriptedDialogs dialogs;
  RichTextBox editor;
  SpellChecker(dialogs, []() -> std::unique_ptr<spelling::Speller> {
    throw RuntimeError(53, "no dictionary");
  }).SpellCheck(editor);
  EXPECT_THAT(dialogs.Texts(),
              ElementsAre("The following error occured during the document's spelling\r\n"
                          "no dictionary"));
}

}  // namespace
}  // namespace tenora
