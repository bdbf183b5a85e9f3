#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/query/query_test_support.h"
#include "platform/runtime/currency.h"

namespace tenora::query {
namespace {

using ::testing::ElementsAre;

// A small table made of selects: n, word, amount, flag.
constexpr std::string_view kSmall =
    "(select 1 as n, 'beta' as word, ccur(10.10) as amount, true as flag union all "
    "select 2, 'Alpha', ccur(0.25), false union all select 3, 'ALPHA ', null, true union all "
    "select 4, null, ccur(-3), false) as small";

std::string Small(std::string_view items, std::string_view rest = "") {
  return std::string("select ").append(items).append(" from ").append(kSmall).append(" ").append(
      rest);
}

TEST(Dialect, ComputesExpressions) {
  SampleAgency agency;
  const struct {
    const char* expression;
    const char* result;
  } kCases[] = {
      {"1 + 2 * 3", "7"},
      {"10 - 4 - 3", "3"},
      {"2 ^ 3 ^ 2", "64"},
      {"-2 ^ 2", "-4"},
      {"2 ^ -1", "0.5"},
      {"7 / 2", "3.5"},
      {"7.5 \\ 2", "4"},
      {"-7 mod 3", "-1"},
      {"1 - -1", "2"},
      {"'a' & null & 5", "a5"},
      {"'a' + null", "null"},
      {"null + 'a'", "null"},
      {"null & null", "null"},
      {"'a' + 'b'", "ab"},
      {"'1' + 1", "2"},
      {"'it''s' & \" \"\"so\"\"\"", "it's \"so\""},
      {"1 = 1", "True"},
      {"not 1 = 1", "False"},
      {"true + 1", "0"},
      {"yes = true", "True"},
      {"no = false and not no", "True"},
      {"(select no from (select 7 as no) as x) + yes", "6"},
      {"1 = 2 or null", "null"},
      {"1 = 1 xor 1 = 2", "True"},
      {"1 = 1 imp 1 = 2", "False"},
      {"null = null", "null"},
      {"null is null", "True"},
      {"'ABC' = 'abc '", "True"},
      {"'e' = 'é'", "False"},
      {"3 between 1 and 5", "True"},
      {"'b' not between 'A' and 'C'", "False"},
      {"2 in (1, 2, 3)", "True"},
      {"'B' in ('a', 'b')", "True"},
      {"'T1' like 't#'", "True"},
      {"'T1' not like 't#'", "False"},
      {"#3/5/2026# + 1", "2026-03-06"},
      {"#3/5/2026# - #3/1/2026#", "4"},
      {"#12:00# + #3/5/2026#", "2026-03-05 12:00:00"},
      {"#1/1/1234# < #12/29/1899 06:00#", "True"},
      {"iif(2 > 1, 'yes', 'no')", "yes"},
      {"iif(null, 'yes', 'no')", "no"},
      {"choose(2, 'a', 'b')", "b"},
      {"choose(3, 'a', 'b')", "null"},
      {"switch(1 = 2, 'a', 1 = 1, 'b')", "b"},
      {"nz(null, 5)", "5"},
      {"isnull(null)", "True"},
      {"left('Māhuta', 2) & right('abc', 1) & mid('abcdef', 2, 3)", "Mācbcd"},
      {"left('ab', 9) & mid('ab', 3)", "ab"},
      {"len('Māhuta') & instr('Whaanga', 'AN') & instr(3, 'aXbX', 'x')", "644"},
      {"instrrev('Whaanga', 'A') & instrrev('aXbX', 'x', 3) & instrrev('aXbx', 'X', -1, 0)", "722"},
      {"instrrev('abab', 'ab', 3) & instrrev('ab', 'b', 1) & instrrev('ab', 'a', 3)", "100"},
      {"mid('Ann van Lee', instrrev('Ann van Lee', ' ') + 1)", "Lee"},
      {"ucase('ō') & lcase('Ō') & trim('  a ') & ltrim(' b ') & rtrim(' c ')", "Ōōab  c"},
      {"replace('a-b-c', '-', '+')", "a+b+c"},
      {"round(2.345, 2) & ' ' & round(2.355, 2) & ' ' & round(-0.5)", "2.34 2.36 0"},
      {"round(ccur(2.345), 2) & ' ' & round(ccur(2.5), 0)", "2.34 2"},
      {"int(-1.5) & fix(-1.5) & abs(-2) & sgn(-3)", "-2-12-1"},
      {"val('12.5abc') & cint(2.5) & clng('7') & cdbl('1.5')", "12.5271.5"},
      {"val(' &HFF ') & val('&hffff') & val('&H10000') & val('&O17x') & val('&H')",
       "255-165536150"},
      {"isnumeric('1,000') & isnumeric('1,000.5') & isnumeric(',5') & isnumeric('1.5,0')",
       "TrueTrueFalseFalse"},
      {"cdbl('1,000.5') & ' ' & cint('1,000') & ' ' & ccur('-2,000')", "1000.5 1000 -2000"},
      {"ccur('1.5') & ' ' & ccur(0.1) * 3 & ' ' & ccur(2) * ccur(1.5)", "1.5 0.3 3"},
      {"cstr(true) & cbool(0)", "TrueFalse"},
      {"now()", "2026-11-21 09:30:00"},
      {"date()", "2026-11-21"},
      {"year(date()) & month(date()) & day(date())", "20261121"},
      {"dateadd('m', 1, #1/31/2026#)", "2026-02-28"},
      {"dateadd('ww', -1, #1/8/2026 10:00#)", "2026-01-01 10:00:00"},
      {"dateadd('n', 90, #12/31/2026 23:00#)", "2027-01-01 00:30:00"},
      {"datediff('d', #1/1/2026 23:59#, #1/2/2026#)", "1"},
      {"datediff('m', #1/31/2026#, #2/1/2026#)", "1"},
      {"datediff('ww', #11/21/2026#, #11/22/2026#)", "1"},
      {"datepart('ww', #1/4/2026#) & datepart('q', #4/1/2026#)", "22"},
      {"dateserial(2026, 14, 0)", "2027-01-31"},
      {"weekday(#11/21/2026#)", "7"},
      {"format(#3/5/2026 14:05#, 'dd/mm/yyyy hh:nn')", "05/03/2026 14:05"},
      {"format(#3/5/2026 14:05#, 'medium time')", "02:05 PM"},
      {"format(1234567.891, '#,##0.00') & format(0.5, 'percent')", "1,234,567.8950.00%"},
      {"format(-5, 'currency') & format(true, 'yes/no')", "-$5.00Yes"},
      {"format(#3/5/2026#, 'ddddd') & format(#3/5/2026#, ' q ww y w \\q \"d\"')",
       "05/03/2026 1 10 64 5 q d"},
      {"format(#1/1/2026#, 'short date') & format(#1/1/2026#, ' ww dddddd')",
       "01/01/2026 1 Thursday, 1 January 2026"},
      {"format(#12/31/2027#, 'ww') & format(#3/5/2026 14:05:06#, ' h:m a/p c')",
       "53 2:5 p 05/03/2026 14:05:06"},
      {"format(46000, 'q') & format('3 Mar 2026', ' d.m.')", "4 3.3."},
      {"format(12345.678, 'scientific') & format(0.000123, ' 0.#E-0') & format(0, ' 0.0E+0')",
       "1.23E+04 1.2E-4 0.0E+0"},
      {"format(9.999, '0.00E+00') & ' ' & format(-0.5, 'Scientific')", "1.00E+01 -5.00E-01"},
      {"format(-7, '0.0;;zero') & ' ' & format(0, '0.0;;\"nil\"') & ' ' & format(7, '0.0;;zero')",
       "-7.0 nil 7.0"},
      {"format(0, '0;-0;') & format(-3, '0;(0)') & format(null, '0;-0;0;\\N\\A')", "0(3)NA"},
      {"format(6431234, '(00) 000-0000') & format(5, ' #.##') & format(0.5, ' #.0')",
       "(00) 643-1234 5. .5"},
      {"format(12345678.5, '#,##0,') & format(-0.001, ' 0.00') & format(-5, ' $0')",
       "12,346 0.00- $5"},
      {"format(5, 'General Number') & format('5.50', 'general number') & "
       "format(#3/5/2026#, 'Fixed') & format('0', 'On/Off')",
       "55.546086.00Off"},
      {"format(ccur(900000000000000) + ccur(0.1234), '#,##0.0000')", "900,000,000,000,000.1234"},
      {"format(7, null) & format('x', '0.00') & format(1234.5)", "7x1234.5"},
      {"'on ' & #3/5/2026# & ', ' & #3/5/2026 14:05# & ', ' & #14:05#",
       "on 05/03/2026, 05/03/2026 14:05:00, 14:05:00"},
      {"cdate(2958465.5) & ' ' & cdate(-657434)", "31/12/9999 12:00:00 01/01/0100"},
      {"cstr(dateserial(2026, 3, 5)) & len(#3/5/2026#)", "05/03/202610"},
      {"format('abc', '>') & format(null, '0')", "ABC"},
      {"format('5551234567', '(@@@) @@@-@@@@') & format(5551234, ' @@@-@@@@')",
       "(555) 123-4567 555-1234"},
      {"'[' & format('ab', '@@@@') & format('ab', '!@@@@') & format('ab', '&&&&\\!') & ']'",
       "[  abab  ab!]"},
      {"format('Māhuta', '>@@') & format('ABC', '!<@@-@') & format('', '@;\"none\"')",
       "MĀHUTAab-cnone"},
      {"format(null, '@;nil') & format('x', '@;nil') & format(#3/5/2026#, ' >@')",
       "nilx 05/03/2026"},
      {"format(#1/3/2027#, 'ww w') & format(#1/3/2027#, ' ww w', 2) & "
       "format(#1/3/2027#, ' ww w', 2, 2) & format(#1/3/2027#, ' ww', 2, 3)",
       "2 1 1 7 53 7 52"},
      {"datepart('ww', #12/30/2025#, 2, 2) & datepart('ww', #12/28/2026#, 2, 2) & "
       "datepart('w', #11/22/2026#, 2) & datepart('ww', #12/31/2028#, 1, 1)",
       "153754"},
      {"datediff('ww', #11/21/2026#, #11/22/2026#, 2, 2) & weekdayname(1, true, 2) & "
       "monthname(3, true) & weekdayname(7) & weekday(#11/22/2026#, 0)",
       "0MonMarSaturday1"},
      {"(select count(*) from glcodes)", "8"},
      {"exists (select * from glcodes where gl_code = 'rent')", "True"},
  };
  for (const auto& c : kCases)
    EXPECT_THAT(agency.Rows(std::string("select ") + c.expression), ElementsAre(c.result))
        << c.expression;
}

TEST(Dialect, KeepsTheTypesOfColumnsAndExpressions) {
  SampleAgency agency;
  const struct {
    const char* sql;
    std::size_t alternative;  // of Value
  } kCases[] = {
      {"select closed_yn from tenancy", 1},
      {"select bond > 1 from tenancy", 1},
      {"select monthly_day from tenancy", 2},
      {"select bond + 1 from tenancy", 4},
      {"select bond * 2 from tenancy", 4},
      {"select bond / 2 from tenancy", 3},
      {"select bond * 0.5 from tenancy", 3},
      {"select sum(bond) from tenancy", 4},
      {"select avg(bond) from tenancy", 4},
      {"select sum(amount)+0 as paid from revenues", 4},
      {"select count(*) from tenancy", 2},
      {"select max([when started]) from tenancy", 5},
      {"select first([when started]) from tenancy", 5},
      {"select iif(bond > 0, [when started], null) from tenancy", 5},
      {"select nz(name, '') from tenancy", 6},
      {"select fee_percent from owner", 3},
      {"select x from (select bond as x from tenancy) as t", 4},
  };
  for (const auto& c : kCases) EXPECT_EQ(agency.Single(c.sql).index(), c.alternative) << c.sql;
}

TEST(Dialect, ComputesMoneyExactly) {
  SampleAgency agency;
  std::string tenths = "select 0 as x where 1 = 2";
  for (int i = 0; i < 10; ++i) tenths += " union all select ccur(0.1)";
  EXPECT_EQ(agency.Single("select sum(x) from (" + tenths + ") as t"),
            Value(Currency::FromUnits(1)));
  EXPECT_EQ(agency.Rows(Small("sum(amount), avg(amount), count(amount)"))[0], "7.35|2.45|3");
  EXPECT_THAT(agency.Rows(Small("n", "where amount = 0.25")), ElementsAre("2"));
  EXPECT_THAT(agency.Rows(Small("n", "where amount > 0.2499 and amount < 10.1000001")),
              ElementsAre("1", "2"));
  EXPECT_EQ(agency.ErrorNumber("select sum(x) from (select ccur(9e14) as x union all select "
                               "ccur(9e14)) as t"),
            6);
}

TEST(Dialect, OrdersAsTheEngineDoes) {
  SampleAgency agency;
  EXPECT_THAT(agency.Rows(Small("n", "order by word, n desc")), ElementsAre("4", "3", "2", "1"));
  EXPECT_THAT(agency.Rows(Small("n", "order by flag desc, n")), ElementsAre("1", "3", "2", "4"));
  EXPECT_THAT(agency.Rows(Small("n", "order by flag, n")), ElementsAre("2", "4", "1", "3"));
  EXPECT_THAT(agency.Rows(Small("n, amount", "order by 2 desc")),
              ElementsAre("1|10.1", "2|0.25", "4|-3", "3|null"));
  EXPECT_THAT(agency.Rows(Small("n as place", "order by place desc")),
              ElementsAre("4", "3", "2", "1"));
}

TEST(Dialect, ReturnsTiesAfterTop) {
  SampleAgency agency;
  EXPECT_THAT(agency.Rows(Small("top 2 n", "where word is not null order by word")),
              ElementsAre("2", "3"));
  EXPECT_THAT(agency.Rows(Small("top 1 n", "where word is not null order by word")),
              ElementsAre("2", "3"));
  EXPECT_THAT(agency.Rows(Small("top 1 n", "order by word, n")), ElementsAre("4"));
  EXPECT_THAT(agency.Rows(Small("top 1 n", "order by amount > -9 desc")),
              ElementsAre("1", "2", "4"));
  EXPECT_EQ(agency.Rows("select top 3 reference from tenancy order by closed_yn").size(), 37u);
  EXPECT_THAT(agency.Rows(Small("top 9 n", "order by n")), ElementsAre("1", "2", "3", "4"));
  EXPECT_THAT(agency.Rows(Small("top 0 n", "order by n")), ::testing::IsEmpty());
  EXPECT_THAT(agency.Rows(Small("top 3 n")), ElementsAre("1", "2", "3"));
  EXPECT_THAT(agency.Rows(Small("top 50 percent n", "order by n")), ElementsAre("1", "2"));
  EXPECT_THAT(agency.Rows(Small("distinct top 1 word", "where word is not null order by word")),
              ElementsAre("Alpha"));
  EXPECT_THAT(agency.Rows(Small("n",
                                "where n in (select top 1 n from (select 2 as n union "
                                "select 3) as t order by n desc)")),
              ElementsAre("3"));
}

TEST(Dialect, GroupsAndCombines) {
  SampleAgency agency;
  EXPECT_THAT(
      agency.Rows(Small("word, count(*) as c", "group by word order by count(*) desc, word")),
      ElementsAre("Alpha|2", "null|1", "beta|1"));
  EXPECT_THAT(agency.Rows(Small("flag, sum(n)", "group by flag having sum(n) > 4")),
              ElementsAre("False|6"));
  EXPECT_THAT(agency.Rows(Small("left(word, 1) as l, max(n)",
                                "where not word is null group by left(word, 1)")),
              ElementsAre("A|3", "b|1"));
  EXPECT_THAT(agency.Rows(Small("first(word), last(n), min(amount), max(word)")),
              ElementsAre("beta|4|-3|beta"));
  EXPECT_THAT(agency.Rows("select lcase(x) from (select 'a' as x union select 'A' union select 'b' "
                          "order by x desc) as t"),
              ElementsAre("b", "a"));
  EXPECT_THAT(agency.Rows("select 1 as x union all select ccur(1.5) union all select null"),
              ElementsAre("1", "1.5", "null"));
  EXPECT_THAT(agency.Rows(Small("distinct word", "where word like 'a*'")), ElementsAre("Alpha"));
}

TEST(Dialect, KnowsAnItemByItsAliasInTheItemsThatFollow) {
  SampleAgency agency;
  const struct {
    const char* items;
    const char* row;
  } kCases[] = {
      {"sum(n) as total, total * 2 as twice, twice + total", "10|20|30"},
      {"count(word) as words, 'of ' & count(*) & ' ' & WORDS", "3|of 4 3"},
      {"max(n) as n1, n1 & '/' & min(n)", "4|4/1"},
      {"5 as five, five & '' as text, five + 1", "5|5|6"},
  };
  for (const auto& c : kCases)
    EXPECT_THAT(agency.Rows(Small(c.items, "having 1 = 1")), ElementsAre(c.row)) << c.items;
  // A column has precedence.
  EXPECT_THAT(agency.Rows(Small("n + 1 as amount, amount", "where n = 4")), ElementsAre("5|-3"));
}

TEST(Dialect, JoinsInEveryDirection) {
  SampleAgency agency;
  const std::string left = "(select 1 as a union all select 2) as l ";
  const std::string right = "(select 2 as b union all select 3) as r ";
  const auto joined = [&](const std::string& how) {
    return agency.Rows("select a, b from " + left + how + " join " + right + "on l.a = r.b");
  };
  EXPECT_THAT(joined("inner"), ElementsAre("2|2"));
  EXPECT_THAT(joined("left"), ElementsAre("1|null", "2|2"));
  EXPECT_THAT(joined("right outer"), ElementsAre("2|2", "null|3"));
  EXPECT_THAT(agency.Rows("select a, b from " + left + ", " + right + "where a + b = 4"),
              ElementsAre("1|3", "2|2"));
  EXPECT_THAT(
      agency.Rows("select t.reference, o.code from (tenancy t inner join property p on "
                  "t.[property code] = p.code) left join owner as o on p.ownercode = o.code where "
                  "t.reference = 't00001'"),
      ElementsAre("T00001|OW0006"));
  EXPECT_THAT(agency.Rows("select t.reference from tenancy t left join (property p inner join "
                          "owner o on p.ownercode = o.code) on t.[property code] = p.code where "
                          "o.code is null order by 1"),
              ElementsAre("T00042"));
}

TEST(Dialect, NamesFieldsAsTheEngineDoes) {
  SampleAgency agency;
  const std::string join = " from tenancy inner join property on tenancy.[property code] = code";
  const struct {
    std::string sql;
    std::vector<std::string> names;
  } kCases[] = {
      {"select property.address1" + join, {"address1"}},
      {"select tenancy.address1, property.address1" + join,
       {"tenancy.address1", "property.address1"}},
      {"select tenancy.address1 as a1, property.address1" + join, {"a1", "address1"}},
      {"select reference, [property code], reference" + join,
       {"reference", "Property Code", "reference"}},
      {"select count(*), 1 as one, bond + 1 from tenancy group by bond + 1",
       {"Expr1000", "one", "Expr1002"}},
  };
  for (const auto& c : kCases)
    EXPECT_EQ(agency.database().OpenRecordset(c.sql, kForwardOnly, kReadOnly)->FieldNames(),
              c.names)
        << c.sql;
}

}  // namespace
}  // namespace tenora::query
