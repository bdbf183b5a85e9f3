#include "platform/server/import_transaction.h"

#include <vector>

namespace tenora::server {
namespace {

// " by the login 'anna' from 10.0.0.3"; the address is seen by few logins.
std::string HolderOf(Connection& connection, const std::string& branch) {
  const ResultPtr holder = connection.Run(
      {.sql = "select a.usename, host(a.client_addr) from rental.branch b join rental.import_lock "
              "i on i.branch = b.id join pg_locks l on "
              "l.locktype = 'transactionid' and l.granted and l.transactionid = i.xmax join "
              "pg_stat_activity a on a.pid = l.pid where b.name = $1",
       .parameters = {branch}});
  if (holder->rows() == 0) return "";
  const std::string address(holder->Text(0, 1));
  return " by the login '" + std::string(holder->Text(0, 0)) + "'" +
         (address.empty() ? "" : " from " + address);
}

}  // namespace

// Where this computer is switched off in the middle, the server finds out within two minutes, and
// lets the next import begin.
ImportTransaction::ImportTransaction(Connection& connection)
    : connection_(connection), transaction_(connection) {
  connection_.RunScript(
      "set local tcp_keepalives_idle = 60; set local tcp_keepalives_interval = 10; set local "
      "tcp_keepalives_count = 6");
}

std::int64_t ImportTransaction::Lock(const std::string& branch, std::chrono::milliseconds wait) {
  constexpr std::string_view kLockTimedOut = "55P03";
  const Query queries[] = {
      {.sql = "select set_config('lock_timeout', $1, true)",
       .parameters = {std::to_string(wait.count())}},
      {.sql = "select id, rental.lock_import(id) from rental.branch where name = $1",
       .parameters = {branch}},
      {.sql = "set local lock_timeout = 0", .parameters = {}}};
  try {
    const std::vector<ResultPtr> results = connection_.RunTogether(queries);
    if (results[1]->rows() == 1) return results[1]->Integer(0, 0);
  } catch (const ServerError& error) {
    if (error.state() != kLockTimedOut) throw;
    throw ServerError(error.number(), "Branch '" + branch +
                                          "' is left as it was: another import of it is in "
                                          "progress" +
                                          HolderOf(connection_, branch));
  }
  throw ServerError(server_error::kCallFailed,
                    "There is no branch '" + branch + "' that this login may see");
}

}  // namespace tenora::server
