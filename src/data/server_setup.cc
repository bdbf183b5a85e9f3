#include "data/server_setup.h"

#include "platform/server/rental_schema.h"

namespace tenora {
namespace {

using server::Connection;
using server::ServerError;

constexpr int kOldestVersion = 150000;
constexpr const char* kRoleCount = "4";
constexpr std::string_view kNoPermission = "42501";

[[noreturn]] void Refuse(const Connection& connection, const std::string& reason) {
  throw ServerError(
      server::server_error::kCallFailed,
      "The database '" + connection.DatabaseName() + "' on " + connection.Address() + " " + reason);
}

std::string BranchId(Connection& connection, const std::string& branch) {
  const auto found = connection.Run(
      server::Query{.sql = "select id from rental.branch where name = $1", .parameters = {branch}});
  if (found->rows() == 0) Refuse(connection, "has no branch '" + branch + "'");
  return std::string(found->Text(0, 0));
}

// Whether our schema is there; raises for a database in which it cannot be made.
bool IsThere(Connection& connection) {
  const auto found = connection.Run(server::Query{
      .sql = "select to_regclass('rental.version') is not null, exists (select from pg_class c "
             "join pg_namespace n on n.oid = c.relnamespace where n.nspname !~ '^pg_' and "
             "n.nspname <> 'information_schema') or to_regnamespace('rental') is not null, "
             "current_setting('server_version_num'), current_setting('server_encoding'), "
             "has_database_privilege(current_database(), 'create'), (select rolsuper or "
             "rolcreaterole from pg_roles where rolname = current_user) or (select count(*) = $1 "
             "from pg_roles where rolname in ('tenora_reader', 'tenora_clerk', 'tenora_worker', "
             "'tenora_sync')), current_user",
      .parameters = {kRoleCount}});
  if (found->Boolean(0, 0)) return true;
  const std::string login(found->Text(0, 6));
  if (found->Boolean(0, 1)) {
    Refuse(connection, "is in use for something else; make an empty one with 'createdb'");
  }
  if (found->Integer(0, 2) < kOldestVersion) {
    Refuse(connection, "is one of a server older than PostgreSQL 15");
  }
  if (found->Text(0, 3) != "UTF8") {
    Refuse(connection, "keeps texts as " + std::string(found->Text(0, 3)) +
                           "; make one with 'createdb -E UTF8 -T template0'");
  }
  if (!found->Boolean(0, 4)) {
    Refuse(connection, "may not be changed by the login '" + login +
                           "'; its owner, or who has the right to create in it, runs this");
  }
  if (!found->Boolean(0, 5)) {
    Refuse(connection, "needs roles that the login '" + login +
                           "' may not make; a superuser gives it the right with 'alter role " +
                           server::Name(login) + " createrole'");
  }
  return false;
}

ServerSetup SetUp(Connection& connection) {
  if (IsThere(connection)) {
    const auto version = connection.Run("select number from rental.version");
    if (version->rows() != 1 || version->Integer(0, 0) != server::kSchemaVersion) {
      Refuse(connection, "was made by another version of Tenora, which keeps it otherwise");
    }
    if (connection.Run("select to_regclass('queue.version') is not null")->Boolean(0, 0)) {
      return ServerSetup::kThereAlready;
    }
    // A database of the first release with a server.
    connection.RunScript(std::string(kQueueSchema));
    return ServerSetup::kQueueAdded;
  }
  connection.RunScript(std::string(kServerSchema));
  connection.RunScript(std::string(kQueueSchema));
  return ServerSetup::kMade;
}

}  // namespace

ServerSetup SetUpServer(Connection& connection) {
  const std::string login(connection.Run("select session_user")->Text(0, 0));
  try {
    return SetUp(connection);
  } catch (const ServerError& error) {
    if (error.state() != kNoPermission) throw;
    Refuse(connection, "is administered by its owner, not by the login '" + login + "'");
  }
}

void RequireOwner(Connection& connection) {
  const auto may = connection.Run(
      "select has_table_privilege('rental.may_see', 'insert') and "
      "has_table_privilege('rental.counter', 'insert') and "
      "has_table_privilege('rental.branch', 'update'), session_user");
  if (may->Boolean(0, 0)) return;
  Refuse(connection,
         "is administered by its owner, not by the login '" + std::string(may->Text(0, 1)) + "'");
}

std::string ServerRole(std::string_view role) { return "tenora_" + std::string(role); }

void GrantBranch(Connection& connection, const std::string& login, const std::string& branch,
                 std::string_view role) {
  RequireOwner(connection);
  const std::string id = BranchId(connection, branch);
  const auto known = connection.Run(server::Query{
      .sql = "select rolcanlogin from pg_roles where rolname = $1", .parameters = {login}});
  if (known->rows() == 0 || !known->Boolean(0, 0)) {
    Refuse(connection, "has no login '" + login + "'; in psql, 'create role " +
                           server::Name(login) + " login' makes it, and '\\password " + login +
                           "' asks for its password");
  }
  const server::Query together[] = {
      {.sql = "begin", .parameters = {}},
      {.sql = "grant " + ServerRole(role) + " to " + server::Name(login), .parameters = {}},
      {.sql = "insert into rental.may_see(login, branch) values ($1, $2) on conflict do nothing",
       .parameters = {login, id}},
      {.sql = "commit", .parameters = {}}};
  try {
    connection.RunTogether(together);
  } catch (const ServerError& error) {
    if (error.state() != kNoPermission) throw;
    Refuse(connection, "has the role " + ServerRole(role) +
                           ", which this login may not give: a superuser lets it with 'grant " +
                           ServerRole(role) + " to ... with admin option'");
  }
}

bool RevokeBranch(Connection& connection, const std::string& login, const std::string& branch) {
  RequireOwner(connection);
  const std::string id = BranchId(connection, branch);
  return connection
             .Run(
                 server::Query{.sql = "delete from rental.may_see where login = $1 and branch = $2",
                               .parameters = {login, id}})
             ->changed() > 0;
}

}  // namespace tenora
