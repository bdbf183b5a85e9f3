// What each role may not do on the server, whatever it tries; and TLS to other computers.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <fstream>

#include "platform/runtime/text.h"
#include "platform/server/branch_import.h"
#include "support/environment.h"
#include "support/errors.h"
#include "support/postgres_server.h"
#include "support/test_files.h"

namespace tenora::server {
namespace {

using test::PostgresServer;
using testing::HasSubstr;
using testing::Not;

constexpr std::chrono::seconds kNoLimit{0};

class ServerSecurity : public testing::Test {
 protected:
  void SetUp() override {
    server_.MakeDatabase("rents");
    for (const char* branch : {"North", "South"}) {
      ImportBranch(*Connection::Open("rents", kNoLimit), branch, test::SampleDatabase(),
                   LayoutChange::kTake);
    }
    server_.Run("rents",
                "update rental.options set smtppassword = 'geheim'; update rental.branch "
                "set counters_here = true");
    for (const char* role : {"reader", "clerk", "worker", "sync"}) {
      server_.MakeLogin("rents", role, std::string("tenora_") + role);
      server_.Run("rents", std::string("insert into rental.may_see select '") + role +
                               "', id from rental.branch where name = 'North'");
      // What it sets for itself does it no harm.
      server_.Run("rents", std::string("alter role ") + role + " set row_security = off");
    }
    server_.MakeLogin("rents", "stranger", "tenora_worker");
  }

  // What the statements give the login in one session: the first field of the last one, the number
  // of its rows where it has no field, or the server's code of the first error.
  static std::string Try(const std::string& login, const std::vector<std::string>& statements) {
    const auto connection = Connection::Open("rents-" + login, kNoLimit);
    std::string result;
    for (const std::string& sql : statements) {
      try {
        const ResultPtr rows = connection->Run(sql);
        result = rows->rows() > 0 ? std::string(rows->Text(0, 0))
                                  : std::to_string(rows->changed()) + " rows";
      } catch (const ServerError& error) {
        return error.state();
      }
    }
    return result;
  }

  PostgresServer& server_ = PostgresServer::Get();
};

TEST_F(ServerSecurity, ALoginDoesNoMoreThanItsRoleInItsBranches) {
  server_.Run("rents", "insert into rental.hand_over values (1, 'a'), (2, 'b')");
  const std::string refused = "42501";
  using Logins = std::vector<const char*>;
  const Logins all = {"reader", "clerk", "worker", "sync", "stranger"};
  const Logins no_sync = {"reader", "clerk", "worker"};
  const struct {
    Logins logins;
    std::vector<std::string> statements;
    std::string result;  // for each of the logins
  } cases[] = {
      // Its own branch, and nothing of another one.
      {{"reader", "sync"}, {"select count(distinct branch) from rental.tenancy"}, "1"},
      {{"reader"}, {"select string_agg(name, ',') from rental.branch"}, "North"},
      {{"reader"}, {"select count(*) from rental.revenues where branch <> 1"}, "0"},
      {{"reader"}, {"select count(distinct branch) from rental.finding"}, "1"},
      {{"reader"}, {"select count(distinct login) from rental.may_see"}, "1"},
      {{"reader", "sync"}, {"select string_agg(mark, ',') from rental.hand_over"}, "a"},
      {{"stranger"}, {"select count(*) from rental.tenancy"}, "0"},
      {{"stranger"}, {"select count(*) from rental.counter"}, "0"},
      // Other roles' names help nothing: the login counts.
      {{"worker"},
       {"set role tenora_reader", "select count(distinct branch) from rental.owner"},
       "1"},
      {all, {"set role tenora"}, refused},
      {all, {"set session authorization tenora"}, refused},
      {{"reader"}, {"set row_security = off", "select count(*) from rental.tenancy"}, refused},
      // It cannot change what it may see.
      {all, {"insert into rental.may_see values (session_user, 2)"}, refused},
      {all, {"update rental.may_see set branch = 2"}, refused},
      {all, {"drop policy own_branches on rental.tenancy"}, refused},
      {all, {"alter table rental.tenancy disable row level security"}, refused},
      {all, {"grant tenora_worker to reader"}, refused},
      {all, {"create table rental.copy()"}, refused},
      {all, {"create function rental.peek() returns int language sql as 'select 1'"}, refused},
      // A function of its own that sees a row before the policy has judged it would give it away.
      {{"reader"},
       {"create function pg_temp.leak(t text) returns bool language plpgsql cost 0.0000001 as $$ "
        "begin if t is not null then raise exception 'seen %', t using errcode = '22000'; end if; "
        "return false; end $$",
        "select count(*) from rental.tenancy where branch <> 1 and pg_temp.leak(reference)"},
       "0"},
      // Nobody but a sync login changes rows, and that one only its own branch's.
      {all, {"delete from rental.tenancy"}, refused},
      {all, {"update rental.tenancy set name = 'x'"}, refused},
      {no_sync, {"insert into rental.tenancy(branch, _row) values (1, 1)"}, refused},
      {no_sync, {"select rental.take_out(1, 'tenancy', null)"}, refused},
      {no_sync, {"select rental.find_breaks(1)"}, refused},
      {{"sync"}, {"insert into rental.tenancy(branch, _row) values (2, 1)"}, refused},
      {{"sync"}, {"insert into rental.page values (2, 1, 'tenancy', 1, '')"}, refused},
      {{"sync"}, {"select rental.take_out(2, 'tenancy', null)"}, refused},
      {{"sync"}, {"select rental.take_out(1, 'may_see', null)"}, "42P01"},
      {{"sync"}, {"select rental.find_breaks(2)"}, refused},
      {{"sync"}, {"update rental.kept_table set rows = 0 where branch = 2"}, "0 rows"},
      {{"sync"}, {"update rental.sync set rows = 0 where branch = 2"}, "0 rows"},
      // Which branches there are, who issues their numbers, and from which file they come.
      {all, {"insert into rental.branch(name) values ('East')"}, refused},
      {all, {"update rental.branch set name = 'East'"}, refused},
      {all, {"update rental.branch set counters_here = false"}, refused},
      {all, {"delete from rental.branch"}, refused},
      {all, {"update rental.counter set last = 1"}, refused},
      {all, {"insert into rental.hand_over values (1, 'x')"}, refused},
      {no_sync, {"update rental.sync set file_name = '/x'"}, refused},
      {{"sync"}, {"update rental.sync set file_login = 'tenora'"}, refused},
      {{"sync"}, {"alter table rental.sync disable trigger name_file"}, refused},
      {{"sync"},
       {"update rental.sync set rows = rows, file_name = file_name",
        "select file_login from rental.sync"},
       "tenora"},
      {{"sync"},
       {"update rental.sync set file_name = '/x'", "select file_login from rental.sync"},
       "sync"},
      {{"sync"},
       {"select f.path from (select file_name path, rental.administers(file_login) good "
        "from rental.sync) f where good"},
       "0 rows"},
      // Nobody is held up.
      {all, {"begin", "lock table rental.tenancy in share mode"}, refused},
      {all, {"begin", "lock table rental.import_lock in share mode"}, refused},
      {all, {"select from rental.import_lock for key share"}, refused},
      {all, {"truncate rental.tenancy"}, refused},
      {no_sync, {"select rental.lock_import(1)"}, refused},
      {{"sync"}, {"select rental.lock_import(2)"}, refused},
      // The mail password is for workers.
      {{"reader", "clerk", "sync"}, {"select smtppassword from rental.options"}, refused},
      {{"reader", "clerk", "sync"}, {"select * from rental.options"}, refused},
      {{"reader", "clerk", "sync"}, {"select o from rental.options o"}, refused},
      {{"sync"}, {"update rental.options set smtpsender = smtppassword"}, refused},
      {{"sync"}, {"insert into rental.options values (1, 1) returning smtppassword"}, refused},
      {{"reader"}, {"select smtpaddress is null from rental.options"}, "f"},
      {{"worker"}, {"select smtppassword from rental.options"}, "geheim"},
      // Numbers are for workers, of their branches.
      {{"reader", "clerk", "sync"}, {"select rental.next_number(1, 'B', 'B')"}, refused},
      {{"worker"}, {"select rental.next_number(1, 'B', 'B')"}, "1000"},
      {{"worker"}, {"select rental.next_number(2, 'B', 'B')"}, ""},
      {{"stranger"}, {"select rental.next_number(1, 'B', 'B')"}, ""},
      // Neither do names before the functions' own in the search path.
      {{"worker"},
       {"create temporary table branch(id int, counters_here bool)",
        "set search_path = pg_temp, rental", "select rental.next_number(2, 'B', 'B')"},
       ""},
  };
  for (const auto& c : cases) {
    for (const char* const login : c.logins) {
      EXPECT_EQ(Try(login, c.statements), c.result) << login << ": " << c.statements.back();
    }
  }
  EXPECT_EQ(server_.Run("rents",
                        "select count(*), count(distinct name) > 10 from rental.tenancy "
                        "where branch = 2"),
            "42|t\n");
}

TEST_F(ServerSecurity, ASyncLoginBringsItsOwnBranchAndNoOther) {
  const auto bring = [](const std::string& login, const std::string& branch, LayoutChange layout) {
    return ImportBranch(*Connection::Open("rents-" + login, kNoLimit), branch,
                        test::SampleDatabase(), layout);
  };
  server_.Run("rents",
              "delete from rental.page where branch = 1 and stored_table in ('tenancy', "
              "'revenues')");
  server_.Run("rents", "delete from rental.tenancy where branch = 1");
  server_.Run("rents", "delete from rental.revenues where branch = 1");
  EXPECT_EQ(bring("sync", "North", LayoutChange::kRefuse).rows, 3614);
  const struct {
    const char *login, *branch;
    LayoutChange layout;
    const char* error;
  } cases[] = {
      {"sync", "South", LayoutChange::kRefuse, "no branch 'South' that this login may see"},
      {"sync", "South", LayoutChange::kTake, "'sync' may not add branches"},
      {"sync", "East", LayoutChange::kTake, "'sync' may not add branches"},
      {"worker", "North", LayoutChange::kRefuse, "The login 'worker' may not bring"},
  };
  for (const auto& c : cases) {
    EXPECT_THAT(test::ErrorOf([&] { bring(c.login, c.branch, c.layout); }), HasSubstr(c.error));
  }
  EXPECT_EQ(server_.Run("rents", "select count(*) from rental.branch"), "2\n");
}

TEST_F(ServerSecurity, TwoImportsOfABranchNeverMeet) {
  const auto bring = [](const std::string& branch) {
    const auto connection = Connection::Open("rents", kNoLimit);
    return test::ErrorOf([&] {
      ImportBranch(*connection, branch, test::SampleDatabase(), LayoutChange::kRefuse,
                   std::chrono::milliseconds(20));
    });
  };
  const auto other = Connection::Open("rents-sync", kNoLimit);
  {
    ImportTransaction import(*other);
    import.Lock("North", kWaitForImport);
    EXPECT_THAT(bring("North"),
                HasSubstr("another import of it is in progress by the login 'sync'"));
    EXPECT_EQ(bring("South"), "");
  }
  EXPECT_EQ(bring("North"), "");
}

// The service is written anew with these lines; the server's first field of `sql`, or the error.
class ServerTls : public testing::Test {
 protected:
  ServerTls() {
    test::RunProcess({Script(), "tls", folder_, kAddress, kOtherAddress});
    Sql("create role far login password 'geheim'");
    std::ofstream(scratch_ / "passwords") << "*:*:*:far:geheim\n";
    std::filesystem::permissions(scratch_ / "passwords", std::filesystem::perms::owner_read);
    test::RunProcess({"openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt",
                      "ec_paramgen_curve:prime256v1", "-nodes", "-subj", "/CN=Nobody", "-keyout",
                      "/dev/null", "-out", (scratch_ / "other.crt").string()});
  }
  ~ServerTls() override { test::RunProcess({Script(), "stop", folder_}); }

  static std::string Script() {
    return (test::SourceDir() / "scripts/private_postgres.sh").string();
  }
  void Sql(const std::string& sql) const {
    EXPECT_EQ(
        test::RunProcess({"psql", "-Xq", "-h", folder_, "-U", "tenora", "postgres", "-c", sql})
            .status,
        0);
  }
  std::string Try(const std::string& lines) const {
    std::ofstream(scratch_ / "services") << "[tls]\ndbname=postgres\nuser=far\n" << lines << "\n";
    std::string encrypted;
    const std::string error = test::ErrorOf([&] {
      const auto connection = Connection::Open("tls", kNoLimit);
      encrypted =
          connection->Run("select ssl from pg_stat_ssl where pid = pg_backend_pid()")->Text(0, 0);
    });
    return error + encrypted;
  }

  // Loopback addresses that are not this computer's usual one, of this process only.
  const std::string kAddress = "127." + std::to_string(::getpid() / 200 % 200 + 20) + "." +
                               std::to_string(::getpid() % 200 + 20) + ".2";
  const std::string kOtherAddress = kAddress.substr(0, kAddress.size() - 1) + "3";
  test::ScratchFolder scratch_;
  const std::string folder_ =
      std::string(TrimBlanks(Split(test::RunProcess({Script(), "start"}).output, "\n").front()));
  test::Environment environment_{{"PGSERVICEFILE", (scratch_ / "services").string()},
                                 {"PGPASSFILE", (scratch_ / "passwords").string()},
                                 {"PGSSLMODE", std::nullopt},
                                 {"HOME", scratch_.path().string()}};
};

TEST_F(ServerTls, OtherComputersAreTalkedToOnlyWhenTheirCertificateIsTrue) {
  const std::string root = "\nsslrootcert=" + folder_ + "/root.crt";
  const struct {
    std::string lines;
    const char* result;
  } cases[] = {
      {"host=" + kAddress + root, "t"},
      {"host=" + kAddress, "root certificate file"},
      {"host=" + kAddress + "\nsslrootcert=" + (scratch_ / "other.crt").string(),
       "certificate verify failed"},
      {"host=" + kOtherAddress + root, "does not match host name"},
      {"host=somewhere\nhostaddr=" + kAddress + root, "does not match host name"},
      {"host=" + folder_ + "," + kAddress, "f"},
      {"host=localhost," + kAddress, "root certificate file"},
      {"host=" + folder_, "f"},
      // Where the administrator asks for it.
      {"host=" + kAddress + "\nsslmode=disable", "f"},
      {"host=" + kAddress + "\nsslmode=require", "t"},
      {"host=" + kAddress + "\npassword=falsch" + root, "password authentication failed"},
  };
  for (const auto& c : cases) {
    const std::string result = Try(c.lines);
    EXPECT_THAT(result, HasSubstr(c.result)) << c.lines;
    EXPECT_THAT(result, testing::AllOf(Not(HasSubstr("falsch")), Not(HasSubstr("geheim"))));
  }
}

}  // namespace
}  // namespace tenora::server
