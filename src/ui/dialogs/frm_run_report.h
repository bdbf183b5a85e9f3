// What a run of letters has left to a person: letters held back, without an address, in doubt and
// not made. The user ticks some of them and says what is to be done.
#pragma once

#include <QDialog>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTreeWidget>
#include <optional>
#include <vector>

#include "letters/generation.h"

namespace tenora {

class frmRunReport : public QDialog {
  Q_OBJECT

 public:
  enum class Choice {
    kLeave,
    kOpen,         // the chosen letters
    kSendHeld,     // the chosen held letters as they are, where the run sends its letters
    kPrint,        // the chosen letters without an e-mail address, on paper
    kMakeMissing,  // those that failed or were not begun, and files of all letters
  };

  frmRunReport(const GenerationSummary& summary, Destination destination,
               QWidget* parent = nullptr);

  // Once the dialog is closed.
  Choice choice() const { return choice_; }
  const std::vector<LetterReport>& chosen() const { return chosen_; }

 private:
  using Reports = std::vector<LetterReport>;
  using Result = LetterReport::Result;

  void AddGroup(const QString& title, const Reports& reports, const QString& advice);
  void AddMissing(const GenerationSummary& summary);
  void AddUndone(const GenerationSummary& summary);
  QWidget* MakeButtons(const GenerationSummary& summary, Destination destination);
  // The ticked letters, all or those of one kind.
  Reports Ticked(std::optional<Result> kind = {}) const;
  void ShowReason();
  void ShowTicked();
  void Choose(Choice choice, Reports chosen);

  Choice choice_ = Choice::kLeave;
  Reports chosen_, listed_;
  QTreeWidget* list_;
  QPlainTextEdit* reason_;
  QPushButton* open_ = nullptr;
  QPushButton* send_ = nullptr;
  QPushButton* print_ = nullptr;
};

}  // namespace tenora
