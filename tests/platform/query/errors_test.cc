#include "support/errors.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/query/query_test_support.h"

namespace tenora::query {
namespace {

using ::testing::HasSubstr;

std::string Repeated(const std::string& text, int count) {
  std::string result;
  for (int i = 0; i < count; ++i) result += text;
  return result;
}

TEST(Statements, RaiseTheEnginesErrors) {
  SampleAgency agency;
  const struct {
    const char* sql;
    int number;
    const char* named;  // in the description
  } kCases[] = {
      {"select foo from tenancy", 3061, "Expected 1. Unknown: foo"},
      {"select foo, bar, FOO, tenancy.foo from tenancy", 3061, "Expected 3. Unknown: foo, bar"},
      {"select * from tenancy where owner.name = 'x'", 3061, "owner.name"},
      {"select * from tenancy order by foo", 3061, "foo"},
      {"select * from nosuch", 3078, "'nosuch'"},
      {"nosuch", 3078, "'nosuch'"},
      {"select x.* from tenancy", 3078, "'x'"},
      {"select address1 from tenancy, property", 3079, "'address1'"},
      {"select foo(1)", 3085, "'foo'"},
      {"select dlookup('name', 'tenancy', 'bond > 1')", 3085, "a select in brackets"},
      {"select DSum('bond', 'tenancy')", 3085, "'dsum' is not supported"},
      {"parameters x text; select x", 3129, "PARAMETERS clause is not supported"},
      {"transform sum(bond) select name from tenancy group by name pivot reference", 3129,
       "crosstab"},
      {"select * into copy from tenancy", 3129, "INTO"},
      {"select * from tenancy in 'x.mdb'", 3129, "another database"},
      {"select distinctrow tenancy.name from tenancy, property order by property.code", 3129,
       "DISTINCTROW"},
      {"select bond as b, sum(b) as s, sum(s) from tenancy group by bond", 3096, "s"},
      {"select name, later, bond as later from tenancy", 3061, "later"},
      {"select * from tenancy where", 3075, "incomplete"},
      {"select * from tenancy where name = 'abc", 3075, "'abc"},
      {"select [name from tenancy", 3075, "[name"},
      {"select * from tenancy where [when started] > #13/13/2026#", 3075, "#13/13/2026#"},
      {"select name name from tenancy", 3075, "name from"},
      {"select 1; select 2", 3075, "select 2"},
      {"select @name from tenancy", 3075, "@"},
      {"select left(name) from tenancy", 3075, "left"},
      {"select * from tenancy where name = 5", 3464, "mismatch"},
      {"select * from tenancy where [when started] = '2026'", 3464, "mismatch"},
      {"select * from tenancy where name", 3464, "mismatch"},
      {"select name, count(*) from tenancy", 3122, "'name'"},
      {"select name from tenancy where count(*) > 1", 3096, "count"},
      {"select distinct name from tenancy order by bond", 3093, "bond"},
      {"select name from tenancy where 1 in (select 1, 2)", 3306, "more than one field"},
      {"select 1 union select 1, 2", 3307, "do not match"},
      {"select 1 / 0", 11, "zero"},
      {"select cint(99999)", 6, "Overflow"},
      {"select 1e308 * 10", 6, "Overflow"},
      {"select -1e308 - 1e308", 6, "Overflow"},
      {"select sum(1e308) from owner", 6, "Overflow"},
      {"select avg(1e308) from owner where 1e308 + 1e308 > 0", 6, "Overflow"},
      {"select var(1e200 * len(code & name)) from owner", 6, "Overflow"},
      {"select cdate(1e10)", 6, "Overflow"},
      {"select cdate(2958466)", 6, "Overflow"},
      {"select cvdate(-657435)", 6, "Overflow"},
      {"select val('&H123456789')", 6, "Overflow"},
      {"select cdbl('x')", 13, "mismatch"},
      {"select instrrev('ab', 'a', 0)", 5, "Invalid procedure call"},
      {"", 3129, "SELECT"},
      {"hello world", 3129, "SELECT"},
      {"delete from tenancy", 3219, "Invalid operation"},
      {"update custom_fields set [value] = '1'", 3219, "Invalid operation"},
      {"attach 'x' as y", 3129, "SELECT"},
      {"pragma database_list", 3129, "SELECT"},
      {"select load_extension('x')", 3085, "load_extension"},
      {"select * from sqlite_master", 3078, "sqlite_master"},
      {"select * from t0", 3078, "t0"},
  };
  for (const auto& c : kCases) {
    const RuntimeError error = agency.Error(c.sql);
    EXPECT_EQ(error.number(), c.number) << c.sql << ": " << error.what();
    EXPECT_THAT(error.what(), HasSubstr(c.named)) << c.sql;
    EXPECT_THAT(error.what(), HasSubstr(c.sql)) << "the statement is in the description";
    EXPECT_EQ(error.source(), "DAO.Database");
  }
}

TEST(Statements, AreRefusedWhereTheyAreTooMuch) {
  SampleAgency agency;
  std::string doubling = "select 1 as x";
  for (int i = 0; i < 20; ++i) doubling = "select (" + doubling + ") as x order by 1";
  const std::string kCases[] = {
      "select " + Repeated("(", 5000) + "1" + Repeated(")", 5000),
      "select " + Repeated("not ", 5000) + "1",
      "select " + Repeated("left(", 60) + "'a'" + Repeated(",1)", 60),
      "select 1" + Repeated("+1", 5000),
      "select 1 where 1=1" + Repeated(" or 1=2", 5000),
      "select * from " + Repeated("(", 5000) + "tenancy",
      "select 1 from tenancy" + Repeated(", tenancy", 100),
      "select " + Repeated("(select ", 40) + "1" + Repeated(")", 40),
      doubling,
      "select '" + Repeated("x", 70000) + "'",
  };
  for (const std::string& sql : kCases)
    EXPECT_EQ(agency.ErrorNumber(sql), 3360) << sql.substr(0, 60);
}

TEST(Statements, EndWhenTheirTimeIsUp) {
  const auto workspace = Workspace::Create({}, std::chrono::milliseconds(1));
  SampleAgency agency;
  const auto database = workspace->OpenDatabase(agency.database().Name());
  const char* const endless =
      "select count(*) from revenues a, revenues b, revenues c where a.amount + b.amount + "
      "c.amount = 1";
  EXPECT_EQ(test::NumberOf([&] { RowsOf(*database, endless); }), 3059);
  // The connection remains usable.
  EXPECT_EQ(RowsOf(*database, "select count(*) from glcodes"), std::vector<std::string>{"8"});
}

TEST(Recordset, RaisesItsErrors) {
  SampleAgency agency;
  const auto number = [](const auto& work) {
    const RuntimeError error = test::RaisedBy(work).value();
    EXPECT_EQ(error.source(), "DAO.Recordset");
    return error.number();
  };
  const auto rows = agency.database().OpenRecordset("select gl_code from glcodes where type = 2",
                                                    kForwardOnly, kReadOnly);
  EXPECT_FALSE(rows->EndOfFile() || rows->BeginningOfFile());
  EXPECT_EQ(rows->Field("GL_Code"), Value(std::string("BOND")));
  EXPECT_EQ(number([&] { rows->Field("type"); }), 3265);
  EXPECT_EQ(number([&] { rows->Field(1); }), 3265);
  rows->MoveNext();
  EXPECT_TRUE(rows->EndOfFile());
  EXPECT_FALSE(rows->BeginningOfFile());
  EXPECT_EQ(number([&] { rows->Field("gl_code"); }), 3021);
  EXPECT_EQ(number([&] { rows->MoveNext(); }), 3021);
  rows->Close();
  rows->Close();
  EXPECT_EQ(number([&] { rows->EndOfFile(); }), 3420);
  const auto none = agency.database().OpenRecordset("select * from glcodes where type = -1",
                                                    kForwardOnly, kReadOnly);
  EXPECT_TRUE(none->EndOfFile() && none->BeginningOfFile());
}

}  // namespace
}  // namespace tenora::query
