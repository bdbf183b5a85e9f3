#include "platform/dialogs/console_dialogs.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

#include "platform/dialogs/terminal_text.h"

namespace tenora {
namespace {

struct Console {
  explicit Console(const std::string& typed) : in(typed), dialogs(in, out) {}
  std::istringstream in;
  std::ostringstream out;
  ConsoleDialogs dialogs;
};

TEST(TerminalText, LetsNoHostileTextSteerTheTerminal) {
  const struct {
    std::string text, shown;
  } cases[] = {
      {"O'Brien \xC4\x81\xE2\x82\xAC\tend", "O'Brien \xC4\x81\xE2\x82\xAC\tend"},
      {"\x1B[2J\x1B]0;owned\x07", "<U+001B>[2J<U+001B>]0;owned<U+0007>"},
      {"\xC2\x9B"
       "31m",
       "<U+009B>31m"},  // CSI in one character
      {"a\x9B"
       "31m",
       "a\xEF\xBF\xBD"
       "31m"},  // ... and as a bare byte
      {"ab\x7F\x08", "ab<U+007F><U+0008>"},
      {"pay \xE2\x80\xAEsdnasuoht", "pay <U+202E>sdnasuoht"},  // right-to-left override
      {"one\r\ntwo\rthree\nfour", "one\ntwo\nthree\nfour"},
      {std::string("nul\0l", 5), "nul<U+0000>l"},
      {"\xE2\x82", "\xEF\xBF\xBD\xEF\xBF\xBD"},  // cut short
  };
  for (const auto& c : cases) EXPECT_EQ(TerminalText(c.text), c.shown);
  EXPECT_EQ(TerminalLine("one\r\ntwo\tthree"), "one two three");
}

TEST(ConsoleDialogs, WritesABoxWithItsTitleAndTakesItsDefault) {
  Console console("No\n");
  console.dialogs.Say("13 - Type mismatch", "frmMain - \x1B[31mLoadMail");
  console.dialogs.Say("Unable to access \r\n/srv/a.mdb\r\n\r\nReverting back to \r\n/home/b.mdb");
  EXPECT_EQ(console.dialogs.Show({.text = "Replace?",
                                  .title = "Save",
                                  .buttons = Buttons::kYesNo,
                                  .default_answer = Answer::kYes}),
            Answer::kYes);
  EXPECT_EQ(console.out.str(),
            "frmMain - <U+001B>[31mLoadMail: 13 - Type mismatch\n"
            "Tenora Mail Merge Facility:\n  Unable to access \n  /srv/a.mdb\n\n"
            "  Reverting back to \n  /home/b.mdb\n"
            "Save: Replace? [Yes]\n");
}

TEST(ConsoleDialogs, AtALettersQuestionTakesWordsForTheWholeRun) {
  using Way = LetterAnswer::Way;
  const struct {
    const char* typed;
    const char* progress;
    Way way;
    const char* text;
    bool for_all;
  } cases[] = {
      {"Monday\n", "3 of 33 letters", Way::kText, "Monday", false},
      {"/all  Monday, 9 am\n", "3 of 33 letters", Way::kText, "Monday, 9 am", true},
      {"/all\n", "3 of 33 letters", Way::kText, "", true},
      {"/allotment 5\n", "3 of 33 letters", Way::kText, "/allotment 5", false},
      {"/stop\n", "3 of 33 letters", Way::kStopRun, "", false},
      {"", "3 of 33 letters", Way::kNone, "", false},
      {"/stop\n", "", Way::kText, "/stop", false},
      {"/all 5\n", "", Way::kText, "/all 5", false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(c.typed) + c.progress);
    Console console(c.typed);
    const LetterAnswer answer = console.dialogs.AskForLetter({"Which day", c.progress});
    EXPECT_EQ(answer.way, c.way);
    EXPECT_EQ(answer.text, c.text);
    EXPECT_EQ(answer.for_all, c.for_all);
    const bool told = console.out.str().find("/stop") != std::string::npos;
    EXPECT_EQ(told, *c.progress != '\0') << console.out.str();
  }
}

TEST(ConsoleDialogs, TakesALineAsTheAnswerOfAnInputBox) {
  const struct {
    std::string typed;
    std::optional<std::string> answer;
  } cases[] = {
      {"Tuesday at 9\n", "Tuesday at 9"},
      {"Tuesday\r\n", "Tuesday"},
      {"no line break", "no line break"},
      {"\n", "tomorrow"},  // Enter takes the text that stands in the box
      {"", std::nullopt},
      {"M\xC4\x81huta\n", "M\xC4\x81huta"},
      {"\xE9t\xE9\n", "\xEF\xBF\xBDt\xEF\xBF\xBD"},
      {std::string(100'000, 'x') + "\n", std::nullopt},
  };
  for (const auto& c : cases) {
    Console console(c.typed);
    EXPECT_EQ(console.dialogs.AskText("When?", "Letter", "tomorrow"), c.answer) << c.typed;
  }
}

TEST(ConsoleDialogs, ReadsTheNextAnswerBehindALineThatWasTooLong) {
  Console console(std::string(100'000, 'x') + "\nsecond\n");
  EXPECT_EQ(console.dialogs.AskText("1?", "T", ""), std::nullopt);
  EXPECT_EQ(console.dialogs.AskText("2?", "T", ""), "second");
}

TEST(ConsoleDialogs, AsksAgainAfterAnEndOfInputOnATerminal) {
  std::stringstream terminal;
  std::ostringstream out;
  ConsoleDialogs dialogs(terminal, out);
  EXPECT_EQ(dialogs.AskText("1?", "T", ""), std::nullopt);
  terminal << "second\n";
  EXPECT_EQ(dialogs.AskText("2?", "T", ""), "second");
}

TEST(ConsoleDialogs, ChoosesByNumberAndAsksAgainOnlyAFewTimes) {
  const struct {
    std::string typed;
    std::optional<std::size_t> chosen;
  } cases[] = {
      {"2\n", 1},
      {" 1 \n", 0},
      {"", std::nullopt},
      {"\n1\n", std::nullopt},
      {"0\n4\n3\n", 2},
      {"2x\n-1\n2\n", 1},
      {"9\n9\n9\n1\n", std::nullopt},
      {"99999999999999999999999\n1\n", 0},
  };
  for (const auto& c : cases) {
    Console console(c.typed);
    EXPECT_EQ(console.dialogs.Choose("Printer", {"PDF", "Laser\nfake 9", "Ink"}, 1), c.chosen)
        << c.typed;
    EXPECT_THAT(console.out.str(), testing::HasSubstr("   1  PDF\n * 2  Laser fake 9\n"));
  }
  Console nothing_to_choose("1\n");
  EXPECT_EQ(nothing_to_choose.dialogs.Choose("Printer", {}, 0), std::nullopt);
}

}  // namespace
}  // namespace tenora
