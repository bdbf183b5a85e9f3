#include "startup/server_call.h"

#include <CLI/CLI.hpp>
#include <algorithm>

namespace tenora {
namespace {

void AddService(CLI::App& app, ServerCall& call) {
  app.add_option("--service", call.service,
                 "The server's database, as a service of libpq (~/.pg_service.conf) names it; "
                 "without it the one in PGSERVICE")
      ->envname("PGSERVICE")
      ->required();
}

void AddBranch(CLI::App& app, ServerCall& call, const std::string& description) {
  app.add_option("--branch", call.branch, description)->required();
}

void AddBranches(CLI::App& app, ServerCall& call, const std::string& description) {
  app.add_option("--branch", call.branches, description)
      ->expected(1)
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
}

void AddLogin(CLI::App& app, ServerCall& call) {
  app.add_option("LOGIN", call.login, "A login of the server's")->required();
}

CLI::App* AddCommand(CLI::App& app, const char* name, const char* description) {
  return app.add_subcommand(name, description);
}

}  // namespace

std::string ServerCall::Complaint() const {
  for (const std::string& given : files) {
    const std::size_t equals = given.find('=');
    if (equals == 0 || equals == std::string::npos || equals + 1 == given.size()) {
      return "\"" + given + "\" does not have the form \"NAME=FILE\"";
    }
  }
  if (counters->parsed() && !file.empty() && !here && !to_file) {
    return "--database goes with --here or --file";
  }
  if (service.empty()) return init->parsed() ? "SERVICE is empty" : "--service names no service";
  const bool one_branch = !init->parsed() && !sync->parsed() && !status->parsed();
  if ((one_branch && branch.empty()) || std::ranges::count(branches, "") > 0)
    return "The branch's name is empty";
  return "";
}

void DeclareServer(CLI::App& app, ServerCall& call) {
  app.description(
      "Keep the rows of branches' database files on a PostgreSQL server, from which letters of "
      "any branch are made");
  app.require_subcommand(1);

  call.init = AddCommand(app, "init",
                         "Make the tables, roles and row security in an empty database. Where they "
                         "are there already nothing is changed, and that is no failure");
  call.init
      ->add_option("SERVICE", call.service,
                   "The database, as a service of libpq (~/.pg_service.conf) names it")
      ->required();

  call.add = AddCommand(app, "add",
                        "Add a branch without data, which logins are then given. For the owner of "
                        "the server's database");
  call.add->add_option("NAME", call.branch, "The branch's name")->required();
  AddService(*call.add, call);

  call.import = AddCommand(
      app, "import",
      "Bring the rows of a branch's file to the server; of a branch that is there already, what "
      "has changed, also where columns have. Status 1 when rows contradict one another, which are "
      "listed and brought all the same");
  call.import->add_option("FILE", call.file, "The .mdb or .accdb file, which is only read")
      ->required();
  AddBranch(*call.import, call,
            "The branch's name; one that is not there yet is added for the owner of the database");
  AddService(*call.import, call);

  call.sync = AddCommand(
      app, "sync",
      "Bring what has changed in the files of all branches that the login sees, each in a "
      "transaction of its own. A branch whose file is away, or has other columns than before, is "
      "left as it was, and the others go on; the status is then 1");
  call.sync->add_option("NAME=FILE", call.files,
                        "A branch and its file; without any, the file that it was brought from "
                        "last, if this login or the owner of the database has named it");
  AddBranches(*call.sync, call, "Only this branch; may be given many times");
  AddService(*call.sync, call);

  call.status = AddCommand(app, "status",
                           "Print the branches that the login sees: how old their data is, their "
                           "rows and findings, who issues their receipt numbers");
  AddBranches(*call.status, call, "Only this branch; may be given many times");
  call.status->add_flag("--findings", call.findings, "List what the last import found wrong");
  call.status->add_option("--format", call.format, "Of the table")
      ->check(CLI::IsMember({"table", "csv", "json"}))
      ->capture_default_str();
  AddService(*call.status, call);

  call.counters =
      AddCommand(app, "counters",
                 "Say who issues the receipt numbers of a branch's buildings, or hand them over. "
                 "For the owner of the server's database. If it is cut short, the same command "
                 "ends it; meanwhile no number is issued twice");
  AddBranch(*call.counters, call, "The branch");
  CLI::Option* const here =
      call.counters->add_flag("--here", call.here,
                              "The server issues them from now on, and the file is marked: it "
                              "issues none");
  call.counters->add_flag("--file", call.to_file, "The file issues them again")->excludes(here);
  call.counters->add_option("--database", call.file,
                            "The branch's file; without it the one that it was brought from last");
  AddService(*call.counters, call);

  call.grant = AddCommand(app, "grant", "Give a login a role, and let it see a branch");
  AddLogin(*call.grant, call);
  AddBranch(*call.grant, call, "The branch");
  call.grant
      ->add_option("--role", call.role,
                   "reader and clerk make letters; worker sends and numbers them too; sync brings "
                   "the branch's file")
      ->check(CLI::IsMember({"reader", "clerk", "worker", "sync"}))
      ->required();
  AddService(*call.grant, call);

  call.revoke = AddCommand(app, "revoke", "Let a login see a branch no more; its role stays");
  AddLogin(*call.revoke, call);
  AddBranch(*call.revoke, call, "The branch");
  AddService(*call.revoke, call);

  call.rename = AddCommand(app, "rename",
                           "Give a branch another name. Letters and settings that name the old one "
                           "stay as they are, and the command says what is left to do");
  call.rename->add_option("OLD", call.branch, "The branch")->required();
  call.rename->add_option("NEW", call.new_name, "Its new name")->required();
  AddService(*call.rename, call);

  call.remove = AddCommand(app, "remove",
                           "Take a branch off the server: its rows, its receipt counters, and who "
                           "sees it. Its file and letters stay");
  call.remove->add_option("BRANCH", call.branch, "The branch")->required();
  call.remove->add_flag("--yes", call.sure, "Do it; without this, the command says what would go");
  call.remove->add_flag(
      "--with-counters", call.with_counters,
      "Also where the server issues the branch's receipt numbers, which are lost");
  AddService(*call.remove, call);
}

}  // namespace tenora
