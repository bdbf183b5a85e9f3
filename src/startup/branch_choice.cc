#include "startup/branch_choice.h"

#include <algorithm>
#include <ostream>

#include "data/data_age.h"
#include "letters/branch_folders.h"
#include "platform/dialogs/terminal_text.h"
#include "platform/runtime/clock.h"
#include "platform/server/branch_list.h"
#include "platform/server/branch_location.h"
#include "startup/recipient_choice.h"

namespace tenora {
namespace {

namespace fs = std::filesystem;

constexpr std::chrono::seconds kTimeLimit{60};

server::BranchLocation SettingsLocation(Session& session) {
  const std::string location = session.database.Location().string();
  if (!server::IsBranchLocation(location)) {
    throw WrongChoice(
        "Branches are those of a server: the setting DatabaseLocation must name one, "
        "as service=NAME branch=NAME, and is " +
        location);
  }
  return server::ReadBranchLocation(location);
}

std::string Quoted(const std::vector<std::string>& names) {
  std::string text;
  for (const std::string& name : names) text += (text.empty() ? "" : ", ") + name;
  return text;
}

// Those with these names, in the order of the names; all where there are none.
std::vector<server::BranchSummary> WithNames(std::vector<server::BranchSummary> all,
                                             const std::vector<std::string>& names) {
  if (names.empty()) return all;
  std::vector<server::BranchSummary> found;
  for (const std::string& name : names) {
    const auto branch = std::ranges::find(all, name, &server::BranchSummary::name);
    if (branch == all.end()) {
      std::vector<std::string> possible;
      for (const server::BranchSummary& one : all) possible.push_back(one.name);
      throw WrongChoice("There is no branch \"" + name + "\" that this login may see" +
                        (possible.empty() ? "." : "; there are " + Quoted(possible) + "."));
    }
    const bool again = std::ranges::count(found, name, &server::BranchSummary::name) > 0;
    if (!again) found.push_back(*branch);
  }
  return found;
}

}  // namespace

std::string ServiceOfSettings(Session& session) {
  const std::string location = session.database.Location().string();
  if (server::IsBranchLocation(location)) return server::ReadBranchLocation(location).service;
  throw WrongChoice("The setting DatabaseLocation names no server, but " + location +
                    ": name the server's service with --service");
}

std::vector<ChosenBranch> ChooseBranches(Session& session, const GenerateCall& call,
                                         std::ostream& errors) {
  const server::BranchLocation own = SettingsLocation(session);
  std::vector<std::string> names = call.BranchNames();
  if (names.empty() && !call.all_branches) names.push_back(own.branch);
  const auto connection = server::Connection::Open(own.service, kTimeLimit);
  const auto branches = WithNames(server::ListBranches(*connection, own.service), names);
  if (branches.empty()) throw WrongChoice("This login may see no branch.");

  const Date now = session.platform.clock.Now();
  std::vector<ChosenBranch> chosen;
  std::vector<std::string> too_old;
  for (const server::BranchSummary& branch : branches) {
    if (!branch.state) {
      throw WrongChoice("The branch \"" + branch.name + "\" has no data on the server yet.");
    }
    const Date taken = LocalTime(branch.state->taken);
    errors << TerminalLine(DataAgeText(branch.name, taken, now)) << '\n';
    const auto age = call.NoOlderThan();
    if (age && IsOlder(taken, now, *age)) too_old.push_back(branch.name);
    const server::BranchLocation location{.service = own.service, .branch = branch.name};
    chosen.push_back({.name = branch.name,
                      .location = location.ToText(),
                      .folder = BranchFolder(session.database.DataFolder(), branch.name)});
  }
  errors << std::flush;
  if (!too_old.empty()) {
    throw WrongChoice("Nothing was done: the data of " + Quoted(too_old) + " are older than " +
                      call.no_older_than + ".");
  }
  return chosen;
}

std::string FileOfBranch(const std::string& file, const std::string& branch) {
  if (file.empty()) return file;
  const fs::path path(file);
  const std::string name =
      path.stem().string() + " - " + BranchFolder({}, branch).filename().string();
  return path.parent_path() / (name + path.extension().string());
}

}  // namespace tenora
