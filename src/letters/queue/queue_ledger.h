// The letters that a worker has in hand, as a ledger: what is noted goes to the queue, and what is
// about to be handed over is noted there before it is, under a lease that must not be over.
#pragma once

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include "letters/generate/run_ledger.h"
#include "letters/queue/worker_queue.h"

namespace tenora {

class QueueLedger final : public RunLedger {
 public:
  // `folder` is that of the branch's letters. The queue outlives the ledger.
  QueueLedger(WorkerQueue& queue, ClaimedLetters claimed, const GenerationRequest& request,
              const std::filesystem::path& folder);

  std::size_t PlaceInRun(std::size_t number) const override { return claimed_.numbers[number - 1]; }
  std::size_t LettersInRun() const override { return claimed_.in_part; }
  // What is saved only, and not yet noted so, is found by its name: it can wait for Finish.
  void Write() override {
    if (request().destination != Destination::kFolder) Flush(false);
  }
  // The server's commit waits for its disk.
  void Sync() override { Flush(false); }
  // A part ends when all its letters have; this worker's end is Finish.
  void Close(RunRemark /*remark*/) override {}
  bool GivesNames() const override { return true; }
  std::vector<std::filesystem::path> TakeNames(std::span<const NameWish> wishes) override;
  bool StillOurs() const override;
  bool Suspend(const std::string& problem) override {
    problem_ = problem;
    return true;
  }
  void GiveUp(std::size_t number) override { given_up_.insert(number); }

  // Gives back what is left. Raises LedgerLost.
  void Finish() { Flush(true); }
  // What would meet the other letters too; empty for nothing.
  const std::string& problem() const { return problem_; }
  // What the queue may not know, or may know otherwise, of letters that were to be handed over: to
  // be told it when it can be reached again.
  std::vector<LetterNote> Unsettled() const;
  const ClaimedLetters& claimed() const { return claimed_; }

 private:
  void LetterNoted(std::size_t number) override;
  // Answers are given before a run is queued.
  void AnswerNoted(const std::string& /*prompt*/, const std::string& /*answer*/) override {}
  LetterEnd EndOf(std::size_t number) const;
  LetterNote NoteOf(std::size_t number) const;
  void Flush(bool last);
  // Asks the queue; the lease counts from before the question.
  template <typename Ask>
  auto Asking(Ask&& ask);
  [[noreturn]] void Lose(const std::string& why);

  WorkerQueue& queue_;
  ClaimedLetters claimed_;
  std::chrono::nanoseconds lease_end_;  // since the machine was started, asleep or not
  std::set<std::size_t> noted_;         // not yet in the queue
  std::set<std::size_t> given_up_;      // not to be tried again
  std::set<std::size_t> ended_;         // out of hand: no more is noted of them
  std::string problem_;
};

}  // namespace tenora
