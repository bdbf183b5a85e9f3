#include "letters/generate/merge_ahead.h"

#include <algorithm>
#include <iterator>
#include <string_view>
#include <system_error>
#include <utility>

#include "merge/merge_codes.h"
#include "merge/prompts.h"
#include "platform/dialogs/silent_dialogs.h"
#include "platform/locale/locale.h"
#include "platform/query/engine.h"
#include "platform/richtext/rich_text_box.h"
#include "platform/runtime/error.h"

namespace tenora {
namespace {

// For fewer, starting threads and reading the tables takes longer than merging.
constexpr std::size_t kFewestLetters = 16;
constexpr std::size_t kWaitingPerThread = 16;
// Each thread has tables of its own in memory, and the run cannot save what more would merge.
constexpr unsigned kMostThreads = 4;
// Letters with large pictures wait only up to this size.
constexpr std::size_t kMostWaitingBytes = std::size_t{64} << 20;

// Whether letters of this template ask something, or may: a question that holds a code is known
// only when the code is filled.
bool MayAsk(const std::string& source, const PromptAnswers& answers) {
  RichTextBox box;
  box.SetTextRTF(source);
  return std::ranges::any_of(PromptMessages(box), [&](const std::string& message) {
    return message.find(kCodeStart) != std::string::npos || !answers.contains(message);
  });
}

bool TakesNumbers(std::string_view source) {
  return source.find(kBuildingReceiptNumber) != std::string_view::npos;
}

// A value may hold the code of a receipt number, or a question.
bool IsFinished(const PromptOutcome& prompts, const MergeNotes& notes) {
  if (prompts.cancelled > 0 || prompts.stopped || !prompts.left.empty()) return false;
  return std::ranges::none_of(
      notes.All(), [](const MergeNote& note) { return note.fact == MergeFact::kNumberLeft; });
}

// Letters show the time in minutes.
bool SameMinute(Date left, Date right) {
  return left.DayNumber() == right.DayNumber() &&
         left.SecondOfDay() / 60 == right.SecondOfDay() / 60;
}

}  // namespace

// The session and the letter of one thread, over the caches as the run has them. Of the run's own
// session only what does not change is used, and the registry, which several may read at once.
class MergeAhead::Machine {
 public:
  // Called on the thread of `run`.
  Machine(const Session& run, const std::filesystem::path& database, const Job& job)
      : workspace_(query::Workspace::Create(
            [&clock = run.platform.clock] { return clock.Now(); }, query::kTimeLimit,
            [&locale = run.platform.locale](Date date) { return locale.ShortDate(date); })),
        session_({run.platform.clock, dialogs_, run.platform.locale, run.platform.registry,
                  *workspace_, run.platform.program_folder, run.platform.state_folder},
                 DatabaseUse::kLook),
        one_file_(session_.database, database),
        job_(job),
        maker_(session_, job.request, job.bad_future_date) {
    session_.caches = run.caches;
    session_.as_at_date = run.as_at_date;
    session_.cheque_word = run.cheque_word;
  }

  std::optional<MergedLetter> Make(std::size_t place) {
    try {
      std::optional<MergedLetter> made = TryMake(place);
      if (!dialogs_.TakeMessages().empty()) made.reset();
      return made;
    } catch (...) {
      // The run meets it again, and says what is to be said.
      dialogs_.TakeMessages();
      return std::nullopt;
    }
  }

 private:
  std::optional<MergedLetter> TryMake(std::size_t place) {
    if (!std::exchange(template_used_, true)) maker_.UseTemplate(job_.template_source);
    PromptOutcome prompts;
    frmLetter& letter = maker_.Make(job_.recipients[place], job_.request.answers, {}, &prompts);
    if (!IsFinished(prompts, letter.members().Notes)) return std::nullopt;
    return MergedLetter{letter.rtfLetter.TextRTF(), letter.members(), letter.Check(),
                        job_.names.NameOf({session_, letter.members(), letter.rtfLetter},
                                          job_.numbers[place], job_.count)};
  }

  SilentDialogs dialogs_;
  const std::unique_ptr<query::Workspace> workspace_;
  Session session_;
  const Database::OneFile one_file_;
  const Job& job_;
  LetterMaker maker_;
  bool template_used_ = false;
};

std::unique_ptr<MergeAhead> MergeAhead::Start(Session& session, const RunLedger& log,
                                              LetterMaker& maker, const LetterNames& names,
                                              std::vector<std::size_t> numbers, unsigned threads) {
  if (threads == 0) threads = std::min(std::thread::hardware_concurrency(), kMostThreads);
  if (threads < 2 || numbers.size() < kFewestLetters ||
      log.request().destination == Destination::kEmail) {
    return nullptr;
  }
  const access::FileState state = access::ReadFileState(session.database.LastOpened());
  if (state == access::FileState() || !access::IsSettled(state)) return nullptr;
  Job job{log.request(), {}, maker.bad_future_date(), names, log.count(), std::move(numbers), {}};
  job.request.recipients.clear();
  try {
    job.template_source = maker.TemplateSource();
  } catch (...) {
    // Each letter that needs the template says so.
    return nullptr;
  }
  if (MayAsk(job.template_source, job.request.answers) || TakesNumbers(job.template_source)) {
    return nullptr;
  }
  std::ranges::transform(job.numbers, std::back_inserter(job.recipients),
                         [&](std::size_t number) { return log.recipient(number); });
  return std::unique_ptr<MergeAhead>(new MergeAhead(session, std::move(job), state, threads));
}

MergeAhead::MergeAhead(Session& session, Job job, const access::FileState& state, unsigned threads)
    : clock_(session.platform.clock),
      job_(std::move(job)),
      database_(session.database.LastOpened()),
      state_(state),
      slots_(threads * kWaitingPerThread) {
  for (unsigned i = 0; i < threads; ++i) {
    machines_.push_back(std::make_unique<Machine>(session, database_, job_));
    try {
      threads_.emplace_back([this, &own = *machines_.back()] { Work(own); });
    } catch (const std::system_error&) {
      // The system has no thread to spare: the others do it.
      break;
    }
  }
  if (threads_.empty()) stopping_ = true;
}

MergeAhead::~MergeAhead() {
  Stop();
  for (std::thread& thread : threads_) thread.join();
}

void MergeAhead::Stop() {
  {
    const std::lock_guard lock(mutex_);
    stopping_ = true;
  }
  taken_one_.notify_all();
}

std::optional<MergedLetter> MergeAhead::Take(std::size_t number) {
  const auto found = std::ranges::lower_bound(job_.numbers, number);
  const auto place = static_cast<std::size_t>(found - job_.numbers.begin());
  if (stopping_ || place < taken_ || found == job_.numbers.end() || *found != number) {
    return std::nullopt;
  }
  Slot taken = TakeFrom(place);
  // Of a state that has passed none can come back. Afterwards the run sees what has changed, and
  // the threads could mix it with what they have kept.
  if (access::ReadFileState(database_) != state_) {
    Stop();
    return std::nullopt;
  }
  if (!SameMinute(taken.begun, clock_.Now())) return std::nullopt;
  return std::move(taken.letter);
}

MergeAhead::Slot MergeAhead::TakeFrom(std::size_t place) {
  std::unique_lock lock(mutex_);
  for (; taken_ < place; ++taken_) {
    Slot left = std::exchange(SlotOf(taken_), {});
    if (left.letter) bytes_ -= left.letter->source.size();
  }
  next_ = std::max(next_, place);
  taken_one_.notify_all();
  merged_.wait(lock, [&] { return SlotOf(place).done; });
  Slot slot = std::exchange(SlotOf(place), {});
  if (slot.letter) bytes_ -= slot.letter->source.size();
  ++taken_;
  lock.unlock();
  taken_one_.notify_all();
  return slot;
}

// The mutex is held.
bool MergeAhead::MayBegin() const {
  return next_ < taken_ + slots_.size() && (bytes_ < kMostWaitingBytes || next_ == taken_);
}

void MergeAhead::Work(Machine& machine) {
  std::unique_lock lock(mutex_);
  for (;;) {
    taken_one_.wait(lock, [&] { return stopping_ || next_ == job_.numbers.size() || MayBegin(); });
    if (stopping_ || next_ == job_.numbers.size()) return;
    const std::size_t place = next_++;
    lock.unlock();
    Slot slot{.done = true, .letter = std::nullopt, .begun = clock_.Now()};
    slot.letter = machine.Make(place);
    lock.lock();
    // The run may have gone on without it.
    if (place < taken_) continue;
    if (slot.letter) bytes_ += slot.letter->source.size();
    SlotOf(place) = std::move(slot);
    if (place == taken_) merged_.notify_one();
  }
}

}  // namespace tenora
