#include "letters/generation.h"

#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

#include "letters/generate/letter_maker.h"
#include "letters/generate/letter_run.h"
#include "letters/generate/run_log.h"
#include "letters/letter_names.h"
#include "merge/condition.h"
#include "output/email_sender.h"
#include "platform/dialogs/guard.h"
#include "platform/runtime/error.h"
#include "platform/runtime/files.h"

namespace tenora {
namespace {

void LoadRentalData(Session& session) {
  if (session.ReloadRentalData()) return;
  throw RuntimeError(error_number::kObjectNotSet,
                     "The rental database could not be read; nothing was done.");
}

void RequirePrinter(printing::Printers* printers, Destination destination) {
  if (destination != Destination::kPrinter) return;
  if (printers == nullptr || printers->Count() == 0) {
    throw StandardError(error_number::kPrinterError, "no printer is installed");
  }
  // Raises when the one that was asked for is not installed.
  static_cast<void>(printers->Current());
}

LetterMaker::BadFutureDate BadFutureDates(AfterError after_error) {
  // In the window the user has seen the message and can look at the letter.
  return after_error == AfterError::kStop ? LetterMaker::BadFutureDate::kLeftInLetter
                                          : LetterMaker::BadFutureDate::kRaised;
}

}  // namespace

GenerationSummary Generation::Run(GenerationRequest request, const ChooseRecipients& choose) {
  LoadRentalData(session_);
  const Database::OneFile one_file(session_.database, session_.database.LastOpened());
  request.database = session_.database.LastOpened();
  request.recipients = choose(session_.caches);
  if (request.recipients.empty()) {
    throw StandardError(error_number::kInvalidProcedureCall, "Nothing selected");
  }
  if (request.template_kind == kOwnerTemplates) {
    FillOwnerCodes(session_.caches, request.recipients);
  }
  if (!request.name_pattern) {
    request.name_pattern = StoredNamePattern(session_.settings, request.template_kind);
  }
  RequireSoundPattern(*request.name_pattern, request.template_kind);
  RequirePrinter(printers_, request.destination);
  if (request.destination == Destination::kEmail) RequireMailPassword(session_);
  RequireFolder(session_.database.DataFolder());
  LetterMaker maker(session_, request, BadFutureDates(after_error_));
  maker.ReadTemplate();
  RunLog log(session_.database.DataFolder(), request, session_.platform.clock);
  clsEmailSender sender(session_);
  return LetterRun(session_, after_error_, observer_, printers_, log, maker, sender)
      .Go({}, threads_, wait_for_server_);
}

GenerationSummary Generation::Resume(const std::filesystem::path& log_path, ResumeWay way) {
  RunLog log = RunLog::Resume(log_path, session_.database.DataFolder(), session_.platform.clock);
  RequireSoundPattern(log.request().name_pattern.value_or(""), log.request().template_kind);
  const std::filesystem::path before = log.request().database;
  std::optional<Database::OneFile> one_file;
  // Those of the first release do not say which it was.
  if (!before.empty()) one_file.emplace(session_.database, before);
  LoadRentalData(session_);
  if (before.empty()) one_file.emplace(session_.database, session_.database.LastOpened());
  RequirePrinter(printers_, log.request().destination);
  if (log.request().destination == Destination::kEmail) RequireMailPassword(session_);
  LetterMaker maker(session_, log.request(), BadFutureDates(after_error_));
  log.Note(RunRemark::kResumed);
  log.Sync();
  clsEmailSender sender(session_);
  return LetterRun(session_, after_error_, observer_, printers_, log, maker, sender)
      .Go(std::move(way), threads_, wait_for_server_);
}

GenerationRequest Generation::RequestOf(const std::filesystem::path& log) {
  return RunLog::Contents(log).request;
}

GenerationSummary GenerateSelection(Session& session, GenerationRequest request,
                                    GenerationObserver& observer, printing::Printers* printers) {
  GenerationSummary summary;
  Guarded(session.platform.dialogs, "frmMain - cmdGenerate_Click", [&] {
    const std::vector<Recipient> recipients = request.recipients;
    summary = Generation(session, AfterError::kStop, observer, printers)
                  .Run(std::move(request), [&](const Caches&) { return recipients; });
  });
  return summary;
}

}  // namespace tenora
