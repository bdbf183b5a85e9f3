// Watches the queue of letters on a server beside the windows, and does there what somebody asks:
// on a thread of its own, over a connection of its own.
#pragma once

#include <QObject>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <stop_token>
#include <string>
#include <thread>
#include <vector>

#include "letters/letter_queue.h"

namespace tenora {

// How a queue stood at one moment.
struct QueueView {
  struct Letter {
    OpenLetter letter;
    std::filesystem::path file;  // empty: it is not on this disk
  };
  static constexpr std::size_t kMostLetters = 500;

  std::vector<QueuedRun> runs;  // those that go on or are paused first, each kind newest first
  std::vector<PresentWorker> workers;
  std::optional<int> run;       // whose letters these are
  std::vector<Letter> letters;  // at most kMostLetters
  bool more_letters = false;
};

class QueueWatch : public QObject {
  Q_OBJECT

 public:
  // Done on the thread; returns what is told of it.
  using Action = std::function<QString(LetterQueue& queue)>;

  // `service` is libpq's; the letters of each branch have a folder in `data_folder`.
  QueueWatch(std::string service, std::filesystem::path data_folder,
             std::chrono::milliseconds every = std::chrono::seconds(2));
  // Waits until the thread has stopped, which it does soon, also where the server is silent.
  ~QueueWatch() override;

  // Begins to look. From then on the signals come, on the thread of this object.
  void Start();
  // Looks at the letters of this run too, at once.
  void LookAt(std::optional<int> run);
  // Actions are done in their order; each is followed by a look.
  void Do(Action action);

 signals:
  void Seen(std::shared_ptr<const tenora::QueueView> view);
  // The server cannot be asked at the moment.
  void Lost(const QString& problem);
  void Done(const QString& told);
  // An action was not done, or nobody knows whether it was.
  void Refused(const QString& problem);

 private:
  void Watch(const std::stop_token& stop);
  // One action, if there is one, and a look.
  void LookOnce(std::unique_ptr<server::Connection>& connection, const std::stop_token& stop);
  std::shared_ptr<const QueueView> Look(LetterQueue& queue, std::optional<int> run) const;
  // On the thread of this object.
  void Tell(std::function<void()> signal);

  const std::string service_;
  const std::filesystem::path data_folder_;
  const std::chrono::milliseconds every_;
  std::mutex mutex_;
  std::condition_variable_any asked_;
  std::optional<int> run_;
  std::deque<Action> actions_;
  bool look_now_ = false;
  // Last: it ends before what it works on.
  std::jthread thread_;
};

}  // namespace tenora
