// The dialog before printing: printer, copies, orientation and sides.
#pragma once

#include <QComboBox>
#include <QDialog>
#include <QListWidget>
#include <QSpinBox>
#include <vector>

#include "platform/dialogs/dialogs.h"

namespace tenora {

class PrintBox : public QDialog {
  Q_OBJECT

 public:
  PrintBox(const std::vector<OfferedPrinter>& printers, const PrintChoice& shown, QWidget* parent);
  PrintChoice Choice() const;

 private:
  const OfferedPrinter* Chosen() const;  // null when none is
  void ShowWhatApplies();

  const std::vector<OfferedPrinter> printers_;
  QListWidget* list_;
  QSpinBox* copies_;
  QComboBox *orientation_, *sides_;
  QPushButton* print_;
};

}  // namespace tenora
