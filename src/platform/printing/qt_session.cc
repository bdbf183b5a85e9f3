#include "platform/printing/qt_session.h"

#include <QGuiApplication>
#include <mutex>

#include "platform/runtime/error.h"

namespace tenora::printing {
namespace {

// Printing shows no window: the offscreen platform starts faster than a real one and cannot fail
// on a display that is named but unreachable.
struct OffscreenApplication {
  char name[7] = "tenora";
  char option[10] = "-platform";
  char platform[10] = "offscreen";
  char* arguments[4] = {name, option, platform, nullptr};
  int count = 3;
  QGuiApplication application{count, arguments};
};

}  // namespace

std::shared_ptr<void> HoldQtApplication() {
  // Qt allows one application in a process, so its holder is the process's too.
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
