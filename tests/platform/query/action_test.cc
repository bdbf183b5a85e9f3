// Statements that change rows. mdb-export reads what they leave.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <array>

#include "platform/access/file_builder.h"
#include "platform/query/engine.h"
#include "platform/runtime/files.h"
#include "platform/runtime/text.h"
#include "query_test_support.h"
#include "support/errors.h"
#include "support/test_files.h"

namespace tenora::query {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class Actions : public testing::Test {
 protected:
  Actions() {
    std::filesystem::copy_file(test::SampleDatabase(), path_);
    database_ = workspace_->OpenDatabase(path_);
  }

  std::vector<std::string> Rows(std::string_view sql) { return RowsOf(*database_, sql); }
  int ErrorOf(std::string_view sql) {
    return test::NumberOf([&] { database_->Execute(sql); });
  }
  // The lines mdb-export writes of a table that hold this text.
  std::vector<std::string> Exported(const std::string& table, const std::string& part) {
    const test::ProcessResult result =
        test::RunProcess({"mdb-export", "-H", "-Q", path_.string(), table});
    EXPECT_EQ(result.status, 0) << result.errors;
    std::vector<std::string> found;
    for (const std::string& line : Split(result.output, "\n")) {
      if (line.find(part) != std::string::npos) found.push_back(line);
    }
    return found;
  }

  test::ScratchFolder folder_;
  std::filesystem::path path_ = folder_ / "property.mdb";
  std::unique_ptr<Workspace> workspace_ =
      Workspace::Create([] { return Date::FromCalendar(2026, 11, 21, 9, 30); });
  std::unique_ptr<EngineDatabase> database_;
};

TEST_F(Actions, TheReceiptCountersStatementsAsTheyAreSent) {
  database_->Execute(
      "insert into glcodes(gl_code, type, taxable_yn, balancedate, description, bankbalance, "
      "money1) values ('NxtReceipt', 202, 1, #11/21/2026#, 'Next Receipt Number', 0, 0)");
  database_->Execute(
      "insert into custom_fields(parentcode, parenttype, fieldcode, [value]) values ('PR00001', "
      "202, 'NxtReceipt', '1000')");
  EXPECT_EQ(database_->Execute("update custom_fields set [value] = '1001' where parenttype=202 and "
                               "parentcode = 'PR00001' and fieldcode = 'NxtReceipt'"),
            1);
  EXPECT_THAT(Rows("select * from custom_fields where fieldcode = 'nxtreceipt'"),
              ElementsAre("PR00001|202|NxtReceipt|1001"));
  EXPECT_THAT(Exported("custom_fields", "NxtReceipt"), ElementsAre("PR00001,202,NxtReceipt,1001"));
  EXPECT_THAT(
      Exported("glcodes", "NxtReceipt"),
      ElementsAre("NxtReceipt,Next Receipt Number,202,0,0,1,11/21/26 00:00:00,0.0000,0.0000"));
}

TEST_F(Actions, ConditionsAndValuesOfEveryKindFindTheirRows) {
  const struct {
    const char* statement;
    std::int64_t rows;
    const char* check;
    const char* expected;
  } cases[] = {
      {"update property set bedrooms = bedrooms + 10 where bedrooms > 4", -1,
       "select count(*) from property where bedrooms between 5 and 9", "0"},
      {"update tenancy set email = 'x' & reference & '@example.test' where reference in "
       "('T00001','T00002')",
       2, "select email from tenancy where reference = 't00002'", "xT00002@example.test"},
      {"update tenancy set closed_yn = true, [current rent] = 99.5 where reference = 'T00003';", 1,
       "select closed_yn, [current rent] from tenancy where reference = 'T00003'", "True|99.5"},
      {"delete from revenues where amount < 0 or amount > 1e9", 0, "select count(*) from revenues",
       "1646"},
      {"delete * from rentchanges where tenantcode = 'T00010' and changedate > #11/21/2026#", 1,
       "select count(*) from rentchanges where tenantcode = 'T00010'", "1"},
      {"insert into rentchanges values ('T00010', #1234-01-01#, 1.0001)", 1,
       "select changevalue from rentchanges where changedate < #01/01/1900#", "1.0001"},
      {"update owner set notes = null where code = 'OW0001'", 1,
       "select notes from owner where code = 'OW0001'", "null"},
      {"update tenancy set comments = 'Ngā mihi, O''Brien' where name like 'tama o*'", 2,
       "select distinct comments from tenancy where comments is not null and name like 'tama o*'",
       "Ngā mihi, O'Brien"},
      // A value that a column cannot store equals none of its values.
      {"update tenancy set comments = 'half' where monthly_day = 2.5", 0,
       "select count(*) from tenancy where comments = 'half'", "0"},
      {"delete from tenancy where monthly_day = 99999999999", 0,
       "select count(*) from tenancy where monthly_day > 31", "0"},
      {"delete from owner where code = 'a code that is longer than the column is'", 0,
       "select count(*) from owner", "12"},
      {"update owner set notes = 'found' where notes = ''", 0,
       "select count(*) from owner where notes = 'found'", "0"},
      {"insert into rentchanges (tenantcode, changevalue) select reference, bond * 2 from tenancy "
       "where reference < 'T00003'",
       2,
       "select count(*) from rentchanges r inner join tenancy t on r.tenantcode = t.reference "
       "where r.changevalue = t.bond * 2 and r.changedate is null",
       "2"},
      {"insert into rentchanges select r.changevalue, 'copy' as tenantcode from rentchanges as r "
       "where r.changedate is null",
       2, "select count(*) from rentchanges where tenantcode = 'copy'", "2"},
      {"insert into rentchanges select * from rentchanges where 1 = 2", 0,
       "select count(*) from rentchanges where tenantcode = 'copy'", "2"},
      {"update (tenancy as t inner join property as p on t.[property code] = p.code) inner join "
       "owner as o on p.ownercode = o.code set t.comments = o.name & t.name, t.bond = p.bedrooms "
       "where t.reference = 'T00001'",
       1,
       "select count(*) from tenancy, owner where reference = 'T00001' and owner.code = 'OW0006' "
       "and comments = owner.name & tenancy.name",
       "1"},
      {"update property p inner join tenancy on tenancy.[property code] = p.code set details = "
       "'let'",
       -1,
       "select count(*) from property where (nz(details) = 'let') <> (code in (select "
       "[property code] from tenancy))",
       "0"},
      {"update tenancy as t set t.comments = 'alias' where t.reference = 'T00004'", 1,
       "select comments from tenancy where reference = 'T00004'", "alias"},
      {"update tenancy set comments = (select count(*) from owner) where reference in (select "
       "max(reference) from tenancy)",
       1, "select top 1 comments from tenancy order by reference desc", "12"},
      {"delete distinctrow r.* from rentchanges as r inner join tenancy as t on r.tenantcode = "
       "t.reference where r.changedate is null",
       2, "select count(*) from rentchanges where changedate is null", "2"},
      // Each row once, although its new key sorts it after those still to come.
      {"update owner set code = 'z' & code", 12, "select count(*) from owner where code like 'zo*'",
       "12"},
      {"delete insp_schedule.* from insp_schedule where 1 = 0", 0,
       "select count(*) from insp_schedule", "68"},
      {"delete from insp_schedule", 68, "select count(*) from insp_schedule", "0"},
  };
  for (const auto& c : cases) {
    const std::int64_t rows = database_->Execute(c.statement);
    if (c.rows >= 0) {
      EXPECT_EQ(rows, c.rows) << c.statement;
    }
    EXPECT_THAT(Rows(c.check), ElementsAre(c.expected)) << c.statement;
  }
}

TEST_F(Actions, RefusedStatementsChangeNothing) {
  const struct {
    const char* statement;
    int error;
  } cases[] = {
      {"update tenancy set reference = 'T00002' where reference = 'T00001'", 3022},
      {"insert into tenancy (reference, nosuch) values ('X', 1)", 3127},
      {"insert into nosuch values (1)", 3078},
      {"insert into rentchanges values (1, 2)", 3346},
      {"insert into rentchanges (tenantcode) values ('a', 'b')", 3346},
      {"insert into rentchanges select reference from tenancy", 3127},
      {"insert into rentchanges (tenantcode) select code, code from owner", 3346},
      {"insert into rentchanges select tenantcode, tenantcode from rentchanges", 3063},
      {"insert into owner (code, name) select 'Z' & left(code, 2), name from owner", 3022},
      {"update tenancy set monthly_day = 'x' where reference = 'T00001'", 3421},
      {"update tenancy set every_freq = 'a long frequency' where reference = 'T00001'", 3163},
      {"update tenancy set name = 'x' where nosuch = 1", 3061},
      {"update tenancy set nosuch = 1", 3061},
      {"update tenancy set [when started] = 1e10", 3349},
      {"update tenancy set [when started] = 2958466", 3349},
      {"update tenancy set [when started] = [when started] + 1e10", 6},
      {"insert into rentchanges (tenantcode, changedate) values ('T00001', -657435)", 3349},
      {"select * from tenancy", 3065},
      {"update tenancy set name", 3075},
      {"delete tenancy", 3075},
      {"drop table tenancy", 3219},
      {"update tenancy inner join owner on true set name = 'x'", 3079},
      {"update tenancy inner join owner on true set owner.name = tenancy.name", 3219},
      {"update tenancy, owner set tenancy.name = 'x', owner.notes = 'y'", 3219},
      {"update tenancy set owner.name = 'x'", 3078},
      {"update property left join owner on property.ownercode = owner.code and owner.code = '' "
       "set owner.name = 'x'",
       3219},
      {"update (select * from tenancy) as t set name = 'x'", 3073},
      {"delete from tenancy, owner", 3128},
      {"insert into owner (code, Code) values ('a', 'b')", 3063},
      {"update owner set name = 'a', owner.name = 'b'", 3063},
      {"update owner set code = 'same'", 3022},
      {"update rentchanges set changevalue = changevalue / 0", 11},
      {"delete owner.* from tenancy", 3078},
      {"update tenancy set name = 'x' where reference = 5", 3464},
  };
  const std::vector<std::string> before = Rows("select * from tenancy");
  for (const auto& c : cases) EXPECT_EQ(ErrorOf(c.statement), c.error) << c.statement;
  EXPECT_EQ(Rows("select * from tenancy"), before);
  EXPECT_EQ(workspace_->OpenDatabase(path_)->Tables().size(), 10U);
}

TEST_F(Actions, ATransactionIsKeptWholeOrNotAtAll) {
  database_->BeginTrans();
  database_->Execute("insert into rentchanges values ('T1', #2026-11-21#, 5)");
  EXPECT_THAT(Rows("select changevalue as v from rentchanges where tenantcode = 't1'"),
              ElementsAre("5"));
  for (const char* reads : {"delete from rentchanges where changevalue > 1",
                            "insert into rentchanges select * from rentchanges",
                            "insert into rentchanges (changevalue) values ((select 1))"})
    EXPECT_EQ(ErrorOf(reads), 3219) << reads;
  database_->Rollback();
  EXPECT_THAT(Rows("select * from rentchanges where tenantcode = 'T1'"), IsEmpty());

  database_->BeginTrans();
  database_->Execute("insert into rentchanges values ('T1', #2026-11-21#, 5)");
  database_->Execute("update rentchanges set changevalue = 6 where tenantcode = 'T1'");
  database_->CommitTrans();
  EXPECT_THAT(Rows("select changevalue from rentchanges where tenantcode = 'T1'"),
              ElementsAre("6"));
  EXPECT_THROW(database_->CommitTrans(), RuntimeError);
  EXPECT_THROW(database_->Rollback(), RuntimeError);

  // After a statement that failed past its first row, the transaction cannot be committed.
  const std::vector<std::string> before = Rows("select * from owner");
  database_->BeginTrans();
  EXPECT_EQ(ErrorOf("update owner set code = 'same'"), 3022);
  EXPECT_EQ(ErrorOf("update owner set name = 'x' where code = 'OW0001'"), 3219);
  EXPECT_THROW(database_->CommitTrans(), RuntimeError);
  EXPECT_EQ(Rows("select * from owner"), before);
}

// Tells whether a file has been opened since the last call.
class OpenWatch {
 public:
  explicit OpenWatch(const std::filesystem::path& path) {
    EXPECT_GE(inotify_add_watch(queue_, path.c_str(), IN_OPEN), 0);
  }
  ~OpenWatch() { close(queue_); }
  bool SawOpening() {
    std::array<char, 4096> events{};
    return read(queue_, events.data(), events.size()) > 0;
  }

 private:
  int queue_ = inotify_init1(IN_NONBLOCK);
};

// The transaction has already opened the file and read the table's definition.
TEST_F(Actions, OpenTheFileOnceForAnyChange) {
  database_->BeginTrans();
  OpenWatch watch(path_);
  for (const char* const statement :
       {"insert into rentchanges values ('T00001', date() - 1, -5)",
        "update rentchanges set changevalue = 1 where tenantcode = 'T00001'"}) {
    EXPECT_GE(database_->Execute(statement), 1) << statement;
    EXPECT_FALSE(watch.SawOpening()) << statement;
  }
  database_->Rollback();
  for (const char* const statement :
       {"update tenancy set name = name & '.' where name like 'n*' and [current rent] > -1",
        "delete from revenues where amount > 100 or amount < -100"}) {
    database_->BeginTrans();
    watch.SawOpening();
    EXPECT_GE(database_->Execute(statement), 1) << statement;
    EXPECT_FALSE(watch.SawOpening()) << statement;
    database_->Rollback();
  }
  database_->BeginTrans();
  EXPECT_TRUE(watch.SawOpening()) << "the transaction's own";
}

TEST_F(Actions, AnInsertFillsInTheDefaultValues) {
  test::FileBuilder builder(1);
  const auto text = [&](const char* name, unsigned number) {
    return test::BuiltColumn{name, 10, number, false, number, 80, 2, 9, 4};
  };
  const auto add = [&](const char* name, const char16_t* last_default) {
    const auto value = [](const char* column, std::u16string_view expression) {
      return test::BuiltProperty{column, "DefaultValue", 12, test::Utf16(expression)};
    };
    builder.AddTable(
        name, {.columns = {text("a", 0), text("b", 1), text("c", 2), text("d", 3)}}, {},
        builder.Properties({value("a", u"\"it\"\"s\""), value("b", u" =Format(Date(), 'yyyy') "),
                            value("c", u"-1"), value("d", last_default)}));
  };
  add("good", u"no");
  add("bad", u"NoSuchFunction()");
  WriteWholeFile(path_, builder.Finish());
  database_ = workspace_->OpenDatabase(path_);
  database_->Execute("insert into good (d) values (null)");
  database_->Execute("insert into good (a) values ('x')");
  EXPECT_THAT(Rows("select * from good"), ElementsAre("it\"s|2026|-1|null", "x|2026|-1|False"));
  EXPECT_EQ(ErrorOf("insert into bad (a) values ('x')"), 3073);
  EXPECT_THAT(Rows("select * from bad"), IsEmpty());
  EXPECT_EQ(database_->Execute("insert into bad (d) values ('given')"), 1);
}

}  // namespace
}  // namespace tenora::query
