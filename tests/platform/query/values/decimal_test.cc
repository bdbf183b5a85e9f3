#include "platform/query/values/decimal.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/access/showcase.h"
#include "platform/query/query_test_support.h"
#include "platform/runtime/files.h"
#include "support/errors.h"
#include "support/test_files.h"

namespace tenora::query {
namespace {

using ::testing::ElementsAre;

TEST(Decimals, SortByTheirKeysAndReadBackFromThem) {
  const char* const kInOrder[] = {"-340282366920938463463374607431768211455",
                                  "-1844674407370956.3961",
                                  "-1",
                                  "-0.0000000000000000000000000001",
                                  "0",
                                  "0.0000000000000000000000000001",
                                  "0.5",
                                  "1844674407370956.3961",
                                  "1844674407370956.39610000000000001",
                                  "79228162514264337593543950335"};
  std::string last;
  for (const char* text : kInOrder) {
    const std::string key = Decimal::Parse(text)->Key();
    EXPECT_EQ(Decimal::FromKey(key).Text(), text);
    EXPECT_GT(key, last) << text;
    last = key;
  }
  EXPECT_EQ(Decimal::Parse("1.50E1")->Key(), Decimal::Parse("+015.0")->Key());
  EXPECT_EQ(Decimal::Parse("-0")->Key(), Decimal().Key());
  for (const char* text : {"", ".", "1,5", "1.2.3", "1E", "0x1", "1E5x"})
    EXPECT_FALSE(Decimal::Parse(text)) << text;
  EXPECT_EQ(Decimal::Parse("1E-29")->Text() + Decimal::Parse("1E-400")->Text(), "00");
  EXPECT_EQ(test::NumberOf([] { Decimal::Parse("1E99999"); }), 6);
}

TEST(Decimals, AreComputedWithAllTheirDigits) {
  SampleAgency agency;
  const std::string large = "cdec('12345678901234567890.12345678')";
  const struct {
    std::string expression;
    const char* result;
  } kCases[] = {
      {large + " + 0.00000001", "12345678901234567890.12345679"},
      {large + " - 12345678901234567890", "0.12345678"},
      {"1 - " + large, "-12345678901234567889.12345678"},
      {"-" + large + " * 2", "-24691357802469135780.24691356"},
      {"cdec(2) / 3", "0.6666666666666666666666666667"},
      {"cdec('-0.00000000000005') * cdec('0.00000000000005')", "-0.0000000000000000000000000025"},
      {large + " > 12345678901234567890.12345677", "True"},
      {large + " = 12345678901234567890.12345678", "True"},
      {"-" + large + " = -12345678901234567890.12345678", "True"},
      {"cdec('0.1') * 3 = 0.3 and cdec(1) and not cdec(0)", "True"},
      {"cdec(ccur(1.5)) in (1.5, 2) and 3 between cdec(2) and 4", "True"},
      {"1.5 in (select cdec('1.50')) and cdec(1) in (select 1)", "True"},
      {"int(-" + large + ") & ' ' & fix(-" + large + ")",
       "-12345678901234567891 -12345678901234567890"},
      {"round(" + large + ", 3) & ' ' & round(cdec(2.5)) & ' ' & abs(cdec(-2))",
       "12345678901234567890.123 2 2"},
      {"format(" + large + ", '#,##0.00') & format(-" + large + ", ' 0')",
       "12,345,678,901,234,567,890.12- 12345678901234567890"},
      {"format(" + large + ", '0.0%') & ' ' & format(" + large + ", 'general number')",
       "1234567890123456789012.3% 12345678901234567890.12345678"},
      {"nz(iif(false, " + large + ", null), 7) & nz(cdec(null))", "70"},
      {"iif(true, " + large + ", 1)", "12345678901234567890.12345678"},
      {"clng(cdec('2.5')) & ' ' & ccur(cdec('1.23456')) & ' ' & cdec('2') ^ 3", "2 1.2346 8"},
  };
  for (const auto& c : kCases)
    EXPECT_THAT(agency.Rows("select " + c.expression), ElementsAre(c.result)) << c.expression;
  EXPECT_EQ(agency.ErrorNumber("select cdec(1) / 0"), 11);
  EXPECT_EQ(agency.ErrorNumber("select " + large + " * " + large + " * " + large), 6);
}

TEST(Decimals, OfColumnsAreComparedSummedAndSortedExactly) {
  const test::ScratchFolder folder;
  const std::filesystem::path path = folder / "types.mdb";
  WriteWholeFile(path, test::Showcase(1));
  const auto database = Workspace::Create()->OpenDatabase(path);
  const struct {
    const char* sql;
    std::vector<std::string> rows;
  } kCases[] = {
      {"select exact from all_types order by exact desc",
       {"1844674407370956.3961", "-1844674407370956.3961", "null"}},
      {"select sum(exact), avg(exact), min(exact), count(exact) from all_types where exact > 0",
       {"1844674407370956.3961|1844674407370956.3961|1844674407370956.3961|1"}},
      {"select sum(exact) from all_types", {"0"}},
      {"select tiny from all_types where exact = -1844674407370956.3961", {"200"}},
      {"select tiny from all_types where exact > 1844674407370956.396", {"200"}},
      {"select a.exact & '' from all_types as a inner join all_types as b on a.exact = b.exact "
       "where a.exact < 0",
       {"-1844674407370956.3961"}},
      {"select exact, count(*) from (select exact from all_types union all select exact from "
       "all_types) as twice where exact > 0 group by exact",
       {"1844674407370956.3961|2"}},
  };
  for (const auto& c : kCases) EXPECT_EQ(RowsOf(*database, c.sql), c.rows) << c.sql;
  database->BeginTrans();
  EXPECT_THAT(RowsOf(*database, "select exact from all_types where number = -2000000000"),
              ElementsAre("-1844674407370956.3961"));
}

}  // namespace
}  // namespace tenora::query
