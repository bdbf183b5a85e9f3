// A worker's side of the queue. All functions raise server::ServerError.
#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "letters/generate/logged_run.h"
#include "letters/generate/run_ledger.h"
#include "platform/runtime/date.h"
#include "platform/server/server_connection.h"

namespace tenora {

// What a run asks of every worker.
struct RunOrder {
  GenerationRequest request;  // without recipients
  std::string template_source;
  Date as_of;
};

// The letters of a run in one branch.
struct RunPart {
  int run = 0, branch = 0;

  bool operator==(const RunPart&) const = default;
};

// Letters of one part that a worker has in hand together.
struct ClaimedLetters {
  std::int64_t lease = 0;
  RunPart part;
  std::string branch_name;
  std::vector<std::size_t> numbers;  // in the part, which is all of the branch's
  std::size_t in_part = 0;
  bool send_held = false;  // those held back are handed over as they are
  std::vector<Recipient> recipients;
  std::vector<LoggedLetter> letters;
};

// What a letter does next.
enum class LetterEnd {
  kInHand,
  kOut,    // nothing more is done with it by itself
  kAgain,  // it failed
  kBack,   // it was not begun, or not to its end
};

struct LetterNote {
  std::size_t number = 0;  // in the part
  LoggedLetter letter;
  LetterEnd end = LetterEnd::kInHand;
};

class WorkerQueue {
 public:
  // Letters are in hand for `lease` from the last word of theirs.
  WorkerQueue(server::Connection& connection, std::chrono::seconds lease)
      : connection_(connection), lease_(lease) {}

  std::chrono::seconds lease() const { return lease_; }

  // Takes part; the server knows the worker is there as long as the connection lasts.
  void Join(const std::string& host, int pid, const std::string& version);
  void Leave();
  int worker() const { return worker_; }

  // At most so many letters of one part, of these branches (none: of all that the login sees);
  // first of the part that is given. None where nothing is ready.
  std::optional<ClaimedLetters> Claim(const std::vector<std::string>& branches, RunPart before,
                                      int most);
  RunOrder OrderOf(int run);
  // Runs that need another version of the program, of those that are open.
  std::vector<int> TooNew();

  // Files' names for letters in hand, in the order of the wishes; the series as below the folder
  // of the branch. Empty where the lease is over.
  std::vector<std::string> TakeNames(const ClaimedLetters& claimed,
                                     std::span<const NameWish> wishes);
  // Returns the numbers of the letters that were noted; the others are not this worker's any more.
  // After the last note of a lease what is left of it is ready again.
  std::vector<std::size_t> Note(const ClaimedLetters& claimed, std::span<const LetterNote> notes,
                                bool last);
  // Has the run's letters of the branch left alone for a while.
  void PausePart(RunPart part, const std::string& reason);
  // Gives the letters of lost workers back; how many.
  int LookRound();

 private:
  server::Connection& connection_;
  std::chrono::seconds lease_;
  int worker_ = 0;
};

}  // namespace tenora
