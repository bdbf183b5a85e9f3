#include "platform/printing/qt_application.h"

#include <QGuiApplication>
#include <cstdio>
#include <mutex>
#include <optional>

#include "platform/runtime/error.h"

namespace tenora::printing {
namespace {

// Printing shows no window: the offscreen platform starts faster than a real one and cannot fail
// on a display that is named but unreachable.
class OffscreenApplication {
 public:
  OffscreenApplication()
      // Qt's warnings about missing run-time folders, corrupt pictures and missing fonts mean
      // nothing to the user, who sees the printed page.
      : handler_before_(qInstallMessageHandler(
            [](QtMsgType type, const QMessageLogContext&, const QString& message) {
              if (type == QtFatalMsg) std::fputs(qPrintable(message), stderr);
            })) {
    application_.emplace(count_, arguments_);
  }
  OffscreenApplication(const OffscreenApplication&) = delete;
  OffscreenApplication& operator=(const OffscreenApplication&) = delete;
  ~OffscreenApplication() {
    application_.reset();
    qInstallMessageHandler(handler_before_);
  }

 private:
  QtMessageHandler handler_before_;
  char name_[7] = "tenora";
  char option_[10] = "-platform";
  char platform_[10] = "offscreen";
  char* arguments_[4] = {name_, option_, platform_, nullptr};
  int count_ = 3;
  std::optional<QGuiApplication> application_;
};

}  // namespace

std::shared_ptr<void> HoldQtApplication() {
  // Qt allows one application per process, hence the process-wide state.
  static std::mutex mutex;
  static std::weak_ptr<OffscreenApplication> current;
  const std::lock_guard lock(mutex);
  if (auto held = current.lock()) return held;
  if (QCoreApplication::instance() != nullptr) {
    if (qobject_cast<QGuiApplication*>(QCoreApplication::instance()) != nullptr) return nullptr;
    throw StandardError(error_number::kPrinterError, "the Qt application has no graphics");
  }
  auto made = std::make_shared<OffscreenApplication>();
  current = made;
  return made;
}

}  // namespace tenora::printing
