#include "platform/server/branch.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <map>

#include "platform/access/database_writer.h"
#include "platform/access/showcase.h"
#include "platform/server/branch_import.h"
#include "support/errors.h"
#include "support/postgres_server.h"
#include "support/test_files.h"

namespace tenora::server {
namespace {

using test::PostgresServer;
using testing::HasSubstr;

constexpr std::chrono::seconds kNoLimit{0};

// Rows as (row number, values), read by the cursor that is given.
using Rows = std::vector<std::pair<std::int64_t, std::vector<Value>>>;

Rows ReadAll(access::RowCursor& cursor, const std::vector<access::Column>& columns) {
  Rows rows;
  while (cursor.Next()) {
    std::vector<Value> values;
    for (std::size_t i = 0; i < columns.size(); ++i) values.push_back(cursor.Field(i));
    rows.emplace_back(cursor.Id().page * 256 + cursor.Id().slot, values);
  }
  return rows;
}

class BranchTest : public testing::Test {
 protected:
  void SetUp() override {
    std::filesystem::copy_file(test::SampleDatabase(), file_);
    server_.MakeDatabase("rents");
  }

  ImportReport Import(LayoutChange layout = LayoutChange::kTake,
                      const std::string& branch = "North") {
    return ImportBranch(*Connection::Open("rents", kNoLimit), branch, file_, layout);
  }

  void Change(const std::string& table, access::RowId row,
              const std::vector<access::ColumnValue>& values) const {
    const auto writing = access::WriteTransaction::Begin(file_);
    writing->Table(table).Update(row, values);
    writing->Commit();
  }

  PostgresServer& server_ = PostgresServer::Get();
  test::ScratchFolder folder_;
  const std::filesystem::path file_ = folder_ / "property.mdb";
};

void ExpectSameRows(Branch& branch, const std::filesystem::path& file) {
  const auto there = access::DatabaseFile::Open(file);
  for (const BranchTable& table : branch.tables()) {
    const access::Table* const original = there->FindTable(table.name);
    ASSERT_NE(original, nullptr) << table.name;
    const Rows rows = ReadAll(*original->Rows(), original->columns());
    EXPECT_EQ(table.rows, static_cast<std::int64_t>(rows.size())) << table.name;
    EXPECT_EQ(ReadAll(*branch.Rows(table), table.columns), rows) << table.name;
  }
}

TEST_F(BranchTest, GivesEveryRowAsTheFileHasIt) {
  const ImportReport report = Import();
  EXPECT_EQ(report.rows, report.rows_sent);
  const auto branch = Branch::Open({"rents", "North"});
  EXPECT_EQ(branch->tables().size(), 10U);
  ExpectSameRows(*branch, file_);

  const auto first = [&] {
    const auto cursor = access::DatabaseFile::Open(file_)->FindTable("tenancy")->Rows();
    EXPECT_TRUE(cursor->Next());
    return cursor->Id();
  }();
  Change("tenancy", first,
         {{"when started", Date::FromCalendar(1234, 5, 6, 23, 59, 59)},
          {"when ended", Date::FromCalendar(1899, 12, 30)},
          {"rentreviewdate", Date::FromCalendar(1899, 12, 29, 6)},
          {"mobile", Null{}},
          {"fax", std::string("\\N\t\r\n'\"\x01é𝄞")},
          {"comments", std::string()},
          {"bond", Currency::FromTenThousandths(-922337203685477)}});
  EXPECT_EQ(Import(LayoutChange::kRefuse).pages_changed, 1);
  branch->Refresh();
  ExpectSameRows(*branch, file_);
}

TEST_F(BranchTest, GivesValuesOfEveryTypeAsTheFileHasThem) {
  for (int version = 0; version <= 6; ++version) {
    for (const test::ShowcaseNames& names :
         {test::ShowcaseNames{"tenancy", "custom_fields", "Owner"},
          test::ShowcaseNames{"revenues", "property", "drawers"}}) {
      std::ofstream(file_, std::ios::binary | std::ios::trunc) << test::Showcase(version, names);
      const ImportReport report = Import();
      EXPECT_EQ(report.tables_left_out.size(), names.changed == "drawers" ? 1U : 0U);
      ExpectSameRows(*Branch::Open({"rents", "North"}), file_);
    }
  }
}

TEST_F(BranchTest, LeavesTheRowsOfABranchWhereTheFileIsAnother) {
  const std::int64_t rows = Import().rows;
  const std::filesystem::path other = folder_ / "cellar.mdb";
  std::ofstream(other, std::ios::binary) << test::Showcase(3);
  const auto error = test::ErrorOf([&] {
    ImportBranch(*Connection::Open("rents", kNoLimit), "North", other, LayoutChange::kTake);
  });
  EXPECT_THAT(error, HasSubstr("none of the tables that letters are made from"));
  EXPECT_EQ(Branch::Open({"rents", "North"})->state().rows, rows);
}

TEST_F(BranchTest, FindsRowsOfKeysAsTheEngineComparesThem) {
  Import();
  const auto branch = Branch::Open({"rents", "North"});
  const BranchTable* const payments = branch->FindTable("REVENUES");
  const BranchTable* const periods = branch->FindTable("rent_periods");
  ASSERT_TRUE(payments != nullptr && periods != nullptr);
  const auto column = [](const BranchTable& table, std::string_view name) {
    const auto found = std::ranges::find(table.columns, name, &access::Column::name);
    return static_cast<std::size_t>(found - table.columns.begin());
  };
  const std::size_t code = column(*payments, "tenant_code");
  const std::size_t number = column(*payments, "recordnumber");
  const int before = branch->connection().round_trips();
  const RowRequest requests[] = {{payments, code, {"t00001", "T00005 ", "no\"body\\"}},
                                 {periods, column(*periods, "tenant_code"), {"T00001"}},
                                 {payments, number, {"1636"}}};
  const auto found = branch->Find(requests);
  EXPECT_EQ(branch->connection().round_trips(), before + 1);

  const auto file = access::DatabaseFile::Open(file_);
  const auto expected = [&](const BranchTable& table, const auto& wanted) {
    Rows rows = ReadAll(*file->FindTable(table.name)->Rows(), table.columns);
    std::erase_if(rows, [&](const auto& row) { return !wanted(row.second); });
    EXPECT_FALSE(rows.empty());
    return rows;
  };
  const auto is = [](const Value& value, const char* text) { return value == Value(text); };
  EXPECT_EQ(ReadAll(*found[0], payments->columns), expected(*payments, [&](const auto& row) {
              return is(row[code], "T00001") || is(row[code], "T00005");
            }));
  EXPECT_EQ(ReadAll(*found[1], periods->columns), expected(*periods, [&](const auto& row) {
              return is(row[requests[1].column], "T00001");
            }));
  EXPECT_EQ(ReadAll(*found[2], payments->columns), expected(*payments, [&](const auto& row) {
              return row[number] == Value(std::int64_t{1636});
            }));
}

TEST_F(BranchTest, BringsOnlyThePagesThatChanged) {
  const ImportReport first = Import();
  const ImportReport again = Import(LayoutChange::kRefuse);
  EXPECT_FALSE(again.Changed());
  EXPECT_EQ(again.generation, first.generation);
  EXPECT_EQ(again.findings.size(), first.findings.size());

  const auto branch = Branch::Open({"rents", "North"});
  const auto cursor = access::DatabaseFile::Open(file_)->FindTable("revenues")->Rows();
  ASSERT_TRUE(cursor->Next());
  Change("revenues", cursor->Id(), {{"amount", Currency::FromTenThousandths(-1234567)}});
  const ImportReport changed = Import(LayoutChange::kRefuse);
  EXPECT_EQ(changed.pages_changed, 1);
  EXPECT_EQ(changed.rows_sent, changed.rows_removed);
  EXPECT_GT(changed.generation, first.generation);

  // What was opened before must not mix the two states.
  EXPECT_EQ(test::NumberOf([&] { branch->Rows(*branch->FindTable("revenues"))->Next(); }), 3197);
  EXPECT_TRUE(branch->Refresh());
  EXPECT_FALSE(branch->Refresh());
  ExpectSameRows(*branch, file_);
}

TEST_F(BranchTest, TellsTheServerHowManyRowsABranchHas) {
  Import();
  server_.Run("rents", "analyze");
  Import(LayoutChange::kTake, "South");
  // By the statistics of before there would be one row, and each look-up would read the branch.
  const std::string plan =
      server_.Run("rents", "explain (format yaml) select from rental.revenues where branch = 2");
  const std::string field = "Plan Rows: ";
  const std::size_t at = plan.find(field);
  ASSERT_NE(at, std::string::npos) << plan;
  EXPECT_GT(std::stoi(plan.substr(at + field.size())), 300) << plan;
}

// A connection over which the process ends, as if killed, at the call with this number.
class KillingConnection : public Connection {
 public:
  KillingConnection(std::unique_ptr<Connection> connection, int steps)
      : connection_(std::move(connection)), steps_(steps) {}

  ResultPtr Run(const Query& query) override { return Step().Run(query); }
  std::vector<ResultPtr> RunTogether(std::span<const Query> queries) override {
    return Step().RunTogether(queries);
  }
  void RunScript(const std::string& sql) override { Step().RunScript(sql); }
  void BeginCopy(const std::string& sql) override { Step().BeginCopy(sql); }
  void CopyText(std::string_view lines) override { Step().CopyText(lines); }
  std::int64_t EndCopy() override { return Step().EndCopy(); }
  std::vector<Notice> WaitForNotices(std::chrono::milliseconds time) override {
    return Step().WaitForNotices(time);
  }
  bool IsBroken() const override { return connection_->IsBroken(); }
  int round_trips() const override { return connection_->round_trips(); }
  std::string Address() const override { return connection_->Address(); }
  std::string DatabaseName() const override { return connection_->DatabaseName(); }

 private:
  Connection& Step() {
    if (steps_-- == 0) ::_exit(9);
    return *connection_;
  }

  std::unique_ptr<Connection> connection_;
  int steps_;
};

TEST_F(BranchTest, AnImportKilledAnywhereLeavesTheOldRows) {
  const ImportReport first = Import();
  const std::filesystem::path before = folder_ / "before.mdb";
  std::filesystem::copy_file(file_, before);
  for (const char* table : {"revenues", "custom_fields", "rent_periods"}) {
    const auto cursor = access::DatabaseFile::Open(file_)->FindTable(table)->Rows();
    ASSERT_TRUE(cursor->Next());
    const auto writing = access::WriteTransaction::Begin(file_);
    writing->Table(table).Delete(cursor->Id());
    writing->Commit();
  }
  bool killed = true;
  int kills = 0;
  for (int step = 1; killed; step += 3) {
    const pid_t child = ::fork();
    if (child == 0) {
      KillingConnection connection(Connection::Open("rents", kNoLimit), step);
      ImportBranch(connection, "North", file_, LayoutChange::kRefuse);
      ::_exit(0);
    }
    int status = -1;
    ::waitpid(child, &status, 0);
    killed = WEXITSTATUS(status) == 9;
    kills += killed ? 1 : 0;
    const auto branch = Branch::Open({"rents", "North"});
    EXPECT_EQ(branch->state().generation == first.generation, killed) << step;
    ExpectSameRows(*branch, killed ? before : file_);
  }
  EXPECT_GT(kills, 10);
}

TEST_F(BranchTest, SaysWhyABranchCannotBeUsed) {
  Import();
  server_.MakeLogin("rents", "stranger", "tenora_reader");
  server_.Run("postgres", "drop database if exists empty; create database empty");
  const auto error = [](const std::string& service, const std::string& branch) {
    return test::ErrorOf([&] { Branch::Open({service, branch}); });
  };
  EXPECT_THAT(error("rents", "South"),
              HasSubstr("3151 - The service 'rents' has no branch 'South'"));
  EXPECT_THAT(error("rents-stranger", "North"), HasSubstr("that this login may see"));
  EXPECT_THAT(error("nowhere", "North"), HasSubstr("3151 - "));
  EXPECT_THAT(test::ErrorOf([&] { Import(LayoutChange::kRefuse, "South"); }),
              HasSubstr("There is no branch 'South'"));
}

}  // namespace
}  // namespace tenora::server
