#include "startup/server_command.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <chrono>
#include <ctime>
#include <filesystem>
#include <map>
#include <optional>
#include <ostream>

#include "data/server_setup.h"
#include "merge/receipt_counters.h"
#include "platform/dialogs/terminal_text.h"
#include "platform/query/engine.h"
#include "platform/runtime/clock.h"
#include "platform/runtime/error.h"
#include "platform/runtime/files.h"
#include "platform/server/branch_import.h"
#include "platform/server/branch_list.h"
#include "platform/server/branch_location.h"
#include "platform/server/branch_register.h"
#include "platform/server/import_transaction.h"
#include "platform/server/rental_schema.h"
#include "platform/server/running_numbers.h"

namespace tenora {
namespace {

using server::BranchSummary;
using server::Connection;
using server::ImportFinding;
using server::ImportReport;
using server::LayoutChange;
using server::ServerError;

// What is asked here may take long on a large branch.
constexpr std::chrono::seconds kNoLimit{0};

void MakeServer(const ServerCall& call, std::ostream& output) {
  const auto connection = Connection::Open(call.service, kNoLimit);
  const std::string place =
      "database " + connection->DatabaseName() + " on " + connection->Address();
  switch (SetUpServer(*connection)) {
    case ServerSetup::kThereAlready:
      output << TerminalLine("There already: Tenora's tables in " + place) << '\n';
      return;
    case ServerSetup::kQueueAdded:
      output << TerminalLine("Made: the schema queue, for letters by workers, in " + place) << '\n';
      return;
    case ServerSetup::kMade:
      break;
  }
  const auto tables = connection->Run("select count(*) from rental.table_kind");
  output << TerminalLine("Made: the schema rental in " + place + ", with tables for " +
                         std::to_string(tables->Integer(0, 0)) +
                         " tables of a branch and row security, and queue, for letters by workers")
         << '\n'
         << "Made: the roles tenora_reader, tenora_clerk, tenora_worker and tenora_sync\n"
         << "Next: 'tenora server import FILE --branch NAME' brings a branch\n";
}

std::string Count(std::int64_t count, const std::string& thing) {
  return std::to_string(count) + " " + thing + (count == 1 ? "" : "s");
}

std::string Place(std::int64_t row) {
  constexpr std::int64_t kPlaces = 256;
  return "page " + std::to_string(row / kPlaces) + ", row " + std::to_string(row % kPlaces);
}

void PrintReport(const std::string& branch, const ImportReport& report,
                 std::chrono::steady_clock::duration time, std::ostream& output) {
  const auto tenths = std::chrono::duration_cast<std::chrono::milliseconds>(time).count() / 100;
  output << TerminalLine(
                branch + ": " + Count(report.rows, "row") + ", " +
                std::to_string(report.pages_changed) + " of " + Count(report.pages, "page") +
                " changed, " +
                (report.pages_gone > 0 ? std::to_string(report.pages_gone) + " gone, " : "") +
                Count(static_cast<std::int64_t>(report.findings.size()), "finding") + ", " +
                std::to_string(tenths / 10) + "." + std::to_string(tenths % 10) + " s")
         << '\n';
  if (!report.file_before.empty()) {
    output << TerminalLine(branch + ": until now its rows were those of " + report.file_before)
           << '\n';
  }
  std::string left_out;
  for (const std::string& table : report.tables_left_out) {
    left_out += (left_out.empty() ? "" : ", ") + table;
  }
  if (!left_out.empty()) {
    output << TerminalLine(branch + ": not brought, as no letter uses them: " + left_out) << '\n';
  }
  for (const ImportFinding& finding : report.findings) {
    output << TerminalLine(branch + ": " + finding.table + ", " + Place(finding.row) + ": " +
                           finding.what)
           << '\n';
  }
  output.flush();
}

// Brings branches one after the other; one that fails does not stop the next.
class Bringing {
 public:
  Bringing(const ServerCall& call, LayoutChange layout, std::ostream& output, std::ostream& errors)
      : service_(call.service),
        layout_(layout),
        output_(output),
        errors_(errors),
        connection_(Connection::Open(service_, kNoLimit)) {
    server::RunInSchema(*connection_, service_, {});
  }

  Connection& connection() { return *connection_; }
  bool good() const { return good_; }

  void Bring(const std::string& branch, const std::filesystem::path& file) {
    try {
      if (connection_->IsBroken()) connection_ = Connection::Open(service_, kNoLimit);
      errors_ << TerminalLine(branch + ": reading " + file.string() + " …") << std::endl;
      const auto start = std::chrono::steady_clock::now();
      const ImportReport report = server::ImportBranch(*connection_, branch, file, layout_);
      PrintReport(branch, report, std::chrono::steady_clock::now() - start, output_);
      if (!report.findings.empty()) good_ = false;
      RequireMark(branch, file, !report.file_before.empty());
    } catch (...) {
      Fail(branch, ErrorText(CurrentError()));
    }
  }

  void Fail(const std::string& branch, const std::string& why) {
    good_ = false;
    errors_ << TerminalLine(branch + ": " + why) << std::endl;
  }

 private:
  // A file that was put back from a copy of before the hand-over would issue numbers again.
  // Another branch's file, brought by mistake, must not be given this one's.
  void RequireMark(const std::string& branch, const std::filesystem::path& file, bool other_file) {
    if (!server::RunningNumbers::Of(*connection_, service_, branch).IssuedHere() ||
        HasHandedOver(*workspace_->OpenDatabase(file))) {
      return;
    }
    Fail(branch,
         other_file
             ? "another file than before was brought, which has not handed over its receipt "
               "numbers: those of the branch stay on the server. If it is the wrong file, import "
               "the right one again"
             : "the server issues its receipt numbers, and now its file does too: where this is "
               "the branch's own file, put back from a copy, 'tenora server counters --here' ends "
               "that; where it is the wrong one, import the right one again");
  }

  const std::string service_;
  const LayoutChange layout_;
  std::ostream& output_;
  std::ostream& errors_;
  std::unique_ptr<Connection> connection_;
  const std::unique_ptr<query::Workspace> workspace_ = query::Workspace::Create();
  bool good_ = true;
};

constexpr const char* kUnknown = "there is no such branch that this login may see";

struct Branches {
  std::vector<BranchSummary> known;
  std::vector<std::string> unknown;  // names of those that were asked for
};

// The branches with these names; all that the login sees without any.
Branches FindBranches(Connection& connection, const std::string& service,
                      std::vector<std::string> names) {
  Branches branches;
  for (BranchSummary& branch : server::ListBranches(connection, service)) {
    const bool all = names.empty();
    if (all || std::ranges::count(names, branch.name) > 0) {
      branches.known.push_back(std::move(branch));
    }
  }
  std::erase_if(names, [&](const std::string& name) {
    return std::ranges::count(branches.known, name, &BranchSummary::name) > 0;
  });
  branches.unknown = std::move(names);
  return branches;
}

bool Sync(const ServerCall& call, std::ostream& output, std::ostream& errors) {
  Bringing bringing(call, LayoutChange::kRefuse, output, errors);
  std::map<std::string, std::filesystem::path> given;
  for (const std::string& text : call.files) {
    const std::size_t equals = text.find('=');
    given[text.substr(0, equals)] = NativePath(text.substr(equals + 1));
  }
  std::vector<std::string> wanted = call.branches;
  if (wanted.empty()) {
    for (const auto& [branch, file] : given) wanted.push_back(branch);
  }
  const Branches branches = FindBranches(bringing.connection(), call.service, wanted);
  for (const std::string& name : branches.unknown) bringing.Fail(name, kUnknown);
  for (const BranchSummary& branch : branches.known) {
    if (const auto found = given.find(branch.name); found != given.end()) {
      bringing.Bring(branch.name, found->second);
      continue;
    }
    const auto known = server::NamedFileOf(bringing.connection(), branch.name);
    if (!known) {
      bringing.Fail(branch.name, "nothing was brought yet: 'tenora server import' does it");
    } else if (!known->trusted) {
      bringing.Fail(branch.name, "its file was named by the login '" + known->login + "' (" +
                                     known->path +
                                     "), whom this login does not follow; name the file: 'tenora "
                                     "server sync \"" +
                                     branch.name + "=FILE\"'");
    } else {
      bringing.Bring(branch.name, known->path);
    }
  }
  return bringing.good();
}

std::string LocalTime(std::chrono::sys_seconds time) {
  const std::time_t seconds = time.time_since_epoch().count();
  std::tm parts{};
  char text[40] = "";
  if (::localtime_r(&seconds, &parts) != nullptr) {
    std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &parts);
  }
  return text;
}

// "3 days 4 h", "2 h 5 min", "12 min", "40 s".
std::string AgeText(std::chrono::seconds age) {
  const std::int64_t seconds = std::max<std::int64_t>(0, age.count());
  const std::int64_t minutes = seconds / 60, hours = minutes / 60, days = hours / 24;
  const auto number = [](std::int64_t count) { return std::to_string(count); };
  if (days > 0) return Count(days, "day") + " " + number(hours % 24) + " h";
  if (hours > 0) return number(hours) + " h " + number(minutes % 60) + " min";
  return minutes > 0 ? number(minutes) + " min" : number(seconds) + " s";
}

void PrintStatus(const std::vector<BranchSummary>& branches, ListingFormat format,
                 std::ostream& output) {
  const auto now =
      std::chrono::time_point_cast<std::chrono::seconds>(std::chrono::system_clock::now());
  const bool for_people = format == ListingFormat::kTable;
  TableCells cells({{"Branch"},
                    {"Data Of"},
                    {for_people ? "Age" : "Age Seconds", true},
                    {"Rows", true},
                    {"Findings", true},
                    {"Receipt Numbers"},
                    {"File"}},
                   format);
  for (const BranchSummary& branch : branches) {
    cells.BeginRow();
    cells.Text(branch.name);
    if (branch.state) {
      cells.Text(LocalTime(branch.state->taken));
      const std::chrono::seconds age = now - branch.state->taken;
      for_people ? cells.Text(AgeText(age)) : cells.Number(age.count());
      cells.Number(branch.state->rows);
      cells.Number(branch.state->findings);
    } else {
      for (int i = 0; i < 4; ++i) cells.Nothing();
    }
    cells.Text(branch.counters_here ? "server" : "file");
    branch.state ? cells.Text(branch.state->file_name) : cells.Nothing();
  }
  cells.Print(output);
}

void PrintFindings(Connection& connection, const std::vector<BranchSummary>& branches,
                   ListingFormat format, std::ostream& output) {
  TableCells cells({{"Branch"}, {"Table"}, {"Place"}, {"Finding"}}, format);
  for (const BranchSummary& branch : branches) {
    for (const ImportFinding& finding : server::ReadFindings(connection, branch.name)) {
      cells.BeginRow();
      cells.Text(branch.name);
      cells.Text(finding.table);
      cells.Text(Place(finding.row));
      cells.Text(finding.what);
    }
  }
  cells.Print(output);
}

bool ShowStatus(const ServerCall& call, std::ostream& output, std::ostream& errors) {
  const auto connection = Connection::Open(call.service, kNoLimit);
  const Branches branches = FindBranches(*connection, call.service, call.branches);
  const ListingFormat format = ListingFormatOf(call.format);
  if (call.findings) {
    PrintFindings(*connection, branches.known, format, output);
  } else {
    PrintStatus(branches.known, format, output);
  }
  for (const std::string& name : branches.unknown) {
    errors << TerminalLine(name + ": " + kUnknown) << '\n';
  }
  return branches.unknown.empty();
}

void Grant(const ServerCall& call, std::ostream& output) {
  const auto connection = Connection::Open(call.service, kNoLimit);
  server::RunInSchema(*connection, call.service, {});
  GrantBranch(*connection, call.login, call.branch, call.role);
  output << TerminalLine(call.login + " has the role " + ServerRole(call.role) +
                         " and sees branch " + call.branch)
         << '\n';
}

bool Revoke(const ServerCall& call, std::ostream& output) {
  const auto connection = Connection::Open(call.service, kNoLimit);
  server::RunInSchema(*connection, call.service, {});
  const bool seen = RevokeBranch(*connection, call.login, call.branch);
  output << TerminalLine(call.login + (seen ? " sees branch " + call.branch + " no more"
                                            : " did not see branch " + call.branch))
         << '\n';
  return seen;
}

// The branch whose rows come from this file too, other than the named one.
std::optional<std::string> OtherBranchOf(Connection& connection, const ServerCall& call,
                                         const std::filesystem::path& file) {
  // Other logins have named those paths: one that cannot be followed must not stop the rest.
  const auto place_of = [](const std::filesystem::path& path) {
    std::error_code error;
    const auto place = std::filesystem::weakly_canonical(path, error);
    return error ? path : place;
  };
  for (const BranchSummary& branch : server::ListBranches(connection, call.service)) {
    if (branch.name != call.branch && branch.state &&
        place_of(branch.state->file_name) == place_of(file)) {
      return branch.name;
    }
  }
  return std::nullopt;
}

// The branch's file. Counters taken from another one would leave the branch with two issuers.
std::string FileForCounters(Connection& connection, const ServerCall& call) {
  namespace fs = std::filesystem;
  const auto known = server::NamedFileOf(connection, call.branch);
  const auto refuse = [&](const std::string& why) {
    throw ServerError(server::server_error::kCallFailed, why);
  };
  if (known && !known->trusted) {
    refuse("The file of branch '" + call.branch + "' (" + known->path +
           ") was named by the login '" + known->login +
           "', whom this login does not follow; name it first: 'tenora server sync \"" +
           call.branch + "=FILE\"'");
  }
  if (call.file.empty()) {
    if (!known)
      refuse("The file of branch '" + call.branch + "' is not known; name it with --database");
    return known->path;
  }
  const std::string file = NativePath(call.file).string();
  if (known && fs::weakly_canonical(file) != fs::weakly_canonical(known->path)) {
    refuse("Branch '" + call.branch + "' was brought from '" + known->path + "', not from '" +
           file + "'; where its file has moved, 'tenora server sync' brings it from there first");
  }
  return file;
}

void HandOverCounters(const ServerCall& call, std::ostream& output) {
  const auto connection = Connection::Open(call.service, kNoLimit);
  auto numbers = server::RunningNumbers::Of(*connection, call.service, call.branch);
  const auto say = [&](const std::string& text) {
    output << TerminalLine(call.branch + ": " + text) << '\n';
  };
  if (!call.here && !call.to_file) {
    say(std::string("receipt numbers are issued by the ") +
        (numbers.IssuedHere() ? "server" : "file"));
    return;
  }
  RequireOwner(*connection);
  const std::string path = FileForCounters(*connection, call);
  if (const auto other = OtherBranchOf(*connection, call, path)) {
    throw ServerError(server::server_error::kCallFailed,
                      "The file '" + path + "' is that of branch '" + *other +
                          "' too: import the right file for branch '" + call.branch +
                          "' again; the receipt numbers stay where they are");
  }
  // Another hand-over, or an import, would meet this one's steps.
  const auto guard = Connection::Open(call.service, kNoLimit);
  server::ImportTransaction alone(*guard);
  alone.Lock(call.branch, server::kWaitForImport);
  const auto workspace = query::Workspace::Create();
  const auto file = workspace->OpenDatabase(path);
  const HandOver done = call.here
                            ? HandOverToServer(*file, numbers)
                            : HandBackToFile(*file, numbers, Clock::FromEnvironment().Today());
  const std::string issuer = call.here ? "the server" : path;
  say(done == HandOver::kAlready ? "receipt numbers are issued by " + issuer + " already"
                                 : "receipt numbers are issued by " + issuer + " from now on");
}

void Add(const ServerCall& call, std::ostream& output) {
  const auto connection = Connection::Open(call.service, kNoLimit);
  server::RunInSchema(*connection, call.service, {});
  RequireOwner(*connection);
  server::AddBranch(*connection, call.branch);
  output << TerminalLine("Added: branch " + call.branch + ", without data yet") << '\n';
}

// As DatabaseLocation has it: "branch='North Shore'".
std::string BranchWord(const std::string& name) {
  const std::string location = server::BranchLocation{.service = "", .branch = name}.ToText();
  return location.substr(location.find("branch="));
}

void Rename(const ServerCall& call, std::ostream& output) {
  const auto connection = Connection::Open(call.service, kNoLimit);
  server::RunInSchema(*connection, call.service, {});
  RequireOwner(*connection);
  server::RenameBranch(*connection, call.branch, call.new_name);
  output << TerminalLine(call.branch + " is called " + call.new_name +
                         " now, for the same logins and with the same data")
         << '\n'
         << TerminalLine("Left to do: on computers whose DatabaseLocation has " +
                         BranchWord(call.branch) + ", change that to " + BranchWord(call.new_name) +
                         "; in command lines, --branch to \"" + call.new_name + "\"")
         << '\n'
         << TerminalLine(
                "Letters made so far stay in the data folder's Branches folder under the "
                "name " +
                call.branch +
                ", new ones go to one of the new name; unfinished "
                "runs of the old name can be resumed only while it is the branch's")
         << '\n';
}

bool Remove(const ServerCall& call, std::ostream& output) {
  const auto connection = Connection::Open(call.service, kNoLimit);
  const Branches branches = FindBranches(*connection, call.service, {call.branch});
  RequireOwner(*connection);
  const auto refuse = [&](const std::string& why) {
    throw ServerError(server::server_error::kCallFailed, why);
  };
  if (branches.known.empty()) refuse("There is no branch '" + call.branch + "'");
  const BranchSummary& branch = branches.known.front();
  if (branch.counters_here && !call.with_counters) {
    refuse("The server issues the receipt numbers of branch '" + call.branch +
           "'. 'tenora server counters --branch \"" + call.branch +
           "\" --file' hands them back to its file first; --with-counters loses them, and its file "
           "then issues none either");
  }
  const std::string rows = Count(branch.state ? branch.state->rows : 0, "row");
  const std::string file = branch.state ? "; the file " + branch.state->file_name + " stays" : "";
  if (call.sure) server::RemoveBranch(*connection, call.branch);
  output << TerminalLine(call.branch + ": " +
                         (call.sure ? rows + " removed" + file
                                    : rows + " would be removed" + file +
                                          ". Nothing was done; --yes does it"))
         << '\n';
  return call.sure;
}

}  // namespace

bool RunServerCommand(const ServerCall& call, std::ostream& output, std::ostream& errors) {
  if (call.init->parsed()) MakeServer(call, output);
  if (call.import->parsed()) {
    Bringing bringing(call, LayoutChange::kTake, output, errors);
    bringing.Bring(call.branch, NativePath(call.file));
    return bringing.good();
  }
  if (call.sync->parsed()) return Sync(call, output, errors);
  if (call.status->parsed()) return ShowStatus(call, output, errors);
  if (call.counters->parsed()) HandOverCounters(call, output);
  if (call.add->parsed()) Add(call, output);
  if (call.rename->parsed()) Rename(call, output);
  if (call.remove->parsed()) return Remove(call, output);
  if (call.grant->parsed()) Grant(call, output);
  return !call.revoke->parsed() || Revoke(call, output);
}

}  // namespace tenora
