#include "letters/queue/branch_desk.h"

#include <utility>

#include "letters/generate/letter_run.h"
#include "platform/locale/locale.h"
#include "platform/runtime/error.h"
#include "platform/runtime/files.h"

namespace tenora {

BranchDesk::BranchDesk(const Platform& common, std::string location,
                       const std::filesystem::path& folder, RunOrder order,
                       const std::function<std::unique_ptr<printing::Printers>()>& make_printers)
    : clock_(order.as_of),
      now_(common.clock),
      order_(std::move(order)),
      folder_(folder),
      workspace_(query::Workspace::Create(
          [this] { return clock_.Now(); }, query::kTimeLimit,
          [&locale = common.locale](Date date) { return locale.ShortDate(date); })),
      session_({clock_, dialogs_, common.locale, common.registry, *workspace_,
                common.program_folder, common.state_folder}),
      maker_(session_, order_.request, LetterMaker::BadFutureDate::kRaised),
      sender_(session_, now_) {
  session_.database.TakeBranch(std::move(location), folder_);
  MakeFolder(folder_);
  Load();
  maker_.UseTemplate(order_.template_source);
  if (order_.request.destination == Destination::kEmail) RequireMailPassword(session_);
  if (order_.request.destination != Destination::kPrinter) return;
  printers_ = make_printers();
  printers_->SetDataFolder(folder_);
  if (!printers_->SetCurrent(order_.request.printer)) {
    throw StandardError(error_number::kPrinterError,
                        "this computer has no printer \"" + order_.request.printer + "\"");
  }
}

void BranchDesk::Load() {
  if (!session_.ReloadRentalData()) {
    throw RuntimeError(error_number::kObjectNotSet,
                       "the branch's data cannot be read: " + dialogs_.TakeFirstInOneLine());
  }
  const OpenedDatabase opened(session_.database);
  if (const auto origin = session_.database.Origin()) taken_ = origin->taken;
}

void BranchDesk::Refresh() {
  {
    const OpenedDatabase opened(session_.database);
    const auto origin = session_.database.Origin();
    if (origin && origin->taken == taken_) return;
  }
  Load();
}

void BranchDesk::Make(QueueLedger& ledger, GenerationObserver& observer) {
  const ResumeWay way = [&](std::size_t) {
    return ledger.claimed().send_held ? Resuming::kAsItIs : Resuming::kUsual;
  };
  // Workers are processes: each merges on one thread.
  LetterRun(session_, AfterError::kNextRecipient, observer, printers_.get(), ledger, maker_,
            sender_)
      .Go(way, 1, std::chrono::milliseconds(0));
}

}  // namespace tenora
