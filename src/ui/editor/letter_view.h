// The view of a letter: the ruler, and below it the editor on a neutral background.
#pragma once

#include <QWidget>

#include "ui/editor/letter_editor.h"
#include "ui/editor/screen/ruler.h"

namespace tenora {

class LetterView : public QWidget {
  Q_OBJECT

 public:
  explicit LetterView(RichTextBox& box, QWidget* parent = nullptr);

  LetterEditor& editor() { return *editor_; }
  void ShowRuler(bool shown) { ruler_->setVisible(shown); }
  // The letter can be read, searched and copied, and not changed.
  void MakeReadOnly();
  // The paper of the current printer and the margins that the letter prints with; how its lines
  // end stays.
  void SetPage(PaperLook page);
  // The letter lies on a sheet of that paper, and its lines end with it.
  void ShowSheet(bool shown);
  // Lines end where the printer's page ends; else at the window's edge.
  void ChangeWidth(bool page_width);

 signals:
  // On the ruler; the margins are settings, so the receiver decides. Twips.
  void MarginsDragged(int left, int right);

 private:
  Ruler* ruler_;
  LetterEditor* editor_;
};

}  // namespace tenora
