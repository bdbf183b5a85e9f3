// The queue of letters on a server, from which workers take them: putting runs there, and what
// somebody does about runs that are there. docs/generating.md describes it. All functions raise
// server::ServerError.
#pragma once

#include <cstddef>
#include <cstdint>
#include <future>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "letters/generation.h"
#include "letters/generation_request.h"
#include "platform/runtime/date.h"
#include "platform/server/server_connection.h"
#include "rental/session.h"

namespace tenora {

// What the present program writes and reads. A run names the version that its workers need.
inline constexpr int kQueueVersion = 1;

// What is to be put into the queue of the letters in one branch.
struct QueueRequest {
  GenerationRequest request;  // with the recipients
  std::string template_source;
};
// What the template asks, each question once: to be answered before its letters are queued, since
// nobody is there to answer a worker. Raises what Generation::Run raises for a template that cannot
// be read, and 5 for a question that is another one for each letter.
std::vector<std::string> QuestionsBeforeQueue(Session& session, const GenerationRequest& request);
// Loads the data of the session's branch, fills the request's recipients by `choose`, and looks for
// what a worker could not do: ask something, issue receipt numbers that the file issues, send by a
// mail program. Raises what says so, and what Generation::Run raises before anything is made.
QueueRequest PrepareForQueue(Session& session, GenerationRequest request,
                             const ChooseRecipients& choose);

// A run that is being put into the queue. Nobody sees it before Open.
class NewQueuedRun {
 public:
  // The request's recipients do not count, nor its database. `as_of` is today for every worker.
  NewQueuedRun(server::Connection& connection, const GenerationRequest& request,
               const std::string& template_source, Date as_of);
  NewQueuedRun(const NewQueuedRun&) = delete;
  NewQueuedRun& operator=(const NewQueuedRun&) = delete;
  // Without Open nothing is left of it.
  ~NewQueuedRun();

  int id() const { return id_; }
  // Letters to recipients in a branch, in their order, behind those that were added before. They
  // are sent while the caller reads the next branch; what goes wrong is raised by the next call of
  // Add or Open, with the branch's name. Nobody else uses the connection meanwhile.
  void Add(const std::string& branch, std::vector<Recipient> recipients);
  // From now on workers take them.
  void Open();

 private:
  void Send(const std::string& branch, std::span<const Recipient> recipients);
  void AwaitSent();

  server::Connection& connection_;
  int id_ = 0;
  bool open_ = false;
  std::future<void> sending_;
};

// How the letters of a run and branch, or of all branches, stand.
struct QueueCounts {
  std::int64_t letters = 0, ready = 0, in_hand = 0;
  std::int64_t later = 0;  // failed, and to be tried again
  std::int64_t done = 0, held = 0, no_address = 0, failed = 0, in_doubt = 0, cancelled = 0;
  double per_second = 0;  // done, of late

  std::int64_t Left() const { return ready + in_hand + later; }
  // Seconds until they are done at this rate; none where nothing moves.
  std::optional<std::int64_t> SecondsLeft() const;
  QueueCounts& operator+=(const QueueCounts& other);
};

struct QueuedPart {
  std::string branch;
  QueueCounts counts;
  std::string paused_until;  // "08:10:30"; empty: it is not paused
  std::string reason;        // why it is
};

struct QueuedRun {
  int id = 0;
  std::string state;  // "open", "paused", "cancelled" or "ended"
  std::string asked_by, asked;
  std::string template_kind, template_name, destination;
  int needs_version = 0;
  std::vector<QueuedPart> parts;  // of the branches that the login sees, by name

  QueueCounts Total() const;
};

struct PresentWorker {
  int id = 0;
  std::string host, version;
  int pid = 0;
  std::string started;
  std::int64_t seconds_since_seen = 0;
  std::int64_t letters_in_hand = 0;
  std::string branch;  // whose letters it has in hand; empty for none
  // False of one that was lost, and not yet looked for by another.
  bool connected = false;
};

// A letter that is not simply done or to be done.
struct OpenLetter {
  std::string branch;
  int number = 0;
  std::string name, code;
  std::string standing;  // "failed", "later", "held", "in doubt" or "no address"
  std::string detail, file;
};

// What a login is about to do with the queue: look at it, decide on runs, take letters.
enum class QueueUse { kLook, kRuns, kLetters };

class LetterQueue {
 public:
  explicit LetterQueue(server::Connection& connection) : connection_(connection) {}

  // Raises 3146 where the server's database has no queue or one of another version, or the login
  // has not the role for this.
  void Require(QueueUse use = QueueUse::kLook);

  // Those the login sees, newest first; `only` one of them where it is given. Ended and cancelled
  // ones are among them.
  std::vector<QueuedRun> Runs(std::optional<int> only = std::nullopt);
  std::vector<PresentWorker> Workers();
  // Those in doubt first, then failed, held and other ones, each in the order of the run; at most
  // so many.
  std::vector<OpenLetter> OpenLetters(int run, int most);

  // False where it was paused, or cancelled, already.
  bool Pause(int run);
  bool Cancel(int run);
  // How many letters that failed, are held or had no address are looked at again.
  int Resume(int run, bool send_held);
  // What has become of a letter in doubt; false where it is not.
  bool ClearDoubt(int run, const std::string& branch, int number, bool arrived);
  void Remove(int run);

 private:
  server::Connection& connection_;
};

}  // namespace tenora
