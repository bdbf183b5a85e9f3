#include "startup/status_command.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <limits>
#include <ostream>
#include <utility>

#include "letters/letter_queue.h"
#include "platform/dialogs/terminal_text.h"
#include "platform/server/server_connection.h"
#include "startup/branch_choice.h"
#include "startup/command_session.h"
#include "startup/generate_progress.h"
#include "startup/queue_metrics.h"
#include "startup/recipient_choice.h"
#include "startup/run_report.h"
#include "startup/text_table.h"

namespace tenora {
namespace {

constexpr std::chrono::seconds kLimit{30};
// Open letters that people are shown.
constexpr int kMostShown = 100;

constexpr const char* kFooter =
    R"(Letters stand in one of these ways: ready, in hand (of a worker), done, again (failed, and tried
again after a pause), held (the check found something), no address, failed, in doubt (it may have
gone out, or not: a person finds out and says so with --arrived or --send-again), cancelled.
Exit status: 0 when what was asked was done, 1 when not, 2 for a usage error.)";

struct LetterName {
  std::string branch;
  int number = 0;
};

// Of "BRANCH:NUMBER"; a branch's name may have colons.
std::optional<LetterName> ReadLetterName(const std::string& text) {
  const std::size_t colon = text.rfind(':');
  if (colon == std::string::npos || colon == 0) return std::nullopt;
  LetterName name{text.substr(0, colon), 0};
  const char* const end = text.data() + text.size();
  const auto read = std::from_chars(text.data() + colon + 1, end, name.number);
  if (read.ec != std::errc() || read.ptr != end || name.number < 1) return std::nullopt;
  return name;
}

std::string RunName(int run) { return "Run " + std::to_string(run); }
std::string CallFor(int run) { return "\"tenora status " + std::to_string(run) + "\""; }
std::string CallFor(int run, const std::string& option) {
  return "\"tenora status " + std::to_string(run) + " " + option + "\"";
}

std::string Letters(std::int64_t count) { return LettersText(static_cast<std::size_t>(count)); }

// Of what a person is to do something about, as "2 in doubt, 1 held"; empty for nothing.
std::string ForAPerson(const QueueCounts& counts) {
  std::string text;
  const std::pair<std::int64_t, const char*> kinds[] = {
      {counts.in_doubt, " in doubt"}, {counts.failed, " failed"}, {counts.held, " held"}};
  for (const auto& [count, word] : kinds) {
    if (count > 0) text += (text.empty() ? "" : ", ") + std::to_string(count) + word;
  }
  return text;
}

bool IsInProgress(const QueuedRun& run) { return run.state == "open" || run.state == "paused"; }

std::string HeadingOf(const QueuedRun& run) {
  const std::string where = run.destination == "email"     ? "by e-mail"
                            : run.destination == "printer" ? "to a printer"
                                                           : "to the folder";
  std::string text = RunName(run.id) + ": \"" + run.template_name + "\" " + where +
                     ", asked for by " + run.asked_by + " on " + run.asked + ": " +
                     (run.state != "open"      ? run.state
                      : run.Total().Left() > 0 ? "in progress"
                                               : "nothing left to do");
  if (run.needs_version > kQueueVersion) text += ", needs workers of a newer version";
  return text;
}

void AddCounts(TableCells& cells, const QueueCounts& counts, bool moves, bool cancelled) {
  for (const std::int64_t count :
       {counts.letters, counts.done, counts.in_hand, counts.ready, counts.later, counts.held,
        counts.no_address, counts.failed, counts.in_doubt}) {
    cells.Number(count);
  }
  if (cancelled) cells.Number(counts.cancelled);
  // -1: nobody knows.
  const std::int64_t left = moves ? counts.SecondsLeft().value_or(-1) : -1;
  const auto either = [&cells](bool known, const auto& add) {
    if (known) {
      add();
    } else {
      cells.Nothing();
    }
  };
  if (!cells.for_people()) {
    cells.Decimal(counts.per_second);
    either(left >= 0, [&] { cells.Number(left); });
    return;
  }
  either(moves && counts.per_second > 0, [&] { cells.Text(RateText(counts.per_second) + "/s"); });
  either(left >= 0 && counts.Left() > 0,
         [&] { cells.Text(DurationText(static_cast<double>(left))); });
}

void PrintForPeople(const QueuedRun& run, std::ostream& output) {
  const QueueCounts total = run.Total();
  std::vector<TextColumn> columns{{"Branch"},        {"Letters", true},    {"Done", true},
                                  {"In Hand", true}, {"Ready", true},      {"Again", true},
                                  {"Held", true},    {"No Address", true}, {"Failed", true},
                                  {"In Doubt", true}};
  if (total.cancelled > 0) columns.push_back({"Cancelled", true});
  columns.insert(columns.end(), {{"Rate", true}, {"Left", true}, {"Paused"}});
  TableCells cells(std::move(columns), ListingFormat::kTable);
  for (const QueuedPart& part : run.parts) {
    cells.BeginRow();
    cells.Text(part.branch);
    AddCounts(cells, part.counts, run.state == "open" && part.paused_until.empty(),
              total.cancelled > 0);
    part.paused_until.empty() ? cells.Nothing()
                              : cells.Text("until " + part.paused_until + ": " + part.reason);
  }
  if (run.parts.size() > 1) {
    cells.BeginRow();
    cells.Text("Total");
    const bool paused = std::ranges::any_of(
        run.parts, [](const QueuedPart& part) { return !part.paused_until.empty(); });
    AddCounts(cells, total, run.state == "open" && !paused, total.cancelled > 0);
    cells.Nothing();
  }
  output << TerminalLine(HeadingOf(run)) << '\n';
  cells.Print(output);
}

void PrintForPrograms(const std::vector<QueuedRun>& runs, ListingFormat format,
                      std::ostream& output) {
  TableCells cells(
      {{"Run"},      {"Template"},  {"Destination"}, {"State"},        {"Asked By"},
       {"Asked"},    {"Branch"},    {"Letters"},     {"Done"},         {"In Hand"},
       {"Ready"},    {"Again"},     {"Held"},        {"No Address"},   {"Failed"},
       {"In Doubt"}, {"Cancelled"}, {"Per Second"},  {"Seconds Left"}, {"Paused Until"},
       {"Reason"}},
      format);
  for (const QueuedRun& run : runs) {
    for (const QueuedPart& part : run.parts) {
      cells.BeginRow();
      cells.Number(run.id);
      for (const std::string* text : {&run.template_name, &run.destination, &run.state,
                                      &run.asked_by, &run.asked, &part.branch}) {
        cells.Text(*text);
      }
      AddCounts(cells, part.counts, run.state == "open" && part.paused_until.empty(), true);
      for (const std::string* text : {&part.paused_until, &part.reason}) {
        part.paused_until.empty() ? cells.Nothing() : cells.Text(*text);
      }
    }
  }
  cells.Print(output);
}

void PrintWorkers(const std::vector<PresentWorker>& workers, ListingFormat format,
                  std::ostream& output) {
  const bool for_people = format == ListingFormat::kTable;
  TableCells cells({{"Worker", true},
                    {"Host"},
                    {"Process", true},
                    {"Version"},
                    {"Since"},
                    {for_people ? "Last Sign" : "Seconds Since Sign", true},
                    {"State"},
                    {"In Hand", true},
                    {"Branch"}},
                   format);
  for (const PresentWorker& worker : workers) {
    cells.BeginRow();
    cells.Number(worker.id);
    cells.Text(worker.host);
    cells.Number(worker.pid);
    cells.Text(worker.version);
    cells.Text(worker.started);
    const std::int64_t seconds = std::max<std::int64_t>(0, worker.seconds_since_seen);
    for_people ? cells.Text(DurationText(static_cast<double>(seconds)) + " ago")
               : cells.Number(seconds);
    cells.Text(worker.connected ? "connected" : "lost");
    cells.Number(worker.letters_in_hand);
    cells.Text(worker.branch);
  }
  cells.Print(output);
}

void PrintLetters(const std::vector<OpenLetter>& letters, ListingFormat format,
                  std::ostream& output) {
  TableCells cells(
      {{"Branch"}, {"Number", true}, {"Name"}, {"Code"}, {"Standing"}, {"File"}, {"Reason"}},
      format);
  for (const OpenLetter& letter : letters) {
    cells.BeginRow();
    cells.Text(letter.branch);
    cells.Number(letter.number);
    cells.Text(letter.name);
    cells.Text(letter.code);
    cells.Text(letter.standing == "later" ? "again" : letter.standing);
    cells.Text(letter.file);
    cells.Text(letter.detail);
  }
  cells.Print(output);
}

// Those that are asked for; newest first.
std::vector<QueuedRun> ChosenRuns(const StatusCall& call, LetterQueue& queue) {
  std::vector<QueuedRun> runs = queue.Runs(call.run);
  if (call.run && runs.empty()) {
    throw WrongChoice("There is no run " + std::to_string(*call.run) +
                      " with letters that this login sees; \"tenora status --all\" shows those "
                      "there are.");
  }
  return runs;
}

void ShowLettersOf(const QueuedRun& run, LetterQueue& queue, std::ostream& output) {
  const std::vector<OpenLetter> letters = queue.OpenLetters(run.id, kMostShown);
  if (letters.empty()) return;
  output << "\nNot done:\n";
  PrintLetters(letters, ListingFormat::kTable, output);
  const QueueCounts total = run.Total();
  const std::int64_t all =
      total.failed + total.later + total.held + total.in_doubt + total.no_address;
  const std::int64_t more = all - static_cast<std::int64_t>(letters.size());
  if (more > 0) {
    output << "and " << more << " more; " << CallFor(run.id, "--only letters --format csv")
           << " lists all\n";
  }
  if (total.in_doubt > 0) {
    output << "\nWho is in doubt may have the letter, or not: find out, then "
           << CallFor(run.id, "--arrived BRANCH:NUMBER") << " or "
           << CallFor(run.id, "--send-again BRANCH:NUMBER") << '\n';
  }
}

void ShowForPeople(const StatusCall& call, LetterQueue& queue, std::ostream& output,
                   std::ostream& errors) {
  const std::vector<QueuedRun> runs = ChosenRuns(call, queue);
  std::vector<std::string> left_behind;
  bool any = false, wants_workers = false;
  for (const QueuedRun& run : runs) {
    if (!call.run && !call.all && !IsInProgress(run)) {
      const std::string what = ForAPerson(run.Total());
      if (!what.empty()) left_behind.push_back(RunName(run.id) + ", " + run.state + ": " + what);
      continue;
    }
    if (any) output << '\n';
    any = true;
    PrintForPeople(run, output);
    if (call.run) ShowLettersOf(run, queue, output);
    wants_workers |= run.state == "open" && run.Total().Left() > 0;
  }
  if (!any) {
    output << "No run is in progress" << (runs.empty() ? "" : "; --all shows those that were")
           << '\n';
  }
  if (!left_behind.empty()) {
    output << "\nLeft for a person in runs that have ended:\n";
    for (const std::string& line : left_behind) output << TerminalLine(line) << '\n';
  }
  const std::vector<PresentWorker> workers = queue.Workers();
  if (!workers.empty()) {
    output << "\nWorkers:\n";
    PrintWorkers(workers, ListingFormat::kTable, output);
  }
  if (wants_workers && std::ranges::count(workers, true, &PresentWorker::connected) == 0) {
    errors << "No worker takes letters; \"tenora work\" starts one.\n";
  }
}

void Show(const StatusCall& call, LetterQueue& queue, std::ostream& output, std::ostream& errors) {
  const ListingFormat format = ListingFormatOf(call.format);
  if (call.only == "workers") return PrintWorkers(queue.Workers(), format, output);
  if (!call.metrics && call.only.empty() && format == ListingFormat::kTable) {
    return ShowForPeople(call, queue, output, errors);
  }
  std::vector<QueuedRun> runs = ChosenRuns(call, queue);
  if (call.only == "letters") {
    return PrintLetters(queue.OpenLetters(*call.run, std::numeric_limits<int>::max()), format,
                        output);
  }
  if (!call.run && !call.all) {
    // What a person is to look after counts after the end, too.
    std::erase_if(runs, [&](const QueuedRun& run) {
      return !IsInProgress(run) && (!call.metrics || ForAPerson(run.Total()).empty());
    });
  }
  if (call.metrics) return PrintQueueMetrics(runs, queue.Workers(), output);
  PrintForPrograms(runs, format, output);
}

// What a person decides of a run, and says what follows.
class Decision {
 public:
  Decision(const StatusCall& call, LetterQueue& queue, std::ostream& output, std::ostream& errors)
      : call_(call), queue_(queue), output_(output), errors_(errors) {}

  bool Make() {
    run_ = ChosenRuns(call_, queue_).front();
    if (call_.pause) return Pause();
    if (call_.cancel) return Cancel();
    if (call_.resume) return Resume();
    if (call_.remove) return Remove();
    return ClearDoubts();
  }

 private:
  bool Say(const std::string& text) {
    output_ << TerminalLine(text) << '\n';
    return true;
  }
  bool Refuse(const std::string& text) {
    errors_ << TerminalLine(text) << '\n';
    return false;
  }
  std::string Name() const { return RunName(run_.id); }
  // Empty for nothing.
  std::string InHand() const {
    const std::int64_t count = run_.Total().in_hand;
    return count == 0 ? "" : "; " + Letters(count) + " in workers' hands will be finished";
  }
  void ReadAgain() { run_ = ChosenRuns(call_, queue_).front(); }

  bool Pause() {
    if (run_.state == "ended") return Say(Name() + " has ended: nothing is left to pause");
    if (!queue_.Pause(run_.id)) return Say(Name() + " is " + run_.state + " already");
    ReadAgain();
    return Say(Name() + " is paused" + InHand() + ". " + CallFor(run_.id, "--resume") + " goes on");
  }

  bool Cancel() {
    if (!IsInProgress(run_)) {
      return Say(Name() + (run_.state == "ended" ? " has ended: nothing is left to cancel"
                                                 : " is cancelled already"));
    }
    if (!queue_.Cancel(run_.id)) return Say(Name() + " is cancelled already");
    ReadAgain();
    return Say(Name() + " is cancelled: " + Letters(run_.Total().cancelled) + " will not be made" +
               InHand());
  }

  bool Resume() {
    if (run_.state == "cancelled") {
      return Refuse(Name() + " is cancelled, and stays so: ask for the letters anew");
    }
    const int again = queue_.Resume(run_.id, call_.send_held);
    ReadAgain();
    std::string text = Name() + " goes on";
    if (again > 0) {
      text += ": " + Letters(again) + " that had failed, had no address or were held will be " +
              (call_.send_held ? "tried again, the held ones as they are" : "looked at again");
    } else if (run_.Total().Left() == 0) {
      text = Name() + " has nothing left to do";
    }
    Say(text);
    const std::int64_t doubts = run_.Total().in_doubt;
    if (doubts > 0) {
      Say(Letters(doubts) + " in doubt " + (doubts == 1 ? "stays as it is" : "stay as they are") +
          ": " + CallFor(run_.id));
    }
    return true;
  }

  bool Remove() {
    const QueueCounts total = run_.Total();
    if (IsInProgress(run_)) {
      return Refuse(Name() + " is " + (run_.state == "paused" ? "paused" : "in progress") +
                    ": cancel it first, with " + CallFor(run_.id, "--cancel"));
    }
    if (total.in_hand > 0) {
      return Refuse(Name() + " still has " + Letters(total.in_hand) + " in workers' hands: wait");
    }
    queue_.Remove(run_.id);
    const std::string left = ForAPerson(total);
    return Say(Name() + " is removed, with what was known of its " + Letters(total.letters) +
               (left.empty() ? "" : " (" + left + ")") + "; files of letters stay");
  }

  bool ClearDoubts() {
    letters_ = queue_.OpenLetters(run_.id, std::numeric_limits<int>::max());
    bool good = true;
    for (const std::string& text : call_.arrived) good &= Clear(text, true);
    for (const std::string& text : call_.send_again) good &= Clear(text, false);
    return good;
  }
  bool Clear(const std::string& text, bool arrived) {
    const LetterName named = *ReadLetterName(text);
    const auto letter = std::ranges::find_if(letters_, [&](const OpenLetter& open) {
      return open.standing == "in doubt" && open.branch == named.branch &&
             open.number == named.number;
    });
    if (letter == letters_.end() ||
        !queue_.ClearDoubt(run_.id, named.branch, named.number, arrived)) {
      return Refuse(text + ": this letter of run " + std::to_string(run_.id) + " is not in doubt");
    }
    return Say(text + ", " + letter->name +
               (letter->code.empty() ? "" : " (" + letter->code + ")") + ": " +
               (arrived                     ? "noted that it arrived"
                : run_.state == "cancelled" ? "noted that it did not arrive; the run is cancelled"
                : run_.state == "paused"    ? "is sent again when the run is resumed"
                                            : "is sent again"));
  }

  const StatusCall& call_;
  LetterQueue& queue_;
  std::ostream& output_;
  std::ostream& errors_;
  QueuedRun run_;
  std::vector<OpenLetter> letters_;
};

std::string ServiceOf(const StatusCall& call, std::ostream& errors) {
  if (!call.service.empty()) return call.service;
  CommandSession command(errors);
  return ServiceOfSettings(command.session());
}

}  // namespace

bool StatusCall::Decides() const {
  return pause || cancel || resume || remove || !arrived.empty() || !send_again.empty();
}

std::string StatusCall::Complaint() const {
  const int decisions = static_cast<int>(pause) + static_cast<int>(cancel) +
                        static_cast<int>(resume) + static_cast<int>(remove) +
                        static_cast<int>(!arrived.empty() || !send_again.empty());
  if (decisions > 1) {
    return "--pause, --cancel, --resume and --remove are given alone; --arrived and --send-again "
           "only with one another";
  }
  if (Decides() && !run) return "Which run? Its number is the first word: tenora status 12 …";
  if (Decides() && (all || metrics || !format.empty() || !only.empty())) {
    return "--all, --metrics, --format and --only show something; nothing can be done with them";
  }
  if (send_held && !resume) return "--send-held goes with --resume";
  if (metrics && (!format.empty() || !only.empty())) {
    return "--metrics has a format of its own, and all numbers";
  }
  if (only == "letters" && !run) return "Which run's letters? Its number is the first word";
  if (run && all) return "--all goes without a run's number";
  for (const auto* letters : {&arrived, &send_again}) {
    for (const std::string& text : *letters) {
      if (!ReadLetterName(text)) {
        return "\"" + text + "\" does not have the form \"BRANCH:NUMBER\", as \"North:12\"";
      }
      if (letters == &arrived && std::ranges::count(send_again, text) > 0) {
        return text + " has arrived, or is sent again: not both";
      }
    }
  }
  return "";
}

void DeclareStatus(CLI::App& app, StatusCall& call) {
  app.description(
      "Show how the runs in the queue on the server stand, or pause, cancel, resume or remove one");
  app.footer(kFooter);
  const auto add_letters = [&](const char* name, std::vector<std::string>& letters,
                               const char* description) {
    app.add_option(name, letters, description)
        ->type_name("BRANCH:NUMBER")
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
  };
  app.add_option("RUN", call.run, "Its number: only this run, with the letters that are not done")
      ->check(CLI::Range(1, std::numeric_limits<int>::max()));
  app.add_flag("--all", call.all, "Runs that have ended or were cancelled, too");
  app.add_option("--format", call.format,
                 "Of the table; csv and json have one: the branches of the runs, or --only")
      ->check(CLI::IsMember({"table", "csv", "json"}));
  app.add_option("--only", call.only, "Only this table; letters needs RUN, and lists all")
      ->check(CLI::IsMember({"branches", "workers", "letters"}));
  app.add_flag("--metrics", call.metrics,
               "Print numbers for monitoring, in the text format of Prometheus: of runs in "
               "progress, and of others while something of them is in doubt, failed or held");
  app.add_flag("--pause", call.pause,
               "Begin no other letter of the run; those in workers' hands are finished");
  app.add_flag("--resume", call.resume,
               "Go on after a pause, and look again at letters that failed, are held or had no "
               "address; those in doubt stay");
  app.add_flag("--send-held", call.send_held, "With --resume: send held letters as they are");
  app.add_flag("--cancel", call.cancel,
               "Begin no other letter of the run, ever; those in workers' hands are finished");
  add_letters("--arrived", call.arrived, "A letter in doubt has arrived; may be given many times");
  add_letters("--send-again", call.send_again,
              "A letter in doubt has not arrived, and is sent again; may be given many times");
  app.add_flag("--remove", call.remove,
               "Forget a run that has ended or was cancelled; files of letters stay");
  app.add_option("--service", call.service,
                 "The server, as a service of libpq; without it that of the setting "
                 "DatabaseLocation");
}

bool RunStatus(const StatusCall& call, std::ostream& output, std::ostream& errors) {
  try {
    const auto connection = server::Connection::Open(ServiceOf(call, errors), kLimit);
    LetterQueue queue(*connection);
    queue.Require(call.Decides() ? QueueUse::kRuns : QueueUse::kLook);
    if (call.Decides()) return Decision(call, queue, output, errors).Make();
    Show(call, queue, output, errors);
    return true;
  } catch (const WrongChoice& problem) {
    errors << TerminalLine(problem.what()) << '\n';
  } catch (const server::ServerError& error) {
    constexpr std::string_view kNoPermission = "42501";
    if (!call.Decides() || error.state() != kNoPermission) throw;
    errors << RunName(*call.run)
           << " has letters of branches that this login does not see: whoever asked for it, or a "
              "login that sees them all, decides on it.\n";
  }
  return false;
}

}  // namespace tenora
