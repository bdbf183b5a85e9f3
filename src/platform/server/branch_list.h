// What an administrator sees of the branches on a server.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/server/branch.h"
#include "platform/server/branch_import.h"
#include "platform/server/server_connection.h"

namespace tenora::server {

struct BranchSummary {
  std::string name;
  std::optional<BranchState> state;  // none: nothing was brought yet
  bool counters_here = false;        // the server issues its running numbers, not the file
};

// Those that the login sees, by name. Raises ServerError.
std::vector<BranchSummary> ListBranches(Connection& connection, const std::string& service);

// The file that a branch's rows were brought from, and the login that has named it.
struct NamedFile {
  std::string path, login;
  bool trusted = false;  // that login is this one, or may administer the database
};
// None where nothing was brought yet, or the login does not see the branch.
std::optional<NamedFile> NamedFileOf(Connection& connection, const std::string& branch);

// What the last import has found wrong.
std::vector<ImportFinding> ReadFindings(Connection& connection, const std::string& branch);

}  // namespace tenora::server
