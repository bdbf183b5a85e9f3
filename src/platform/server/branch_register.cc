#include "platform/server/branch_register.h"

#include "platform/access/sort_order.h"
#include "platform/runtime/text.h"
#include "platform/server/import_transaction.h"

namespace tenora::server {
namespace {

[[noreturn]] void Refuse(const std::string& reason) {
  throw ServerError(server_error::kCallFailed, reason);
}

// Equal for names that the engine's users take for one.
std::string KeyOf(std::string_view name) {
  constexpr std::uint32_t kGeneralOrder = 1033;
  std::string key;
  access::SortOrder::Closest(kGeneralOrder).AppendComparable(name, key);
  return key;
}

// For a branch that is there, its number; 0 for a new one.
void RequireGoodName(Connection& connection, const std::string& name, std::int64_t branch) {
  const std::string fault = BranchNameFault(name);
  if (!fault.empty()) Refuse("The branch's name '" + name + "' " + fault);
  const ResultPtr all = connection.Run("select id, name from rental.branch");
  for (int row = 0; row < all->rows(); ++row) {
    const std::string_view other = all->Text(row, 1);
    if (all->Integer(row, 0) == branch || KeyOf(other) != KeyOf(name)) continue;
    Refuse(other == name ? "There is a branch '" + name + "' already"
                         : "The branch's name '" + name + "' is too like that of the branch '" +
                               std::string(other) + "', which is there already");
  }
}

std::int64_t IdOf(Connection& connection, const std::string& name) {
  const ResultPtr found =
      connection.Run({.sql = "select id from rental.branch where name = $1", .parameters = {name}});
  if (found->rows() == 0) Refuse("There is no branch '" + name + "'");
  return found->Integer(0, 0);
}

// Whoever adds rows to a branch keeps it from being renamed or removed until the end of the
// transaction.
std::string UsersOf(Connection& connection) {
  const ResultPtr found = connection.Run(
      "select distinct a.usename, host(a.client_addr), a.pid from pg_locks l join pg_stat_activity "
      "a on a.pid = l.pid where l.relation = 'rental.branch'::regclass and l.granted and l.mode "
      "in ('RowShareLock', 'RowExclusiveLock') and l.database = (select oid from pg_database "
      "where datname = current_database()) and l.pid <> pg_backend_pid() order by 1, 3");
  std::string users;
  for (int row = 0; row < found->rows(); ++row) {
    const std::string address(found->Text(row, 1));
    users += std::string(users.empty() ? "" : ", ") + "the login '" +
             std::string(found->Text(row, 0)) + "'" + (address.empty() ? "" : " from " + address) +
             " (process " + std::string(found->Text(row, 2)) + " of the server)";
  }
  return users.empty() ? "another login" : users;
}

// Runs a change of a branch in the transaction that is open. Raises, after a while, where rows of a
// transaction in progress belong to the branch.
void Change(Connection& connection, const std::string& name, const Query& change) {
  constexpr std::string_view kLockTimedOut = "55P03";
  const Query queries[] = {{.sql = "set local lock_timeout = '5s'", .parameters = {}}, change};
  try {
    connection.RunTogether(queries);
  } catch (const ServerError& error) {
    if (error.state() != kLockTimedOut) throw;
    Refuse("Branch '" + name + "' is left as it was: a transaction in progress uses it, by " +
           UsersOf(connection) + ". Try again when it has ended");
  }
}

}  // namespace

std::string BranchNameFault(std::string_view name) {
  constexpr std::size_t kLongest = 100;
  if (name.empty()) return "is empty";
  if (!IsValidUtf8(name)) return "is not UTF-8";
  if (name.starts_with(' ') || name.ends_with(' ')) return "begins or ends with a blank";
  std::size_t length = 0;
  for (std::string_view rest = name; !rest.empty(); ++length) {
    const char32_t c = TakeCodePoint(rest);
    // Lists of branches on the command line are separated by commas.
    if (c == U',') return "has a comma";
    if (c < 0x20 || (c >= 0x7F && c < 0xA0)) return "has characters that cannot be seen";
  }
  if (length > kLongest) return "is longer than " + std::to_string(kLongest) + " characters";
  return "";
}

void AddBranch(Connection& connection, const std::string& name) {
  const ResultPtr may =
      connection.Run("select has_table_privilege('rental.branch', 'insert'), session_user");
  if (!may->Boolean(0, 0)) {
    Refuse("There is no branch '" + name + "' that this login may see, and '" +
           std::string(may->Text(0, 1)) +
           "' may not add branches: the owner of the database does, with 'tenora server add', and "
           "lets logins see them with 'tenora server grant'");
  }
  RequireGoodName(connection, name, 0);
  connection.Run({.sql = "insert into rental.branch(name) values ($1)", .parameters = {name}});
}

void RenameBranch(Connection& connection, const std::string& name, const std::string& new_name) {
  const std::int64_t id = IdOf(connection, name);
  RequireGoodName(connection, new_name, id);
  ServerTransaction transaction(connection);
  Change(connection, name,
         {.sql = "update rental.branch set name = $2 where id = $1",
          .parameters = {std::to_string(id), new_name}});
  transaction.Commit();
}

void RemoveBranch(Connection& connection, const std::string& name) {
  ImportTransaction transaction(connection);
  const std::int64_t id = transaction.Lock(name, kWaitForImport);
  Change(connection, name,
         {.sql = "delete from rental.branch where id = $1", .parameters = {std::to_string(id)}});
  transaction.Commit();
}

}  // namespace tenora::server
