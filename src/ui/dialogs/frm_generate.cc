#include "ui/dialogs/frm_generate.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

#include "letters/template_library.h"
#include "platform/dialogs/window_size.h"
#include "ui/dialogs/recipient_list.h"
#include "ui/dialogs/scrolled_page.h"

namespace tenora {
namespace {

template <typename Widget>
Widget* Named(Widget* widget, const char* name) {
  widget->setObjectName(name);
  return widget;
}

}  // namespace

frmGenerate::frmGenerate(const Caches& caches, const std::string& template_kind,
                         const std::string& template_name, Dialogs& dialogs, QWidget* parent)
    : QDialog(parent),
      caches_(caches),
      kind_(template_kind),
      name_(template_name),
      dialogs_(dialogs),
      model_(new RecipientModel(this)),
      shown_(new RecipientFilterModel(*model_)),
      list_(Named(new RecipientView, "lstMultiSelect")),
      search_(Named(new QLineEdit, "txtSearch")),
      count_(Named(new QLabel, "lblCount")),
      closed_(Named(new QCheckBox, "chkClosed")),
      by_property_(Named(new QCheckBox(tr("One for each &property")), "chkByProperty")),
      exclude_(Named(new QCheckBox(tr("E&xclude those without an e-mail address")),
                     "ExcludeNoEmailAddress")),
      automatic_(Named(new QCheckBox(tr("Use the &default printer")), "chkAuto")),
      pdf_(Named(new QCheckBox(tr("Save a PD&F beside each letter")), "chkPdf")),
      printer_(Named(new QRadioButton(tr("P&rinter")), "optPrinter")),
      email_(Named(new QRadioButton(tr("&E-mail")), "optEmail")),
      folder_(Named(new QRadioButton(tr("&Save only")), "optFolder")),
      subject_label_(Named(new QLabel(tr("S&ubject")), "lblSubject")),
      subject_(Named(new QLineEdit(QString::fromStdString(template_name)), "txtSubject")) {
  setObjectName("frmGenerate");
  setWindowTitle(tr("Generate Letters"));
  list_->setModel(shown_);
  auto* buttons = new QDialogButtonBox;
  auto* generate =
      Named(buttons->addButton(tr("&Generate"), QDialogButtonBox::AcceptRole), "cmdGenerate");
  generate->setDefault(true);
  Named(buttons->addButton(tr("Cancel"), QDialogButtonBox::RejectRole), "cmdCancel");
  connect(buttons, &QDialogButtonBox::accepted, this, &frmGenerate::Generate);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

  auto* sides = new QHBoxLayout;
  sides->addWidget(MakeListSide(), 3);
  sides->addWidget(new ScrolledPage(MakeOptionSide()), 2);
  auto* layout = new QVBoxLayout(this);
  layout->addLayout(sides, 1);
  layout->addWidget(buttons);
  connect(model_, &RecipientModel::TicksChanged, this, &frmGenerate::ShowCount);
  SetDestination(Destination::kPrinter);
  search_->setFocus();
  resize(OpeningSize(*this, {760, 520}));
}

QWidget* frmGenerate::MakeListSide() {
  auto* side = new QWidget;
  auto* column = new QVBoxLayout(side);
  column->setContentsMargins(0, 0, 6, 0);
  search_->setPlaceholderText(tr("Search names and properties"));
  search_->setAccessibleName(tr("Search"));
  search_->setClearButtonEnabled(true);
  list_->setAccessibleName(tr("Recipients"));
  connect(search_, &QLineEdit::textChanged, this, [this](const QString& text) {
    shown_->SetSearch(text);
    ShowCount();
  });
  auto* row = new QHBoxLayout;
  const auto add = [&](const QString& caption, const char* name, auto&& action) {
    auto* button = Named(new QPushButton(caption), name);
    button->setAutoDefault(false);
    connect(button, &QPushButton::clicked, this, action);
    row->addWidget(button);
  };
  add(tr("Select &All"), "cmdSelectAll", [this] { TickShown(true); });
  add(tr("Select &None"), "cmdSelectNone", [this] { TickShown(false); });
  add(tr("&Invert"), "cmdInvert", [this] { InvertShown(); });
  row->addStretch();
  column->addWidget(search_);
  column->addWidget(list_, 1);
  column->addWidget(count_);
  column->addLayout(row);
  return side;
}

QWidget* frmGenerate::MakeOptionSide() {
  auto* side = new QWidget;
  auto* column = new QVBoxLayout(side);
  column->setContentsMargins(6, 0, 0, 0);
  auto* label = new QLabel(tr("&Template"));
  auto* name = Named(new QLineEdit(QString::fromStdString(name_)), "txtName");
  name->setReadOnly(true);
  label->setBuddy(name);
  column->addWidget(label);
  column->addWidget(name);
  auto* who = new QGroupBox(tr("Recipients"));
  auto* who_column = new QVBoxLayout(who);
  const bool owners = kind_ == kOwnerTemplates;
  closed_->setText(owners ? tr("Include &closed owners") : tr("Include &closed tenancies"));
  by_property_->setVisible(owners);
  for (QCheckBox* box : {closed_, by_property_, exclude_}) {
    who_column->addWidget(box);
    connect(box, &QCheckBox::toggled, this, &frmGenerate::Refill);
  }
  column->addWidget(who);
  MakeDestinations(column);
  column->addStretch();
  return side;
}

void frmGenerate::MakeDestinations(QVBoxLayout* column) {
  auto* where = new QGroupBox(tr("Send to"));
  auto* where_column = new QVBoxLayout(where);
  subject_label_->setBuddy(subject_);
  auto* subject_row = new QHBoxLayout;
  subject_row->addSpacing(20);
  subject_row->addWidget(subject_label_);
  subject_row->addWidget(subject_, 1);
  auto* printer_row = new QHBoxLayout;
  printer_row->addSpacing(20);
  printer_row->addWidget(automatic_);
  where_column->addWidget(printer_);
  where_column->addLayout(printer_row);
  where_column->addWidget(email_);
  where_column->addLayout(subject_row);
  where_column->addWidget(folder_);
  column->addWidget(where);
  column->addWidget(pdf_);
  // On click, not on toggle: a radio button that is switched off by another emits toggled as well.
  connect(printer_, &QRadioButton::clicked, this,
          [this] { SetDestination(Destination::kPrinter); });
  connect(email_, &QRadioButton::clicked, this, [this] { SetDestination(Destination::kEmail); });
  connect(folder_, &QRadioButton::clicked, this, [this] { SetDestination(Destination::kFolder); });
}

void frmGenerate::SetDestination(Destination destination) {
  destination_ = destination;
  const bool email = destination == Destination::kEmail;
  printer_->setChecked(destination == Destination::kPrinter);
  email_->setChecked(email);
  folder_->setChecked(destination == Destination::kFolder);
  automatic_->setEnabled(destination == Destination::kPrinter);
  subject_label_->setEnabled(email);
  subject_->setEnabled(email);
  exclude_->setEnabled(email);
  Refill();
}

void frmGenerate::Preselect(const Recipient& recipient) {
  for (const bool closed : {false, true}) {
    if (closed) closed_->setChecked(true);
    for (int row = 0; row < model_->rowCount(); ++row) {
      if (model_->Row(row).recipient != recipient) continue;
      model_->Tick({row}, true);
      const QModelIndex shown = shown_->mapFromSource(model_->index(row));
      list_->setCurrentIndex(shown);
      list_->scrollTo(shown);
      return;
    }
  }
  closed_->setChecked(false);
}

void frmGenerate::Refill() {
  RecipientFilter filter;
  filter.closed = closed_->isChecked();
  filter.by_property = by_property_->isChecked();
  filter.exclude_no_email_available = exclude_->isEnabled();
  filter.exclude_no_email_ticked = exclude_->isChecked();
  model_->SetRows(ListRecipients(caches_, kind_, filter));
  ShowCount();
}

void frmGenerate::ShowCount() {
  const QLocale locale;
  const int all = model_->rowCount(), found = shown_->rowCount();
  QString text =
      tr("%1 of %2 selected").arg(locale.toString(model_->TickedCount()), locale.toString(all));
  if (found != all) text += tr(" – %1 shown").arg(locale.toString(found));
  count_->setText(text);
}

std::vector<int> frmGenerate::ShownRows() const {
  std::vector<int> rows;
  for (int i = 0; i < shown_->rowCount(); ++i) {
    rows.push_back(shown_->mapToSource(shown_->index(i, 0)).row());
  }
  return rows;
}

void frmGenerate::TickShown(bool ticked) { model_->Tick(ShownRows(), ticked); }

void frmGenerate::InvertShown() {
  std::vector<int> on, off;
  for (const int row : ShownRows()) (model_->IsTicked(row) ? off : on).push_back(row);
  model_->Tick(on, true);
  model_->Tick(off, false);
}

void frmGenerate::Generate() {
  if (model_->TickedCount() == 0) {
    dialogs_.Say("Nothing selected");
    return;
  }
  accept();
}

GenerationRequest frmGenerate::Request() const {
  GenerationRequest request;
  request.template_kind = kind_;
  request.template_name = name_;
  request.destination = destination_;
  request.subject = subject_->text().toStdString();
  request.pdf = pdf_->isChecked();
  for (const RecipientRow& row : model_->TickedRows()) request.recipients.push_back(row.recipient);
  return request;
}

bool frmGenerate::UsesDefaultPrinter() const { return automatic_->isChecked(); }

}  // namespace tenora
