#include "startup/work_command.h"

#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <iostream>

#include "letters/queue_worker.h"
#include "platform/dialogs/guard.h"
#include "platform/dialogs/terminal_text.h"
#include "platform/runtime/error.h"
#include "platform/runtime/files.h"
#include "platform/runtime/text.h"
#include "startup/branch_choice.h"
#include "startup/recipient_choice.h"
#include "startup/stop_signals.h"
#include "startup/worker_processes.h"

namespace tenora {
namespace {

constexpr int kDone = 0, kFailed = 1, kWrongCall = 2;
constexpr unsigned kMostWorkers = 64;
constexpr const char* kParent = "--started-by";

constexpr const char* kFooter =
    R"(A worker is a process; any number of them, on any number of machines, share the queue, and none
takes a letter that another one has. SIGTERM or Ctrl-C ends it after the letter in hand. A server
that cannot be reached is waited for. What somebody should see is printed on standard error.
Exit status: 0 after a stop or when all is done, 1 when it failed, 2 for a usage error.)";

// One worker, in this process.
int WorkHere(const WorkCall& call, const GenerateParts& parts, StopSignals& signals) {
  Session session(parts.platform);
  WorkerOptions options;
  options.service = call.service.empty() ? ServiceOfSettings(session) : call.service;
  for (const std::string& given : call.branches) {
    for (const std::string& name : Split(given, ",")) {
      options.branches.emplace_back(TrimBlanks(name));
    }
  }
  options.data_folder = session.database.DataFolder();
  options.lease = std::chrono::seconds(call.lease);
  options.until_done = call.until_done;
  RequireFolder(options.data_folder);
  const WorkerParts worker{
      parts.platform, parts.make_printers,
      [&](const std::string& line) { parts.errors << TerminalLine(line) << std::endl; },
      [&signals] { return signals.Asked(); }};
  WorkOnQueue(worker, options);
  return kDone;
}

}  // namespace

void DeclareWork(CLI::App& app, WorkCall& call) {
  app.description("Take letters from the queue on a server, make them and hand them over");
  app.footer(kFooter);
  app.add_option("--workers", call.workers, "So many workers, each a process of its own")
      ->check(CLI::Range(1U, kMostWorkers))
      ->capture_default_str();
  app.add_option("--branch", call.branches,
                 "Only letters of these branches, with commas between; without it of all that the "
                 "login sees")
      ->expected(1)
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
  app.add_option("--service", call.service,
                 "The server, as a service of libpq; without it that of the setting "
                 "DatabaseLocation");
  app.add_option("--lease", call.lease,
                 "Seconds after which letters in hand, of which nothing was heard, are taken for "
                 "lost with their worker")
      ->check(CLI::Range(1, 86400))
      ->capture_default_str();
  app.add_flag("--until-done", call.until_done,
               "End when nothing is left of the runs, rather than wait for the next");
  app.add_option(kParent, call.parent,
                 "Given to each of several workers: the process that has started them, with which "
                 "they end");
}

int RunWork(std::vector<std::string> arguments, const GenerateParts& parts) {
  WorkCall call;
  CLI::App app("", "tenora work");
  DeclareWork(app, call);
  std::vector<std::string> again{"tenora", "work"};
  again.insert(again.end(), arguments.begin() + 1, arguments.end());
  std::ranges::reverse(arguments);  // CLI11 takes them from the back
  arguments.pop_back();
  try {
    app.parse(arguments);
  } catch (const CLI::ParseError& error) {
    return app.exit(error, parts.output, parts.errors) == 0 ? kDone : kWrongCall;
  }
  try {
    // Of several workers the process that has started them answers.
    StopSignals signals(call.parent != 0);
    if (call.parent != 0) EndWith(call.parent);
    if (call.workers == 1 || call.parent != 0) return WorkHere(call, parts, signals);
    again.insert(again.end(), {kParent, std::to_string(::getpid())});
    return RunProcesses(
        call.workers, again, [&] { return signals.Asked(); }, parts.errors);
  } catch (const WrongChoice& problem) {
    parts.errors << TerminalText(problem.what()) << std::endl;
  } catch (...) {
    parts.errors << TerminalText(ErrorText(CurrentError())) << std::endl;
  }
  return kFailed;
}

}  // namespace tenora
