// One misspelt word, and what to do with it.
#pragma once

#include <QDialog>
#include <string>

#include "output/spell_checker.h"
#include "platform/spelling/spelling.h"

class QLineEdit;
class QListWidget;
class QVBoxLayout;

namespace tenora {

class frmSpellCheck : public QDialog {
  Q_OBJECT

 public:
  frmSpellCheck(const std::string& bad_word, spelling::Speller& speller, Dialogs& dialogs,
                QWidget* parent = nullptr);

  // Valid after the dialog has closed; Escape stops the check.
  const SpellChecker::Choice& Chosen() const { return choice_; }

 private:
  void MakeButtons(QVBoxLayout* column);
  void Change();
  void Ignore();
  void IgnoreAll();
  void Add();
  QString Suggestion() const;

  std::string bad_word_;
  spelling::Speller& speller_;
  Dialogs& dialogs_;
  QListWidget* suggestions_;
  QLineEdit* replace_;
  SpellChecker::Choice choice_{.replacement = {}, .stop = true};
};

}  // namespace tenora
