#include "ui/window/recovery/abrupt_end.h"

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <QGuiApplication>
#include <QSessionManager>
#include <QThread>
#include <QWindow>
#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <utility>

#include "platform/runtime/scratch_cleanup.h"

namespace tenora {
namespace {

constexpr std::array kSignals{SIGINT, SIGTERM, SIGHUP};

// What signal and message handlers can reach: neither gets anything passed.
std::atomic<int> pipe_of_signals = -1;
std::atomic<const std::function<void()>*> before_lost_display = nullptr;
std::array<struct sigaction, kSignals.size()> actions_before;
QtMessageHandler messages_before = nullptr;

void Raise(int signal) {
  RemoveOpenScratchFiles();
  ::signal(signal, SIG_DFL);
  ::raise(signal);
}

void PassOn(int signal) {
  const int reason = errno;
  const int pipe = pipe_of_signals.exchange(-1);
  const char number = static_cast<char>(signal);
  if (pipe < 0 || ::write(pipe, &number, 1) != 1) Raise(signal);
  errno = reason;
}

// Qt says so and calls exit, at whose time nothing of a letter may be touched any more.
void WatchForLostDisplay(QtMsgType type, const QMessageLogContext& context,
                         const QString& message) {
  if (message.contains(QLatin1String("connection broke"))) {
    const auto* before_end = before_lost_display.exchange(nullptr);
    if (before_end != nullptr && QThread::currentThread() == qApp->thread()) (*before_end)();
  }
  if (messages_before != nullptr) messages_before(type, context, message);
}

}  // namespace

AbruptEnd::AbruptEnd(std::function<void()> before_end) : before_end_(std::move(before_end)) {
  connect(qGuiApp, &QGuiApplication::commitDataRequest, this, [this](QSessionManager&) {
    before_end_();
    qGuiApp->installEventFilter(this);
  });
  before_lost_display = &before_end_;
  messages_before = qInstallMessageHandler(WatchForLostDisplay);
  if (::pipe2(signals_, O_CLOEXEC | O_NONBLOCK) != 0) return;
  arrived_ = new QSocketNotifier(signals_[0], QSocketNotifier::Read, this);
  connect(arrived_, &QSocketNotifier::activated, this, &AbruptEnd::EndBySignal);
  pipe_of_signals = signals_[1];
  for (std::size_t i = 0; i < kSignals.size(); ++i) {
    ::sigaction(kSignals[i], nullptr, &actions_before[i]);
    if (actions_before[i].sa_handler == SIG_IGN) continue;
    struct sigaction pass_on {};
    pass_on.sa_handler = PassOn;
    pass_on.sa_flags = SA_RESTART;
    ::sigaction(kSignals[i], &pass_on, nullptr);
  }
}

AbruptEnd::~AbruptEnd() {
  before_lost_display = nullptr;
  qInstallMessageHandler(messages_before);
  if (arrived_ == nullptr) return;
  for (std::size_t i = 0; i < kSignals.size(); ++i) {
    ::sigaction(kSignals[i], &actions_before[i], nullptr);
  }
  pipe_of_signals = -1;
  delete arrived_;
  for (const int end : signals_) ::close(end);
}

// A session manager ends its programs with Qt's event for quitting, which would close the windows:
// the log-out would wait for somebody to answer whether letters are to be saved, which are kept.
// Where the log-out was cancelled, the event comes once the last window is closed.
bool AbruptEnd::eventFilter(QObject* object, QEvent* event) {
  if (object == qGuiApp && event->type() == QEvent::Quit) {
    const QWindowList windows = QGuiApplication::topLevelWindows();
    const auto visible = [](const QWindow* window) { return window->isVisible(); };
    if (std::any_of(windows.begin(), windows.end(), visible)) {
      before_end_();
      Raise(SIGTERM);
    }
  }
  return QObject::eventFilter(object, event);
}

void AbruptEnd::EndBySignal() {
  char number = 0;
  if (::read(signals_[0], &number, 1) != 1) return;
  before_end_();
  Raise(number);
}

}  // namespace tenora
