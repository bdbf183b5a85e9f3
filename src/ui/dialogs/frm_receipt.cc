#include "ui/dialogs/frm_receipt.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include "platform/dialogs/guard.h"
#include "platform/runtime/conversion.h"

namespace tenora {
namespace {

// Adds an indented check box that is enabled only while another one is ticked.
void AddUnder(QCheckBox* master, QCheckBox* dependent, QVBoxLayout* column) {
  auto* row = new QHBoxLayout;
  row->addSpacing(20);
  row->addWidget(dependent);
  column->addLayout(row);
  dependent->setEnabled(master->isChecked());
  QObject::connect(master, &QCheckBox::toggled, dependent, &QCheckBox::setEnabled);
}

}  // namespace

frmReceipt::frmReceipt(DocumentKind kind, Settings& settings, Dialogs& dialogs,
                       const std::vector<std::string>& formats, const std::string& application,
                       QWidget* parent)
    : QDialog(parent), kind_(kind), settings_(settings), dialogs_(dialogs), format_(new QComboBox) {
  setObjectName("frmReceipt");
  setWindowTitle(IsReceipt() ? tr("Receipt Options") : tr("Inspection Letter Options"));
  auto* format_label =
      new QLabel(IsReceipt() ? tr("Default Receipt &Format") : tr("Default Letter &Format"));
  format_label->setObjectName("lblDefaultFormat");
  format_label->setBuddy(format_);
  format_->setObjectName("cboDefaultFormat");
  format_->setMinimumContentsLength(24);
  format_->setPlaceholderText(tr("Choose a template"));
  ShowFormats(formats);

  auto* output = new QGroupBox(IsReceipt() ? tr("Receipt Printing") : tr("Letter Printing"));
  output->setObjectName("fraPrinting");
  auto* column = new QVBoxLayout(output);
  print_ = AddChoice(tr("Send to the p&rinter"), "chkPrint", "Print", "1");
  auto* default_printer =
      AddChoice(tr("Use the &default printer"), "chkUseDefaultPrinter", "UseDefaultPrinter", "1");
  email_ = AddChoice(tr("Send by &e-mail"), "chkEmail", "Email", "0");
  column->addWidget(print_);
  AddUnder(print_, default_printer, column);
  if (IsReceipt()) {
    AddUnder(print_,
             AddChoice(tr("&Keep a copy of the printed receipt"), "chkSaveCopy", "SaveCopy", "0"),
             column);
  }
  column->addWidget(email_);
  if (IsReceipt()) {
    AddUnder(email_,
             AddChoice(tr("&Attach the receipt as a PDF to its e-mail"), "chkPdfAttachment",
                       "PdfAttachment", "0"),
             column);
  }
  auto* prompt = AddChoice(
      IsReceipt() ? tr("Pro&mpt during receipt printing") : tr("Pro&mpt during letter printing"),
      "chkPrompt", "Prompt", "1");
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
  auto* ok = buttons->button(QDialogButtonBox::Ok);
  ok->setObjectName("cmdOK");
  if (application.find("Mail") != std::string::npos) ok->setText(tr("&Print"));
  buttons->button(QDialogButtonBox::Cancel)->setObjectName("cmdCancel");
  connect(buttons, &QDialogButtonBox::accepted, this, &frmReceipt::Save);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

  auto* layout = new QVBoxLayout(this);
  layout->addWidget(format_label);
  layout->addWidget(format_);
  layout->addSpacing(6);
  layout->addWidget(output);
  layout->addWidget(prompt);
  layout->addStretch();
  layout->addSpacing(6);
  layout->addWidget(buttons);
}

QCheckBox* frmReceipt::AddChoice(const QString& caption, const char* name, const char* key,
                                 const char* default_text) {
  auto* box = new QCheckBox(caption);
  box->setObjectName(name);
  Guarded(dialogs_, "frmReceipt - Form_Load",
          [&] { box->setChecked(settings_.GetSettingAs(ToBool, Section(), key, default_text)); });
  choices_.push_back({box, key});
  return box;
}

// A stored format whose template no longer exists stays in the list, so that OK does not change it.
void frmReceipt::ShowFormats(const std::vector<std::string>& formats) {
  for (const std::string& format : formats) format_->addItem(QString::fromStdString(format));
  const QString stored =
      QString::fromStdString(settings_.GetSettingText(Section(), "DefaultFormat", ""));
  if (!stored.isEmpty() && format_->findText(stored, Qt::MatchFixedString) < 0)
    format_->addItem(stored);
  format_->setCurrentIndex(stored.isEmpty() ? -1 : format_->findText(stored, Qt::MatchFixedString));
}

void frmReceipt::Save() {
  if (!print_->isChecked() && !email_->isChecked()) {
    dialogs_.Say("You need to output to either printer or email or both");
    return;
  }
  settings_.SaveSettingText(Section(), "DefaultFormat", format_->currentText().toStdString());
  for (const Choice& choice : choices_) {
    settings_.SaveSettingText(Section(), choice.key, choice.box->isChecked() ? "1" : "0");
  }
  accept();
}

}  // namespace tenora
