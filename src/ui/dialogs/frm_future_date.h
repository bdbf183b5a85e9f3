// Writes a future-date code into a letter.
#pragma once

#include <QDialog>

#include "platform/richtext/rich_text_box.h"

class QComboBox;
class QLineEdit;

namespace tenora {

class frmFutureDate : public QDialog {
  Q_OBJECT

 public:
  // Save replaces the editor's selection by "<<FutureDate:14:Days>>"; the editor outlives the
  // dialog.
  explicit frmFutureDate(RichTextBox& editor, QWidget* parent = nullptr);

 private:
  void Save();

  RichTextBox& editor_;
  QLineEdit* number_;
  QComboBox* period_;
};

}  // namespace tenora
