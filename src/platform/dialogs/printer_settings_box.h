// The dialog for what one printer can be set to, such as its paper tray.
#pragma once

#include <QComboBox>
#include <QDialog>
#include <vector>

#include "platform/dialogs/dialogs.h"

namespace tenora {

class PrinterSettingsBox : public QDialog {
  Q_OBJECT

 public:
  // Shows what is chosen, and for the others how the printer is set.
  PrinterSettingsBox(const QString& printer, std::vector<PrinterSetting> settings,
                     const ChosenSettings& chosen, QWidget* parent);

  // Without those that stay as the printer is set.
  ChosenSettings Chosen() const;

 private:
  const std::vector<PrinterSetting> settings_;
  std::vector<QComboBox*> boxes_;
};

}  // namespace tenora
