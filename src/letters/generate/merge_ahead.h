// Threads that merge the letters of a run before their turn, each with a session of its own that
// only looks at the database. The run takes the letters in its order. Whatever could not be merged
// without a word it merges itself, so that what it shows, asks, counts and logs, and every byte of
// a letter, is as if there were no threads.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "letters/generate/letter_maker.h"
#include "letters/generate/run_ledger.h"
#include "letters/letter_check.h"
#include "letters/letter_names.h"
#include "merge/merge_target.h"
#include "platform/access/file_state.h"
#include "platform/runtime/clock.h"

namespace tenora {

// A letter as the merge leaves it.
struct MergedLetter {
  std::string source;  // RTF
  LetterMembers members;
  std::vector<LetterFinding> findings;  // of the letter check
  std::string name;                     // of its file, as LetterNames gives it
};

// All members are for the thread that runs the letters.
class MergeAhead {
 public:
  // Begins to merge the letters with these numbers, ascending, for the log's run; `threads` 0 is
  // one for each processor, up to four. Null where the run does better without: few letters, one
  // thread, a template that cannot be read, that asks or that takes receipt numbers, e-mails, which
  // wait for their server, and a database that is being changed. All arguments outlive this.
  static std::unique_ptr<MergeAhead> Start(Session& session, const RunLedger& log,
                                           LetterMaker& maker, const LetterNames& names,
                                           std::vector<std::size_t> numbers, unsigned threads = 0);
  MergeAhead(const MergeAhead&) = delete;
  MergeAhead& operator=(const MergeAhead&) = delete;
  // Waits for the letters in hand.
  ~MergeAhead();

  // The letter of this number, where merging it now would give the same and say nothing: nobody was
  // told or asked anything, and the database and the time shown are as they were. Waits for a
  // thread that has it in hand. Letters of lower numbers are dropped.
  std::optional<MergedLetter> Take(std::size_t number);

 private:
  // What the threads share and nobody changes.
  struct Job {
    GenerationRequest request;  // without its recipients
    std::string template_source;
    LetterMaker::BadFutureDate bad_future_date;
    const LetterNames& names;
    std::size_t count = 0;  // of the run's letters
    std::vector<std::size_t> numbers;
    std::vector<Recipient> recipients;  // of the letters with these numbers
  };
  class Machine;  // with which a thread merges
  // Of a letter that is merged or in hand, by its place in `numbers`.
  struct Slot {
    bool done = false;
    std::optional<MergedLetter> letter;  // none: it could not be merged without a word
    Date begun;
  };

  MergeAhead(Session& session, Job job, const access::FileState& state, unsigned threads);
  void Work(Machine& machine);
  bool MayBegin() const;
  Slot& SlotOf(std::size_t place) { return slots_[place % slots_.size()]; }
  // Waits for the letter at this place and leaves all before it behind.
  Slot TakeFrom(std::size_t place);
  void Stop();

  const Clock& clock_;
  const Job job_;
  const std::filesystem::path database_;
  const access::FileState state_;  // of the database, in which all letters are merged

  std::mutex mutex_;
  std::condition_variable merged_, taken_one_;
  std::vector<Slot> slots_;
  std::size_t next_ = 0;   // place that no thread has begun
  std::size_t taken_ = 0;  // places below are done with
  std::size_t bytes_ = 0;  // of letters that wait to be taken
  bool stopping_ = false;

  std::vector<std::unique_ptr<Machine>> machines_;
  std::vector<std::thread> threads_;
};

}  // namespace tenora
