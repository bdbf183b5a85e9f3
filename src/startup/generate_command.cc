#include "startup/generate_command.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <filesystem>
#include <optional>
#include <ostream>

#include "letters/generation.h"
#include "letters/template_library.h"
#include "letters/unfinished_runs.h"
#include "merge/merge_codes.h"
#include "merge/prompts.h"
#include "platform/dialogs/guard.h"
#include "platform/dialogs/terminal_text.h"
#include "platform/runtime/error.h"
#include "platform/runtime/text.h"
#include "startup/generate_dialogs.h"
#include "startup/generate_progress.h"
#include "startup/recipient_choice.h"
#include "startup/run_report.h"
#include "startup/stop_signals.h"

namespace tenora {
namespace {

constexpr int kDone = 0, kFailed = 1, kWrongCall = 2;

constexpr const char* kFooter =
    R"(The files made are printed on standard output, progress and problems on standard error.
A letter that fails does not stop the others; the run log beside the letters says what became of
each. A letter in which something is wrong is saved and held back; --resume looks at it again.
At a question, "/all TEXT" answers for all letters from there on, "/stop" ends the run.
Ctrl-C stops after the current letter (a print job ends with the letters in it).
Exit status: 0 when every letter was made and none is held back, 1 when not, 2 for a usage error.)";

struct Call {
  std::string template_name;
  bool owners = false;
  std::string destination = "folder";
  std::vector<std::string> recipients;
  bool all = false, list = false;
  RecipientFilter filter;
  std::string subject, printer, resume, forget;
  std::vector<std::string> answers;
  bool pdf = false, send_held = false, unfinished = false;

  const std::string_view Kind() const { return owners ? kOwnerTemplates : kTemplates; }
  Destination To() const {
    if (destination == "printer") return Destination::kPrinter;
    return destination == "email" ? Destination::kEmail : Destination::kFolder;
  }
};

void Declare(CLI::App& app, Call& call) {
  RecipientFilter& filter = call.filter;
  app.footer(kFooter);
  app.add_option("--template", call.template_name, "The template's name, without \".rtf\"");
  app.add_flag("--owners", call.owners, "Write to owners, from \"Owner Templates\"");
  app.add_flag("--by-property", filter.by_property,
               "List owners once for each of their properties");
  app.add_option("--to", call.destination, "Where the letters go; they are saved in any case")
      ->check(CLI::IsMember({"folder", "printer", "email"}))
      ->capture_default_str();
  app.add_option("--recipient", call.recipients,
                 "A recipient by name or code; may be given many times")
      ->expected(1)
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
  app.add_flag("--all", call.all, "Every recipient of the list");
  app.add_flag("--closed", filter.closed, "Closed ones too");
  app.add_flag("--with-email-only", filter.exclude_no_email_ticked,
               "Only recipients with an e-mail address");
  app.add_option("--search", filter.search,
                 "Only recipients whose line in the list holds the words");
  app.add_option("--subject", call.subject, "Of the e-mails");
  app.add_option("--answer", call.answers,
                 "\"prompt=text\": the answer to a prompt for all letters; others are asked")
      ->expected(1)
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
  app.add_flag("--pdf", call.pdf, "Save a PDF beside each letter");
  app.add_option("--printer", call.printer, "The printer; without it, the default one");
  app.add_flag("--list", call.list, "Print the recipients and make nothing");
  app.add_option("--resume", call.resume, "Make what the run of this log left undone");
  app.add_flag("--unfinished", call.unfinished,
               "Print the runs that have not done all they were asked, and make nothing");
  app.add_option("--forget", call.forget,
                 "Strike the run of this log from that list; no file is removed");
  app.add_flag("--send-held", call.send_held,
               "With --resume: hand over the letters held back, as they are");
}

// What is wrong with the call; empty when nothing is.
std::string Complaint(const Call& call) {
  const bool to_email = call.To() == Destination::kEmail;
  const bool choosing = call.all || !call.recipients.empty();
  if (call.unfinished || !call.forget.empty()) {
    const bool more = choosing || call.list || !call.template_name.empty() ||
                      !call.resume.empty() || (call.unfinished && !call.forget.empty());
    return more ? "--unfinished and --forget are given alone" : "";
  }
  if (call.filter.by_property && !call.owners) return "--by-property goes with --owners";
  if (!call.resume.empty()) {
    const bool more = choosing || call.list || !call.template_name.empty() ||
                      !call.subject.empty() || !call.answers.empty() || call.pdf;
    return more ? "--resume takes everything from the run log; "
                  "only --printer and --send-held may be given with it"
                : "";
  }
  if (call.send_held) return "--send-held goes with --resume";
  if (call.list) return "";
  if (call.template_name.empty()) return "--template is missing";
  if (call.all && !call.recipients.empty()) return "--all and --recipient exclude each other";
  if (!choosing) return "Nothing selected: name each --recipient, or give --all";
  if (!call.filter.search.empty() && !call.all) return "--search goes with --all or --list";
  if (to_email && TrimBlanks(call.subject).empty()) return "--to email needs a --subject";
  if (!to_email && !call.subject.empty()) return "--subject goes with --to email";
  if (!call.printer.empty() && call.To() != Destination::kPrinter) {
    return "--printer goes with --to printer";
  }
  for (const std::string& answer : call.answers) {
    if (answer.find('=') == 0 || answer.find('=') == std::string::npos) {
      return "--answer \"" + answer + "\" does not have the form \"prompt=text\"";
    }
  }
  return "";
}

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

class GenerateCommand {
 public:
  GenerateCommand(const Call& call, const GenerateParts& parts)
      : call_(call),
        parts_(parts),
        dialogs_(parts.platform.dialogs, signals_),
        session_(WithDialogs(parts.platform, dialogs_)),
        progress_(parts, signals_) {}

  int Run() {
    if (call_.list) return List();
    if (call_.unfinished) return ListUnfinished();
    if (!call_.forget.empty()) return Forget();
    const bool resuming = !call_.resume.empty();
    const std::filesystem::path resumed = resuming ? NamedLog(call_.resume) : "";
    if (resuming) RequireServerOf(resumed);
    const GenerationRequest request = resuming ? Generation::RequestOf(resumed) : AskedRequest();
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
    return summary.complete() ? kDone : kFailed;
  }

 private:
  static Platform WithDialogs(const Platform& platform, Dialogs& dialogs) {
    return Platform{platform.clock,     dialogs,
                    platform.locale,    platform.registry,
                    platform.workspace, platform.program_folder};
  }

  int List() {
    if (!session_.ReloadRentalData()) return kFailed;
    for (const RecipientRow& row : Rows(session_.caches)) {
      parts_.output << TerminalLine(row.text) << '\n';
    }
    return kDone;
  }

  int ListUnfinished() {
    const std::vector<UnfinishedRun> runs = FindUnfinishedRuns(session_.database.DataFolder());
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

  std::vector<Recipient> Chosen(const Caches& caches) const {
    const std::vector<RecipientRow> rows = Rows(caches);
    if (!call_.all) {
      RecipientFilter closed_too = call_.filter;
      closed_too.closed = true;
      return ChooseByNames(call_.recipients, rows,
                           ListRecipients(caches, call_.Kind(), closed_too));
    }
    std::vector<Recipient> chosen;
    for (const RecipientRow& row : rows) chosen.push_back(row.recipient);
    if (chosen.empty()) throw WrongChoice("Nothing selected: the list is empty.");
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

  GenerationRequest AskedRequest() {
    GenerationRequest request;
    request.template_kind = call_.Kind();
    request.template_name = call_.template_name;
    request.destination = call_.To();
    request.subject = call_.subject;
    request.pdf = call_.pdf;
    if (!call_.answers.empty()) {
      request.answers = MatchAnswers(call_.answers, PromptsOf(request));
    }
    return request;
  }

  std::vector<std::string> PromptsOf(const GenerationRequest& request) {
    const TemplateLibrary library(session_.database.DataFolder());
    RichTextBox text;
    text.LoadFile(library.PathOf(request.template_kind, request.template_name),
                  RichTextBox::FileType::kRtf);
    return PromptMessages(text);
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

  const Call& call_;
  const GenerateParts& parts_;
  StopSignals signals_;
  GenerateDialogs dialogs_;
  Session session_;
  GenerateProgress progress_;
  std::unique_ptr<printing::Printers> printers_;
};

}  // namespace

int RunGenerate(std::vector<std::string> arguments, const GenerateParts& parts) {
  Call call;
  // On the command line the filter is always available.
  call.filter.exclude_no_email_available = true;
  CLI::App app("Makes a letter from a template for each of many tenants or owners.",
               "tenora generate");
  Declare(app, call);
  std::reverse(arguments.begin(), arguments.end());  // CLI11 takes them from the back
  arguments.pop_back();
  try {
    app.parse(arguments);
  } catch (const CLI::ParseError& error) {
    return app.exit(error, parts.output, parts.errors) == 0 ? kDone : kWrongCall;
  }
  if (const std::string complaint = Complaint(call); !complaint.empty()) {
    parts.errors << TerminalLine(complaint) << "\nRun with --help for more information."
                 << std::endl;
    return kWrongCall;
  }
  try {
    const int status = GenerateCommand(call, parts).Run();
    parts.output.flush();
    if (!parts.output) throw StandardError(error_number::kDeviceIoError, "standard output");
    return status;
  } catch (const WrongChoice& problem) {
    parts.errors << TerminalLine(problem.what()) << std::endl;
    return kFailed;
  } catch (...) {
    parts.errors << TerminalText(ErrorText(CurrentError())) << std::endl;
    return kFailed;
  }
}

}  // namespace tenora
