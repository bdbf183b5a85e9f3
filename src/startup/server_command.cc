#include "startup/server_command.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <chrono>
#include <ctime>
#include <filesystem>
#include <map>
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
  if (SetUpServer(*connection) == ServerSetup::kThereAlready) {
    output << TerminalLine("There already: Tenora's tables in " + place) << '\n';
    return;
  }
  const auto tables = connection->Run("select count(*) from rental.table_kind");
  output << TerminalLine("Made: the schema rental in " + place + ", with tables for " +
                         std::to_string(tables->Integer(0, 0)) +
                         " tables of a branch and row security")
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
                " changed, " + Count(static_cast<std::int64_t>(report.findings.size()), "finding") +
                ", " + std::to_string(tenths / 10) + "." + std::to_string(tenths % 10) + " s")
         << '\n';
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

  // Whether it was brought.
  bool Bring(const std::string& branch, const std::filesystem::path& file) {
    try {
      if (connection_->IsBroken()) connection_ = Connection::Open(service_, kNoLimit);
      errors_ << TerminalLine(branch + ": reading " + file.string() + " …") << std::endl;
      const auto start = std::chrono::steady_clock::now();
      const ImportReport report = server::ImportBranch(*connection_, branch, file, layout_);
      PrintReport(branch, report, std::chrono::steady_clock::now() - start, output_);
      if (!report.findings.empty()) good_ = false;
      return true;
    } catch (...) {
      Fail(branch, ErrorText(CurrentError()));
      return false;
    }
  }

  // A file that was put back from a copy of before the hand-over would issue numbers again.
  void RequireMark(const std::string& branch, const std::filesystem::path& file) {
    try {
      if (HasHandedOver(*workspace_->OpenDatabase(file))) return;
      Fail(branch,
           "the server issues its receipt numbers, and now its file does too: 'tenora server "
           "counters --here' ends that");
    } catch (...) {
      Fail(branch, ErrorText(CurrentError()));
    }
  }

  void Fail(const std::string& branch, const std::string& why) {
    good_ = false;
    errors_ << TerminalLine(branch + ": " + why) << std::endl;
  }

 private:
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
    const auto found = given.find(branch.name);
    if (found == given.end() && !branch.state) {
      bringing.Fail(branch.name, "nothing was brought yet: 'tenora server import' does it");
      continue;
    }
    const std::filesystem::path file =
        found == given.end() ? std::filesystem::path(branch.state->file_name) : found->second;
    const bool brought = bringing.Bring(branch.name, file);
    if (brought && branch.counters_here) bringing.RequireMark(branch.name, file);
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

// A table whose cells are given as values.
class Cells {
 public:
  Cells(std::vector<TextColumn> columns, ListingFormat format)
      : table_{std::move(columns), {}}, format_(format) {}

  void BeginRow() { table_.rows.emplace_back(); }
  void Text(const std::string& text) {
    Add(format_ == ListingFormat::kTable  ? TerminalLine(text)
        : format_ == ListingFormat::kJson ? JsonText(text)
                                          : text);
  }
  void Number(std::int64_t number) { Add(std::to_string(number)); }
  void Nothing() { Add(format_ == ListingFormat::kJson ? "null" : ""); }
  void Print(std::ostream& output) const { PrintTextTable(table_, format_, output); }

 private:
  void Add(std::string cell) { table_.rows.back().push_back(std::move(cell)); }

  TextTable table_;
  ListingFormat format_;
};

void PrintStatus(const std::vector<BranchSummary>& branches, ListingFormat format,
                 std::ostream& output) {
  const auto now =
      std::chrono::time_point_cast<std::chrono::seconds>(std::chrono::system_clock::now());
  const bool for_people = format == ListingFormat::kTable;
  Cells cells({{"Branch"},
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
  Cells cells({{"Branch"}, {"Table"}, {"Place"}, {"Finding"}}, format);
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

// The branch's file. Counters taken from another one would leave the branch with two issuers.
std::string FileOf(const Branches& branches, const ServerCall& call) {
  const bool brought = !branches.known.empty() && branches.known.front().state.has_value();
  const std::string known = brought ? branches.known.front().state->file_name : "";
  const std::string file = call.file.empty() ? known : NativePath(call.file).string();
  if (file.empty()) {
    throw ServerError(
        server::server_error::kCallFailed,
        "The file of branch '" + call.branch + "' is not known; name it with --database");
  }
  namespace fs = std::filesystem;
  if (brought && fs::weakly_canonical(file) != fs::weakly_canonical(known)) {
    throw ServerError(server::server_error::kCallFailed,
                      "Branch '" + call.branch + "' was brought from '" + known + "', not from '" +
                          file +
                          "'; where its file has moved, 'tenora server sync' brings it from "
                          "there first");
  }
  return file;
}

void HandOverCounters(const ServerCall& call, std::ostream& output) {
  const auto connection = Connection::Open(call.service, kNoLimit);
  const Branches branches = FindBranches(*connection, call.service, {call.branch});
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
  const std::string path = FileOf(branches, call);
  const auto workspace = query::Workspace::Create();
  const auto file = workspace->OpenDatabase(path);
  const HandOver done = call.here
                            ? HandOverToServer(*file, numbers)
                            : HandBackToFile(*file, numbers, Clock::FromEnvironment().Today());
  const std::string issuer = call.here ? "the server" : path;
  say(done == HandOver::kAlready ? "receipt numbers are issued by " + issuer + " already"
                                 : "receipt numbers are issued by " + issuer + " from now on");
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
  if (call.grant->parsed()) Grant(call, output);
  return !call.revoke->parsed() || Revoke(call, output);
}

}  // namespace tenora
