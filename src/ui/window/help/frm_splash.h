// The window shown while the program starts.
#pragma once

#include <QLabel>

namespace tenora {

class frmSplash : public QWidget {
  Q_OBJECT

 public:
  explicit frmSplash(QWidget* parent = nullptr);

  // Processes events for one to two seconds, as the start is the time of day rounded to a whole
  // second. Midnight is not handled, deliberately; a click or a key ends the wait at any time.
  void Wait();

  // Both in seconds since midnight.
  static bool IsOver(double start, double now) { return now - start >= 1.5; }

 protected:
  void mousePressEvent(QMouseEvent*) override { dismissed_ = true; }
  void keyPressEvent(QKeyEvent*) override { dismissed_ = true; }
  void paintEvent(QPaintEvent* event) override;

 private:
  bool dismissed_ = false;
};

}  // namespace tenora
