#include "merge/amount_in_words.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "rental/session.h"
#include "support/fake_platform.h"

namespace tenora {
namespace {

// Plain English, a word at a time.
using Words = std::vector<std::string>;

void Append(Words& words, const Words& more) {
  words.insert(words.end(), more.begin(), more.end());
}

Words English(int n) {
  static const Words kOnes{"",        "One",     "Two",       "Three",    "Four",
                           "Five",    "Six",     "Seven",     "Eight",    "Nine",
                           "Ten",     "Eleven",  "Twelve",    "Thirteen", "Fourteen",
                           "Fifteen", "Sixteen", "Seventeen", "Eighteen", "Nineteen"};
  static const Words kTens{"Twenty", "Thirty",  "Forty",  "Fifty",
                           "Sixty",  "Seventy", "Eighty", "Ninety"};
  Words words;
  if (n >= 1000) {
    words = English(n / 1000);
    words.push_back("Thousand");
    if (n % 1000 != 0) Append(words, English(n % 1000));
  } else if (n >= 100) {
    words = {kOnes[n / 100], "Hundred"};
    if (n % 100 != 0) words.push_back("and");
    if (n % 100 != 0) Append(words, English(n % 100));
  } else if (n >= 20) {
    words = {kTens[n / 10 - 2]};
    if (n % 10 != 0) words.push_back(kOnes[n % 10]);
  } else {
    words = {n == 0 ? "Zero" : kOnes[n]};
  }
  return words;
}

// One blank between words, but two before a digit that follows "and" or "Thousand" and counts no
// hundreds, and three between "Hundred" and "Thousand".
std::string Sentence(int units, int cents) {
  const Words words = English(units);
  std::string text;
  for (std::size_t i = 0; i < words.size(); ++i) {
    const std::string before = i == 0 ? "" : words[i - 1];
    const bool counts_hundreds = i + 1 < words.size() && words[i + 1] == "Hundred";
    const bool digit = words[i] == "One" || words[i] == "Two" || words[i] == "Three" ||
                       words[i] == "Four" || words[i] == "Five" || words[i] == "Six" ||
                       words[i] == "Seven" || words[i] == "Eight" || words[i] == "Nine";
    if (i > 0) text += " ";
    if ((before == "and" || before == "Thousand") && digit && !counts_hundreds) text += " ";
    if (before == "Hundred" && words[i] == "Thousand") text += "  ";
    text += words[i];
  }
  const std::string two_figures = std::to_string(100 + cents).substr(1);
  return text + " Dollars and " + two_figures + " Cents";
}

// Whether the amount reads as the oracle writes it, broken behind the last blank that fits.
testing::AssertionResult Right(int units, int cents) {
  const std::string sentence = Sentence(units, cents);
  const std::size_t cut = sentence.size() <= 50 ? sentence.size() : sentence.rfind(' ', 49) + 1;
  const ValueWords words = GetValueWords(units + cents / 100.0, CurrencyWords{});
  if (words.line1 == sentence.substr(0, cut) && words.line2 == sentence.substr(cut)) {
    return testing::AssertionSuccess();
  }
  return testing::AssertionFailure() << words.line1 << "|" << words.line2 << " for " << sentence;
}

TEST(GetValueWords, WritesEveryAmountAsEnglishWithTheCustomaryBlanks) {
  for (int units = 0; units < 1'000'000; ++units) {
    ASSERT_TRUE(Right(units, units % 100));
  }
  for (const int units : {0, 1, 9, 10, 100, 105, 999, 1000, 99'999, 777'777, 999'999}) {
    for (int cents = 0; cents < 100; ++cents) {
      ASSERT_TRUE(Right(units, cents));
    }
  }
}

TEST(GetValueWords, WritesWhatChequesHaveAlwaysCarried) {
  struct Case {
    double amount;
    const char* line1;
    const char* line2;
  };
  const Case cases[] = {
      {1234.56, "One Thousand Two Hundred and Thirty Four Dollars ", "and 56 Cents"},
      {0.5, "Zero Dollars and 50 Cents", ""},
      {1, "One Dollars and 00 Cents", ""},
      {15, "Fifteen Dollars and 00 Cents", ""},
      {20, "Twenty Dollars and 00 Cents", ""},
      {105, "One Hundred and  Five Dollars and 00 Cents", ""},
      {1000, "One Thousand Dollars and 00 Cents", ""},
      {100000, "One Hundred   Thousand Dollars and 00 Cents", ""},
      // Halves of a cent go up on the decimal text; the words follow the amount as it came in.
      {0.005, "Zero Dollars and 01 Cents", ""},
      {1.005, "One Dollars and 01 Cents", ""},
      {2.675, "Two Dollars and 68 Cents", ""},
      {0.995, "Zero  One Dollars and 00 Cents", ""},
      {999.995, "One Dollars and 00 Cents", ""},
      // Beyond six figures only the first six are read, and a sign takes one of them.
      {1234567.89, "One Hundred and Twenty Three Thousand Four ",
       "Hundred and Fifty Six Dollars and 89 Cents"},
      {-1.5, "Zero Dollars and 50 Cents", ""},
      {-123456.78, "ZeroTwelveThree Hundred and Forty Five Dollars ", "and 78 Cents"},
      {std::numeric_limits<double>::quiet_NaN(), "Zero Dollars and 00 Cents", ""},
      {std::numeric_limits<double>::infinity(), "Zero Dollars and 00 Cents", ""},
      {-std::numeric_limits<double>::infinity(), "Zero Dollars and 00 Cents", ""},
      {std::numeric_limits<double>::denorm_min(), "Zero Dollars and 00 Cents", ""},
      {1e300, "One Hundred   Thousand Dollars and 00 Cents", ""},
  };
  for (const Case& c : cases) {
    const ValueWords words = GetValueWords(c.amount, CurrencyWords{});
    EXPECT_EQ(words.line1, c.line1) << c.amount;
    EXPECT_EQ(words.line2, c.line2) << c.amount;
  }
}

TEST(GetValueWords, TakesTheCurrencysWordsAndBreaksByCharacters) {
  struct Case {
    const char* dollar;
    const char* line1;
    const char* line2;
  };
  const Case cases[] = {
      {"", "One  and 00 Pence", ""},
      {"Pounds", "One Pounds and 00 Pence", ""},
      // 50 characters stay on the first line whole, 51 do not; a letter with a macron is one.
      {"Pāāāāāāāāāāāāāāāāāāāāāāāāāāāāā", "One Pāāāāāāāāāāāāāāāāāāāāāāāāāāāāā and 00 Pence", ""},
      {"Pāāāāāāāāāāāāāāāāāāāāāāāāāāāāāāāā", "One Pāāāāāāāāāāāāāāāāāāāāāāāāāāāāāāāā and 00 Pence",
       ""},
      {"Pāāāāāāāāāāāāāāāāāāāāāāāāāāāāāāāāā", "One Pāāāāāāāāāāāāāāāāāāāāāāāāāāāāāāāāā and 00 ",
       "Pence"},
  };
  test::FakePlatform machine;
  Session session(machine.Parts());
  EXPECT_EQ(GetValueWords(session.settings, 1).line1, "One Dollars and 00 Cents");
  session.settings.SaveSettingText("Cheque", "Cents", "Pence");
  for (const Case& c : cases) {
    session.settings.SaveSettingText("Cheque", "Dollar", c.dollar);
    const ValueWords words = GetValueWords(session.settings, 1);
    EXPECT_EQ(words.line1, c.line1);
    EXPECT_EQ(words.line2, c.line2);
  }
}

TEST(WordTest, KnowsTheNumbersWithOneWord) {
  EXPECT_EQ(Word(1), "One");
  EXPECT_EQ(Word(19), "Nineteen");
  EXPECT_EQ(Word(20), "Twenty");
  EXPECT_EQ(Word(90), "Ninety");
  for (const int n : {-32768, -1, 0, 21, 29, 91, 100, 32767}) {
    EXPECT_EQ(Word(static_cast<std::int16_t>(n)), "") << n;
  }
}

}  // namespace
}  // namespace tenora
