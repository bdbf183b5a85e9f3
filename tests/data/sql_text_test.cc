#include "data/sql_text.h"

#include <gtest/gtest.h>

#include "platform/runtime/error.h"
#include "support/fake_platform.h"

namespace tenora {
namespace {

TEST(FixSQL, RewritesBooleanWordsAndDoublesOnlyStrayApostrophes) {
  const struct {
    std::string sql, fixed;
  } cases[] = {
      {"", ""},
      {"select * from tenancy", "select * from tenancy"},
      {"where code='T1' and name='Smith'", "where code='T1' and name='Smith'"},
      // Lower case only, everywhere.
      {"where closed=false and open=true", "where closed=0 and open=-1"},
      {"where a=True or b=FALSE", "where a=True or b=FALSE"},
      {"where falsetrue='untrue'", "where 0-1='un-1'"},
      // One stray apostrophe inside a literal. Statements are written with a blank behind the sign:
      // without it the sign is still seen behind a one-letter start.
      {"where name = 'O'Brien'", "where name = 'O''Brien'"},
      {"where name = 'O'Brien' and code='T1'", "where name = 'O''Brien' and code='T1'"},
      {"where name='O'Brien'", "where name='O'Brien'"},
      {"where name='Mc'Brien'", "where name='Mc''Brien'"},
      {"where name = 'O'Brien' order by code", "where name = 'O''Brien' order by code"},
      {"where name <> 'O'Brien'", "where name <> 'O''Brien'"},
      {"where name LIKE 'O'Brien*'", "where name LIKE 'O''Brien*'"},
      {"where name like'O'Brien' OR code like 'x'", "where name like'O''Brien' OR code like 'x'"},
      {"values ('O'Brien')", "values (''O''Brien'')"},
      // A closing apostrophe is known by what follows, if a fifth character stands behind it.
      {"x 'ab' and 'c", "x ''ab' and ''c"},
      {"x 'ab' or'c", "x ''ab'' or''c"},
      {"x 'ab' or 'c", "x ''ab' or ''c"},
      {"x 'ab'  and 'c", "x ''ab'  and ''c"},
      {"name='x'' and", "name='x''' and"},
      {"name='xyz'' and ", "name='xyz''' and "},
      // Two strays cancel out: an even count is left alone.
      {"where name='O'Brien's'", "where name='O'Brien's'"},
      // Windows at the ends of the text.
      {"'", "'"},
      {"'a", "''a"},
      {"a'b", "a''b"},
      {"='b", "='b"},
      {"ke'b", "ke'b"},
      {"x'''", "x'''''"},
      // Three characters, not three bytes: the sign before a two-byte letter is still seen.
      {"='\xC3\xA9'x'", "='\xC3\xA9'x'"},
      {"where name='\xC3\xA9\xC3\xA9\xC3\xA9'x'", "where name='\xC3\xA9\xC3\xA9\xC3\xA9''x'"},
      {"a 'b' and\xC3'", "a ''b' and\xC3'"},  // a broken character counts as one
  };
  for (const auto& c : cases) EXPECT_EQ(FixSQL(c.sql), c.fixed) << c.sql;
}

TEST(FixSQL, IsLinearInALongText) {
  const std::string quotes(200'001, '\'');
  EXPECT_EQ(FixSQL(quotes).size(), 2 * quotes.size() - 1);
}

TEST(SQLDate, PutsMonthFirst) {
  EXPECT_EQ(SQLDate(Date::FromCalendar(2026, 3, 5)), "#03/05/2026#");
  EXPECT_EQ(SQLDate(Date::FromCalendar(2026, 11, 15, 23, 59, 59)), "#11/15/2026#");
  EXPECT_EQ(SQLDateTime(Date::FromCalendar(2026, 3, 5, 14, 7, 9)), "#14:07:09 03/05/2026#");
  EXPECT_EQ(SQLDateTime(Date::FromCalendar(1234, 12, 31)), "#00:00:00 12/31/1234#");
}

TEST(NumberFormat, FollowsTheCurrencyDigitsOfTheSystem) {
  const struct {
    std::string digits, pattern;
  } cases[] = {{"2", "###0.00"},
               {"3", "###0.000"},
               {"0", "###0.00"},
               {"", "###0.00"},
               {"99", "###0.00000000000000"}};
  test::PlainLocale locale;
  for (const auto& c : cases) {
    locale.currency_digits = c.digits;
    EXPECT_EQ(NumberFormat(locale), c.pattern) << c.digits;
  }
  locale.currency_digits = "two";
  EXPECT_THROW(NumberFormat(locale), RuntimeError);
}

TEST(MoneyText, WritesTheLocalesDecimalSeparator) {
  test::PlainLocale locale;
  EXPECT_EQ(MoneyText(locale, 1234.5), "1234.50");
  locale.decimal_separator = ",";
  locale.currency_digits = "3";
  EXPECT_EQ(MoneyText(locale, -0.5), "-0,500");
}

}  // namespace
}  // namespace tenora
