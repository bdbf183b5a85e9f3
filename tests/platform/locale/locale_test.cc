#include "platform/locale/locale.h"

#include <gtest/gtest.h>

#include <map>
#include <optional>
#include <string>

#include "support/environment.h"

namespace tenora {
namespace {

const Date kAfternoon = Date::FromCalendar(2026, 11, 21, 14, 30);

TEST(Locale, WritesEachNamedFormatAsTheRegionDoes) {
  const struct {
    const char *name, *long_date, *short_date, *time, *amount;
  } cases[] = {
      {"C", "Saturday, 21 November 2026", "21/11/2026", "02:30 PM", "$1,234.50"},
      {"C.UTF-8", "Saturday, 21 November 2026", "21/11/2026", "02:30 PM", "$1,234.50"},
      {"en_NZ", "Saturday, 21 November 2026", "21/11/2026", "02:30 PM", "$1,234.50"},
      {"en_US.UTF-8", "Saturday, November 21, 2026", "11/21/2026", "02:30 PM", "$1,234.50"},
      {"en_GB", "Saturday, 21 November 2026", "21/11/2026", "02:30 PM", "£1,234.50"},
      {"de_DE@euro", "Samstag, 21. November 2026", "21.11.2026", "02:30 PM", "1.234,50\u00A0€"},
      {"sv_SE", "lördag 21 november 2026", "2026-11-21", "02:30 em", "1\u00A0234,50\u00A0kr"},
  };
  for (const auto& expected : cases) {
    SCOPED_TRACE(expected.name);
    const auto locale = MakeLocale(expected.name);
    EXPECT_EQ(locale->LongDate(kAfternoon), expected.long_date);
    EXPECT_EQ(locale->ShortDate(kAfternoon), expected.short_date);
    EXPECT_EQ(locale->MediumTime(kAfternoon), expected.time);
    EXPECT_EQ(locale->CurrencyText(1234.5), expected.amount);
  }
}

TEST(Locale, KeepsDatesOfEveryCenturyWhereTheyAre) {
  const auto locale = MakeLocale("en_NZ");
  EXPECT_EQ(locale->LongDate(Date::FromCalendar(1234, 1, 2)), "Monday, 2 January 1234");
  EXPECT_EQ(locale->LongDate(Date::FromCalendar(1899, 12, 29, 23, 59)), "Friday, 29 December 1899");
  EXPECT_EQ(locale->LongDate(Date()), "Saturday, 30 December 1899");
  EXPECT_EQ(locale->ShortDate(Date::FromCalendar(9999, 12, 31)), "31/12/9999");
}

TEST(Locale, CountsTheHoursOfMidnightAndNoonAsTwelve) {
  const auto locale = MakeLocale("en_NZ");
  EXPECT_EQ(locale->MediumTime(Date::FromCalendar(2026, 1, 1, 0, 5)), "12:05 AM");
  EXPECT_EQ(locale->MediumTime(Date::FromCalendar(2026, 1, 1, 12, 0)), "12:00 PM");
  EXPECT_EQ(locale->MediumTime(Date::FromCalendar(1850, 1, 1, 9, 59, 59)), "09:59 AM");
}

TEST(Locale, RoundsAmountsToTheCurrencysOwnDigits) {
  EXPECT_EQ(MakeLocale("ja_JP")->Info(kCurrencyDigitsInfo), "0");
  EXPECT_EQ(MakeLocale("ar_KW")->Info(kCurrencyDigitsInfo), "3");
  EXPECT_EQ(MakeLocale("ja_JP")->CurrencyText(1234.5), "￥1,235");
  EXPECT_EQ(MakeLocale("en_NZ")->CurrencyText(2.675), "$2.68");
  EXPECT_EQ(MakeLocale("en_NZ")->CurrencyText(-0.001), "$0.00");
  EXPECT_EQ(MakeLocale("de_DE")->Info(kDecimalSeparatorInfo), ",");
  EXPECT_EQ(MakeLocale("C")->Info(kDecimalSeparatorInfo), ".");
  EXPECT_EQ(MakeLocale("C")->Info(kCurrencyDigitsInfo), "2");
  EXPECT_EQ(MakeLocale("C")->Info(1), "");
}

TEST(Locale, WritesDigitsThatOtherPartsCanRead) {
  EXPECT_EQ(MakeLocale("fa_IR")->ShortDate(kAfternoon), "2026/11/21");
  EXPECT_NE(MakeLocale("ar_EG")->CurrencyText(1234.5).find("1,234.50"), std::string::npos);
}

TEST(Locale, FollowsTheVariablesInTheirOrder) {
  const struct {
    std::map<std::string, std::string> variables;
    const char *short_date, *amount;
  } cases[] = {
      {{}, "21/11/2026", "$1,234.50"},
      {{{"LANG", "en_US.UTF-8"}}, "11/21/2026", "$1,234.50"},
      {{{"LANG", "en_US.UTF-8"}, {"LC_TIME", "en_GB"}}, "21/11/2026", "$1,234.50"},
      {{{"LANG", "en_US.UTF-8"}, {"LC_MONETARY", "en_GB"}}, "11/21/2026", "£1,234.50"},
      {{{"LC_ALL", "de_DE"}, {"LC_TIME", "en_GB"}, {"LANG", "en_US"}},
       "21.11.2026",
       "1.234,50\u00A0€"},
      {{{"LC_ALL", "C"}, {"LANG", "en_US"}}, "21/11/2026", "$1,234.50"},
      {{{"LC_ALL", "no such locale"}}, "21/11/2026", "$1,234.50"},
  };
  for (const auto& expected : cases) {
    const auto value = [&](const char* name) -> std::optional<std::string> {
      const auto found = expected.variables.find(name);
      return found == expected.variables.end() ? std::nullopt : std::optional(found->second);
    };
    const test::Environment environment({{"LC_ALL", value("LC_ALL")},
                                         {"LC_TIME", value("LC_TIME")},
                                         {"LC_MONETARY", value("LC_MONETARY")},
                                         {"LC_NUMERIC", std::nullopt},
                                         {"LANG", value("LANG")}});
    const auto locale = MakeLocale();
    EXPECT_EQ(locale->ShortDate(kAfternoon), expected.short_date);
    EXPECT_EQ(locale->CurrencyText(1234.5), expected.amount);
  }
}

}  // namespace
}  // namespace tenora
