// The question of one letter of many, with how far the run has come and ways to answer for all of
// its letters or to end it.
#pragma once

#include <QCheckBox>
#include <QDialog>
#include <QLineEdit>

#include "platform/dialogs/dialogs.h"

namespace tenora {

class LetterQuestionBox : public QDialog {
  Q_OBJECT

 public:
  LetterQuestionBox(const LetterQuestion& question, QWidget* parent);

  // Once the box is closed.
  LetterAnswer Given() const;

 protected:
  // Cancel, Escape and the close button may mean this answer or the whole run: the user is asked.
  void reject() override;

 private:
  void StopRun();

  const bool in_run_;
  bool stopped_ = false;
  QLineEdit* answer_ = nullptr;
  QCheckBox* for_all_;
};

}  // namespace tenora
