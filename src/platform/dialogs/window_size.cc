#include "platform/dialogs/window_size.h"

#include <QScreen>

namespace tenora {
namespace {

constexpr QSize kFrame(16, 48);  // of window managers, about

}  // namespace

QSize OpeningSize(const QWidget& window, QSize usual) {
  return usual.boundedTo(window.screen()->availableSize() - kFrame);
}

}  // namespace tenora
