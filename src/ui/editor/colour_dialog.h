// The choice of a colour.
#pragma once

#include <QColor>
#include <QString>
#include <QWidget>

namespace tenora {

// Invalid when cancelled. Scrolls on a screen that is lower than Qt's dialog.
QColor AskColour(QWidget* parent, const QColor& shown, const QString& title);

}  // namespace tenora
