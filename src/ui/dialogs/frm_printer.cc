#include "ui/dialogs/frm_printer.h"

#include <QDialogButtonBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>
#include <QValidator>

#include "output/letter_printing.h"
#include "platform/dialogs/guard.h"
#include "platform/runtime/conversion.h"

namespace tenora {
namespace {

constexpr const char* kSection = "Mail\\PrinterSetup";
constexpr int kMostCharacters = 8;

// Discards every key but digits, backspace and the first ".".
class MarginValidator : public QValidator {
 public:
  using QValidator::QValidator;
  State validate(QString& text, int& /*position*/) const override {
    return IsMarginText(text.toStdString()) ? Acceptable : Invalid;
  }
};

}  // namespace

frmPrinter::frmPrinter(Settings& settings, Dialogs& dialogs, QWidget* parent)
    : QDialog(parent),
      settings_(settings),
      centimetres_(new QRadioButton(tr("&Centimetres"))),
      inches_(new QRadioButton(tr("&Inches"))) {
  setObjectName("frmPrinter");
  setWindowTitle(tr("Page Margins"));
  centimetres_->setObjectName("optCM");
  inches_->setObjectName("optInch");
  const std::array<std::pair<QString, const char*>, 4> labels{{{tr("&Top"), "txtTop"},
                                                               {tr("&Bottom"), "txtBottom"},
                                                               {tr("&Left"), "txtLeft"},
                                                               {tr("&Right"), "txtRight"}}};
  auto* margins = new QGroupBox(tr("Margins"));
  auto* grid = new QGridLayout(margins);
  for (std::size_t i = 0; i < margins_.size(); ++i) {
    Margin& margin = margins_[i];
    margin.box = new QLineEdit;
    margin.box->setObjectName(labels[i].second);
    margin.box->setAccessibleName(tr("%1 margin").arg(QString(labels[i].first).remove('&')));
    margin.box->setValidator(new MarginValidator(this));
    margin.box->setMaxLength(kMostCharacters);
    margin.box->setAlignment(Qt::AlignRight);
    margin.unit = new QLabel;
    auto* label = new QLabel(labels[i].first);
    label->setBuddy(margin.box);
    const int row = static_cast<int>(i) / 2, column = static_cast<int>(i) % 2 * 4;
    grid->addWidget(label, row, column);
    grid->addWidget(margin.box, row, column + 1);
    grid->addWidget(margin.unit, row, column + 2);
    connect(margin.box, &QLineEdit::textEdited, this, [this, &margin](const QString& text) {
      margin.twips = TwipsOfText(text.toStdString(), Unit());
    });
  }
  grid->setColumnMinimumWidth(3, 16);
  auto* units = new QGroupBox(tr("Shown in"));
  auto* unit_row = new QHBoxLayout(units);
  unit_row->addWidget(centimetres_);
  unit_row->addWidget(inches_);
  unit_row->addStretch();
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
  buttons->button(QDialogButtonBox::Ok)->setObjectName("cmdOK");
  buttons->button(QDialogButtonBox::Cancel)->setObjectName("cmdCancel");
  connect(buttons, &QDialogButtonBox::accepted, this, &frmPrinter::Save);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  connect(inches_, &QRadioButton::toggled, this, &frmPrinter::ShowMargins);

  auto* layout = new QVBoxLayout(this);
  layout->addWidget(margins);
  layout->addWidget(units);
  layout->addStretch();
  layout->addWidget(buttons);
  Load(dialogs);
  margins_[0].box->setFocus();
}

MarginUnit frmPrinter::Unit() const {
  return inches_->isChecked() ? MarginUnit::kInches : MarginUnit::kCentimetres;
}

void frmPrinter::Load(Dialogs& dialogs) {
  Guarded(dialogs, "frmPrinter - Form_Load", [&] {
    const PageMargins stored = StoredMargins(settings_);
    const std::array<int, 4> twips{stored.top, stored.bottom, stored.left, stored.right};
    for (std::size_t i = 0; i < twips.size(); ++i) margins_[i].twips = twips[i];
  });
  bool inches = false;
  Guarded(dialogs, "frmPrinter - Form_Load", [&] {
    inches = settings_.GetSettingAs(ToBool, kSection, "Inch", "False") &&
             !settings_.GetSettingAs(ToBool, kSection, "CM", "1");
  });
  (inches ? inches_ : centimetres_)->setChecked(true);
  ShowMargins();
}

void frmPrinter::ShowMargins() {
  for (const Margin& margin : margins_) {
    margin.box->setText(QString::fromStdString(MarginText(margin.twips, Unit())));
    margin.unit->setText(Unit() == MarginUnit::kInches ? tr("in") : tr("cm"));
  }
}

void frmPrinter::Save() {
  for (const Margin& margin : margins_) {
    settings_.SaveSettingText(kSection, margin.key, std::to_string(WholeTwips(margin.twips)));
  }
  settings_.SaveSettingText(kSection, "CM", centimetres_->isChecked() ? "True" : "False");
  settings_.SaveSettingText(kSection, "Inch", inches_->isChecked() ? "True" : "False");
  accept();
}

}  // namespace tenora
