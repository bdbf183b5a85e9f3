// The progress of a long task: a bar, the current step and a button to cancel.
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

  // `total` 0 shows an indeterminate bar.
  void Show(int done, int total, const QString& text);

 signals:
  void CancelAsked();

 protected:
  // Escape and the close button request cancellation; the dialog closes when the task has stopped.
  void reject() override;

 private:
  QLabel* lblProgress_;
  QProgressBar* picProgress_;
  QPushButton* cancel_;
};

}  // namespace tenora
