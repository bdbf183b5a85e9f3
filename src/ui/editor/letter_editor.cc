#include "ui/editor/letter_editor.h"

namespace tenora {

LetterEditor::LetterEditor(RichTextBox& box, QWidget* parent) : QTextEdit(parent), box_(box) {
  setPlainText(QString::fromStdString(box_.Text()));
}

}  // namespace tenora
