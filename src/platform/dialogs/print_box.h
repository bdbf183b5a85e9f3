// The dialog before printing: printer and its properties, pages, copies, orientation and sides.
#pragma once

#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
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
  void Build();
  void ShowWhatApplies();
  // None for a text that names no pages.
  std::optional<std::vector<PageRange>> Pages() const;
  // Why the pages that were typed cannot be printed; empty when they can.
  QString PagesFault() const;
  // Whether printer, paper and orientation are those that the letter's pages were counted for.
  bool PagesCounted() const;
  void ShowPagesFault();
  void ShowSettings();

  const std::vector<OfferedPrinter> printers_;
  const PrintChoice shown_;
  ChosenSettings settings_;  // of the printer in the list
  QListWidget* list_;
  QPushButton* properties_;
  QRadioButton *all_pages_, *some_pages_;
  QLineEdit* pages_;
  QLabel* pages_fault_;
  QSpinBox* copies_;
  QCheckBox* collate_;
  QComboBox *orientation_, *sides_;
  QPushButton* print_ = nullptr;
};

}  // namespace tenora
