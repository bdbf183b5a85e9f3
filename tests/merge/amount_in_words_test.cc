#include "merge/amount_in_words.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "platform/runtime/text.h"
#include "rental/session.h"
#include "support/fake_platform.h"

namespace tenora {
namespace {

// The words before the currency's.
std::string Words(int units) {
  const ValueWords words = GetValueWords(units, CurrencyWords{});
  const std::string sentence = words.line1 + words.line2;
  return sentence.substr(0, sentence.find(" Dollars and 00 Cents"));
}

TEST(GetValueWords, WritesNumbersAsEnglishWithTheCustomaryBlanks) {
  const std::vector<std::string> small = Split(
      "Zero One Two Three Four Five Six Seven Eight Nine Ten Eleven Twelve Thirteen Fourteen "
      "Fifteen Sixteen Seventeen Eighteen Nineteen",
      " ");
  const std::vector<std::string> tens =
      Split("Twenty Thirty Forty Fifty Sixty Seventy Eighty Ninety", " ");
  for (int n = 0; n < 100; ++n) {
    const std::string rest = n % 10 == 0 ? "" : " " + small[n % 10];
    EXPECT_EQ(Words(n), n < 20 ? small[n] : tens[n / 10 - 2] + rest);
    EXPECT_EQ(GetValueWords(n / 100.0, CurrencyWords{}).line1,
              "Zero Dollars and " + std::to_string(100 + n).substr(1) + " Cents");
  }
  // A lone digit behind "and" or "Thousand" stands two blanks off, "Thousand" behind "Hundred"
  // three.
  const std::pair<int, const char*> cases[] = {
      {100, "One Hundred"},
      {110, "One Hundred and Ten"},
      {209, "Two Hundred and  Nine"},
      {342, "Three Hundred and Forty Two"},
      {1000, "One Thousand"},
      {2003, "Two Thousand  Three"},
      {10010, "Ten Thousand Ten"},
      {45600, "Forty Five Thousand Six Hundred"},
      {100007, "One Hundred   Thousand  Seven"},
      {208110, "Two Hundred and  Eight Thousand One Hundred and Ten"},
      {999777, "Nine Hundred and Ninety Nine Thousand Seven Hundred and Seventy Seven"},
  };
  for (const auto& [units, words] : cases) EXPECT_EQ(Words(units), words);
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
