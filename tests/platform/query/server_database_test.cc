// A branch on a server gives what its file gives.

#include "platform/query/execute/server_database.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include "platform/access/database_writer.h"
#include "platform/query/query_test_support.h"
#include "platform/server/branch_import.h"
#include "support/errors.h"
#include "support/postgres_server.h"

namespace tenora::query {
namespace {

using testing::HasSubstr;

constexpr const char* kNorth = "service=rents branch=North";

class ServerDatabaseTest : public testing::Test {
 protected:
  void SetUp() override {
    std::filesystem::copy_file(test::SampleDatabase(), file_);
    test::PostgresServer::Get().MakeDatabase("rents");
    Import();
  }

  void Import() const {
    const auto connection = server::Connection::Open("rents", std::chrono::seconds(0));
    server::ImportBranch(*connection, "North", file_, server::LayoutChange::kTake);
  }

  static server::BranchLocation Location() { return server::ReadBranchLocation(kNorth); }

  test::ScratchFolder folder_;
  const std::filesystem::path file_ = folder_ / "property.mdb";
};

TEST_F(ServerDatabaseTest, AnswersAsTheFileDoes) {
  const auto workspace = Workspace::Create();
  const auto file = workspace->OpenDatabase(file_);
  const auto branch = workspace->OpenDatabase(kNorth);
  for (const char* const sql : {
           "select * from tenancy",
           "select * from Owner order by name",
           "select * from revenues",
           "select * from rent_periods where tenant_code = 't00001'",
           "select * from custom_fields where parentcode = 'T00012' and fieldcode = 'pet'",
           "select * from glcodes where type = 1 and pay_extra_charges <> 0",
           "select * from options",
           "select top 1 recordnumber, tender, date, amount from revenues where [revenue group] = "
           "'RENT' and tenant_code = 'T00001' order by date desc, recordnumber desc",
           "select top 2 date from revenues order by date desc",
           "select * from revenues where recordnumber = 1630",
           "select * from revenues where recordnumber = 1630.5",
           "select * from revenues where tenant_code = 'T00001' and recordnumber = 1636",
           "select * from revenues where tenant_code = 'no''body'",
           "select * from revenues where tenant_code is null",
           "select tenant_code, sum(amount), count(*) from revenues group by tenant_code",
           "select distinct tender from revenues where tenant_code like 'T0000*'",
           "select t.name, p.address1, sum(r.amount) from (tenancy t inner join property p on "
           "t.[property code] = p.code) left join revenues r on r.tenant_code = t.reference group "
           "by t.name, p.address1",
           "select reference from tenancy where reference not in (select tenant_code from "
           "revenues)",
           "select name from tenancy where reference in ('T00003', 'T00005', 'T00042')",
           "select inspection_date, remark from insp_schedule where tenant_code = 'T00002' and "
           "inspection_date > #00:00:00 11/21/2026# order by inspection_date",
           "select changevalue from rentchanges where tenantcode = 'T00020' order by changedate",
       }) {
    const std::vector<std::string> rows = RowsOf(*file, sql);
    EXPECT_EQ(RowsOf(*branch, sql), rows) << sql;
  }
  for (const char* const sql :
       {"select nothing from tenancy", "select * from nowhere", "select from tenancy"}) {
    const auto error = [&](EngineDatabase& database) {
      return test::ErrorOf([&] { RowsOf(database, sql); });
    };
    EXPECT_EQ(error(*branch), error(*file)) << sql;
  }
}

TEST_F(ServerDatabaseTest, FetchesTheRowsOfExpectedCodesTogether) {
  ServerConnections connections({.now = {}, .short_date = {}, .time_limit = kTimeLimit});
  std::vector<std::string> codes;
  for (int i = 1; i <= 32; ++i)
    codes.push_back("T000" + std::string(i < 10 ? "0" : "") + std::to_string(i));
  // What a letter reads of every table that is not read as a whole.
  const auto letters = [&] {
    std::vector<std::string> rows;
    for (const std::string& code : codes) {
      ServerDatabase branch(Location(), connections.Get(Location()));
      for (const std::string table :
           {"revenues where tenant_code", "rent_periods where tenant_code",
            "rentchanges where tenantcode", "insp_schedule where tenant_code",
            "custom_fields where parentcode"}) {
        const auto found =
            RowsOf(branch, std::string("select * from ").append(table) + " = '" + code + "'");
        rows.insert(rows.end(), found.begin(), found.end());
      }
    }
    return rows;
  };
  const std::vector<std::string> one_by_one = letters();
  const server::Connection& connection = connections.Get(Location()).branch->connection();
  EXPECT_GT(connection.round_trips(), 32);

  ServerConnections fresh({.now = {}, .short_date = {}, .time_limit = kTimeLimit});
  fresh.Expect(Location(), codes);
  std::swap(connections, fresh);
  const int before = connections.Get(Location()).branch->connection().round_trips();
  EXPECT_EQ(letters(), one_by_one);
  EXPECT_LE(connections.Get(Location()).branch->connection().round_trips() - before, 1);
}

TEST_F(ServerDatabaseTest, GoesOnWithAnotherStateOnlyWhenOpenedAnew) {
  const auto workspace = Workspace::Create();
  constexpr const char* kSum = "select sum(amount) from revenues where tenant_code = 'T00001'";
  const auto before = workspace->OpenDatabase(kNorth);
  const auto half = workspace->OpenDatabase(kNorth);
  const std::vector<std::string> old = RowsOf(*before, kSum);
  workspace->OpenDatabase(file_)->Execute(
      "update revenues set amount = amount + 1 where tenant_code = 'T00001'");
  Import();
  EXPECT_EQ(RowsOf(*before, kSum), old) << "what was fetched stays";
  EXPECT_EQ(
      test::NumberOf([&] { RowsOf(*half, "select * from revenues where tenant_code = 'T00002'"); }),
      3197);
  EXPECT_EQ(RowsOf(*workspace->OpenDatabase(kNorth), kSum),
            RowsOf(*workspace->OpenDatabase(file_), kSum));
  EXPECT_EQ(test::NumberOf([&] { RowsOf(*half, "select * from rent_periods"); }), 3197);
}

TEST_F(ServerDatabaseTest, RefusesChangesAndReconnects) {
  const auto workspace = Workspace::Create();
  const auto branch = workspace->OpenDatabase(kNorth);
  EXPECT_THAT(
      test::ErrorOf([&] { branch->Execute("update tenancy set name = 'x'"); }),
      HasSubstr("3027 - Cannot update. Database or object is read-only: the branch 'North'"));
  EXPECT_EQ(test::NumberOf([&] { branch->BeginTrans(); }), 3027);

  test::PostgresServer::Get().Restart();
  EXPECT_EQ(test::NumberOf(
                [&] { RowsOf(*branch, "select * from revenues where tenant_code = 'T00009'"); }),
            server::server_error::kCallFailed);
  EXPECT_EQ(RowsOf(*workspace->OpenDatabase(kNorth), "select count(*) from tenancy"),
            RowsOf(*workspace->OpenDatabase(file_), "select count(*) from tenancy"));
}

// One that accepts connections and says nothing.
TEST_F(ServerDatabaseTest, WaitsForASilentServerOnlyUntilAStopIsAsked) {
  sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
  (folder_ / ".s.PGSQL.5432").string().copy(address.sun_path, sizeof address.sun_path - 1);
  const int listener = ::socket(AF_UNIX, SOCK_STREAM, 0);
  ASSERT_EQ(::bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
  ::listen(listener, 8);
  test::PostgresServer::Get().AddService("silent", "rents", "tenora", folder_.path().string());
  const auto workspace = Workspace::Create();
  int questions = 0;
  const StoppableWaiting waiting(*workspace, [&] { return ++questions > 3; });
  const auto error =
      test::RaisedBy([&] { workspace->OpenDatabase("service=silent branch=North"); });
  ::close(listener);
  ASSERT_TRUE(error.has_value());
  EXPECT_EQ(error->number(), error_number::kCancelled);
  EXPECT_THAT(std::string(error->description()), HasSubstr("was stopped"));
}

}  // namespace
}  // namespace tenora::query
