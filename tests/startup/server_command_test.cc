// `tenora server` against a real PostgreSQL, as its administrator types it.
#include "agency.h"
#include "platform/runtime/text.h"
#include "platform/server/server_connection.h"
#include "support/postgres_server.h"

namespace tenora {
namespace {

using test::PostgresServer;
using test::ProcessResult;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

class ServerCommand : public test::Agency {
 protected:
  // A call that succeeds, or fails only with what the sample's rows contradict.
  ProcessResult Do(const std::vector<std::string>& arguments, int status) const {
    std::vector<std::string> call = {"server"};
    call.insert(call.end(), arguments.begin(), arguments.end());
    const ProcessResult result = Run(call);
    EXPECT_EQ(result.status, status)
        << testing::PrintToString(arguments) << result.output << result.errors;
    return result;
  }
  void Import(const std::string& branch) const {
    Do({"import", Database().string(), "--branch", branch, "--service", "group"}, 1);
  }

  PostgresServer& server_ = PostgresServer::Get();
};

TEST_F(ServerCommand, InitMakesAnEmptyDatabaseOursOnceAndNoOther) {
  server_.Run("postgres", "drop database if exists new with (force)");
  server_.Run("postgres", "create database new");
  server_.Run("postgres", "drop role if exists guest; create role guest login");
  server_.AddService("new", "new", "tenora");
  server_.AddService("guest", "new", "guest");
  EXPECT_THAT(Do({"init", "guest"}, 1).errors, HasSubstr("by the login 'guest'"));
  EXPECT_THAT(Do({"init", "new"}, 0).output, HasSubstr("Made: the schema rental in database new"));
  EXPECT_THAT(Do({"init", "new"}, 0).output, HasSubstr("There already"));
  server_.MakeLogin("new", "office", "tenora_sync");
  EXPECT_THAT(Do({"init", "new-office"}, 1).errors, HasSubstr("not by the login 'office'"));
  EXPECT_THAT(Do({"status", "--service", "guest"}, 1).errors, HasSubstr("none of Tenora's roles"));
  server_.Run("new", "drop schema rental cascade; create table kept()");
  EXPECT_THAT(Do({"init", "new"}, 1).errors, HasSubstr("in use for something else"));
  EXPECT_THAT(Do({"status", "--service", "new"}, 1).errors, HasSubstr("'tenora server init'"));
}

TEST_F(ServerCommand, SyncGoesOnAfterABranchThatFails) {
  server_.MakeDatabase("group");
  for (const char* branch : {"East", "North", "South", "West"}) Import(branch);
  server_.Run("group",
              "update rental.kept_column set name = 'pets' where position = 3 and "
              "stored_table = 'tenancy' and branch = (select id from rental.branch "
              "where name = 'South')");
  Do({"add", "Empty", "--service", "group"}, 0);
  const ProcessResult result = Do({"sync", "East=" + Database().string(), "Ghost=x.mdb",
                                   "West=" + (Home() / "away.mdb").string(), "--branch", "East",
                                   "--branch", "West", "--branch", "South", "--branch", "North",
                                   "--branch", "Empty", "--branch", "Ghost", "--service", "group"},
                                  1);
  EXPECT_THAT(result.errors, AllOf(HasSubstr("West: 3024 - Could not find file"),
                                   HasSubstr("South: 3190 - Branch 'South' is left as it was: the "
                                             "table 'tenancy'"),
                                   HasSubstr("Empty: nothing was brought yet"),
                                   HasSubstr("Ghost: there is no such branch")));
  EXPECT_THAT(result.output,
              AllOf(HasSubstr("East: 3614 rows, 0 of 79 pages changed, 2 findings"),
                    HasSubstr("North: 3614 rows, 0 of 79 pages changed"),
                    HasSubstr("North: tenancy, page 118, row 7: names the property 'MISSING'")));
  // By hand, whoever brings it has seen that the layout is another one.
  Import("South");
  EXPECT_THAT(Do({"sync", "--branch", "South", "--service", "group"}, 1).errors,
              Not(HasSubstr("3190")));
}

TEST_F(ServerCommand, FollowsOnlyPathsThatTheLoginMayTrust) {
  server_.MakeDatabase("group");
  for (const char* branch : {"North", "South"}) Import(branch);
  server_.MakeLogin("group", "office", "tenora_sync");
  server_.Run("group", "insert into rental.may_see select 'office', id from rental.branch");
  const auto sync = [&](const std::string& service, const std::vector<std::string>& more = {}) {
    std::vector<std::string> call = {"sync", "--branch", "North", "--service", service};
    call.insert(call.end(), more.begin(), more.end());
    const ProcessResult result = Do(call, 1);
    return result.output + result.errors;
  };
  const std::string brought = "North: 3614 rows";
  // The owner's path is everybody's, and stays his.
  EXPECT_THAT(sync("group-office"), HasSubstr(brought));
  EXPECT_THAT(sync("group"), HasSubstr(brought));
  const std::string other = (Home() / "other.mdb").string();
  std::filesystem::copy_file(Database(), other);
  EXPECT_THAT(sync("group-office", {"North=" + other}),
              AllOf(HasSubstr(brought),
                    HasSubstr("until now its rows were those of " + Database().string())));
  EXPECT_THAT(sync("group-office"), AllOf(HasSubstr(brought), Not(HasSubstr("until now"))));
  const std::string named = "named by the login 'office'";
  EXPECT_THAT(sync("group"), AllOf(HasSubstr(named), HasSubstr(other), Not(HasSubstr(brought))));
  EXPECT_THAT(Do({"counters", "--branch", "North", "--here", "--service", "group"}, 1).errors,
              HasSubstr(named));
  sync("group", {"North=" + other});
  EXPECT_THAT(sync("group"), HasSubstr(brought));
}

TEST_F(ServerCommand, TheOwnerAddsRenamesAndRemovesBranches) {
  server_.MakeDatabase("group");
  Import("North");
  server_.MakeLogin("group", "office", "tenora_sync");
  const std::string accents = "M\u00fcnster", capitals = "M\u00dcNSTER";
  const struct {
    std::vector<std::string> call;
    int status;
    std::string text;
  } cases[] = {
      {{"add", accents}, 0, "Added: branch " + accents},
      {{"add", accents}, 1, "There is a branch '" + accents + "' already"},
      {{"add", capitals}, 1, "too like that of the branch '" + accents + "'"},
      {{"import", Database().string(), "--branch", "NORTH"}, 1, "too like that of the branch"},
      {{"add", ""}, 2, "name is empty"},
      {{"add", " a"}, 1, "begins or ends with a blank"},
      {{"add", "a "}, 1, "begins or ends with a blank"},
      {{"add", "a,b"}, 1, "has a comma"},
      {{"add", "a\nb"}, 1, "cannot be seen"},
      {{"add", "a\u0085"}, 1, "cannot be seen"},
      {{"add", std::string(101, 'a')}, 1, "longer than 100 characters"},
      {{"add", ReplaceAll(std::string(100, 'a'), "a", "\u00fc")}, 0, "Added"},
      {{"rename", "North", accents}, 1, "There is a branch"},
      {{"rename", "North", "a,b"}, 1, "has a comma"},
      {{"rename", "Gone", "Here"}, 1, "no branch 'Gone'"},
      {{"rename", "North", "North Shore"}, 0, "change that to branch='North Shore'; in"},
      {{"rename", "North Shore", "NORTH"}, 0, "North Shore is called NORTH now"},
      {{"counters", "--branch", "NORTH", "--here"}, 0, "by the server from now on"},
      {{"remove", "NORTH", "--yes"}, 1, "issues the receipt numbers of branch 'NORTH'"},
      {{"remove", "NORTH", "--with-counters"}, 1, "3614 rows would be removed"},
      {{"remove", "North", "--yes"}, 1, "no branch 'North'"},
      {{"remove", "NORTH", "--with-counters", "--yes"}, 0, "3614 rows removed"},
      {{"remove", accents, "--yes"}, 0, "0 rows removed"},
  };
  for (const auto& c : cases) {
    std::vector<std::string> call = c.call;
    call.insert(call.end(), {"--service", "group"});
    const ProcessResult result = Do(call, c.status);
    EXPECT_THAT(result.output + result.errors, HasSubstr(c.text));
    call.back() = "group-office";
    call.insert(call.begin(), "server");
    EXPECT_NE(Run(call).status, 0) << testing::PrintToString(call);
  }
  EXPECT_EQ(server_.Run("group", "select count(*) from rental.revenues"), "0\n");
}

TEST_F(ServerCommand, StatusShowsTheBranchesThatALoginWasGranted) {
  server_.MakeDatabase("group");
  Import("North");
  Import("South");
  server_.Run("group", "drop role if exists anna; create role anna login");
  server_.AddService("anna", "group", "anna");
  const auto grant = [&](const std::string& login, const std::string& branch,
                         const std::string& service, int status) {
    return Do({"grant", login, "--branch", branch, "--role", "clerk", "--service", service},
              status);
  };
  EXPECT_THAT(grant("bert", "North", "group", 1).errors, HasSubstr("create role \"bert\" login"));
  EXPECT_THAT(grant("anna", "Ghost", "group", 1).errors, HasSubstr("no branch 'Ghost'"));
  grant("anna", "South", "group", 0);
  EXPECT_THAT(grant("anna", "South", "anna", 1).errors, HasSubstr("administered by its owner"));
  const auto status = [&](const std::vector<std::string>& more) {
    std::vector<std::string> call = {"status", "--service", "anna"};
    call.insert(call.end(), more.begin(), more.end());
    return Do(call, 0).output;
  };
  EXPECT_THAT(status({}), AllOf(HasSubstr("Branch  Data Of"), HasSubstr("\nSouth   "),
                                HasSubstr("  3614         2  file "), Not(HasSubstr("North"))));
  EXPECT_THAT(status({"--format=json"}),
              AllOf(HasSubstr("[\n  {\"Branch\": \"South\", "), HasSubstr(R"("Findings": 2)")));
  EXPECT_THAT(status({"--findings", "--format=csv"}),
              HasSubstr("\r\nSouth,tenancy,\"page 118, row 7\",\"names the property"));
  Do({"revoke", "anna", "--branch", "South", "--service", "group"}, 0);
  EXPECT_EQ(status({"--format=json"}), "[]\n");
}

TEST_F(ServerCommand, SyncTellsOfAFileThatIssuesTheServersNumbers) {
  server_.MakeDatabase("group");
  Import("North");
  const auto counters = [&](const std::vector<std::string>& more) {
    std::vector<std::string> call = {"counters", "--branch", "North", "--service", "group"};
    call.insert(call.end(), more.begin(), more.end());
    return Do(call, 0).output;
  };
  const auto sync = [&] { return Do({"sync", "--service", "group"}, 1).errors; };
  EXPECT_EQ(counters({}), "North: receipt numbers are issued by the file\n");
  EXPECT_THAT(Do({"counters", "--branch", "North", "--here", "--service", "group", "--database",
                  test::SampleDatabase().string()},
                 1)
                  .errors,
              HasSubstr("Branch 'North' was brought from '" + Database().string() + "', not from"));
  counters({"--here"});
  EXPECT_EQ(counters({}), "North: receipt numbers are issued by the server\n");
  EXPECT_THAT(sync(), Not(HasSubstr("receipt numbers")));
  std::filesystem::copy_file(test::SampleDatabase(), Database(),
                             std::filesystem::copy_options::overwrite_existing);
  EXPECT_THAT(sync(), HasSubstr("North: the server issues its receipt numbers, and now its file"));
  counters({"--here"});
  EXPECT_THAT(sync(), Not(HasSubstr("receipt numbers")));
  // Another branch's file, brought by mistake, neither gives numbers nor gets any.
  const std::string south = (Home() / "south.mdb").string();
  std::filesystem::copy_file(test::SampleDatabase(), south);
  Do({"import", south, "--branch", "South", "--service", "group"}, 1);
  EXPECT_THAT(Do({"import", south, "--branch", "North", "--service", "group"}, 1).errors,
              AllOf(HasSubstr("North: another file than before"), Not(HasSubstr("--here"))));
  for (const char* to : {"--here", "--file"}) {
    EXPECT_THAT(Do({"counters", "--branch", "North", to, "--service", "group"}, 1).errors,
                HasSubstr("is that of branch 'South' too"));
  }
  Import("North");
  EXPECT_EQ(counters({"--file"}),
            "North: receipt numbers are issued by " + Database().string() + " from now on\n");
}

TEST_F(ServerCommand, ATransactionThatStaysOpenHoldsNobodyUpForLong) {
  server_.MakeDatabase("group");
  Import("North");
  server_.MakeLogin("group", "office", "tenora_sync");
  server_.Run("group", "insert into rental.may_see select 'office', id from rental.branch");
  const auto open = server::Connection::Open("group-office", std::chrono::seconds(0));
  open->Run("begin");
  open->Run("select rental.take_statistics()");
  open->Run(
      "insert into rental.finding(branch, stored_table, _row, what) select id, 'owner', 1, "
      "'x' from rental.branch");
  const auto start = std::chrono::steady_clock::now();
  Import("South");
  for (const std::vector<std::string>& call :
       {std::vector<std::string>{"rename", "North", "Nord"}, {"remove", "North", "--yes"}}) {
    std::vector<std::string> whole = call;
    whole.insert(whole.end(), {"--service", "group"});
    EXPECT_THAT(Do(whole, 1).errors, HasSubstr("in progress uses it, by the login 'office'"));
  }
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(25));
}

TEST_F(ServerCommand, TellsAWrongCallFromAFailure) {
  const struct {
    std::vector<std::string> arguments;
    int status;
    const char* message;
  } cases[] = {
      {{}, 2, "subcommand"},
      {{"init"}, 2, "SERVICE"},
      {{"status"}, 2, "--service"},
      {{"import", "x.mdb", "--service", "group"}, 2, "--branch"},
      {{"counters", "--branch", "B", "--here", "--file", "--service", "group"}, 2, "--file"},
      {{"sync", "North", "--service", "group"}, 2, "NAME=FILE"},
      {{"sync", "=x.mdb", "--service", "group"}, 2, "NAME=FILE"},
      {{"grant", "anna", "--branch", "B", "--role", "king", "--service", "group"}, 2, "--role"},
      {{"status", "--service", ""}, 2, "--service names no service"},
      {{"init", ""}, 2, "SERVICE is empty"},
      {{"import", "x.mdb", "--branch=", "--service", "group"}, 2, "name is empty"},
      {{"status", "--branch=", "--service", "group"}, 2, "name is empty"},
      {{"status", "--service", "nowhere"}, 1, "3151 - "},
  };
  for (const auto& c : cases) EXPECT_THAT(Do(c.arguments, c.status).errors, HasSubstr(c.message));
}

}  // namespace
}  // namespace tenora
