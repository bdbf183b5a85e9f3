// What an administrator does once with a server's database: the schema, and which login sees which
// branch.
#pragma once

#include <string>
#include <string_view>

#include "platform/server/server_connection.h"

namespace tenora {

// The statements that make the schema, for an empty database.
extern const std::string_view kServerSchema;
// Those that make the queue of letters, after them.
extern const std::string_view kQueueSchema;

enum class ServerSetup { kMade, kQueueAdded, kThereAlready };

// Makes the schema, queue, roles and row security in the connection's database, which is empty.
// Raises ServerError for a database that is in use otherwise, a server that is too old, and a login
// that may not; nothing is changed then.
ServerSetup SetUpServer(server::Connection& connection);

// Raises ServerError where the login may not administer the database: change who sees what, who
// issues receipt numbers, and which branches there are.
void RequireOwner(server::Connection& connection);

// "reader", "clerk", "worker" or "sync".
std::string ServerRole(std::string_view role);

// Gives a login of the server a role of ours, and lets it see the branch. Raises ServerError where
// there is no such login or branch, or who asks is not the owner of the database.
void GrantBranch(server::Connection& connection, const std::string& login,
                 const std::string& branch, std::string_view role);
// Lets the login see the branch no more; its role stays. False where it did not see it.
bool RevokeBranch(server::Connection& connection, const std::string& login,
                  const std::string& branch);

}  // namespace tenora
