#include "platform/dialogs/print_box.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QPushButton>
#include <QVBoxLayout>
#include <algorithm>
#include <initializer_list>

namespace tenora {
namespace {

constexpr int kMostCopies = 999;
constexpr QSize kUsualSize(420, 360);

}  // namespace

PrintBox::PrintBox(const std::vector<OfferedPrinter>& printers, const PrintChoice& shown,
                   QWidget* parent)
    : QDialog(parent),
      printers_(printers),
      list_(new QListWidget),
      copies_(new QSpinBox),
      orientation_(new QComboBox),
      sides_(new QComboBox) {
  setWindowTitle(tr("Print"));
  list_->setObjectName("lstItems");
  list_->setAccessibleName(tr("Printer"));
  for (const OfferedPrinter& printer : printers_) {
    list_->addItem(QString::fromStdString(printer.name));
  }
  copies_->setObjectName("txtCopies");
  copies_->setRange(1, kMostCopies);
  copies_->setValue(shown.copies);
  orientation_->setObjectName("cboOrientation");
  orientation_->addItems({tr("Portrait"), tr("Landscape")});
  orientation_->setCurrentIndex(shown.landscape ? 1 : 0);
  sides_->setObjectName("cboDuplex");
  sides_->addItem(tr("As the printer is set"), static_cast<int>(Sides::kAsPrinterIsSet));
  sides_->addItem(tr("One side"), static_cast<int>(Sides::kOne));
  sides_->addItem(tr("Both sides, turned like a book"), static_cast<int>(Sides::kBothLongEdge));
  sides_->addItem(tr("Both sides, turned like a pad"), static_cast<int>(Sides::kBothShortEdge));
  sides_->setCurrentIndex(sides_->findData(static_cast<int>(shown.sides)));
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
  print_ = buttons->button(QDialogButtonBox::Ok);
  connect(list_, &QListWidget::currentRowChanged, this, &PrintBox::ShowWhatApplies);
  connect(list_, &QListWidget::itemActivated, this, &QDialog::accept);
  connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

  auto* form = new QFormLayout;
  form->addRow(tr("&Copies"), copies_);
  form->addRow(tr("&Orientation"), orientation_);
  form->addRow(tr("&Sides"), sides_);
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(list_, 1);
  layout->addLayout(form);
  layout->addWidget(buttons);
  resize(kUsualSize);
  list_->setCurrentRow(static_cast<int>(shown.printer));
  list_->setFocus();
  ShowWhatApplies();
}

const OfferedPrinter* PrintBox::Chosen() const {
  const int row = list_->currentRow();
  return row < 0 ? nullptr : &printers_[static_cast<std::size_t>(row)];
}

void PrintBox::ShowWhatApplies() {
  const OfferedPrinter* printer = Chosen();
  print_->setEnabled(printer != nullptr);
  for (QWidget* box : std::initializer_list<QWidget*>{copies_, sides_}) {
    box->setEnabled(printer != nullptr && printer->on_paper);
  }
}

PrintChoice PrintBox::Choice() const {
  PrintChoice choice;
  choice.printer = static_cast<std::size_t>(std::max(0, list_->currentRow()));
  choice.landscape = orientation_->currentIndex() == 1;
  if (!Chosen() || !Chosen()->on_paper) return choice;
  choice.copies = copies_->value();
  choice.sides = static_cast<Sides>(sides_->currentData().toInt());
  return choice;
}

}  // namespace tenora
