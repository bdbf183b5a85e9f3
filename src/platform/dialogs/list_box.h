// Asks for one item of a list, as the printer.
#pragma once

#include <QDialog>

class QListWidget;

namespace tenora {

class ListBox : public QDialog {
  Q_OBJECT

 public:
  // `items` may be empty; nothing can be chosen then.
  ListBox(const QString& title, const QStringList& items, int default_item, QWidget* parent);
  int ChosenRow() const;  // -1 when none

 private:
  QListWidget* list_;
};

}  // namespace tenora
