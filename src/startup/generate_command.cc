#include "startup/generate_command.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <filesystem>
#include <optional>
#include <ostream>

#include "letters/branch_folders.h"
#include "letters/generation.h"
#include "letters/letter_names.h"
#include "letters/letter_queue.h"
#include "letters/named_filters.h"
#include "letters/template_library.h"
#include "letters/unfinished_runs.h"
#include "merge/merge_codes.h"
#include "merge/prompts.h"
#include "platform/dialogs/guard.h"
#include "platform/dialogs/terminal_text.h"
#include "platform/query/engine.h"
#include "platform/runtime/error.h"
#include "platform/runtime/files.h"
#include "platform/runtime/text.h"
#include "platform/server/branch_location.h"
#include "startup/branch_choice.h"
#include "startup/generate_call.h"
#include "startup/generate_dialogs.h"
#include "startup/generate_progress.h"
#include "startup/recipient_choice.h"
#include "startup/recipient_query.h"
#include "startup/run_report.h"
#include "startup/stop_signals.h"

namespace tenora {
namespace {

constexpr int kDone = 0, kFailed = 1, kWrongCall = 2;
constexpr std::chrono::seconds kQueueLimit{60};

[[noreturn]] void RefuseAnswer(const std::string& answer, const std::vector<std::string>& prompts) {
  std::string names;
  for (const std::string& prompt : prompts)
    names += (names.empty() ? "\"" : ", \"") + prompt + "\"";
  throw WrongChoice("--answer \"" + answer + "\" fits no prompt: the template " +
                    (names.empty() ? "asks no prompts." : "asks " + names + "."));
}

// Splits each "prompt=text" after the prompt that the template asks; a prompt may contain "="
// itself. When the template has a prompt with a code in it, it is not yet known what will be asked:
// an answer that fits no prompt is then split at its first "=". Raises WrongChoice, naming the
// template's prompts, for an answer that fits none of them.
PromptAnswers MatchAnswers(const std::vector<std::string>& given,
                           const std::vector<std::string>& prompts) {
  const bool all_known = std::ranges::none_of(prompts, [](const std::string& prompt) {
    return prompt.find(kCodeStart) != std::string::npos;
  });
  PromptAnswers answers;
  for (const std::string& answer : given) {
    std::size_t length = 0;
    for (const std::string& prompt : prompts) {
      if (answer.starts_with(prompt + "=")) length = std::max(length, prompt.size());
    }
    if (length == 0 && all_known) RefuseAnswer(answer, prompts);
    if (length == 0) length = answer.find('=');
    answers[answer.substr(0, length)] = answer.substr(length + 1);
  }
  return answers;
}

bool IsColumnHelp(const GenerateCall& call) {
  return call.list && EqualsNoCase(TrimBlanks(call.columns), "help");
}

class GenerateCommand {
 public:
  // Of a branch, or of what the settings say.
  GenerateCommand(const GenerateCall& call, const GenerateParts& parts,
                  const ChosenBranch* branch = nullptr)
      : call_(call),
        parts_(parts),
        dialogs_(parts.platform.dialogs, signals_),
        session_(WithDialogs(parts.platform, dialogs_)),
        progress_(parts, signals_),
        branch_(branch) {
    if (branch != nullptr) session_.database.TakeBranch(branch->location, branch->folder);
  }

  int Run() {
    if (call_.list) return List();
    if (call_.unfinished) return ListUnfinished();
    if (!call_.forget.empty()) return Forget();
    const bool resuming = !call_.resume.empty();
    const std::filesystem::path resumed = resuming ? NamedLog(call_.resume) : "";
    if (resuming) RequireServerOf(resumed);
    const GenerationRequest request = resuming ? Generation::RequestOf(resumed) : AskedRequest();
    if (resuming) TakeBranchOf(request, resumed);
    if (branch_ != nullptr) std::filesystem::create_directories(branch_->folder);
    if (branch_ == nullptr && call_.NoOlderThan()) ChooseBranches(session_, call_, parts_.errors);
    const ScratchSweep sweep = session_.SweepScratchFiles();
    const Destination destination = request.destination;
    if (destination == Destination::kPrinter) TakePrinter(request.printer);
    dialogs_.Before(&progress_);
    Generation generation(session_, AfterError::kNextRecipient, progress_, printers_.get());
    const GenerationSummary summary =
        resuming
            ? generation.Resume(resumed,
                                [&](std::size_t) {
                                  return call_.send_held ? Resuming::kAsItIs : Resuming::kUsual;
                                })
            : generation.Run(WithPrinter(request),
                             [&](const Caches& caches) { return Chosen(caches); });
    dialogs_.Before(nullptr);
    progress_.ShowSummary(summary, destination);
    return summary.complete() && summary.merged.whole() && all_known_ ? kDone : kFailed;
  }

  // The list as a table.
  int ListInto(TextTable& table) {
    if (!session_.ReloadRentalData()) return kFailed;
    RecipientQuery query(session_, call_, parts_.errors);
    table = query.Table();
    return query.complete() ? kDone : kFailed;
  }

  bool StopAsked() { return signals_.Asked(); }

  // Puts the branch's letters into a run of the queue, which the first ones begin.
  void PutInto(std::unique_ptr<NewQueuedRun>& run, server::Connection& queue) {
    GenerationRequest asked = AskedRequest();
    RequireAnswers(asked);
    if (asked.destination == Destination::kPrinter) TakePrinter(asked.printer);
    QueueRequest ready = PrepareForQueue(session_, WithPrinter(std::move(asked)),
                                         [&](const Caches& caches) { return Chosen(caches); });
    if (run == nullptr) {
      run = std::make_unique<NewQueuedRun>(queue, ready.request, ready.template_source,
                                           session_.platform.clock.Now());
    }
    put_ += ready.request.recipients.size();
    run->Add(branch_->name, std::move(ready.request.recipients));
  }
  std::size_t put() const { return put_; }
  // Whether everything was known of everybody who was to be chosen.
  bool complete() const { return all_known_; }

 private:
  static Platform WithDialogs(const Platform& platform, Dialogs& dialogs) {
    return Platform{platform.clock,       dialogs,
                    platform.locale,      platform.registry,
                    platform.workspace,   platform.program_folder,
                    platform.state_folder};
  }

  int List() {
    if (IsColumnHelp(call_)) {
      PrintColumnHelp(session_, call_, parts_.output);
      return kDone;
    }
    if (branch_ == nullptr && call_.NoOlderThan()) ChooseBranches(session_, call_, parts_.errors);
    if (call_.AsTable()) {
      TextTable table;
      const int status = ListInto(table);
      if (!table.columns.empty()) PrintTextTable(table, call_.Format(), parts_.output);
      return status;
    }
    if (!session_.ReloadRentalData()) return kFailed;
    const std::string before_line = branch_ == nullptr ? "" : branch_->name + ": ";
    if (call_.ByFacts() || !call_.sort.empty()) {
      RecipientQuery query(session_, call_, parts_.errors);
      query.List(parts_.output, before_line);
      return query.complete() ? kDone : kFailed;
    }
    for (const RecipientRow& row : Rows(session_.caches)) {
      parts_.output << TerminalLine(before_line + row.text) << '\n';
    }
    return kDone;
  }

  int ListUnfinished() {
    std::vector<UnfinishedRun> runs = FindUnfinishedRuns(session_.database.DataFolder());
    for (const auto& folder : BranchFolders(session_.database.DataFolder())) {
      std::ranges::move(FindUnfinishedRuns(folder), std::back_inserter(runs));
    }
    for (const UnfinishedRun& run : runs) WriteUnfinished(parts_.output, run);
    if (const auto away = session_.database.ServerAway()) {
      parts_.errors << TerminalLine(away->string()) << " cannot be reached; runs on the server are "
                    << "not listed.\n";
    }
    parts_.errors << (runs.empty()
                          ? "There are no unfinished runs.\n"
                          : "To go on with one: tenora generate --resume LOG; to strike it "
                            "from this list: tenora generate --forget LOG\n")
                  << std::flush;
    return kDone;
  }

  // While the server is away the data folder is this computer's own, which holds other runs.
  void RequireServerOf(const std::filesystem::path& log) {
    const std::optional<std::filesystem::path> away = session_.database.ServerAway();
    std::error_code elsewhere;
    if (!away ||
        std::filesystem::equivalent(log.parent_path(), session_.database.DataFolder(), elsewhere)) {
      return;
    }
    throw StandardError(error_number::kPathNotFound,
                        away->string() +
                            " cannot be reached. Nothing was done; resume the run when the server "
                            "is back");
  }

  // A run of head office's is in its branch's folder.
  void TakeBranchOf(const GenerationRequest& request, const std::filesystem::path& log) {
    if (!server::IsBranchLocation(request.database)) return;
    const std::string branch = server::ReadBranchLocation(request.database).branch;
    const std::filesystem::path folder = BranchFolder(session_.database.DataFolder(), branch);
    std::error_code elsewhere;
    if (!std::filesystem::equivalent(log.parent_path(), folder, elsewhere)) return;
    session_.database.TakeBranch(request.database, folder);
  }

  int Forget() {
    const std::filesystem::path log = NamedLog(call_.forget);
    ForgetRun(log, session_.platform.clock);
    parts_.errors << "Forgotten: " << TerminalLine(log.string())
                  << "\nNo file was removed; --resume still goes on with the run." << std::endl;
    return kDone;
  }

  std::vector<RecipientRow> Rows(const Caches& caches) const {
    return ListRecipients(caches, call_.Kind(), call_.filter);
  }

  // A run does not fail for it.
  void NoteUseOfFilter() {
    if (call_.named_filter.empty()) return;
    try {
      NamedFilters(session_.platform.registry)
          .NoteUse(call_.Kind(), call_.named_filter, call_.template_name);
    } catch (const RuntimeError& error) {
      parts_.errors << TerminalLine(ErrorText(error)) << std::endl;
    }
  }

  std::vector<Recipient> ChosenByFacts() {
    RecipientQuery query(session_, call_, parts_.errors);
    std::vector<Recipient> chosen = query.Recipients();
    all_known_ = query.complete();
    if (chosen.empty()) throw NothingSelected("Nothing selected: the condition holds of nobody.");
    NoteUseOfFilter();
    return chosen;
  }

  std::vector<Recipient> Chosen(const Caches& caches) {
    if (call_.ByFacts()) return ChosenByFacts();
    const std::vector<RecipientRow> rows = Rows(caches);
    if (!call_.all) {
      RecipientFilter closed_too = call_.filter;
      closed_too.closed = true;
      return ChooseByNames(call_.recipients, rows,
                           ListRecipients(caches, call_.Kind(), closed_too));
    }
    std::vector<Recipient> chosen;
    for (const RecipientRow& row : rows) chosen.push_back(row.recipient);
    if (chosen.empty()) throw NothingSelected("Nothing selected: the list is empty.");
    return chosen;
  }

  // A log may also be named relative to the data folder.
  std::filesystem::path NamedLog(const std::filesystem::path& named) {
    const std::filesystem::path inside = session_.database.DataFolder() / named;
    std::error_code error;
    const bool here = std::filesystem::exists(named, error);
    return !here && std::filesystem::exists(inside, error) ? inside : named;
  }

  GenerationRequest WithPrinter(GenerationRequest request) const {
    if (printers_) request.printer = printers_->Current().DeviceName();
    return request;
  }

  // A file that is already there is never replaced: it may be that of the last run. Only resuming
  // the run that made it does that.
  static std::optional<std::filesystem::path> NewFile(const std::string& name) {
    if (name.empty()) return std::nullopt;
    const std::filesystem::path file = std::filesystem::absolute(name);
    RequireFolder(file.parent_path());
    std::error_code error;
    const auto type = std::filesystem::symlink_status(file, error).type();
    if (type != std::filesystem::file_type::not_found) {
      throw StandardError(error_number::kFileAlreadyExists,
                          file.string() + "; nothing was done. Give the new file another name");
    }
    return file;
  }

  GenerationRequest AskedRequest() {
    GenerationRequest request;
    request.template_kind = call_.Kind();
    request.template_name = call_.template_name;
    request.destination = call_.To();
    request.subject = call_.subject;
    request.pdf = call_.pdf;
    if (!call_.name_pattern.empty()) {
      static_cast<void>(LetterNames(call_.name_pattern, call_.Kind()));  // may refuse it
      request.name_pattern = call_.name_pattern;
    }
    request.one_pdf = NewFile(call_.one_pdf);
    request.duplex = call_.duplex;
    request.post_list = NewFile(call_.post_list);
    if (!call_.answers.empty()) {
      request.answers = MatchAnswers(call_.answers, PromptsOf(request));
    }
    return request;
  }

  std::vector<std::string> PromptsOf(const GenerationRequest& request) {
    const TemplateLibrary library(session_.database.TemplateFolder());
    RichTextBox text;
    text.LoadFile(library.PathOf(request.template_kind, request.template_name),
                  RichTextBox::FileType::kRtf);
    return PromptMessages(text);
  }

  // Workers have nobody to ask.
  void RequireAnswers(const GenerationRequest& request) {
    std::string unanswered, options;
    for (const std::string& prompt : PromptsOf(request)) {
      // What is asked with a code in it is refused with the other things that workers cannot do.
      const bool known = prompt.find(kCodeStart) == std::string::npos;
      if (!known || request.answers.contains(prompt)) continue;
      unanswered += (unanswered.empty() ? "\"" : ", \"") + prompt + "\"";
      options += " --answer \"" + prompt + "=...\"";
    }
    if (unanswered.empty()) return;
    throw WrongChoice("The template asks " + unanswered +
                      ", which workers cannot: answer for all letters with" + options);
  }

  // The printer asked for now, else the one of the run that is resumed, else the default.
  void TakePrinter(const std::string& before) {
    printers_ = parts_.make_printers();
    printers_->SetDataFolder(session_.database.DataFolder());
    const std::string& wanted = call_.printer.empty() ? before : call_.printer;
    if (wanted.empty() || printers_->SetCurrent(wanted)) return;
    std::string names;
    for (const std::string& name : printers_->Names()) {
      names += (names.empty() ? "\"" : ", \"") + name + "\"";
    }
    throw StandardError(error_number::kPrinterError,
                        "there is no printer \"" + wanted + "\"; installed are " + names);
  }

  const GenerateCall& call_;
  const GenerateParts& parts_;
  StopSignals signals_;
  const query::StoppableWaiting waiting_{parts_.platform.workspace,
                                         [this] { return signals_.Asked(); }};
  GenerateDialogs dialogs_;
  Session session_;
  GenerateProgress progress_;
  const ChosenBranch* const branch_;
  std::unique_ptr<printing::Printers> printers_;
  bool all_known_ = true;  // of whom the conditions hold
  std::size_t put_ = 0;    // letters into the queue
};

// Runs it and tells what goes wrong, behind a text; the result is the exit status.
int Told(const GenerateParts& parts, const std::string& before, const std::function<int()>& run) {
  const auto tell = [&](const std::string& problem) {
    parts.errors << TerminalText(before + problem) << std::endl;
  };
  try {
    return run();
  } catch (const ConditionError& problem) {
    const std::string sentence = problem.what();
    tell(TerminalLine(sentence) + (sentence.ends_with('?') ? "" : "."));
    if (!problem.possible().empty()) parts.errors << TerminalLine(problem.possible()) << std::endl;
    return kWrongCall;
  } catch (const WrongChoice& problem) {
    tell(TerminalLine(problem.what()));
  } catch (...) {
    tell(ErrorText(CurrentError()));
  }
  return kFailed;
}

// One branch after the other, each with an engine, a session, run logs and letters of its own. One
// that fails does not stop the next; but a run goes into the queue whole or not at all.
class AcrossBranches {
 public:
  AcrossBranches(const GenerateCall& call, const GenerateParts& parts)
      : call_(call), parts_(parts) {}

  int Run() {
    Session head_office(parts_.platform);
    const auto branches = ChooseBranches(head_office, call_, parts_.errors);
    for (const ChosenBranch& branch : branches) {
      const std::string before = branch.name + ": ";
      const int status = Told(parts_, before, [&] {
        try {
          return RunOne(branch, branches.size() > 1);
        } catch (const NothingSelected& nobody) {
          // Elsewhere there may be somebody.
          parts_.errors << TerminalLine(before + nobody.what()) << std::endl;
          ++without_anybody_;
          return kDone;
        }
      });
      if (status == kWrongCall) return status;
      status_ = std::max(status_, status);
      if (stopped_ || (call_.queue && status != kDone)) {
        if (call_.queue) parts_.errors << "Nothing was put into the queue." << std::endl;
        return kFailed;
      }
    }
    if (queued_ != nullptr) OpenQueued();
    if (call_.list && call_.AsTable()) {
      PrintTextTable(JoinBranches(listings_, call_.Format()), call_.Format(), parts_.output);
    }
    return without_anybody_ == branches.size() ? kFailed : status_;
  }

 private:
  int RunOne(const ChosenBranch& branch, bool several) {
    const Platform& common = parts_.platform;
    // With one engine for all, the tables of every branch would stay in memory.
    const auto workspace =
        query::Workspace::Create([&common] { return common.clock.Now(); }, query::kTimeLimit,
                                 [&common](Date date) { return common.locale.ShortDate(date); });
    const Platform platform{common.clock,       common.dialogs, common.locale,
                            common.registry,    *workspace,     common.program_folder,
                            common.state_folder};
    const GenerateParts parts{platform,      parts_.make_printers,      parts_.output,
                              parts_.errors, parts_.output_is_terminal, parts_.errors_is_terminal};
    GenerateCall call = call_;
    if (several) {
      call.one_pdf = FileOfBranch(call.one_pdf, branch.name);
      call.post_list = FileOfBranch(call.post_list, branch.name);
    }
    GenerateCommand command(call, parts, &branch);
    if (call.list && call.AsTable()) {
      return command.ListInto(listings_.emplace_back(BranchListing{branch.name, {}}).table);
    }
    if (call.queue) return Queue(command, branch);
    if (!call.list) parts.errors << TerminalLine(branch.name + ":") << std::endl;
    const int status = command.Run();
    stopped_ = command.StopAsked();
    return status;
  }

  int Queue(GenerateCommand& command, const ChosenBranch& branch) {
    if (queue_ == nullptr) {
      const std::string service = server::ReadBranchLocation(branch.location.string()).service;
      queue_ = server::Connection::Open(service, kQueueLimit);
      LetterQueue(*queue_).Require(QueueUse::kRuns);
    }
    command.PutInto(queued_, *queue_);
    put_ += command.put();
    ++branches_put_;
    stopped_ = command.StopAsked();
    // Of whom something is not known is named and left out, as in any run.
    if (!command.complete()) status_ = kFailed;
    return kDone;
  }

  void OpenQueued() {
    queued_->Open();
    const auto count = [](std::size_t number, const std::string& one, const std::string& many) {
      return std::to_string(number) + " " + (number == 1 ? one : many);
    };
    const std::string id = std::to_string(queued_->id());
    parts_.output << "Run " << id << ": " << count(put_, "letter", "letters") << " in "
                  << count(branches_put_, "branch", "branches") << '\n';
    parts_.errors << "The workers make them; \"tenora status " << id << "\" shows how they stand."
                  << std::endl;
  }

  const GenerateCall& call_;
  const GenerateParts& parts_;
  std::unique_ptr<server::Connection> queue_;
  std::unique_ptr<NewQueuedRun> queued_;
  std::size_t put_ = 0, branches_put_ = 0;
  std::vector<BranchListing> listings_;
  std::size_t without_anybody_ = 0;
  int status_ = kDone;
  bool stopped_ = false;
};

}  // namespace

int RunGenerate(std::vector<std::string> arguments, const GenerateParts& parts) {
  GenerateCall call;
  CLI::App app("", "tenora generate");
  DeclareGenerate(app, call);
  std::reverse(arguments.begin(), arguments.end());  // CLI11 takes them from the back
  arguments.pop_back();
  try {
    app.parse(arguments);
  } catch (const CLI::ParseError& error) {
    return app.exit(error, parts.output, parts.errors) == 0 ? kDone : kWrongCall;
  }
  if (const std::string complaint = call.Complaint(); !complaint.empty()) {
    parts.errors << TerminalLine(complaint) << "\nRun with --help for more information."
                 << std::endl;
    return kWrongCall;
  }
  return Told(parts, "", [&] {
    const bool across = (call.AcrossBranches() || call.queue) && !IsColumnHelp(call);
    const int status =
        across ? AcrossBranches(call, parts).Run() : GenerateCommand(call, parts).Run();
    parts.output.flush();
    if (!parts.output) throw StandardError(error_number::kDeviceIoError, "standard output");
    return status;
  });
}

}  // namespace tenora
