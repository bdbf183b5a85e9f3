// The branches of which `tenora generate` makes letters: those of one server.
#pragma once

#include <filesystem>
#include <iosfwd>
#include <string>
#include <vector>

#include "rental/session.h"
#include "startup/generate_call.h"

namespace tenora {

struct ChosenBranch {
  std::string name;
  std::filesystem::path location;  // as the database takes it
  std::filesystem::path folder;    // of its letters
};

// The libpq service of the setting "DatabaseLocation". Raises WrongChoice where that names none.
std::string ServiceOfSettings(Session& session);

// The branches that the call names, on the server of the setting "DatabaseLocation"; of a call that
// names none, the setting's. How old the data of each are is told on `errors`. Raises WrongChoice
// for a setting that names no server, a branch that is not there, and data older than the call
// allows.
std::vector<ChosenBranch> ChooseBranches(Session& session, const GenerateCall& call,
                                         std::ostream& errors);

// The name of a file that each of several branches gets: "post - North.csv" of "post.csv".
std::string FileOfBranch(const std::string& file, const std::string& branch);

}  // namespace tenora
