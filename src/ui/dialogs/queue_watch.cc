#include "ui/dialogs/queue_watch.h"

#include <algorithm>
#include <system_error>
#include <utility>

#include "letters/branch_folders.h"
#include "platform/runtime/error.h"

namespace tenora {
namespace {

constexpr std::chrono::seconds kStatementLimit{30};
constexpr std::chrono::seconds kSilence{15};

bool GoesOn(const QueuedRun& run) { return run.state == "open" || run.state == "paused"; }

// The file's name comes from the server: it is looked for below the branch's folder, nowhere else.
std::filesystem::path FileOnDisk(const std::filesystem::path& data_folder,
                                 const OpenLetter& letter) {
  const std::filesystem::path file = letter.file;
  const bool leads_out =
      file.has_root_path() || std::find(file.begin(), file.end(), "..") != file.end();
  if (letter.file.empty() || leads_out) return {};
  std::filesystem::path path = BranchFolder(data_folder, letter.branch) / file;
  std::error_code error;
  return std::filesystem::is_regular_file(path, error) ? path : std::filesystem::path();
}

}  // namespace

QueueWatch::QueueWatch(std::string service, std::filesystem::path data_folder,
                       std::chrono::milliseconds every)
    : service_(std::move(service)), data_folder_(std::move(data_folder)), every_(every) {}

QueueWatch::~QueueWatch() {
  thread_.request_stop();
  if (thread_.joinable()) thread_.join();
}

void QueueWatch::Start() {
  thread_ = std::jthread([this](const std::stop_token& stop) { Watch(stop); });
}

void QueueWatch::LookAt(std::optional<int> run) {
  const std::lock_guard lock(mutex_);
  if (run_ == run) return;
  run_ = run;
  look_now_ = true;
  asked_.notify_one();
}

void QueueWatch::Do(Action action) {
  const std::lock_guard lock(mutex_);
  actions_.push_back(std::move(action));
  look_now_ = true;
  asked_.notify_one();
}

void QueueWatch::Watch(const std::stop_token& stop) {
  std::unique_ptr<server::Connection> connection;
  while (!stop.stop_requested()) {
    LookOnce(connection, stop);
    std::unique_lock lock(mutex_);
    asked_.wait_for(lock, stop, every_, [this] { return look_now_ || !actions_.empty(); });
  }
}

void QueueWatch::LookOnce(std::unique_ptr<server::Connection>& connection,
                          const std::stop_token& stop) {
  std::optional<int> run;
  Action action;
  {
    const std::lock_guard lock(mutex_);
    run = run_;
    look_now_ = false;
    if (!actions_.empty()) {
      action = std::move(actions_.front());
      actions_.pop_front();
    }
  }
  bool acting = action != nullptr;
  try {
    if (connection == nullptr || connection->IsBroken()) {
      connection.reset();
      connection = server::Connection::Open(
          service_, kStatementLimit,
          {.silence = kSilence, .stop_asked = [&stop] { return stop.stop_requested(); }});
      LetterQueue(*connection).Require();
    }
    LetterQueue queue(*connection);
    if (acting) {
      queue.Require(QueueUse::kRuns);
      Tell([this, told = action(queue)] { emit Done(told); });
      acting = false;
    }
    Tell([this, view = Look(queue, run)] { emit Seen(view); });
  } catch (const RuntimeError& error) {
    if (stop.stop_requested()) return;
    // A connection that may look refuses an action without being worse for it.
    if (!acting) connection.reset();
    Tell([this, problem = QString::fromStdString(std::string(error.description())), acting] {
      acting ? emit Refused(problem) : emit Lost(problem);
    });
    if (!acting) return;
    const std::lock_guard lock(mutex_);
    look_now_ = true;
  }
}

std::shared_ptr<const QueueView> QueueWatch::Look(LetterQueue& queue,
                                                  std::optional<int> run) const {
  auto view = std::make_shared<QueueView>();
  view->runs = queue.Runs();
  std::stable_partition(view->runs.begin(), view->runs.end(), GoesOn);
  view->workers = queue.Workers();
  view->run = run;
  if (!run) return view;
  const auto letters = queue.OpenLetters(*run, static_cast<int>(QueueView::kMostLetters) + 1);
  view->more_letters = letters.size() > QueueView::kMostLetters;
  for (const OpenLetter& letter : letters) {
    if (view->letters.size() == QueueView::kMostLetters) break;
    view->letters.push_back({letter, FileOnDisk(data_folder_, letter)});
  }
  return view;
}

void QueueWatch::Tell(std::function<void()> signal) {
  QMetaObject::invokeMethod(this, std::move(signal), Qt::QueuedConnection);
}

}  // namespace tenora
