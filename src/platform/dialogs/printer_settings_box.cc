#include "platform/dialogs/printer_settings_box.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QVBoxLayout>
#include <algorithm>
#include <utility>

namespace tenora {

PrinterSettingsBox::PrinterSettingsBox(const QString& printer, std::vector<PrinterSetting> settings,
                                       const ChosenSettings& chosen, QWidget* parent)
    : QDialog(parent), settings_(std::move(settings)) {
  setObjectName("frmPrinterSettings");
  setWindowTitle(tr("Properties of %1").arg(printer));
  auto* form = new QFormLayout;
  for (const PrinterSetting& setting : settings_) {
    auto* box = new QComboBox;
    box->setObjectName(QString::fromStdString(setting.name));
    box->addItem(
        setting.preset.empty()
            ? tr("As the printer is set")
            : tr("As the printer is set (%1)").arg(QString::fromStdString(setting.preset)));
    for (const PrinterSetting::Value& each : setting.values) {
      box->addItem(QString::fromStdString(each.label), QString::fromStdString(each.value));
      const std::pair<std::string, std::string> wanted(setting.name, each.value);
      if (std::ranges::find(chosen, wanted) != chosen.end()) {
        box->setCurrentIndex(box->count() - 1);
      }
    }
    box->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    box->setMinimumContentsLength(24);
    form->addRow(QString::fromStdString(setting.label), box);
    boxes_.push_back(box);
  }
  if (settings_.empty()) form->addRow(new QLabel(tr("This printer has no properties to choose.")));
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
  connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  auto* layout = new QVBoxLayout(this);
  layout->addLayout(form);
  layout->addStretch();
  layout->addWidget(buttons);
}

ChosenSettings PrinterSettingsBox::Chosen() const {
  ChosenSettings chosen;
  for (std::size_t i = 0; i < settings_.size(); ++i) {
    std::string value = boxes_[i]->currentData().toString().toStdString();
    if (value.empty()) continue;
    chosen.emplace_back(settings_[i].name, std::move(value));
  }
  return chosen;
}

}  // namespace tenora
