#include "ui/window/background/background_work.h"

#include <QApplication>
#include <QEvent>
#include <QEventLoop>
#include <QTimer>
#include <atomic>
#include <chrono>
#include <exception>
#include <thread>

#include "ui/window/background/progress_dialog.h"

namespace tenora {
namespace {

constexpr int kShowAfter = 400;  // milliseconds: shorter work needs no window
constexpr std::chrono::milliseconds kReportEvery{40};

// Keeps the user's input from the windows until one of the work's own windows takes it.
class InputStop : public QObject {
 public:
  InputStop() { qApp->installEventFilter(this); }

  bool eventFilter(QObject*, QEvent* event) override {
    if (QApplication::activeModalWidget() != nullptr) return false;
    switch (event->type()) {
      case QEvent::MouseButtonPress:
      case QEvent::MouseButtonRelease:
      case QEvent::MouseButtonDblClick:
      case QEvent::Wheel:
      case QEvent::KeyPress:
      case QEvent::KeyRelease:
      case QEvent::Shortcut:
      case QEvent::ShortcutOverride:
      case QEvent::ContextMenu:
      case QEvent::Drop:
        return true;
      case QEvent::Close:
        event->ignore();
        return true;
      default:
        return false;
    }
  }
};

// Told on the work's thread, shown on the main one, no oftener than an eye can follow.
class ShownProgress : public WorkProgress {
 public:
  explicit ShownProgress(ProgressDialog& dialog) : dialog_(dialog) {}

  void Report(int done, int total, const QString& text) override {
    const auto now = std::chrono::steady_clock::now();
    if (now - last_ < kReportEvery && done != total) return;
    last_ = now;
    QMetaObject::invokeMethod(
        &dialog_, [this, done, total, text] { dialog_.Show(done, total, text); },
        Qt::QueuedConnection);
  }
  bool Cancelled() const override { return cancelled_; }
  void Cancel() { cancelled_ = true; }

 private:
  ProgressDialog& dialog_;
  std::chrono::steady_clock::time_point last_;
  std::atomic<bool> cancelled_ = false;
};

}  // namespace

void RunInBackground(QWidget* parent, const QString& title, const Work& work) {
  ProgressDialog dialog(title, parent);
  dialog.setWindowModality(Qt::ApplicationModal);
  ShownProgress progress(dialog);
  QObject::connect(&dialog, &ProgressDialog::CancelAsked, [&progress] { progress.Cancel(); });

  QEventLoop loop;
  std::exception_ptr raised;
  const InputStop input_stop;
  std::thread worker([&] {
    try {
      work(progress);
    } catch (...) {
      raised = std::current_exception();
    }
    QMetaObject::invokeMethod(&loop, "quit", Qt::QueuedConnection);
  });
  QTimer show;
  QObject::connect(&show, &QTimer::timeout, &dialog, [&] {
    // A question of the work is open: over it, this window would keep the answer from it for good.
    if (QApplication::activeModalWidget() != nullptr) return;
    show.stop();
    dialog.show();
  });
  show.start(kShowAfter);
  loop.exec();
  worker.join();
  if (raised) std::rethrow_exception(raised);
}

}  // namespace tenora
