// One open letter or template in the main window: a frmLetter and the editor that shows it.
#pragma once

#include <QWidget>

#include "letters/frm_letter.h"
#include "ui/editor/letter_view.h"

namespace tenora {

class LetterWindow : public QWidget {
  Q_OBJECT

 public:
  explicit LetterWindow(Session& session, QWidget* parent = nullptr);
  ~LetterWindow() override;

  frmLetter& letter() { return letter_; }
  LetterView& view() { return *view_; }
  LetterEditor& editor() { return view_->editor(); }
  // Shows what the letter holds; after loading and after merges.
  void ShowLetter();

 signals:
  void CaptionChanged();

 protected:
  void closeEvent(QCloseEvent* event) override;

 private:
  void ShowCaption();

  Session& session_;
  frmLetter letter_;
  LetterView* view_;
};

}  // namespace tenora
