// What each role may not do on the server, whatever it tries; and TLS to other computers.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <fstream>

#include "platform/runtime/text.h"
#include "platform/server/branch_import.h"
#include "platform/server/branch_list.h"
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
  const std::string refused = "42501";
  const struct {
    const char* login;
    std::vector<std::string> statements;
    std::string result;
  } cases[] = {
      // Its own branch, and nothing of another one.
      {"reader", {"select count(distinct branch) from rental.tenancy"}, "1"},
      {"reader", {"select string_agg(name, ',') from rental.branch"}, "North"},
      {"reader", {"select count(*) from rental.revenues where branch <> 1"}, "0"},
      {"reader", {"select count(distinct branch) from rental.finding"}, "1"},
      {"reader", {"select count(distinct login) from rental.may_see"}, "1"},
      {"stranger", {"select count(*) from rental.tenancy"}, "0"},
      {"stranger", {"select count(*) from rental.counter"}, "0"},
      // Other roles' names help nothing: the login counts.
      {"worker",
       {"set role tenora_reader", "select count(distinct branch) from rental.owner"},
       "1"},
      {"worker", {"set role tenora", "select 1"}, refused},
      {"worker", {"set session authorization tenora"}, refused},
      {"reader", {"set row_security = off", "select count(*) from rental.tenancy"}, refused},
      // It cannot change what it may see.
      {"reader", {"insert into rental.may_see values ('reader', 2)"}, refused},
      {"sync", {"insert into rental.may_see values ('sync', 2)"}, refused},
      {"sync", {"update rental.may_see set branch = 2"}, refused},
      {"reader", {"drop policy own_branches on rental.tenancy"}, refused},
      {"sync", {"alter table rental.tenancy disable row level security"}, refused},
      {"reader", {"grant tenora_worker to reader"}, refused},
      {"sync", {"create function rental.peek() returns int language sql as 'select 1'"}, refused},
      {"sync", {"create table rental.copy()"}, refused},
      // A function of its own that sees a row before the policy has judged it would give it away.
      {"reader",
       {"create function pg_temp.leak(t text) returns bool language plpgsql cost 0.0000001 as $$ "
        "begin if t is not null then raise exception 'seen %', t using errcode = '22000'; end if; "
        "return false; end $$",
        "select count(*) from rental.tenancy where branch <> 1 and pg_temp.leak(reference)"},
       "0"},
      // Nobody but a sync login changes rows, and that one only its own branch's.
      {"reader", {"delete from rental.tenancy"}, refused},
      {"clerk", {"update rental.tenancy set name = 'x'"}, refused},
      {"worker", {"update rental.counter set last = 1"}, refused},
      {"worker", {"update rental.branch set counters_here = false"}, refused},
      {"sync", {"delete from rental.revenues where branch <> 1"}, "0 rows"},
      {"sync", {"update rental.tenancy set name = 'x' where branch <> 1"}, "0 rows"},
      {"sync", {"update rental.tenancy set branch = 2"}, refused},
      {"sync", {"insert into rental.tenancy(branch, _row) values (2, 1)"}, refused},
      {"sync", {"insert into rental.page values (2, 1, 'tenancy', 1, '')"}, refused},
      {"sync", {"select rental.find_breaks(2)", "select count(*) from rental.finding"}, "2"},
      {"sync", {"update rental.branch set counters_here = false"}, refused},
      {"sync", {"truncate rental.tenancy"}, refused},
      // The mail password is for workers.
      {"reader", {"select smtppassword from rental.options"}, refused},
      {"clerk", {"select * from rental.options"}, refused},
      {"sync", {"select smtppassword from rental.options"}, refused},
      {"sync", {"update rental.options set smtpsender = smtppassword"}, refused},
      {"sync", {"update rental.options set smtpsender = 'x' returning smtppassword"}, refused},
      {"reader", {"select o from rental.options o"}, refused},
      {"reader", {"select smtpaddress is null from rental.options"}, "f"},
      {"worker", {"select smtppassword from rental.options"}, "geheim"},
      // Numbers are for workers, of their branches.
      {"reader", {"select rental.next_number(1, 'B', 'B')"}, refused},
      {"clerk", {"select rental.next_number(1, 'B', 'B')"}, refused},
      {"sync", {"select rental.next_number(1, 'B', 'B')"}, refused},
      {"worker", {"select rental.next_number(1, 'B', 'B')"}, "1000"},
      {"worker", {"select rental.next_number(2, 'B', 'B')"}, ""},
      {"stranger", {"select rental.next_number(1, 'B', 'B')"}, ""},
      // Neither do names before the functions' own in the search path.
      {"worker",
       {"create temporary table branch(id int, counters_here bool)",
        "set search_path = pg_temp, rental", "select rental.next_number(2, 'B', 'B')"},
       ""},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Try(c.login, c.statements), c.result) << c.login << ": " << c.statements.back();
  }
  EXPECT_EQ(server_.Run("rents",
                        "select count(*), count(distinct name) > 10 from rental.tenancy "
                        "where branch = 2"),
            "42|t\n");
}

TEST_F(ServerSecurity, ASyncLoginBringsItsOwnBranchAndNoOther) {
  const auto bring = [](const std::string& branch, LayoutChange layout) {
    return ImportBranch(*Connection::Open("rents-sync", kNoLimit), branch, test::SampleDatabase(),
                        layout);
  };
  server_.Run("rents",
              "delete from rental.page where branch = 1 and stored_table in ('tenancy', "
              "'revenues')");
  server_.Run("rents", "delete from rental.tenancy where branch = 1");
  server_.Run("rents", "delete from rental.revenues where branch = 1");
  EXPECT_GT(bring("North", LayoutChange::kTake).rows, 3000);
  EXPECT_THAT(test::ErrorOf([&] { bring("South", LayoutChange::kRefuse); }),
              HasSubstr("no branch 'South' that this login may see"));
  EXPECT_THAT(test::ErrorOf([&] { bring("South", LayoutChange::kTake); }), HasSubstr("3146 - "));
  // A branch that it adds is its own, and hides from the others.
  bring("East", LayoutChange::kTake);
  EXPECT_EQ(ListBranches(*Connection::Open("rents-sync", kNoLimit), "rents").size(), 2U);
  EXPECT_EQ(ListBranches(*Connection::Open("rents-reader", kNoLimit), "rents").size(), 1U);
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
