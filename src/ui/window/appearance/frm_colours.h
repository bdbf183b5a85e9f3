// The three colours of the "Custom" scheme.
#pragma once

#include <QDialog>
#include <QPushButton>

#include "ui/window/appearance/colour_scheme.h"

namespace tenora {

class frmColours : public QDialog {
  Q_OBJECT

 public:
  explicit frmColours(const SchemeColours& colours, QWidget* parent = nullptr);

  const SchemeColours& Colours() const { return colours_; }

 signals:
  // Emitted while the user is choosing, so that the window can preview the colours.
  void Changed();

 private:
  QPushButton* AddColour(const char* name, const QString& caption, QColor& colour);
  static void Paint(QPushButton* button, const QColor& colour);

  SchemeColours colours_;
};

}  // namespace tenora
