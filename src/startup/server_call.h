// What `tenora server` is asked for on the command line.
#pragma once

#include <string>
#include <vector>

#include "startup/text_table.h"

namespace CLI {
class App;
}

namespace tenora {

struct ServerCall {
  // The commands below `tenora server`; one of them is parsed.
  CLI::App *init, *add, *import, *sync, *status, *counters, *grant, *revoke, *rename, *remove;

  std::string service;                // of libpq
  std::string file, branch;           // of import and others
  std::vector<std::string> branches;  // of sync and status
  std::vector<std::string> files;     // of sync: "NAME=FILE"
  std::string login, role;
  std::string format = "table";
  bool findings = false;
  bool here = false, to_file = false;        // of counters
  std::string new_name;                      // of rename
  bool sure = false, with_counters = false;  // of remove

  // What is wrong with the call; empty when nothing is.
  std::string Complaint() const;
};

// Gives the parser the command's description and its own commands, whose options are stored in
// `call`.
void DeclareServer(CLI::App& app, ServerCall& call);

}  // namespace tenora
