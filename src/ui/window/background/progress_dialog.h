// The progress of long work: a bar, what is being done, and a way to stop it.
#pragma once

#include <QDialog>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>

namespace tenora {

class ProgressDialog : public QDialog {
  Q_OBJECT

 public:
  ProgressDialog(const QString& title, QWidget* parent);

  // `total` 0 shows a bar that only moves.
  void Show(int done, int total, const QString& text);

 signals:
  void CancelAsked();

 protected:
  // Escape and the close button ask to stop; the window goes when the work has stopped.
  void reject() override;

 private:
  QLabel* lblProgress_;
  QProgressBar* picProgress_;
  QPushButton* cancel_;
};

}  // namespace tenora
