#include "letters/queue/queue_ledger.h"

#include <time.h>

#include <algorithm>
#include <utility>

namespace tenora {
namespace {

// Runs on while the process is stopped and while the machine sleeps.
std::chrono::nanoseconds SinceStart() {
  timespec now{};
  ::clock_gettime(CLOCK_BOOTTIME, &now);
  return std::chrono::seconds(now.tv_sec) + std::chrono::nanoseconds(now.tv_nsec);
}

}  // namespace

QueueLedger::QueueLedger(WorkerQueue& queue, ClaimedLetters claimed,
                         const GenerationRequest& request, const std::filesystem::path& folder)
    : RunLedger(folder),
      queue_(queue),
      claimed_(std::move(claimed)),
      lease_end_(SinceStart() + queue.lease()) {
  run_.request = request;
  run_.request.recipients = claimed_.recipients;
  run_.letters = claimed_.letters;
}

bool QueueLedger::StillOurs() const { return SinceStart() < lease_end_; }

void QueueLedger::Lose(const std::string& why) {
  lease_end_ = {};
  throw LedgerLost(error_number::kPermissionDenied, why);
}

template <typename Ask>
auto QueueLedger::Asking(Ask&& ask) {
  const std::chrono::nanoseconds lease_end = SinceStart() + queue_.lease();
  try {
    auto answer = ask();
    lease_end_ = lease_end;
    return answer;
  } catch (const server::ServerError& error) {
    // Whatever it is, what becomes of the letters cannot be noted.
    throw LedgerLost(error.number(), std::string(error.description()));
  }
}

std::vector<std::filesystem::path> QueueLedger::TakeNames(std::span<const NameWish> wishes) {
  if (wishes.empty()) return {};
  std::vector<NameWish> below(wishes.begin(), wishes.end());
  for (NameWish& wish : below) {
    wish.number = claimed_.numbers[wish.number - 1];
    wish.series = wish.series.lexically_relative(data_folder());
  }
  const std::vector<std::string> names = Asking([&] { return queue_.TakeNames(claimed_, below); });
  if (names.size() != wishes.size()) Lose("the letters were given to another worker");
  std::vector<std::filesystem::path> files;
  for (std::size_t i = 0; i < names.size(); ++i) {
    files.push_back(data_folder() / names[i]);
    NoteFile(wishes[i].number, files.back());
    RunLedger::Note(wishes[i].number, wishes[i].state, wishes[i].fingerprint);
    noted_.erase(wishes[i].number);
  }
  return files;
}

void QueueLedger::LetterNoted(std::size_t number) {
  if (!ended_.contains(number)) noted_.insert(number);
}

LetterEnd QueueLedger::EndOf(std::size_t number) const {
  const LetterState state = letter(number).state;
  if (IsDone(state, request().destination)) return LetterEnd::kOut;
  switch (state) {
    case LetterState::kWaiting:
      return LetterEnd::kBack;
    case LetterState::kFailed:
      return given_up_.contains(number) ? LetterEnd::kOut : LetterEnd::kAgain;
    case LetterState::kHeld:
    case LetterState::kNoAddress:
      return LetterEnd::kOut;
    default:
      return LetterEnd::kInHand;
  }
}

LetterNote QueueLedger::NoteOf(std::size_t number) const {
  return {claimed_.numbers[number - 1], letter(number), EndOf(number)};
}

void QueueLedger::Flush(bool last) {
  if (noted_.empty() && !last) return;
  std::vector<LetterNote> notes;
  for (const std::size_t number : noted_) notes.push_back(NoteOf(number));
  const auto taken = Asking([&] { return queue_.Note(claimed_, notes, last); });
  if (taken.size() != notes.size()) Lose("the letters were given to another worker");
  for (const std::size_t number : std::exchange(noted_, {})) {
    if (EndOf(number) != LetterEnd::kInHand) ended_.insert(number);
  }
}

std::vector<LetterNote> QueueLedger::Unsettled() const {
  std::vector<LetterNote> notes;
  for (const std::size_t number : noted_) {
    LetterNote note = NoteOf(number);
    // It was to be handed over, and was not.
    if (note.letter.state == LetterState::kSaved) note.end = LetterEnd::kBack;
    if (note.end != LetterEnd::kInHand) notes.push_back(std::move(note));
  }
  return notes;
}

}  // namespace tenora
