// The size that a window opens with.
#pragma once

#include <QSize>
#include <QWidget>

namespace tenora {

// The usual size, or as much of it as the window's screen has; both in the pixels of widgets.
QSize OpeningSize(const QWidget& window, QSize usual);

}  // namespace tenora
