// Asks for one line of text.
#pragma once

#include <QDialog>

class QLineEdit;

namespace tenora {

class InputBox : public QDialog {
  Q_OBJECT

 public:
  InputBox(const QString& prompt, const QString& title, const QString& default_answer,
           QWidget* parent);
  QString Answer() const;

 private:
  QLineEdit* answer_;
};

}  // namespace tenora
