#include "ui/dialogs/frm_future_date.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRegularExpressionValidator>
#include <QVBoxLayout>

#include "merge/merge_codes.h"

namespace tenora {
namespace {

// The units as spelt in the code; not translated, since the merge parses them.
constexpr const char* kUnits[] = {"Days", "Weeks", "Months", "Years"};
constexpr int kMostDigits = 9;

}  // namespace

frmFutureDate::frmFutureDate(RichTextBox& editor, QWidget* parent)
    : QDialog(parent), editor_(editor), number_(new QLineEdit), period_(new QComboBox) {
  setObjectName("frmFutureDate");
  setWindowTitle(tr("Future Date"));
  auto* label = new QLabel(tr("Print the date as the current date plus"));
  label->setObjectName("Label1");
  label->setBuddy(number_);
  number_->setObjectName("txtNumber");
  number_->setAccessibleName(tr("How many"));
  number_->setValidator(new QRegularExpressionValidator(QRegularExpression("[0-9]*"), this));
  number_->setMaxLength(kMostDigits);
  period_->setObjectName("cboPeriod");
  period_->setAccessibleName(tr("Unit of time"));
  for (const char* unit : kUnits) period_->addItem(tr(unit), QString(unit));
  auto* buttons = new QDialogButtonBox;
  auto* save = buttons->addButton(tr("&Save"), QDialogButtonBox::AcceptRole);
  save->setObjectName("cmdSave");
  buttons->addButton(tr("Cancel"), QDialogButtonBox::RejectRole)->setObjectName("cmdCancel");
  connect(buttons, &QDialogButtonBox::accepted, this, &frmFutureDate::Save);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

  auto* row = new QHBoxLayout;
  row->addWidget(number_);
  row->addWidget(period_, 1);
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(label);
  layout->addLayout(row);
  layout->addStretch();
  layout->addSpacing(8);
  layout->addWidget(buttons);
  // Not before the dialog has it: Return would go to the button that Tab passed last.
  save->setDefault(true);
  number_->setFocus();
}

// The count is inserted as typed, even if empty.
void frmFutureDate::Save() {
  editor_.SetSelText(std::string(kFutureDateStart)
                         .append(number_->text().toStdString())
                         .append(":")
                         .append(period_->currentData().toString().toStdString())
                         .append(kCodeEnd));
  accept();
}

}  // namespace tenora
