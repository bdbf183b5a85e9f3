// The panel below the letters that finds and replaces text in the letter in front.
#pragma once

#include <QCheckBox>
#include <QFrame>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>

#include "ui/window/letter/letter_window.h"

namespace tenora {

class FindPanel : public QFrame {
  Q_OBJECT

 public:
  // Hidden until Open.
  explicit FindPanel(Dialogs& dialogs, QWidget* parent = nullptr);

  // The letter in front; null if none is open, which closes the panel.
  void SetLetter(LetterWindow* letter);
  // Shows the panel for the selected words or, without any, the letter's last search. A selection
  // of several lines is what is searched.
  void Open();
  // The letter has been searched for this text without the panel.
  void SetText(const QString& text) { text_->setText(text); }
  void FindNext() { Find(Direction::kForward); }
  // While the panel is hidden, for the letter's last search and no further than its start.
  void FindPrevious();
  // Hands the keyboard to the letter.
  void Leave();

 signals:
  void Opened();

 protected:
  void keyPressEvent(QKeyEvent* event) override;
  bool eventFilter(QObject* object, QEvent* event) override;

 private:
  using Direction = LetterSearch::Direction;

  void Build();
  void BeginWith(const QString& selected);
  LetterSearch::Wanted Wanted() const;
  void Find(Direction direction);
  void Replace();
  void ReplaceAll();
  void Limit(bool limit);
  void ShowNotFound();
  void Tell(const QString& message);
  void ForgetMessage();
  void ShowWhatApplies();

  Dialogs& dialogs_;
  QPointer<LetterWindow> letter_;
  QLineEdit *text_, *with_;
  QCheckBox *match_case_, *whole_words_, *in_selection_;
  QPushButton *next_, *previous_, *replace_, *replace_all_;
  QLabel* message_;
  QMetaObject::Connection text_change_;
  int told_revision_ = 0;  // of the text that the message is about
};

}  // namespace tenora
