// Which branches a server has: adding, renaming and removing them.
#pragma once

#include <string>
#include <string_view>

#include "platform/server/server_connection.h"

namespace tenora::server {

// What is wrong with a branch's name, "begins or ends with a blank" say; empty for a good one.
std::string BranchNameFault(std::string_view name);

// These are for the owner of the database. All raise ServerError, also for a name that is not good
// or that another branch has, with other capitals perhaps.

// Raises where the login may not add branches.
void AddBranch(Connection& connection, const std::string& name);
void RenameBranch(Connection& connection, const std::string& name, const std::string& new_name);
// With its rows, counters, and who sees it, while nobody imports it.
void RemoveBranch(Connection& connection, const std::string& name);

}  // namespace tenora::server
