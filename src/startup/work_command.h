// `tenora work`: takes letters from the queue on a server until it is told to stop.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "startup/generate_command.h"

namespace CLI {
class App;
}

namespace tenora {

struct WorkCall {
  std::string service;                // empty: that of the setting DatabaseLocation
  std::vector<std::string> branches;  // names, or several with commas between
  unsigned workers = 1;
  int lease = 300;  // seconds
  bool until_done = false;
  int parent = 0;  // the process that has started this worker as one of several
};

// Gives the parser the command's description and its options, which are stored in `call`.
void DeclareWork(CLI::App& app, WorkCall& call);

// `arguments` begin with "work". The result is the exit status: 0 after a stop, or when all is
// done, 1 when it failed, 2 for a usage error.
int RunWork(std::vector<std::string> arguments, const GenerateParts& parts);

}  // namespace tenora
