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

constexpr int kShowAfter = 400;  // milliseconds: shorter work shows no progress
constexpr std::chrono::milliseconds kReportEvery{40};

// Blocks user input to all windows, except while a modal dialog of the work is open.
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

// Reports from the work's thread to the dialog on the main one, at a limited rate.
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
    // The work is asking a question; a modal progress window on top would block the answer.
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
