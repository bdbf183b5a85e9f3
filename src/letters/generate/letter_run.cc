#include "letters/generate/letter_run.h"

#include <algorithm>
#include <thread>
#include <utility>

#include "letters/generate/merged_files.h"
#include "letters/generate/run_summary.h"
#include "platform/dialogs/guard.h"
#include "platform/mail/address.h"
#include "platform/mail/mail_client.h"
#include "platform/runtime/files.h"
#include "platform/runtime/text.h"
#include "platform/server/branch_location.h"

namespace tenora {
namespace {

namespace fs = std::filesystem;

constexpr const char* kLabel = "frmMain - cmdGenerate_Click";
// The letters of about a second, but at most this many, are synced together.
constexpr std::chrono::seconds kBetweenSyncs{1};
constexpr std::size_t kLargestGroup = 8192;
// Each attempt to reach a server that does not answer takes a minute.
constexpr int kMostUnconnected = 3;
// So many letters in a row that could not read the database: it may have gone for all of them.
constexpr int kMostUnread = 3;
// Between two attempts to reach a database server that went away.
constexpr std::chrono::milliseconds kFirstPause{250}, kLongestPause{8000};
// Whether to stop the wait.
constexpr std::chrono::milliseconds kBetweenQuestions{100};
// Each may be a letter that arrived and one that did not: more of them help nobody.
constexpr int kMostInDoubt = 3;

// One letter cannot be mailed; the next may well be.
class MailProblem : public LetterProblem {
 public:
  using LetterProblem::LetterProblem;
};

// The file of the letter is another one's.
class OtherLetter : public LetterProblem {
 public:
  OtherLetter(const Recipient& recipient, const fs::path& file)
      : LetterProblem(file.string() + " is the letter that was made for " + recipient.name +
                      (recipient.code.empty() ? "" : " (" + recipient.code + ")")) {}
};

class NoAddress : public LetterProblem {
 public:
  NoAddress() : LetterProblem("no e-mail address") {}
};

// Raises NoAddress for none, MailProblem for an address that nothing can be sent to.
void RequireAddress(const std::string& address) {
  if (TrimBlanks(address).empty()) throw NoAddress();
  try {
    mail::ParseAddresses(address);
  } catch (const RuntimeError& error) {
    throw MailProblem(std::string(error.description()));
  }
}

// Whether the database, as the run loaded it, has the recipient of a letter.
bool StillKnown(Caches& caches, const LetterMembers& letter) {
  if (letter.Kind == kTenantLetter) return caches.FindTenant(letter.TenantCode) != nullptr;
  return std::ranges::any_of(
      caches.Owners, [&](const OwnerRecord& owner) { return owner.Name == letter.RecipientName; });
}

bool ConcernsEveryLetter(int number) {
  return number == mail::smtp_error::kCannotConnect || number == mail::smtp_error::kLoginRefused ||
         number == mail::smtp_error::kCertificate || number == mail::smtp_error::kSenderRefused ||
         number == mail::NoMailClient::kNumber;
}

fs::path PdfBeside(fs::path letter) { return letter.replace_extension(".pdf"); }

}  // namespace

LetterRun::LetterRun(Session& session, AfterError after_error, GenerationObserver& observer,
                     printing::Printers* printers, RunLedger& log, LetterMaker& maker,
                     clsEmailSender& sender)
    : session_(session),
      after_error_(after_error),
      observer_(observer),
      log_(log),
      files_(log, session.database.DataFolder()),
      names_(log.request().name_pattern.value_or(""), log.request().template_kind),
      maker_(maker),
      sender_(sender) {
  sender_.StopAsked = [this] { return observer_.StopAsked() || !log_.StillOurs(); };
  if (printers != nullptr) printer_.emplace(*printers, session.settings);
  if (request().pdf) pdf_workers_.emplace(StoredMargins(session.settings));
}

LetterRun::~LetterRun() { sender_.StopAsked = {}; }

GenerationSummary LetterRun::Go(ResumeWay way, unsigned threads,
                                std::chrono::milliseconds wait_for_server) {
  way_ = std::move(way);
  wait_for_server_ = wait_for_server;
  std::vector<std::size_t> to_come;
  for (std::size_t number = 1; number <= log_.count(); ++number) {
    if (!Settled(number)) to_come.push_back(number);
    if (Done(number)) ++done_before_;
  }
  missing_ = to_come.size();
  to_come_.emplace(session_, log_, std::move(to_come));
  observer_.Started(missing_, log_.path());
  ahead_ = BeginToMerge(threads);
  for (std::size_t number = 1; number <= log_.count() && !stopped_; ++number) {
    if (Settled(number)) continue;
    ++begun_;
    stopped_ = observer_.StopAsked() || !Process(number);
    if (pdf_workers_) TakePdfs(pdf_workers_->TakeResults());
    if (std::chrono::steady_clock::now() - last_sync_ >= kBetweenSyncs ||
        unsynced_.size() >= kLargestGroup) {
      SyncGroup();
    }
  }
  ahead_.reset();
  Finish();
  return Summary();
}

bool LetterRun::Done(std::size_t number) const {
  return IsDone(log_.letter(number).state, request().destination);
}

bool LetterRun::Settled(std::size_t number) const {
  return Done(number) || InDoubt(log_.letter(number).state) || WayOf(number) == Resuming::kLeft;
}

LetterReport LetterRun::ReportOn(std::size_t number) const {
  return ReportOf(log_.run(), number, session_.database.DataFolder());
}

bool LetterRun::Process(std::size_t number) {
  LetterReport report = ReportOn(number);
  try {
    if (!MakeAndHandOver(report)) return false;
    // Otherwise reported when it is written, or its PDF is.
    if (!report.file.empty() && !pdf_waiting_.contains(number)) observer_.LetterFinished(report);
    return true;
  } catch (const LedgerLost&) {
    return false;
  } catch (const mail::DeliveryUnknown& error) {
    report.result = Result::kInDoubt;
    report.problem = ErrorText(error);
    log_.Note(number, LetterState::kSending, report.problem);
    if (after_error_ == AfterError::kStop) ShowError(session_.platform.dialogs, kLabel, error);
    observer_.LetterFinished(report);
    if (++in_doubt_ > kMostInDoubt) {
      log_.Suspend(report.problem);
      return false;
    }
    return after_error_ == AfterError::kNextRecipient;
  } catch (const NoAddress& error) {
    // One list at the end instead of a box each.
    report.result = Result::kNoAddress;
    report.problem = error.what();
    log_.Note(number, LetterState::kNoAddress, report.problem);
    observer_.LetterFinished(report);
    return true;
  } catch (const MailProblem& error) {
    // As for a single letter, the window shows it and the run continues.
    if (after_error_ == AfterError::kStop) {
      session_.platform.dialogs.Say(report.recipient.name + ": " + error.what());
    }
    Fail(std::move(report), error.what());
    return true;
  } catch (const OtherLetter& error) {
    Fail(std::move(report), error.what());
    return true;
  } catch (const RecipientGone& error) {
    // Named at the end, in the window too: the others are to get their letters.
    Fail(std::move(report), error.what());
    return true;
  } catch (const DatabaseProblem& error) {
    // The wait for its server was stopped: the letter was not begun.
    if (observer_.StopAsked()) return false;
    if (after_error_ == AfterError::kStop) ShowError(session_.platform.dialogs, kLabel, error);
    if (!Fail(std::move(report), error.what())) return false;
    if (!DatabaseLost()) return true;
    log_.Suspend(error.what());
    return false;
  } catch (const LetterProblem& error) {
    if (after_error_ == AfterError::kStop) ShowError(session_.platform.dialogs, kLabel, error);
    return Fail(std::move(report), error.what());
  } catch (...) {
    const RuntimeError error = CurrentError();
    const bool concerns_all =
        ConcernsEveryLetter(error.number()) || error.number() == error_number::kDiskFull;
    if (concerns_all && log_.Suspend(ErrorText(error))) {
      if (log_.letter(number).state == LetterState::kSending) {
        log_.Note(number, LetterState::kSaved);
      }
      return false;
    }
    if (after_error_ == AfterError::kStop) ShowError(session_.platform.dialogs, kLabel, error);
    const bool unconnected = error.number() == mail::smtp_error::kCannotConnect ||
                             error.number() == mail::NoMailClient::kNumber;
    unconnected_ = unconnected ? unconnected_ + 1 : 0;
    return Fail(std::move(report), ErrorText(error)) && unconnected_ < kMostUnconnected;
  }
}

bool LetterRun::MakeAndHandOver(LetterReport& report) {
  report.file = files_.SavedBefore(report);
  const bool held = HeldBack(log_.letter(report.number).state);
  if (!report.file.empty()) {
    const std::size_t other = files_.OtherIn(report);
    if (other != 0) throw OtherLetter(log_.recipient(other), report.file);
  }
  if (report.file.empty()) {
    if (!MergeAndSave(report)) return false;
  } else if (held && WayOf(report.number) != Resuming::kAsItIs) {
    if (!CheckAgain(report)) return false;
  } else {
    letter_ = &maker_.Load(report.recipient, report.file);
  }
  if (report.result == Result::kHeld) return true;
  if (request().pdf && !IsOnDisk(PdfBeside(report.file))) MakePdf(report);
  return HandOver(report);
}

bool LetterRun::MergeAndSave(LetterReport& report) {
  // What is there under that name, if anything, is not this letter.
  log_.NoteFile(report.number, {});
  std::string name;
  if (auto merged = ahead_ ? ahead_->Take(report.number) : std::nullopt) {
    letter_ = &maker_.Put(std::move(merged->members), std::move(merged->source));
    unread_ = 0;
    Tell(report, merged->findings);
    name = std::move(merged->name);
  } else {
    if (!Merge(report)) return false;
    name = names_.NameOf({session_, letter_->members(), letter_->rtfLetter},
                         log_.PlaceInRun(report.number), log_.LettersInRun());
  }
  files_.Save(*letter_, report, name);
  if (!report.file.empty()) observer_.Saved(report.file);
  return true;
}

std::unique_ptr<MergeAhead> LetterRun::BeginToMerge(unsigned threads) {
  std::vector<std::size_t> numbers;
  for (std::size_t number = 1; number <= log_.count(); ++number) {
    if (!Settled(number) && log_.letter(number).file.empty()) numbers.push_back(number);
  }
  return MergeAhead::Start(session_, log_, maker_, names_, std::move(numbers), threads);
}

bool LetterRun::Merge(LetterReport& report) {
  to_come_->Before(report.number);
  PromptOutcome prompts;
  letter_ = &maker_.Make(report.recipient, request().answers, Progress(), &prompts);
  // An answer interrupted by a request to stop does not count: the letter is not made.
  if (prompts.stopped || (prompts.cancelled > 0 && observer_.StopAsked())) return false;
  if (prompts.cancelled > 0) {
    report.warnings.push_back(std::to_string(prompts.cancelled) +
                              (prompts.cancelled == 1 ? " prompt was" : " prompts were") +
                              " left without an answer");
  }
  unread_ = 0;
  const std::vector<LetterFinding> findings = letter_->Check();
  Tell(report, findings);
  for (const LetterFinding& finding : findings) {
    // An answer that holds one letter back would hold back all of them, on resuming too.
    if (finding.weight == FindingWeight::kHold) prompts.for_all.erase(finding.code);
  }
  for (const auto& [prompt, answer] : prompts.for_all) log_.NoteAnswer(prompt, answer);
  return true;
}

std::string LetterRun::Progress() const {
  return std::to_string(begun_) + " of " + std::to_string(missing_) +
         (missing_ == 1 ? " letter" : " letters");
}

void LetterRun::Tell(LetterReport& report, const std::vector<LetterFinding>& findings) {
  for (const LetterFinding& finding : findings) {
    std::string text = finding.code.empty() ? "" : finding.code + ": ";
    text += finding.sentence;
    if (finding.weight == FindingWeight::kWarning) {
      report.warnings.push_back(std::move(text));
    } else {
      report.result = Result::kHeld;
      report.problem += (report.problem.empty() ? "" : "; ") + text;
    }
  }
}

bool LetterRun::CheckAgain(LetterReport& report) {
  if (!files_.ChangedByHand(report)) {
    if (!Merge(report)) return false;
    // Its questions may have waited long enough for somebody to correct the file.
    if (!files_.ChangedByHand(report)) {
      if (files_.ReplaceHeld(*letter_, report)) observer_.Saved(report.file);
      return true;
    }
    report = ReportOn(report.number);
  }
  letter_ = &maker_.Load(report.recipient, report.file);
  Tell(report, letter_->Check());
  files_.NoteHeld(report);
  return true;
}

void LetterRun::MakePdf(LetterReport& report) {
  pdf_workers_->Add({report.number, letter_->rtfLetter.TextRTF(), letter_->DocumentTitle(),
                     PdfBeside(report.file)});
  if (request().destination == Destination::kFolder) {
    pdf_waiting_.emplace(report.number, report);
    return;
  }
  // A letter must not be handed over before its PDF is written: that may fail.
  for (PdfResult& result : pdf_workers_->Finish()) {
    if (result.error) throw *result.error;
    observer_.Saved(result.path);
  }
}

void LetterRun::TakePdfs(std::vector<PdfResult> results) {
  for (PdfResult& result : results) {
    const auto waiting = pdf_waiting_.find(result.number);
    LetterReport report = std::move(waiting->second);
    pdf_waiting_.erase(waiting);
    if (result.error) {
      if (after_error_ == AfterError::kStop && !stopped_) {
        ShowError(session_.platform.dialogs, kLabel, *result.error);
      }
      if (!Fail(std::move(report), ErrorText(*result.error))) stopped_ = true;
      continue;
    }
    observer_.Saved(result.path);
    unsynced_.push_back(result.number);
    observer_.LetterFinished(report);
  }
}

bool LetterRun::HandOver(LetterReport& report) {
  const bool on_paper = WayOf(report.number) == Resuming::kOnPaper;
  switch (on_paper ? Destination::kPrinter : request().destination) {
    case Destination::kFolder:
      if (!report.file.empty() && !pdf_waiting_.contains(report.number)) {
        unsynced_.push_back(report.number);
      }
      break;
    case Destination::kPrinter:
      PrintInJob(report);
      break;
    case Destination::kEmail:
      return Mail(report);
  }
  return true;
}

void LetterRun::PrintInJob(LetterReport& report) {
  if (!printer_) throw StandardError(error_number::kPrinterError, "no printer is installed");
  printer_->PrintRichText(letter_->rtfLetter, letter_->DocumentTitle());
  unsynced_.push_back(report.number);
  in_job_.push_back(report.number);
}

// Once "sending" is synced, only the server knows whether the letter arrived: without a following
// "mailed" it is in doubt and is never sent again.
bool LetterRun::Mail(LetterReport& report) {
  const std::string address = letter_->EmailAddress();
  log_.Note(report.number, LetterState::kSaved);
  if (address.empty() && !StillKnown(session_.caches, letter_->members())) {
    throw RecipientGone("the rental database no longer has this recipient");
  }
  try {
    RequireAddress(address);
  } catch (const MailProblem&) {
    log_.GiveUp(report.number);
    throw;
  }
  const EmailBody body = letter_->BodyOfEmail(false);
  log_.Note(report.number, LetterState::kSending, address);
  try {
    log_.Sync();
  } catch (const LedgerLost&) {
    // The store may have it all the same.
    log_.Note(report.number, LetterState::kSaved);
    throw;
  }
  try {
    sender_.DeliverOrRaise(address, body, request().subject, true);
  } catch (const mail::DeliveryUnknown&) {
    throw;
  } catch (const RuntimeError& error) {
    if (error.number() == error_number::kCancelled) {
      log_.Note(report.number, LetterState::kSaved);
      return false;
    }
    if (ConcernsEveryLetter(error.number())) throw;
    unconnected_ = in_doubt_ = 0;
    throw MailProblem(ErrorText(error));
  }
  unconnected_ = in_doubt_ = 0;
  log_.Note(report.number, LetterState::kMailed, address);
  try {
    log_.Write();
  } catch (const RuntimeError& error) {
    report.warnings.push_back("mailed, but not yet noted in the run log: " + ErrorText(error));
  }
  return true;
}

// What cannot be read for one letter alone, as a damaged row, must not keep the others from theirs.
bool LetterRun::DatabaseLost() {
  const bool there = ServerIsThere();
  if (!there && observer_.StopAsked()) return true;
  if (there && ++unread_ < kMostUnread) return false;
  unread_ = 0;
  // The threads have what was loaded before.
  ahead_.reset();
  return !session_.ReloadRentalData();
}

bool LetterRun::ServerIsThere() {
  using Steady = std::chrono::steady_clock;
  const fs::path database = session_.database.LastOpened();
  if (!server::IsBranchLocation(database.string())) return true;
  const auto end = Steady::now() + wait_for_server_;
  bool waiting = false;
  for (std::chrono::milliseconds pause = kFirstPause;; pause = std::min(pause * 2, kLongestPause)) {
    try {
      session_.platform.workspace.OpenDatabase(database);
      if (waiting) observer_.ServerIsBack();
      return true;
    } catch (const RuntimeError&) {
      // What it was is told if the wait is in vain.
    }
    if (!std::exchange(waiting, true)) observer_.WaitingForServer(wait_for_server_);
    for (const auto next = Steady::now() + pause; Steady::now() < next;) {
      if (observer_.StopAsked() || Steady::now() >= end) return false;
      std::this_thread::sleep_for(std::min(kBetweenQuestions, pause));
    }
  }
}

bool LetterRun::Fail(LetterReport report, const std::string& problem) {
  report.result = Result::kFailed;
  report.problem = problem;
  const LoggedLetter& logged = log_.letter(report.number);
  // A held letter that could not be looked at again stays held: from "failed", its file would be
  // handed over as it is.
  if (!HeldBack(logged.state) || logged.file.empty()) {
    log_.Note(report.number, LetterState::kFailed, report.problem);
  }
  observer_.LetterFinished(report);
  return after_error_ == AfterError::kNextRecipient;
}

void LetterRun::SaveWaiting() {
  for (LetterReport& report : files_.SaveWaiting()) {
    if (report.result == Result::kFailed) {
      const std::string problem = report.problem;
      if (!Fail(std::move(report), problem)) stopped_ = true;
      continue;
    }
    observer_.Saved(report.file);
    unsynced_.push_back(report.number);
    observer_.LetterFinished(report);
  }
}

void LetterRun::SyncGroup() {
  last_sync_ = std::chrono::steady_clock::now();
  try {
    SaveWaiting();
    if (!unsynced_.empty()) SyncFiles(session_.database.DataFolder());
    for (const std::size_t number : unsynced_) log_.Note(number, LetterState::kSaved);
    unsynced_.clear();
  } catch (const LedgerLost&) {
    stopped_ = true;
  } catch (...) {
    const RuntimeError error = CurrentError();
    for (const std::size_t number : std::exchange(unsynced_, {})) {
      if (!Fail(ReportOn(number), ErrorText(error))) stopped_ = true;
    }
  }
  try {
    log_.Write();
  } catch (const LedgerLost&) {
    stopped_ = true;
  } catch (...) {
    // Pending lines are written with the next group; Finish reports an error that persists.
  }
}

void LetterRun::EndJob() {
  if (in_job_.empty()) return;
  const std::vector<std::size_t> letters = std::exchange(in_job_, {});
  const auto note_all = [&](LetterState state, const std::string& detail) {
    for (const std::size_t number : letters) log_.Note(number, state, detail);
  };
  try {
    note_all(LetterState::kPrinting, request().printer);
    try {
      log_.Sync();
    } catch (const LedgerLost&) {
      // The store may have it all the same.
      note_all(LetterState::kSaved, {});
      printer_->CancelJob();
      throw;
    }
    const fs::path file = printer_->EndJob();
    note_all(LetterState::kPrinted, file.empty() ? request().printer : file.string());
    observer_.JobPrinted(letters.size(), file);
  } catch (const LedgerLost&) {
    stopped_ = true;
  } catch (...) {
    const RuntimeError error = CurrentError();
    if (after_error_ == AfterError::kStop) ShowError(session_.platform.dialogs, kLabel, error);
    for (const std::size_t number : letters) {
      Fail(ReportOn(number), ErrorText(error));
    }
    stopped_ = true;
  }
}

// Also after a stop: letters in progress are completed, and those in the open job are printed.
void LetterRun::Finish() {
  if (pdf_workers_) TakePdfs(pdf_workers_->Finish());
  SyncGroup();
  EndJob();
  merged_ = MergeFiles(log_, session_, observer_, stopped_);
  const bool complete =
      SummaryOf(log_.run(), session_.database.DataFolder()).complete() && merged_.problems.empty();
  try {
    log_.Close(complete   ? RunRemark::kComplete
               : stopped_ ? RunRemark::kStopped
                          : RunRemark::kEnded);
  } catch (...) {
    ShowError(session_.platform.dialogs, kLabel, CurrentError());
  }
}

GenerationSummary LetterRun::Summary() const {
  GenerationSummary summary = SummaryOf(log_.run(), session_.database.DataFolder());
  summary.done_before = done_before_;
  summary.stopped = stopped_;
  summary.composed = request().destination == Destination::kEmail && !session_.options.SmtpSend;
  summary.log = log_.path();
  summary.merged = merged_;
  return summary;
}

}  // namespace tenora
