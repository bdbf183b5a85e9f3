#include "merge/amount_in_words.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <tuple>
#include <utility>

#include "rental/session.h"
#include "support/fake_platform.h"

namespace tenora {
namespace {

// Plain English with single blanks: "Four Hundred and Six Thousand Seven"; nothing for 0.
std::string English(int n) {
  static const std::string kOnes[]{"",        "One",     "Two",       "Three",    "Four",
                                   "Five",    "Six",     "Seven",     "Eight",    "Nine",
                                   "Ten",     "Eleven",  "Twelve",    "Thirteen", "Fourteen",
                                   "Fifteen", "Sixteen", "Seventeen", "Eighteen", "Nineteen"};
  static const std::string kTens[]{"Twenty", "Thirty",  "Forty",  "Fifty",
                                   "Sixty",  "Seventy", "Eighty", "Ninety"};
  const auto joined = [](const std::string& first, const char* link, int rest) {
    return rest == 0 ? first : first + link + English(rest);
  };
  if (n >= 1000) return joined(English(n / 1000) + " Thousand", " ", n % 1000);
  if (n >= 100) return joined(kOnes[n / 100] + " Hundred", " and ", n % 100);
  if (n >= 20) return joined(kTens[n / 10 - 2], " ", n % 10);
  return kOnes[n];
}

// As cheques carry it: a lone digit behind "and" or "Thousand" stands two blanks off, "Thousand"
// behind "Hundred" three.
std::string Sentence(int units, int cents) {
  std::string words = units == 0 ? "Zero" : English(units);
  const auto widen = [&](const std::string& behind, std::size_t blanks) {
    const std::size_t at = words.rfind(behind);
    if (at != std::string::npos) words.insert(at + behind.size(), blanks, ' ');
  };
  const int thousands = units / 1000, rest = units % 1000;
  if (rest % 100 > 0 && rest % 100 < 10) widen(rest > 99 ? "and" : "Thousand", 1);
  if (thousands > 0 && thousands % 100 == 0) words.insert(words.find(" Thousand"), "  ");
  if (thousands > 100 && thousands % 100 < 10 && thousands % 100 > 0) {
    words.insert(words.find("and ") + 4, " ");
  }
  return words + " Dollars and " + std::to_string(100 + cents).substr(1) + " Cents";
}

bool Right(int units, int cents) {
  const std::string sentence = Sentence(units, cents);
  const std::size_t cut = sentence.size() <= 50 ? sentence.size() : sentence.rfind(' ', 49) + 1;
  const ValueWords words = GetValueWords(units + cents / 100.0, CurrencyWords{});
  return words.line1 == sentence.substr(0, cut) && words.line2 == sentence.substr(cut);
}

TEST(GetValueWords, WritesEveryAmountAsEnglishWithTheCustomaryBlanks) {
  for (int units = 0; units < 1'000'000; ++units) {
    ASSERT_TRUE(Right(units, units % 100)) << Sentence(units, units % 100);
  }
  for (const int units : {0, 1, 9, 10, 105, 999, 1000, 99'999, 777'777, 999'999}) {
    for (int cents = 0; cents < 100; ++cents) ASSERT_TRUE(Right(units, cents)) << units;
  }
}

TEST(GetValueWords, WritesWhatChequesHaveAlwaysCarried) {
  const std::tuple<double, const char*, const char*> cases[] = {
      {1234.56, "One Thousand Two Hundred and Thirty Four Dollars ", "and 56 Cents"},
      {0.5, "Zero Dollars and 50 Cents", ""},
      {1, "One Dollars and 00 Cents", ""},
      {105, "One Hundred and  Five Dollars and 00 Cents", ""},
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
      {-123456.78, "ZeroTwelveThree Hundred and Forty Five Dollars ", "and 78 Cents"},
      {1e300, "One Hundred   Thousand Dollars and 00 Cents", ""},
      {std::numeric_limits<double>::quiet_NaN(), "Zero Dollars and 00 Cents", ""},
      {-std::numeric_limits<double>::infinity(), "Zero Dollars and 00 Cents", ""},
  };
  for (const auto& [amount, line1, line2] : cases) {
    const ValueWords words = GetValueWords(amount, CurrencyWords{});
    EXPECT_EQ(words.line1, line1) << amount;
    EXPECT_EQ(words.line2, line2) << amount;
  }
}

TEST(GetValueWords, TakesTheCurrencysWordsFromTheSettingsAndCountsCharacters) {
  test::FakePlatform machine;
  Session session(machine.Parts());
  EXPECT_EQ(GetValueWords(session.settings, 1).line1, "One Dollars and 00 Cents");
  session.settings.SaveSettingText("Cheque", "Cents", "Pence");
  // 50 characters stay on the first line whole, 51 do not; a letter with a macron is one.
  for (const auto& [letters, line2] : {std::pair(0, ""), {32, ""}, {33, "Pence"}}) {
    std::string dollar = "P";
    for (int i = 0; i < letters; ++i) dollar += "ā";
    session.settings.SaveSettingText("Cheque", "Dollar", dollar);
    const ValueWords words = GetValueWords(session.settings, 1);
    EXPECT_EQ(words.line1 + words.line2, "One " + dollar + " and 00 Pence");
    EXPECT_EQ(words.line2, line2);
  }
}

}  // namespace
}  // namespace tenora
