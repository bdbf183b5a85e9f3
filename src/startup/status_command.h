// `tenora status`: how the runs of letters in the queue on a server stand, and what a person
// decides of them.
#pragma once

#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace tenora {

struct StatusCall {
  std::optional<int> run;
  std::string service;  // empty: that of the setting DatabaseLocation
  bool all = false, metrics = false;
  std::string format, only;  // empty: a table for people, of everything
  // Of the run.
  bool pause = false, cancel = false, resume = false, send_held = false, remove = false;
  std::vector<std::string> arrived, send_again;  // "BRANCH:NUMBER"

  // Whether something is to be done, rather than shown.
  bool Decides() const;
  // What is wrong with the call; empty when nothing is.
  std::string Complaint() const;
};

// Gives the parser the command's description and its options, which are stored in `call`.
void DeclareStatus(CLI::App& app, StatusCall& call);

// False when something could not be done; it is then said on `errors`, or raised.
bool RunStatus(const StatusCall& call, std::ostream& output, std::ostream& errors);

}  // namespace tenora
