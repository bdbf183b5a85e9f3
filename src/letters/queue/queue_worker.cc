#include "letters/queue_worker.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <functional>
#include <optional>
#include <set>
#include <thread>
#include <utility>

#include "letters/branch_folders.h"
#include "letters/letter_queue.h"
#include "letters/queue/branch_desk.h"
#include "letters/queue/queue_ledger.h"
#include "letters/queue/worker_queue.h"
#include "platform/dialogs/guard.h"
#include "platform/runtime/version.h"
#include "platform/server/branch_location.h"

namespace tenora {
namespace {

using server::Connection;
using server::ServerError;
using server::ServerFailure;

constexpr std::chrono::seconds kStatementLimit{60};
// Somebody's word wakes a worker; this is for words that get lost.
constexpr std::chrono::seconds kBetweenLooks{5};
constexpr std::chrono::seconds kLongestPause{30};
constexpr std::chrono::milliseconds kFirstPause{500};
// The class of its codes for "it is shut down", "it was told to end this connection".
constexpr std::string_view kServerIsBusyOrEnds = "57";
constexpr std::chrono::milliseconds kBetweenStopQuestions{100};

std::string HostName() {
  std::array<char, 256> name{};
  if (::gethostname(name.data(), name.size() - 1) != 0) return "unknown";
  return name.data();
}

// Tells what somebody should see of the letters.
class Teller : public GenerationObserver {
 public:
  Teller(const WorkerParts& parts, std::string where) : parts_(parts), where_(std::move(where)) {}

  void LetterFinished(const LetterReport& report) override {
    if (report.result != LetterReport::Result::kDone) Tell(report, report.problem);
    for (const std::string& warning : report.warnings) Tell(report, warning);
  }
  bool StopAsked() override { return parts_.stop_asked(); }

 private:
  void Tell(const LetterReport& report, const std::string& what) {
    const std::string& code = report.recipient.code;
    parts_.tell(where_ + ": " + report.recipient.name + (code.empty() ? "" : " (" + code + ")") +
                ": " + what);
  }

  const WorkerParts& parts_;
  const std::string where_;
};

class Worker {
 public:
  Worker(const WorkerParts& parts, const WorkerOptions& options)
      : parts_(parts), options_(options) {}

  void Work() {
    std::chrono::milliseconds pause = kFirstPause;
    while (!parts_.stop_asked()) {
      try {
        joined_ = false;
        if (Session(pause)) return;
      } catch (const ServerError& error) {
        // A worker that has come so far may take part, whatever was wrong with one statement.
        const bool refused = error.failure() == ServerFailure::kRefused && !joined_;
        if (refused && !error.state().starts_with(kServerIsBusyOrEnds)) throw;
        if (error.failure() == ServerFailure::kStopped) return;
        parts_.tell(ErrorText(error));
        Wait(pause);
        pause = std::min<std::chrono::milliseconds>(pause * 2, kLongestPause);
      }
    }
  }

 private:
  // Letters that were in hand when the server was lost, or that cannot be made at present, and what
  // the server may not know of them.
  struct Loose {
    ClaimedLetters claimed;
    std::vector<LetterNote> notes;
  };

  // Works over one connection; true when the work is done. Resets the pause once it has worked.
  bool Session(std::chrono::milliseconds& pause) {
    const auto connection =
        Connection::Open(options_.service, kStatementLimit, {.stop_asked = parts_.stop_asked});
    LetterQueue(*connection).Require(QueueUse::kLetters);
    WorkerQueue queue(*connection, options_.lease);
    queue.Join(HostName(), ::getpid(), std::string(kVersion));
    joined_ = true;
    parts_.tell("Worker " + std::to_string(queue.worker()) + " takes letters of the queue on " +
                connection->Address());
    TellUnknown(*connection);
    auto looked = std::chrono::steady_clock::time_point();
    while (!parts_.stop_asked()) {
      // Before its own letters are looked for, as those of a worker that was lost.
      Settle(queue);
      if (std::chrono::steady_clock::now() - looked >= kBetweenLooks) {
        looked = std::chrono::steady_clock::now();
        queue.LookRound();
      }
      if (auto claimed =
              queue.Claim(options_.branches, last_, static_cast<int>(options_.together))) {
        Process(queue, std::move(*claimed));
        if (connection->IsBroken()) return false;
        pause = kFirstPause;
        continue;
      }
      pause = kFirstPause;
      TellTooNew(queue);
      if (options_.until_done && NothingLeft(*connection)) break;
      connection->WaitForNotices(options_.until_done ? std::chrono::milliseconds(500)
                                                     : kBetweenLooks);
    }
    Settle(queue);
    queue.Leave();
    return true;
  }

  void Settle(WorkerQueue& queue) {
    for (; !loose_.empty(); loose_.pop_back()) {
      try {
        queue.Note(loose_.back().claimed, loose_.back().notes, true);
      } catch (const ServerError& error) {
        if (error.failure() != ServerFailure::kRefused ||
            error.state().starts_with(kServerIsBusyOrEnds)) {
          throw;
        }
        // It will not say otherwise the next time; the lease runs out.
        parts_.tell(ErrorText(error));
      }
    }
  }

  void Process(WorkerQueue& queue, ClaimedLetters claimed) {
    const std::string where =
        "Run " + std::to_string(claimed.part.run) + ", " + claimed.branch_name;
    try {
      TakeDesk(queue, claimed);
    } catch (...) {
      const std::string problem = ErrorText(CurrentError());
      LeaveDesk();
      loose_.push_back({claimed, {}});
      Pause(queue, claimed.part, where, problem);
      return;
    }
    QueueLedger ledger(queue, std::move(claimed), desk_->request(), desk_->folder());
    Teller teller(parts_, where);
    std::string problem;
    try {
      desk_->Make(ledger, teller);
      problem = ledger.problem();
    } catch (...) {
      problem = ErrorText(CurrentError());
    }
    for (const std::string& message : desk_->TakeMessages()) parts_.tell(where + ": " + message);
    try {
      // Before its letters are ready for the next to meet the same.
      if (!problem.empty()) Pause(queue, ledger.claimed().part, where, problem);
      ledger.Finish();
    } catch (const RuntimeError& lost) {
      parts_.tell(where + ": " + ErrorText(lost));
      loose_.push_back({ledger.claimed(), ledger.Unsettled()});
    }
  }

  void Pause(WorkerQueue& queue, RunPart part, const std::string& where,
             const std::string& problem) {
    parts_.tell(where + ": paused: " + problem);
    queue.PausePart(part, HostName() + ": " + problem);
  }

  void LeaveDesk() {
    desk_.reset();
    order_.reset();
    last_ = {};
  }

  // Brings the desk to the run and branch, with the branch's present data.
  void TakeDesk(WorkerQueue& queue, const ClaimedLetters& claimed) {
    if (desk_ != nullptr && last_ == claimed.part) {
      return desk_->Refresh();
    }
    desk_.reset();
    if (!order_ || last_.run != claimed.part.run) order_ = queue.OrderOf(claimed.part.run);
    const server::BranchLocation location{.service = options_.service,
                                          .branch = claimed.branch_name};
    desk_ = std::make_unique<BranchDesk>(parts_.platform, location.ToText(),
                                         BranchFolder(options_.data_folder, claimed.branch_name),
                                         *order_, parts_.make_printers);
    last_ = claimed.part;
  }

  // Letters of a branch that is added later are taken; a mistyped one would never be.
  void TellUnknown(Connection& connection) {
    if (options_.branches.empty()) return;
    const auto rows = connection.Run("select name from rental.branch");
    std::set<std::string, std::less<>> known;
    for (int row = 0; row < rows->rows(); ++row) known.emplace(rows->Text(row, 0));
    for (const std::string& branch : options_.branches) {
      if (known.contains(branch)) continue;
      parts_.tell("There is no branch \"" + branch + "\" that this login may see");
    }
  }

  void TellTooNew(WorkerQueue& queue) {
    for (const int run : queue.TooNew()) {
      if (!told_too_new_.insert(run).second) continue;
      parts_.tell("Run " + std::to_string(run) + " needs a newer version of the program than " +
                  std::string(kVersion));
    }
  }

  bool NothingLeft(Connection& connection) const {
    for (const QueuedRun& run : LetterQueue(connection).Runs()) {
      if (run.state != "open" || run.needs_version > kQueueVersion) continue;
      for (const QueuedPart& part : run.parts) {
        const bool ours =
            options_.branches.empty() || std::ranges::count(options_.branches, part.branch) > 0;
        if (ours && part.counts.Left() > 0) return false;
      }
    }
    return true;
  }

  void Wait(std::chrono::milliseconds time) const {
    const auto end = std::chrono::steady_clock::now() + time;
    while (!parts_.stop_asked() && std::chrono::steady_clock::now() < end) {
      std::this_thread::sleep_for(kBetweenStopQuestions);
    }
  }

  const WorkerParts& parts_;
  const WorkerOptions& options_;
  std::optional<RunOrder> order_;  // of the last run
  std::unique_ptr<BranchDesk> desk_;
  RunPart last_;
  std::vector<Loose> loose_;
  bool joined_ = false;  // in this session
  std::set<int> told_too_new_;
};

}  // namespace

void WorkOnQueue(const WorkerParts& parts, const WorkerOptions& options) {
  Worker(parts, options).Work();
}

}  // namespace tenora
