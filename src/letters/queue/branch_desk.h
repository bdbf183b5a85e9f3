// What a worker has loaded to make the letters of one run in one branch: the branch's data, the
// template, a clock that stands still, and a connection to the mail server that lasts.
#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "letters/generate/letter_maker.h"
#include "letters/generation.h"
#include "letters/queue/queue_ledger.h"
#include "letters/queue/worker_queue.h"
#include "output/email_sender.h"
#include "platform/dialogs/silent_dialogs.h"
#include "platform/query/engine.h"
#include "platform/runtime/clock.h"
#include "rental/session.h"

namespace tenora {

// Says nothing and asks nothing: a letter with a question is held back, for a person.
class WorkerDialogs : public SilentDialogs {
 public:
  LetterAnswer AskForLetter(const LetterQuestion& /*question*/) override {
    return {.way = LetterAnswer::Way::kLater};
  }
};

class BranchDesk {
 public:
  // `location` of the branch as the database takes it, `folder` of its letters. Raises what cannot
  // be read, and what the template or the printer lacks.
  BranchDesk(const Platform& common, std::string location, const std::filesystem::path& folder,
             RunOrder order,
             const std::function<std::unique_ptr<printing::Printers>()>& make_printers);
  BranchDesk(const BranchDesk&) = delete;
  BranchDesk& operator=(const BranchDesk&) = delete;

  const GenerationRequest& request() const { return order_.request; }
  const std::filesystem::path& folder() const { return folder_; }

  // Reads the branch's data again where a sync has brought others since.
  void Refresh();
  // Makes the letters and hands them over, as the ledger says.
  void Make(QueueLedger& ledger, GenerationObserver& observer);
  // What would have been shown since this was asked last.
  std::vector<std::string> TakeMessages() { return dialogs_.TakeMessages(); }

 private:
  void Load();

  const Clock clock_;  // the run's day, for what stands in the letters
  const Clock& now_;
  const RunOrder order_;
  const std::filesystem::path folder_;
  WorkerDialogs dialogs_;
  const std::unique_ptr<query::Workspace> workspace_;
  Session session_;
  std::chrono::sys_seconds taken_;  // the data that are loaded
  LetterMaker maker_;
  clsEmailSender sender_;
  std::unique_ptr<printing::Printers> printers_;
};

}  // namespace tenora
