// The letter as its writer sees it: the text control around a letter's RichTextBox.
#pragma once

#include <QTextEdit>

#include "platform/richtext/rich_text_box.h"

namespace tenora {

class LetterEditor : public QTextEdit {
  Q_OBJECT

 public:
  // The box outlives the editor; what is typed is in the box whenever the box is asked.
  explicit LetterEditor(RichTextBox& box, QWidget* parent = nullptr);

 private:
  RichTextBox& box_;
};

}  // namespace tenora
